"""TIFF, WebP and JPEG in four colours, which a build may lack."""

import ctypes
import os
import struct
import unittest

import exif_blocks as blocks
from exif_blocks import ASCII, LONG, RATIONAL, SHORT, UNDEFINED
from pictures import (TOOL, ToolTest, chunk, exif, jpeg_segments, plain, png, png_chunks, ppm,
                      ppm_rows, speckled, with_segments)
from test_nonsense import CMYK_JPEG, FAILED

LEVEL = ("--line", "0,0,1,0", "--background", "black")


def tiff(order, width, height, depth, samples, photometric, pixels, more=(), packing=1):
    """One strip behind the directory, whose values come first."""
    def entries(place):
        return sorted([
            (0x0100, SHORT, 1, struct.pack(order + "H", width)),
            (0x0101, SHORT, 1, struct.pack(order + "H", height)),
            (0x0102, SHORT, samples, struct.pack(order + "H", depth) * samples),
            (0x0103, SHORT, 1, struct.pack(order + "H", packing)),
            (0x0106, SHORT, 1, struct.pack(order + "H", photometric)),
            (0x0111, LONG, 1, struct.pack(order + "I", place)),
            (0x0115, SHORT, 1, struct.pack(order + "H", samples)),
            (0x0116, SHORT, 1, struct.pack(order + "H", height)),
            (0x0117, LONG, 1, struct.pack(order + "I", len(pixels))), *more])
    place = 8 + len(blocks.directory(order, 8, entries(0)))
    return blocks.head(order) + blocks.directory(order, 8, entries(place)) + pixels


class Formats(ToolTest):
    library = ""

    def setUp(self):
        super().setUp()
        if self.library not in self.succeed("--version").split("; without")[0]:
            self.skipTest("built without " + self.library)

    def notes(self, source, target, *options):
        result = self.run_tool("straighten", source, target, *LEVEL, *options)
        self.assertEqual(result.returncode, 0, result.stderr)
        return result.stderr


