"""What travels with the pixels: orientation is applied, what still holds is kept byte for byte."""

import struct
import unittest
import zlib

from pictures import (ToolTest, chunk, exif, jpeg_segments, photo, png, png_chunks, ppm, ppm_rows,
                      speckled, with_segments)

XMP_PREFIX = b"http://ns.adobe.com/xap/1.0/\0"
XMP = b"<x:xmpmeta xmlns:x='adobe:ns:meta/'>\xc3\xa9</x:xmpmeta>"

# The EXIF block of a photograph that was made smaller gives the old size.
FOR_ITS_REAL_SIZE = [(struct.pack("<HHIHH", 0xA002, 3, 1, 4032, 0),
                      struct.pack("<HHIHH", 0xA002, 3, 1, 403, 0)),
                     (struct.pack("<HHIHH", 0xA003, 3, 1, 3024, 0),
                      struct.pack("<HHIHH", 0xA003, 3, 1, 302, 0))]


def icc(length, channels=b"RGB "):
    """Bytes that look like a profile for the given channels; no one reads further."""
    head = struct.pack(">I", length) + bytes(8) + b"mntr" + channels + b"XYZ " + bytes(12) + b"acsp"
    head += bytes(68 - len(head)) + struct.pack(">III", 0xF6D6, 0x10000, 0xD32D)
    body = bytes((7 * i + i // 251) % 256 for i in range(length - 132))
    return (head + bytes(128 - len(head)) + struct.pack(">I", 0) + body)[:length]


def icc_segments(profile, size):
    parts = [profile[i:i + size] for i in range(0, len(profile), size)]
    return [(0xE2, b"ICC_PROFILE\0" + bytes([i + 1, len(parts)]) + part)
            for i, part in enumerate(parts)]


def icc_of(segments):
    parts = [payload for marker, payload in segments
             if marker == 0xE2 and payload.startswith(b"ICC_PROFILE\0")]
    return b"".join(part[14:] for part in sorted(parts, key=lambda part: part[12]))


def payloads(content, marker, prefix):
    return [payload for found, payload in jpeg_segments(content)
            if found == marker and payload.startswith(prefix)]

ANEW = ("--line", "0,0,1,0", "--background", "black")  # no change, but written anew


class Orientation(ToolTest):
    # Where the upright pixel (x, y) lies in stored pixels of width w and height h.
    STORED = {
        1: lambda x, y, w, h: (x, y),
        2: lambda x, y, w, h: (w - 1 - x, y),
        3: lambda x, y, w, h: (w - 1 - x, h - 1 - y),
        4: lambda x, y, w, h: (x, h - 1 - y),
        5: lambda x, y, w, h: (y, x),
        6: lambda x, y, w, h: (y, h - 1 - x),
        7: lambda x, y, w, h: (w - 1 - y, h - 1 - x),
        8: lambda x, y, w, h: (w - 1 - y, x),
    }

    def test_all_eight_in_both_byte_orders(self):
        width, height = 71, 40  # more than one tile of the turning loop
        stored = speckled(width, height)
        rows = [bytes(channel for pixel in row for channel in pixel) for row in stored]
        for orientation, source in self.STORED.items():
            for order in "<>":
                tags = exif(orientation, order)
                name = self.write("in.png", png(width, height, 8, 2, rows,
                                                [chunk(b"eXIf", tags)]))
                self.copy(name, "out.ppm")
                sideways = orientation >= 5
                size = (height, width) if sideways else (width, height)
                expected = []
                for y in range(size[1]):
                    places = [source(x, y, width, height) for x in range(size[0])]
                    expected.append([stored[sy][sx] for sx, sy in places])
                self.assertEqual(ppm_rows(self.read("out.ppm")), expected, orientation)

                self.copy(name, "out.png")
                kept = dict(png_chunks(self.read("out.png")))[b"eXIf"]
                self.assertEqual(kept, exif(1, order))

    def test_prefixes_too_many_do_not_hide_the_orientation(self):
        self.write("base.ppm", ppm(speckled(40, 30)))
        self.copy("base.ppm", "base.jpg")
        for count in (1, 2, 3):
            prefixes = b"Exif\0\0" * count
            self.write("in.jpg", with_segments(self.read("base.jpg"),
                                               [(0xE1, prefixes + exif(6))]))
            self.write("in.png", png(40, 30, 8, 2, [bytes(120)] * 30,
                                     [chunk(b"eXIf", prefixes + exif(6))]))
            for source in ("in.jpg", "in.png"):
                self.copy(source, "out.jpg")
                self.assertEqual(payloads(self.read("out.jpg"), 0xE1, b"Exif"),
                                 [b"Exif\0\0" + exif(1)])
                self.copy(source, "out.png")
                self.assertEqual(dict(png_chunks(self.read("out.png")))[b"eXIf"], exif(1))
                self.copy(source, "out.ppm")
                rows = ppm_rows(self.read("out.ppm"))
                self.assertEqual((len(rows[0]), len(rows)), (30, 40))
        self.write("in.jpg", with_segments(self.read("base.jpg"), [(0xE1, b"Exif\0\0" * 2)]))
        self.copy("in.jpg", "out.png")
        self.assertNotIn(b"eXIf", dict(png_chunks(self.read("out.png"))))

    def test_a_mirrored_photograph_shows_the_picture_that_is_stored_upright(self):
        self.assertIn("302 × 403", self.succeed("info", photo("metadata-orientation-5.jpg")))
        self.copy(photo("metadata-orientation-5.jpg"), "turned.ppm")
        self.copy(photo("metadata-exif-xmp-icc.jpg"), "straight.ppm")
        turned = ppm_rows(self.read("turned.ppm"))
        straight = ppm_rows(self.read("straight.ppm"))
        # The file holds the same stored pixels, and 5 mirrors them along the main diagonal.
        self.assertEqual((len(turned), len(turned[0])), (403, 302))
        difference = sum(abs(turned[x][y][c] - straight[y][x][c])
                         for y in range(0, 302, 5) for x in range(0, 403, 5) for c in range(3))
        self.assertLess(difference / (61 * 81 * 3), 6)  # the two were compressed differently

    def test_a_telephone_photograph_is_written_upright_once_and_for_all(self):
        self.copy(photo("book-page.jpg"), "page.jpg")
        text = self.succeed("info", "page.jpg")
        self.assertIn("size: 2448 × 3264 pixels", text)
        self.assertIn("orientation: 1 ", text)
        # Up to the thumbnail its EXIF block changes in the tag, the size and the thumbnail's length,
        # and the subject's area is gone.
        with open(photo("book-page.jpg"), "rb") as file:
            old, = payloads(file.read(), 0xE1, b"Exif\0\0")
        new, = payloads(self.read("page.jpg"), 0xE1, b"Exif\0\0")
        thumbnail = old.index(b"\xff\xd8\xff")
        self.assertEqual(new.index(b"\xff\xd8\xff"), thumbnail)
        expected = bytearray(old[:thumbnail])
        length = lambda block: block.rindex(b"\xff\xd9") + 2 - thumbnail
        for before, after in ((b"\x01\x12\0\3\0\0\0\1\0\6", b"\x01\x12\0\3\0\0\0\1\0\1"),
                              (struct.pack(">HHII", 0xA002, 4, 1, 3264),
                               struct.pack(">HHII", 0xA002, 4, 1, 2448)),
                              (struct.pack(">HHII", 0xA003, 4, 1, 2448),
                               struct.pack(">HHII", 0xA003, 4, 1, 3264)),
                              (struct.pack(">HHII", 0x0202, 4, 1, length(old)),
                               struct.pack(">HHII", 0x0202, 4, 1, length(new)))):
            self.assertEqual(expected.count(before), 1)
            expected = expected.replace(before, after)
        area = expected.index(struct.pack(">HHI", 0x9214, 3, 4))
        link = expected.index(struct.pack(">HHI", 0x8769, 4, 1)) + 8
        camera = len(b"Exif\0\0") + int.from_bytes(expected[link:link + 4], "big")
        count = int.from_bytes(expected[camera:camera + 2], "big")
        end = camera + 2 + 12 * count + 4
        expected[area:end] = expected[area + 12:end] + bytes(12)
        expected[camera:camera + 2] = struct.pack(">H", count - 1)
        self.assertEqual(new[:thumbnail], expected)

    def test_unusable_orientations_count_as_upright(self):
        rows = [bytes([1, 2, 3, 4, 5, 6])]
        for tags in (exif(0), exif(9), exif(65535), b"II*\0", b"II*\0\xff\xff\xff\xff", b"XX",
                     exif(6)[:30], b"II*\0\x08\0\0\0\xff\xff"):
            name = self.write("in.png", png(2, 1, 8, 2, rows, [chunk(b"eXIf", tags)]))
            self.copy(name, "out.ppm")
            self.assertEqual(ppm_rows(self.read("out.ppm")), [[(1, 2, 3), (4, 5, 6)]])


class JpegToJpeg(ToolTest):
    def test_every_block_of_real_photographs_is_kept(self):
        blocks = [(0xE1, b"Exif\0\0"), (0xE1, XMP_PREFIX), (0xED, b"Photoshop 3.0\0")]
        for name, sizes in (("metadata-exif-xmp-icc.jpg", FOR_ITS_REAL_SIZE),
                            ("rocket-night.jpg", ())):
            with open(photo(name), "rb") as file:
                before = file.read()
            for old, new in sizes:
                before = before.replace(old, new)
            self.copy(photo(name), "out.jpg")
            after = self.read("out.jpg")
            for marker, prefix in blocks:
                self.assertEqual(payloads(after, marker, prefix), payloads(before, marker, prefix))
            self.assertEqual(icc_of(jpeg_segments(after)), icc_of(jpeg_segments(before)))
            self.assertGreater(len(icc_of(jpeg_segments(after))), 500)

    def base(self):
        self.write("plain.ppm", ppm(speckled(20, 10)))
        self.copy("plain.ppm", "plain.jpg")
        return self.read("plain.jpg")

    def test_a_profile_in_several_segments_in_any_order(self):
        profile = icc(150_000)
        segments = icc_segments(profile, 40_000)
        self.write("in.jpg", with_segments(self.base(), [segments[i] for i in (2, 0, 3, 1)]))
        self.copy("in.jpg", "out.jpg")
        self.assertEqual(icc_of(jpeg_segments(self.read("out.jpg"))), profile)

    def test_a_profile_with_a_missing_segment_is_left_out_with_a_note(self):
        segments = icc_segments(icc(1000), 400)
        for broken in (segments[1:], segments[:2], segments + segments[:1],
                       [(0xE2, b"ICC_PROFILE\0")]):
            self.write("in.jpg", with_segments(self.base(), broken))
            result = self.run_tool("straighten", "in.jpg", "out.jpg", *ANEW)
            self.assertEqual(result.returncode, 0)
            self.assertIn("note: in.jpg: its colour profile is damaged", result.stderr)
            self.assertEqual(icc_of(jpeg_segments(self.read("out.jpg"))), b"")

    def test_long_packets_and_comments(self):
        extended = b"http://ns.adobe.com/xmp/extension/\0" + bytes(range(256)) * 200
        added = [(0xE1, b"Exif\0\0" + exif(1)), (0xE1, XMP_PREFIX + XMP), (0xE1, extended),
                 (0xED, b"Photoshop 3.0\0" + b"8BIM\x04\x04" + bytes(60_000)),
                 (0xED, b"Photoshop 3.0\0" + b"more"), (0xFE, b"A comment.")]
        self.write("in.jpg", with_segments(self.base(), added))
        self.copy("in.jpg", "out.jpg")
        kept = [segment for segment in jpeg_segments(self.read("out.jpg"))
                if segment[0] in (0xE1, 0xED, 0xFE)]
        self.assertEqual(kept, added)

    def test_resolution(self):
        base = self.base()
        for unit, x, y in ((1, 300, 240), (2, 118, 95), (0, 4, 3)):
            self.write("in.jpg", base[:13] + struct.pack(">BHH", unit, x, y) + base[18:])
            self.copy("in.jpg", "out.jpg")
            self.assertEqual(struct.unpack_from(">BHH", self.read("out.jpg"), 13), (unit, x, y))

    def test_grey_stays_grey_with_its_profile(self):
        profile = icc(600, b"GRAY")
        self.write("in.pgm", b"P5 3 2 255\n" + bytes([0, 50, 100, 150, 200, 250]))
        self.copy("in.pgm", "grey.jpg")
        self.write("in.jpg", with_segments(self.read("grey.jpg"), icc_segments(profile, 9000)))
        self.copy("in.jpg", "out.jpg")
        segments = jpeg_segments(self.read("out.jpg"))
        self.assertEqual([payload[5] for marker, payload in segments if marker == 0xC0], [1])
        self.assertEqual(icc_of(segments), profile)

    def test_a_profile_for_other_channels_is_left_out_with_a_note(self):
        self.write("in.jpg", with_segments(self.base(), icc_segments(icc(600, b"GRAY"), 9000)))
        result = self.run_tool("straighten", "in.jpg", "out.jpg", *ANEW)
        self.assertIn("note: out.jpg: its colour profile is for other channels", result.stderr)
        self.assertEqual(icc_of(jpeg_segments(self.read("out.jpg"))), b"")


class AcrossFormats(ToolTest):
    def test_jpeg_to_png_and_back(self):
        name = "metadata-exif-xmp-icc.jpg"
        with open(photo(name), "rb") as file:
            before = file.read()
        for old, new in FOR_ITS_REAL_SIZE:
            before = before.replace(old, new)
        self.copy(photo(name), "out.png")
        chunks = dict(png_chunks(self.read("out.png")))
        tags, = payloads(before, 0xE1, b"Exif\0\0")
        packet, = payloads(before, 0xE1, XMP_PREFIX)
        self.assertEqual(chunks[b"eXIf"], tags[6:])
        self.assertEqual(chunks[b"iTXt"],
                         b"XML:com.adobe.xmp\0\0\0\0\0" + packet[len(XMP_PREFIX):])
        compressed = chunks[b"iCCP"].split(b"\0", 1)[1][1:]
        self.assertEqual(zlib.decompress(compressed), icc_of(jpeg_segments(before)))

        self.copy("out.png", "back.jpg")
        after = self.read("back.jpg")
        self.assertEqual(payloads(after, 0xE1, b"Exif\0\0"), [tags])
        self.assertEqual(payloads(after, 0xE1, XMP_PREFIX), [packet])
        self.assertEqual(icc_of(jpeg_segments(after)), icc_of(jpeg_segments(before)))

    def test_what_a_jpeg_cannot_hold_is_left_out_with_a_note(self):
        packet = b"x" * 70_000
        text = chunk(b"iTXt", b"XML:com.adobe.xmp\0\0\0\0\0" + packet)
        self.write("in.png", png(1, 1, 8, 2, [b"\1\2\3"], [text]))
        result = self.run_tool("straighten", "in.png", "out.jpg", "--line", "0,0,0,0")
        self.assertEqual(result.returncode, 2)  # a line of one pixel is no line
        self.write("in.png", png(2, 1, 8, 2, [b"\1\2\3\4\5\6"], [text]))
        result = self.run_tool("straighten", "in.png", "out.jpg", "--line", "0,0,1,0")
        self.assertEqual(result.returncode, 0)
        self.assertIn("note: out.jpg: its XMP packet is too long for a JPEG", result.stderr)

    def test_what_has_no_place_in_another_format_is_left_out_with_a_note(self):
        for source, target, words in (
                ("courtyard-colour-cast.jpg", "out.png", "its IPTC block has no place in a PNG"),
                ("rocket-night.jpg", "out.ppm", "colour profile have no place in this format")):
            result = self.run_tool("straighten", photo(source), target, "--line", "0,0,1,0")
            self.assertEqual(result.returncode, 0)
            self.assertEqual(result.stderr.count("\n"), 1)
            self.assertIn(f"note: {target}: ", result.stderr)
            self.assertIn(words, result.stderr)
        self.write("in.png", png(2, 1, 8, 2, [bytes(6)], [chunk(b"tEXt", b"Title\0A title")]))
        result = self.run_tool("straighten", "in.png", "out.jpg", "--line", "0,0,1,0")
        self.assertIn("its PNG texts have no place in a JPEG", result.stderr)

    def test_png_to_png(self):
        profile = icc(5000)
        kept = {
            b"iCCP": b"camera\0\0" + zlib.compress(profile),
            b"eXIf": exif(1),
            b"pHYs": struct.pack(">IIB", 11811, 11811, 1),
            b"tEXt": b"Author\0Someone \xe9lse",
            b"iTXt": b"XML:com.adobe.xmp\0\0\0\0\0" + XMP,
        }
        rows = [b"\1\2\3\4\5\6"]
        self.write("in.png", png(2, 1, 8, 2, rows, [chunk(n, c) for n, c in kept.items()]))
        self.copy("in.png", "out.png")
        after = dict(png_chunks(self.read("out.png")))
        for name in (b"eXIf", b"pHYs", b"tEXt", b"iTXt"):
            self.assertEqual(after[name], kept[name])
        self.assertEqual(zlib.decompress(after[b"iCCP"].split(b"\0", 1)[1][1:]), profile)

    def test_what_the_numbers_mean(self):
        primaries = struct.pack(">8I", 31270, 32900, 64000, 33000, 21000, 71000, 15000, 6000)
        for meaning in ({b"gAMA": struct.pack(">I", 100000), b"cHRM": primaries},
                        {b"sRGB": b"\1"}):
            before = [chunk(name, content) for name, content in meaning.items()]
            self.write("in.png", png(2, 1, 8, 2, [b"\1\2\3\4\5\6"], before))
            self.copy("in.png", "out.png")
            after = dict(png_chunks(self.read("out.png")))
            self.assertLessEqual(meaning.items(), after.items())

    def test_a_malformed_profile_does_not_cost_the_picture(self):
        self.write("plain.ppm", ppm(speckled(20, 10)))
        self.copy("plain.ppm", "plain.jpg")
        broken = bytes(16) + b"RGB " + bytes(200)
        self.write("in.jpg", with_segments(self.read("plain.jpg"), icc_segments(broken, 9000)))
        result = self.run_tool("straighten", "in.jpg", "out.png", "--line", "0,0,1,0")
        self.assertEqual(result.returncode, 0)
        self.assertIn("note: out.png: its colour profile is malformed", result.stderr)
        self.assertNotIn(b"iCCP", dict(png_chunks(self.read("out.png"))))

    def test_a_damaged_profile_of_a_png_is_left_out_with_a_note(self):
        damaged = chunk(b"iCCP", b"name\0\0" + b"not compressed")
        self.write("in.png", png(2, 1, 8, 2, [bytes(6)], [damaged]))
        result = self.run_tool("straighten", "in.png", "out.png", *ANEW)
        self.assertEqual(result.returncode, 0)
        self.assertIn("note: in.png: its colour profile is damaged and is left out", result.stderr)

    def test_texts_are_kept_that_no_one_can_read(self):
        texts = [(b"tEXt", b"\0a"), (b"tEXt", b" \x80\0b"), (b"zTXt", b"Title\0\0not deflate"),
                 (b"iTXt", b"Title"), (b"tEXt", b"Title\0c")]
        self.write("in.png", png(2, 1, 8, 2, [bytes(6)], [chunk(*text) for text in texts]))
        self.copy("in.png", "out.png")
        self.assertEqual([found for found in png_chunks(self.read("out.png"))
                          if found[0].endswith(b"Xt")], texts)

    def test_every_block_is_written_once(self):
        blocks = [chunk(b"eXIf", exif(1)), chunk(b"pHYs", struct.pack(">IIB", 3000, 3000, 1)),
                  chunk(b"tEXt", b"Title\0A title"),
                  chunk(b"iTXt", b"XML:com.adobe.xmp\0\0\0\0\0" + XMP)]
        self.write("in.png", png(2, 1, 8, 2, [bytes(6)], blocks))
        self.copy("in.png", "out.png")
        names = [name for name, _ in png_chunks(self.read("out.png"))]
        self.assertEqual(sorted(names), sorted({b"IHDR", b"pHYs", b"eXIf", b"tEXt", b"iTXt",
                                                b"IDAT", b"IEND"}))

    def test_chunks_after_the_pixels_count_as_well(self):
        late = [chunk(b"eXIf", exif(3)), chunk(b"tEXt", b"Title\0Late")]
        self.write("in.png", png(2, 1, 8, 2, [b"\1\2\3\4\5\6"], after_pixels=late))
        self.copy("in.png", "out.png")
        after = dict(png_chunks(self.read("out.png")))
        self.assertEqual(after[b"eXIf"], exif(1))
        self.assertEqual(after[b"tEXt"], b"Title\0Late")
        self.copy("in.png", "out.ppm")
        self.assertEqual(ppm_rows(self.read("out.ppm")), [[(4, 5, 6), (1, 2, 3)]])


if __name__ == "__main__":
    unittest.main()