class Tiff(Formats):
    library = "libtiff"

    def test_sixteen_bits_are_rounded_with_a_note(self):
        values = (0, 128, 129, 257 * 99, 257 * 99 + 129, 65535)
        for order in "<>":
            self.write("in.tif", tiff(order, 2, 1, 16, 3, 2, struct.pack(order + "6H", *values)))
            self.assertEqual(self.notes("in.tif", "out.ppm"),
                             "roxe: note: in.tif: its 16 bits a channel are rounded to 8\n")
            self.assertEqual(ppm_rows(self.read("out.ppm")), [[(0, 0, 1), (99, 100, 255)]])

    def test_every_orientation(self):
        stored = speckled(7, 5)
        pixels = bytes(channel for row in stored for pixel in row for channel in pixel)
        for orientation in range(1, 9):
            self.write("in.tif", tiff("<", 7, 5, 8, 3, 2, pixels,
                                      [(0x0112, SHORT, 1, struct.pack("<H", orientation))]))
            self.notes("in.tif", "out.ppm")
            # As a PNG with the same tag is turned.
            rows = [pixels[i:i + 21] for i in range(0, len(pixels), 21)]
            self.write("in.png", png(7, 5, 8, 2, rows, [chunk(b"eXIf", exif(orientation))]))
            self.notes("in.png", "expected.ppm")
            self.assertEqual(self.read("out.ppm"), self.read("expected.ppm"), orientation)

    def test_grey_and_transparency(self):
        self.write("in.tif", tiff("<", 3, 1, 8, 1, 0, bytes([0, 55, 255])))  # 0 is white
        self.notes("in.tif", "out.pgm")
        self.assertTrue(self.read("out.pgm").endswith(bytes([255, 200, 0])))
        self.write("in.tif", tiff("<", 2, 1, 8, 4, 2, bytes([200, 100, 50, 255, 200, 100, 50, 0]),
                                  [(0x0152, SHORT, 1, struct.pack("<H", 2))]))
        result = self.run_tool("straighten", "in.tif", "out.ppm", "--line", "0,0,1,0",
                               "--background", "#102030")
        self.assertIn("its transparency is replaced by the background", result.stderr)
        self.assertEqual(ppm_rows(self.read("out.ppm")), [[(200, 100, 50), (16, 32, 48)]])

    def test_what_travels(self):
        packet, profile = b"<x/>", bytes(16) + b"RGB " + bytes(20) + b"acsp" + bytes(100)
        self.write("in.tif", tiff("<", 2, 1, 8, 3, 2, bytes(6), [
            (0x010F, ASCII, 6, b"Maker\0"), (0x0110, ASCII, 3, b"M1\0"),
            (0x011A, RATIONAL, 1, struct.pack("<II", 300, 1)),
            (0x011B, RATIONAL, 1, struct.pack("<II", 240, 1)),
            (0x0132, ASCII, 20, b"2026:01:02 03:04:05\0"),
            (0x02BC, 1, len(packet), packet),
            (0x8773, UNDEFINED, len(profile), profile)]))
        self.notes("in.tif", "out.jpg")
        segments = jpeg_segments(self.read("out.jpg"))
        block, = [payload[6:] for _, payload in segments if payload.startswith(b"Exif\0\0")]
        entries, _ = blocks.entries_of(block, 8)
        self.assertEqual(entries, {
            0x010F: (ASCII, 6, b"Maker\0"), 0x0110: (ASCII, 3, b"M1\0"),
            0x0112: (SHORT, 1, b"\1\0"), 0x0132: (ASCII, 20, b"2026:01:02 03:04:05\0")})
        self.assertIn((0xE1, b"http://ns.adobe.com/xap/1.0/\0" + packet), segments)
        self.assertIn((0xE2, b"ICC_PROFILE\0\1\1" + profile), segments)
        self.assertEqual(struct.unpack_from(">BHH", self.read("out.jpg"), 13), (1, 300, 240))

    def test_what_is_no_picture_for_editing(self):
        small = (0x00FE, LONG, 1, struct.pack("<I", 1))
        for content, words in (
                (tiff("<", 2, 1, 8, 3, 2, bytes(6), [small]), "is a raw picture"),
                (tiff("<", 2, 1, 8, 3, 2, bytes(6), [(0xC612, 1, 4, b"\1\4\0\0")]), "is a raw"),
                (tiff("<", 2, 1, 8, 4, 5, bytes(8)), "a CMYK TIFF cannot be edited"),
                (tiff("<", 2, 1, 8, 3, 8, bytes(6)), "a CIELab TIFF cannot be edited"),
                (tiff("<", 2, 1, 8, 3, 2, bytes(6))[:-3], "the TIFF is damaged"),
                (tiff("<", 15600, 15600, 8, 3, 2, bytes(6), packing=5), "(the file ends early)"),
                (tiff("<", 60000, 60000, 8, 3, 2, bytes(6)), "above the limit of 250")):
            self.write("in.tif", content)
            result = self.run_tool("straighten", "in.tif", "out.ppm", *LEVEL)
            self.assertEqual((result.returncode, words in result.stderr), (1, True), result.stderr)


class WebP(Formats):
    library = "libwebp"

    def lossless(self, rows, alpha=None):
        """Written by libwebp, not by the tool."""
        library = ctypes.CDLL("libwebp.so.7")
        pixels = bytes(channel for row in rows for pixel in row for channel in pixel)
        output = ctypes.POINTER(ctypes.c_uint8)()
        channels = len(rows[0][0])
        encode = library.WebPEncodeLosslessRGB if channels == 3 else library.WebPEncodeLosslessRGBA
        encode.restype = ctypes.c_size_t
        size = encode(pixels, len(rows[0]), len(rows), channels * len(rows[0]), ctypes.byref(output))
        return bytes(output[:size])

    def chunks(self, name):
        content = self.read(name)
        self.assertEqual((content[:4], content[8:12]), (b"RIFF", b"WEBP"))
        found, position = {}, 12
        while position < len(content):
            size, = struct.unpack_from("<I", content, position + 4)
            found[content[position:position + 4]] = content[position + 8:position + 8 + size]
            position += 8 + size + size % 2
        return found

    def test_lossless_stays_lossless(self):
        rows = speckled(33, 21)
        self.write("in.webp", self.lossless(rows))
        self.notes("in.webp", "out.ppm")
        self.assertEqual(ppm_rows(self.read("out.ppm")), rows)
        self.notes("in.webp", "out.webp")
        self.assertIn(b"VP8L", self.chunks("out.webp"))
        self.notes("out.webp", "out.ppm")
        self.assertEqual(ppm_rows(self.read("out.ppm")), rows)
        self.notes("in.webp", "out.webp", "--quality", "80")
        self.assertIn(b"VP8 ", self.chunks("out.webp"))
        self.notes("out.ppm", "out.dat", "--format", "webp")
        self.assertIn(b"VP8 ", self.chunks("out.dat"))

    def test_colours_and_blocks(self):
        profile = bytes(16) + b"RGB " + bytes(20) + b"acsp" + bytes(100)
        packet = b"<d tiff:Orientation='6'/>"
        self.write("base.ppm", ppm(plain(40, 30, (200, 100, 50))))
        self.copy("base.ppm", "base.jpg")
        self.write("in.jpg", with_segments(self.read("base.jpg"), [
            (0xE1, b"Exif\0\0" + exif(6)), (0xE1, b"http://ns.adobe.com/xap/1.0/\0" + packet),
            (0xE2, b"ICC_PROFILE\0\1\1" + profile), (0xE4, b"four"), (0xFE, b"text")]))
        notes = self.notes("in.jpg", "out.webp")
        self.assertIn("its segments APP4 have no place in a WebP", notes)
        self.assertIn("its JPEG comments have no place in a WebP", notes)
        chunks = self.chunks("out.webp")
        self.assertEqual((chunks[b"EXIF"], chunks[b"XMP "], chunks[b"ICCP"]),
                         (exif(1), packet.replace(b"6", b"1"), profile))
        self.notes("out.webp", "out.ppm")
        rows = ppm_rows(self.read("out.ppm"))
        self.assertEqual((len(rows[0]), len(rows)), (30, 40))
        for a, b in zip(rows[20][15], (200, 100, 50)):
            self.assertLess(abs(a - b), 4)
        self.notes("out.webp", "out.png")
        self.assertEqual(dict(png_chunks(self.read("out.png")))[b"eXIf"], exif(1))

    def test_the_prefix_of_a_jpeg_before_exif(self):
        self.write("base.png", png(40, 30, 8, 2, [bytes(120)] * 30, [chunk(b"eXIf", exif(1))]))
        self.notes("base.png", "base.webp")
        old = b"EXIF" + struct.pack("<I", len(exif(1))) + exif(1)
        before, after = self.read("base.webp").split(old)
        for count in (1, 2):
            block = b"Exif\0\0" * count + exif(6)
            content = before + b"EXIF" + struct.pack("<I", len(block)) + block + after
            self.write("in.webp", content[:4] + struct.pack("<I", len(content) - 8) + content[8:])
            self.notes("in.webp", "out.webp")
            self.assertEqual(self.chunks("out.webp")[b"EXIF"], exif(1))
            self.notes("out.webp", "out.ppm")
            rows = ppm_rows(self.read("out.ppm"))
            self.assertEqual((len(rows[0]), len(rows)), (30, 40))

    def test_transparency_shows_the_background(self):
        self.write("in.webp", self.lossless([[(200, 100, 50, 255), (200, 100, 50, 0)]]))
        result = self.run_tool("straighten", "in.webp", "out.ppm", "--line", "0,0,1,0",
                               "--background", "#102030")
        self.assertIn("its transparency is replaced by the background", result.stderr)
        self.assertEqual(ppm_rows(self.read("out.ppm")), [[(200, 100, 50), (16, 32, 48)]])

    def test_refusals(self):
        whole = self.lossless(speckled(33, 21))
        for content in (whole[:-20], whole[:30]):
            self.write("in.webp", content)
            result = self.run_tool("straighten", "in.webp", "out.ppm", *LEVEL)
            self.assertIn("the WebP is damaged or incomplete", result.stderr)
        self.write("wide.ppm", ppm(plain(16384, 1, (1, 2, 3))))
        result = self.run_tool("straighten", "wide.ppm", "out.webp", *LEVEL)
        self.assertIn("only 16383 a side", result.stderr)


class FourColours(Formats):
    library = "lcms2"

    @staticmethod
    def profile():
        """Inks to grey: black alone to L* 50, none to white, any other two or more to black."""
        def lightness(c, m, y, k):
            return 255 if c + m + y + k == 0 else 128 if k and not c + m + y else 0
        grid = bytes(value for c in (0, 1) for m in (0, 1) for y in (0, 1) for k in (0, 1)
                     for value in (lightness(c, m, y, k), 128, 128))
        ramp = bytes(range(256))
        identity = struct.pack(">9i", 65536, 0, 0, 0, 65536, 0, 0, 0, 65536)
        table = b"mft1" + bytes(4) + bytes([4, 3, 2, 0]) + identity + ramp * 4 + grid + ramp * 3
        tags = struct.pack(">I4sII", 1, b"A2B0", 144, len(table))
        head = struct.pack(">I4sI4s4s4s12s4s", 144 + len(table), bytes(4), 0x02400000, b"prtr",
                           b"CMYK", b"Lab ", bytes(12), b"acsp").ljust(68, b"\0")
        return (head + struct.pack(">3i", 0xF6D6, 0x10000, 0xD32D)).ljust(128, b"\0") + tags + table

    def test_through_the_profile(self):
        segment = b"ICC_PROFILE\0\1\1" + self.profile()
        self.write("in.jpg", with_segments(CMYK_JPEG, [(0xE2, segment)]))
        self.assertIn("note: in.jpg: its CMYK pixels are turned into sRGB through its profile",
                      self.notes("in.jpg", "out.ppm"))
        rows = ppm_rows(self.read("out.ppm"))
        self.assertEqual((len(rows), len(rows[0])), (8, 8))
        self.assertEqual(len({pixel for row in rows for pixel in row}), 1)
        red, green, blue = rows[0][0]
        self.assertLess(max(red, green, blue) - min(red, green, blue), 4)
        self.assertEqual((red > 5, red < 250), (True, True))
        self.notes("in.jpg", "out.jpg")
        self.assertNotIn(0xE2, [marker for marker, _ in jpeg_segments(self.read("out.jpg"))])

    def test_a_profile_for_other_channels_does_not_help(self):
        profile = self.profile().replace(b"CMYK", b"RGB ")
        self.write("in.jpg", with_segments(CMYK_JPEG, [(0xE2, b"ICC_PROFILE\0\1\1" + profile)]))
        result = self.run_tool("straighten", "in.jpg", "out.ppm", *LEVEL)
        self.assertIn("a CMYK JPEG cannot be edited", result.stderr)


class Without(ToolTest):
    """The tool as a build has it that lacks these libraries says so and refuses with a sentence."""

    def setUp(self):
        super().setUp()
        if "ROXE_WITHOUT" not in os.environ:
            self.skipTest("ROXE_WITHOUT names no such tool")
        self.tool = {"executable": os.environ["ROXE_WITHOUT"]}

    def test_what_it_lacks(self):
        self.assertEqual(self.run_tool("--version", **self.tool).stdout.split(", with ")[1],
                         "libjpeg, libpng; without libtiff (TIFF), libwebp (WebP), lcms2 (CMYK)\n")

    def test_refusals(self):
        self.write("in.ppm", ppm(speckled(8, 6)))
        for content, words in (
                (tiff("<", 2, 1, 8, 3, 2, bytes(6)), "is a TIFF or raw picture, and this roxe was "
                 "built without libtiff"),
                (b"RIFF\x1a\0\0\0WEBPVP8L\x0d\0\0\0", "is a WebP picture, and this roxe was built "
                 "without libwebp"),
                (CMYK_JPEG, "a CMYK JPEG cannot be edited, as this roxe was built without lcms2")):
            self.write("in", content)
            self.refuse(FAILED, "in: " + words, "rotate", "in", "out.png", "--angle", 3, **self.tool)
        self.refuse(FAILED, "out.webp: a WebP cannot be written, as this roxe was built without "
                    "libwebp", "rotate", "in.ppm", "out.webp", "--angle", 3, **self.tool)
        result = self.run_tool("rotate", "in.ppm", "out.png", "--angle", 3, **self.tool)
        self.assertEqual(result.returncode, 0, result.stderr)


if __name__ == "__main__":
    unittest.main()
