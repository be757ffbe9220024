"""What an edit renews: thumbnails, sizes, orientations and resolutions that would be wrong now."""

import struct
import unittest
import zlib

import exif_blocks as blocks
from exif_blocks import ASCII, BYTE, LONG, RATIONAL, SHORT, SLONG, UNDEFINED
from pictures import (ToolTest, chunk, jpeg_segments, plain, png, png_chunks, ppm, ppm_rows,
                      speckled, with_segments)

XMP_PREFIX = b"http://ns.adobe.com/xap/1.0/\0"
LEVEL = ("--line", "0,0,1,0", "--background", "black")  # written anew, not copied
# A maker's note with a position of its own, from the start of the block.
MAKER_NOTE = b"MAKER\0\0\0" + bytes(range(200))


class Blocks(ToolTest):
    def base(self, width=60, height=40):
        self.write("base.ppm", ppm(speckled(width, height)))
        self.copy("base.ppm", "base.jpg")
        return self.read("base.jpg")

    def with_block(self, block, base=None):
        self.write("in.jpg", with_segments(base or self.base(), [(0xE1, b"Exif\0\0" + block)]))

    def block_of(self, name):
        block, = [payload[6:] for marker, payload in jpeg_segments(self.read(name))
                  if marker == 0xE1 and payload.startswith(b"Exif\0\0")]
        return block


class Thumbnails(Blocks):
    def old_thumbnail(self):
        self.write("old.ppm", ppm(speckled(80, 60)))
        self.copy("old.ppm", "old.jpg")
        return self.read("old.jpg")

    def block(self, order, thumbnail, tail=b"", orientation=1):
        """Camera with sizes and a maker's note, then the thumbnail, then more bytes."""
        first = 8
        second = first + 2 + 2 * 12 + 4
        camera = [(0x927C, UNDEFINED, len(MAKER_NOTE), MAKER_NOTE),
                  (0xA002, SHORT, 1, struct.pack(order + "H", 4000)),
                  (0xA003, LONG, 1, struct.pack(order + "I", 3000))]
        camera_bytes = blocks.directory(order, second, camera)
        third = second + len(camera_bytes)
        place = third + 2 + 4 * 12 + 4
        preview = [(0x0103, SHORT, 1, struct.pack(order + "H", 6)),
                   (0x0112, SHORT, 1, struct.pack(order + "H", orientation)),
                   (0x0201, LONG, 1, struct.pack(order + "I", place)),
                   (0x0202, LONG, 1, struct.pack(order + "I", len(thumbnail)))]
        return (blocks.head(order) + blocks.directory(order, first, [
                    (0x0112, SHORT, 1, struct.pack(order + "H", orientation)),
                    (0x8769, LONG, 1, struct.pack(order + "I", second))], third) +
                camera_bytes + blocks.directory(order, third, preview) + thumbnail + tail), place

    def thumbnail_of(self, block):
        _, following = blocks.entries_of(block, blocks.first(block))
        entries, _ = blocks.entries_of(block, following)
        place, = blocks.numbers(block, entries[0x0201])
        length, = blocks.numbers(block, entries[0x0202])
        self.write("thumbnail.jpg", block[place:place + length])
        self.copy("thumbnail.jpg", "thumbnail.ppm")
        return ppm_rows(self.read("thumbnail.ppm"))

    def test_it_shows_the_result(self):
        old = self.old_thumbnail()
        for order in "<>":
            for tail in (b"", bytes(range(1, 100))):
                block, place = self.block(order, old, tail)
                self.with_block(block)
                self.succeed("warp", "in.jpg", "out.jpg", "--from", "0,0,10,0,10,10,0,10", "--to",
                             "0,0,319,0,319,199,0,199", "--size", "320x200", "--background", "red")
                new = self.block_of("out.jpg")
                self.assertEqual(new[:8], block[:8])
                self.assertIn(MAKER_NOTE, new)
                self.assertEqual(new.index(MAKER_NOTE), block.index(MAKER_NOTE))
                self.assertEqual(new[len(new) - len(tail):], tail)
                if tail:
                    self.assertEqual(len(new), len(block))
                self.assertNotIn(old[200:], new)  # the old one is gone, not only out of reach
                rows = self.thumbnail_of(new)
                self.assertEqual((len(rows[0]), len(rows)), (160, 100))

    def test_its_colours_are_those_of_the_result(self):
        quarters = [[(250, 10, 10)] * 160 + [(10, 250, 10)] * 160] * 100 + [
            [(10, 10, 250)] * 160 + [(250, 250, 250)] * 160] * 100
        self.write("base.ppm", ppm(quarters))
        self.copy("base.ppm", "base.jpg")
        block, _ = self.block(">", self.old_thumbnail(), orientation=6)
        self.with_block(block, self.read("base.jpg"))
        self.copy("in.jpg", "out.jpg")
        rows = self.thumbnail_of(self.block_of("out.jpg"))
        self.assertEqual((len(rows[0]), len(rows)), (100, 160))
        # Turned clockwise: what was at the bottom left is at the top left.
        for x, y, expected in ((20, 30, (10, 10, 250)), (80, 30, (250, 10, 10)),
                               (20, 130, (250, 250, 250)), (80, 130, (10, 250, 10))):
            for a, b in zip(rows[y][x], expected):
                self.assertLess(abs(a - b), 12)
        entries, following = blocks.entries_of(self.block_of("out.jpg"), 8)
        self.assertEqual(blocks.entries_of(self.block_of("out.jpg"), following)[0][0x0112][2],
                         b"\0\1")

    def test_it_grows_at_the_end_of_the_block_only(self):
        tiny = self.old_thumbnail()[:40]
        block, place = self.block("<", tiny)
        self.with_block(block, self.base(400, 300))
        self.copy("in.jpg", "out.jpg")
        new = self.block_of("out.jpg")
        self.assertGreater(len(new), len(block))
        self.assertEqual(len(self.thumbnail_of(new)), 120)
        block, place = self.block("<", tiny, b"behind it")
        self.with_block(block, self.base(400, 300))
        result = self.run_tool("straighten", "in.jpg", "out.jpg", *LEVEL)
        self.assertIn("note: out.jpg: its EXIF thumbnail, of the picture as it was, is left out",
                      result.stderr)
        new = self.block_of("out.jpg")
        self.assertEqual(len(new), len(block))
        self.assertEqual(blocks.entries_of(new, 8)[1], 0)  # no directory of a thumbnail
        self.assertNotIn(tiny, new)

    def test_pixels_without_compression_become_a_jpeg(self):
        order = "<"
        pixels = bytes(range(256)) * 57  # 80 × 60 pixels, nearly
        fields = 9
        second = 8 + 2 + 12 + 4
        place = second + 2 + 12 * fields + 4
        preview = [(0x0100, SHORT, 1, b"\x50\0"), (0x0101, SHORT, 1, b"\x3c\0"),
                   (0x0103, SHORT, 1, b"\1\0"), (0x0106, SHORT, 1, b"\2\0"),
                   (0x0111, LONG, 1, struct.pack("<I", place)), (0x0115, SHORT, 1, b"\3\0"),
                   (0x0116, SHORT, 1, b"\x3c\0"),
                   (0x0117, LONG, 1, struct.pack("<I", len(pixels))),
                   (0x0128, SHORT, 1, b"\2\0")]
        block = (blocks.head(order) +
                 blocks.directory(order, 8, [(0x0112, SHORT, 1, b"\1\0")], second) +
                 blocks.directory(order, second, preview) + pixels)
        self.with_block(block, self.base(400, 200))
        self.copy("in.jpg", "out.jpg")
        new = self.block_of("out.jpg")
        entries, following = blocks.entries_of(new, second)
        self.assertEqual(list(entries), [0x0103, 0x0128, 0x0201, 0x0202])
        self.assertEqual((entries[0x0103], following), ((SHORT, 1, b"\6\0")
                         if entries[0x0103][0] == SHORT else (LONG, 1, b"\6\0\0\0"), 0))
        self.assertEqual(len(self.thumbnail_of(new)), 80)

    def test_no_thumbnail_appears_where_there_was_none(self):
        block = blocks.head("<") + blocks.directory("<", 8, [(0x0112, SHORT, 1, b"\1\0")])
        self.with_block(block)
        self.copy("in.jpg", "out.jpg")
        self.assertEqual(self.block_of("out.jpg"), block)

    def test_malformed_directories_cost_nothing(self):
        block, place = self.block("<", self.old_thumbnail())
        for at in range(8, place, 3):
            for value in (0, 255):
                broken = bytearray(block)
                broken[at] = value
                self.with_block(bytes(broken))
                if at % 7 == 0:  # all of them in turn would take long
                    self.copy("in.jpg", "out.jpg")

    def test_the_thumbnail_among_the_resources_is_dropped(self):
        def resource(kind, name, content):
            return (b"8BIM" + struct.pack(">H", kind) + bytes([len(name)]) + name +
                    b"\0" * ((len(name) + 1) % 2) + struct.pack(">I", len(content)) + content +
                    b"\0" * (len(content) % 2))
        iptc, path = resource(0x0404, b"", b"\x1c\2\5\0\3abc"), resource(2000, b"clip", b"12345")
        old = [resource(kind, b"", bytes(range(256)) * 40) for kind in (0x040C, 0x0409)]
        prefix = b"Photoshop 3.0\0"
        self.write("in.jpg", with_segments(self.base(), [
            (0xED, prefix + iptc + old[0][:5000]), (0xED, prefix + old[0][5000:] + old[1] + path)]))
        self.copy("in.jpg", "out.jpg")
        self.assertEqual([payload for marker, payload in jpeg_segments(self.read("out.jpg"))
                          if marker == 0xED], [prefix + iptc + path])

    def test_previews_that_stay_are_named(self):
        hidden = b"MAKER\0" + b"\xff\xd8\xff\xdb" + bytes(50)
        block = blocks.head("<") + blocks.directory("<", 8, [(0x927C, UNDEFINED, len(hidden), hidden)])
        self.with_block(block)
        result = self.run_tool("straighten", "in.jpg", "out.jpg", *LEVEL)
        self.assertIn("note: out.jpg: among its maker's notes stays a preview", result.stderr)
        packet = b"<x xmpGImg:image='/9j/'/>"
        self.write("in.jpg", with_segments(self.base(), [(0xE1, XMP_PREFIX + packet)]))
        result = self.run_tool("straighten", "in.jpg", "out.jpg", *LEVEL)
        self.assertIn("note: out.jpg: in its XMP packet stays a thumbnail", result.stderr)


class Sizes(Blocks):
    def test_where_they_are_given(self):
        camera = [(0xA002, SHORT, 1, struct.pack(">H", 1)), (0xA003, LONG, 1, struct.pack(">I", 2))]
        second = 8 + 2 + 3 * 12 + 4
        block = (blocks.head(">") + blocks.directory(">", 8, [
            (0x0100, SHORT, 1, struct.pack(">H", 3)), (0x0101, SHORT, 1, struct.pack(">H", 4)),
            (0x8769, LONG, 1, struct.pack(">I", second))]) + blocks.directory(">", second, camera))
        self.with_block(block)
        self.copy("in.jpg", "out.jpg")
        new = self.block_of("out.jpg")
        first, _ = blocks.entries_of(new, 8)
        camera, _ = blocks.entries_of(new, second)
        self.assertEqual([blocks.numbers(new, field) for field in (
            first[0x0100], first[0x0101], camera[0xA002], camera[0xA003])], [[60], [40], [60], [40]])

    def test_a_short_number_becomes_a_long_one(self):
        block = blocks.head("<") + blocks.directory("<", 8, [(0x0100, SHORT, 1, b"\1\0")])
        self.write("in.png", png(70_000, 1, 8, 0, [bytes(70_000)], [chunk(b"eXIf", block)]))
        self.copy("in.png", "out.png")
        new = dict(png_chunks(self.read("out.png")))[b"eXIf"]
        self.assertEqual(blocks.entries_of(new, 8)[0][0x0100],
                         (LONG, 1, struct.pack("<I", 70_000)))

    def packet_of(self, name):
        packet, = [payload[len(XMP_PREFIX):] for marker, payload in jpeg_segments(self.read(name))
                   if marker == 0xE1 and payload.startswith(XMP_PREFIX)]
        return packet.decode()

    def test_of_the_packet(self):
        """The result has 60 × 40 pixels, whatever stood there."""
        exif = "xmlns:{}='http://ns.adobe.com/exif/1.0/'"
        for before, after in (
                ("<d exif:PixelXDimension='4000' exif:PixelYDimension=\"3\" tiff:ImageWidth='4000'/>",
                 "<d exif:PixelXDimension='60' exif:PixelYDimension=\"40\" tiff:ImageWidth='60'/>"),
                ("<d><tiff:ImageWidth> 9\n</tiff:ImageWidth><tiff:ImageLength>300</tiff:ImageLength></d>",
                 "<d><tiff:ImageWidth> 60\n</tiff:ImageWidth><tiff:ImageLength>40</tiff:ImageLength></d>"),
                (f"<d {exif.format('e')} e:PixelXDimension='7' u:PixelXDimension='7'/>",
                 f"<d {exif.format('e')} e:PixelXDimension='60' u:PixelXDimension='7'/>"),
                # What says so already, and what is no number.
                ("<d tiff:ImageWidth='060' tiff:ImageLength='-1'/>", None),
                ("<d tiff:ImageWidth='' tiff:ImageLength='3 4'/><tiff:ImageWidth/>", None),
                ("<d tiff:PixelXDimension='7' exif:ImageWidth='7'/>", None),
                ("<tiff:ImageWidth", None), ("<tiff:ImageWidth>6", None), ("<tiff:ImageWidth='6", None)):
            self.write("in.jpg", with_segments(self.base(), [(0xE1, XMP_PREFIX + before.encode())]))
            self.copy("in.jpg", "out.jpg")
            self.assertEqual(self.packet_of("out.jpg"), after or before)
        # A packet of a million sizes takes a second and not a day.
        packet = b"<d" + b" tiff:ImageWidth='1'" * 1_000_000 + b"/>"
        text = b"XML:com.adobe.xmp\0\0\0\0\0"
        self.write("in.png", png(2, 1, 8, 2, [b"\1\2\3\4\5\6"], [chunk(b"iTXt", text + packet)]))
        self.copy("in.png", "out.png")
        self.assertEqual(dict(png_chunks(self.read("out.png")))[b"iTXt"],
                         text + packet.replace(b"'1'", b"'2'"))
        packet = b"<d exif:PixelXDimension='60' exif:PixelYDimension='40'/>"
        self.write("in.jpg", with_segments(self.base(), [(0xE1, XMP_PREFIX + packet)]))
        self.succeed("rotate", "in.jpg", "out.jpg", "--angle", 90)
        self.assertEqual(self.packet_of("out.jpg"),
                         "<d exif:PixelXDimension='40' exif:PixelYDimension='60'/>")


class Orientations(Blocks):
    def test_any_integer_type_and_count(self):
        for order in "<>":
            for kind, letter in ((BYTE, "B"), (SHORT, "H"), (LONG, "I"), (6, "b"), (8, "h"),
                                 (SLONG, "i")):
                for count in (1, 3):
                    value = struct.pack(order + letter * count, *[3, 7, 7][:count])
                    upright = struct.pack(order + letter * count, *[1, 7, 7][:count])
                    entries = [(0x0112, kind, count, value)]
                    block = blocks.head(order) + blocks.directory(order, 8, entries)
                    self.write("in.png", png(2, 1, 8, 2, [b"\1\2\3\4\5\6"], [chunk(b"eXIf", block)]))
                    self.copy("in.png", "out.png")
                    new = dict(png_chunks(self.read("out.png")))[b"eXIf"]
                    self.assertEqual(blocks.entries_of(new, 8)[0][0x0112], (kind, count, upright))
                    self.copy("out.png", "out.ppm")
                    self.assertEqual(ppm_rows(self.read("out.ppm")), [[(4, 5, 6), (1, 2, 3)]])

    def test_of_the_packet(self):
        space = "xmlns:{}='http://ns.adobe.com/tiff/1.0/'"
        for before, after in (
                ("<d tiff:Orientation=\"6\" x:Orientation='6'/>",
                 "<d tiff:Orientation=\"1\" x:Orientation='6'/>"),
                ("<d tiff:Orientation = '8'>é</d>", "<d tiff:Orientation = '1'>é</d>"),
                ("<d><tiff:Orientation>3</tiff:Orientation></d>",
                 "<d><tiff:Orientation>1</tiff:Orientation></d>"),
                ("<d><tiff:Orientation\n> 7 </tiff:Orientation></d>",
                 "<d><tiff:Orientation\n> 1 </tiff:Orientation></d>"),
                (f"<d {space.format('t')} t:Orientation='5' u:Orientation='5'/>",
                 f"<d {space.format('t')} t:Orientation='1' u:Orientation='5'/>"),
                ("<d tiff:Orientation=''/><tiff:Orientation/>", None),
                ("<tiff:Orientation", None), ("<tiff:Orientation>6", None),
                ("<tiff:Orientation='6", None), ("tiff:Orientation='6'", None)):
            packet = before.encode()
            self.write("in.jpg", with_segments(self.base(), [(0xE1, XMP_PREFIX + packet)]))
            self.copy("in.jpg", "out.jpg")
            new, = [payload for marker, payload in jpeg_segments(self.read("out.jpg"))
                    if marker == 0xE1]
            self.assertEqual(new[len(XMP_PREFIX):], (after or before).encode())


class Resolutions(Blocks):
    def test_they_change_places_with_the_axes(self):
        def block(x, y, orientation):
            return blocks.head("<") + blocks.directory("<", 8, [
                (0x0112, SHORT, 1, struct.pack("<H", orientation)),
                (0x011A, RATIONAL, 1, struct.pack("<II", x, 1)),
                (0x011B, RATIONAL, 1, struct.pack("<II", y, 1))])
        for orientation in range(1, 9):
            base = self.base()
            base = base[:13] + struct.pack(">BHH", 1, 300, 240) + base[18:]
            self.with_block(block(300, 240, orientation), base)
            # JFIF comes first, as it must.
            content = self.read("in.jpg")
            at = content.index(b"\xff\xe0")
            segment = content[at:at + 18]
            self.write("in.jpg", content[:2] + segment + content[2:at] + content[at + 18:])
            self.copy("in.jpg", "out.jpg")
            x, y = (240, 300) if orientation >= 5 else (300, 240)
            self.assertEqual(struct.unpack_from(">BHH", self.read("out.jpg"), 13), (1, x, y))
            entries, _ = blocks.entries_of(self.block_of("out.jpg"), 8)
            self.assertEqual((entries[0x011A][2], entries[0x011B][2]),
                             (struct.pack("<II", x, 1), struct.pack("<II", y, 1)))
            self.copy("in.jpg", "out.png")
            per_metre = [round(value / 0.0254) for value in (x, y)]
            self.assertEqual(struct.unpack(">IIB", dict(png_chunks(self.read("out.png")))[b"pHYs"]),
                             (*per_metre, 1))


    def test_those_of_the_packet_too(self):
        for before, after in (
                ("<d tiff:XResolution='300/1' tiff:YResolution='72/1'/>",
                 "<d tiff:XResolution='72/1' tiff:YResolution='300/1'/>"),
                ("<tiff:XResolution>72/1</tiff:XResolution><d tiff:YResolution='3000/10'/>",
                 "<tiff:XResolution>3000/10</tiff:XResolution><d tiff:YResolution='72/1'/>"),
                ("<d tiff:XResolution='300/1'/>", None),
                ("<d tiff:XResolution='300/1' tiff:YResolution='300/1'/>", None)):
            packet = before.encode()
            self.write("in.jpg", with_segments(self.base(), [(0xE1, XMP_PREFIX + packet)]))
            for angle, expected in ((90, after or before), (180, before)):
                self.succeed("rotate", "in.jpg", "out.jpg", "--angle", angle)
                new, = [payload for marker, payload in jpeg_segments(self.read("out.jpg"))
                        if marker == 0xE1]
                self.assertEqual(new[len(XMP_PREFIX):], expected.encode())


class Places(Blocks):
    def test_on_a_canvas(self):
        """A cut picture may know where it lay. It lies elsewhere once its pixels have moved."""
        rows = [bytes(range(12)), bytes(range(12))]
        canvas = [(b"oFFs", struct.pack(">iiB", 10, 5, 0)),
                  (b"caNv", struct.pack(">IIii", 60, 40, 10, 5)), (b"vpAg", struct.pack(">IIB", 60, 40, 0))]
        self.write("in.png", png(4, 2, 8, 2, rows, [chunk(*c) for c in canvas]))
        names = [name for name, _ in canvas]
        for command, kept in ((("variations", "--red", 1), True), (("rotate", "--angle", 90), False),
                              (("rotate", "--angle", 3), False)):
            result = self.run_tool(command[0], "in.png", "out.png", *command[1:])
            chunks = dict(png_chunks(self.read("out.png")))
            self.assertEqual([c for c in canvas if chunks.get(c[0]) == c[1]], canvas if kept else [])
            self.assertEqual("roxe: note: out.png: its place on a canvas is left out, as the picture has "
                             "moved\n" in result.stderr, not kept)
            self.assertEqual([name for name in names if name in chunks], names if kept else [])

    def test_of_the_subject(self):
        for order in "<>":
            area = (0x9214, SHORT, 4, struct.pack(order + "4H", 2000, 1500, 800, 600))
            date = (0x9003, ASCII, 20, b"2026:11:22 12:00:00\0")
            location = (0xA214, SHORT, 2, struct.pack(order + "2H", 2000, 1500))
            distance = (0xA40C, SHORT, 1, struct.pack(order + "H", 2))
            camera = [date, area, location, distance]
            for orientation, command, kept in (
                    (1, ("variations", "--red", 1), True), (1, ("rotate", "--angle", 3), False),
                    (3, ("variations", "--red", 1), False)):
                second = 8 + 2 + 2 * 12 + 4
                block = (blocks.head(order) + blocks.directory(order, 8, [
                    (0x0112, SHORT, 1, struct.pack(order + "H", orientation)),
                    (0x8769, LONG, 1, struct.pack(order + "I", second))]) +
                    blocks.directory(order, second, camera, following=7))
                self.with_block(block)
                self.succeed(command[0], "in.jpg", "out.jpg", *command[1:])
                new = self.block_of("out.jpg")
                entries, following = blocks.entries_of(new, second)
                self.assertEqual((entries, following), (
                    {tag: tuple(content) for tag, *content in camera
                     if kept or tag in (0x9003, 0xA40C)}, 7))
                self.assertEqual(len(new), len(block))

    def test_of_a_subject_where_the_block_ends(self):
        """Only the whole entry can be taken out."""
        second = 8 + 2 + 12 + 4
        block = (blocks.head("<") +
                 blocks.directory("<", 8, [(0x8769, LONG, 1, struct.pack("<I", second))]) +
                 blocks.directory("<", second, [(0x9214, BYTE, 1, b"\1")]))
        for cut, gone in ((4, True), (5, False), (7, False)):
            self.with_block(block[:-cut])
            self.succeed("rotate", "in.jpg", "out.jpg", "--angle", 3)
            count = block[second] - gone
            self.assertEqual(self.block_of("out.jpg")[second], count)

    def test_of_faces(self):
        for packet, named in (
                (b"<d xmlns:r='http://www.metadataworkinggroup.com/schemas/regions/'/>", True),
                (b"<d xmlns:r='http://ns.microsoft.com/photo/1.2/t/Region#'/>", True), (b"<d/>", False)):
            self.write("in.jpg", with_segments(self.base(), [(0xE1, XMP_PREFIX + packet)]))
            for command, moves in ((("variations", "--red", 1), False), (("rotate", "--angle", 3), True)):
                result = self.run_tool(command[0], "in.jpg", "out.jpg", *command[1:])
                self.assertEqual("roxe: note: out.jpg: in its XMP packet stay regions, of faces perhaps, of "
                                 "the picture as it was\n" in result.stderr, named and moves)
                self.assertIn(packet, self.read("out.jpg"))


class Stripped(Blocks):
    POSITIONS = [(1, ASCII, 2, b"N\0"), (2, RATIONAL, 3, struct.pack(">6I", 47, 1, 22, 1, 7, 1))]

    def block(self):
        second = 8 + 2 + 3 * 12 + 4 + 6
        place = second + len(blocks.directory(">", second, self.POSITIONS))
        return (blocks.head(">") + blocks.directory(">", 8, [
            (0x010F, ASCII, 6, b"Maker\0"), (0x8825, LONG, 1, struct.pack(">I", second)),
            (0x9000, UNDEFINED, 4, b"abcd")], 0) + blocks.directory(">", second, self.POSITIONS) +
            b"behind it")

    def test_positions(self):
        gone = (b"exif:GPSLatitude='47,22.1N'", b"<exif:GPSLongitude>8,32E</exif:GPSLongitude>",
                b"<a:Latitude>47</a:Latitude>", b"drone:GpsLongitude=\"8\"")
        form = b"<d %s tiff:Make='M'>%s%s<e %s/></d>"
        packet = form % gone
        kept = form % tuple(b" " * len(words) for words in gone)
        self.write("in.jpg", with_segments(self.base(), [
            (0xE1, b"Exif\0\0" + self.block()), (0xE1, XMP_PREFIX + packet)]))
        self.succeed("straighten", "in.jpg", "out.jpg", *LEVEL, "--strip-gps")
        block = self.block_of("out.jpg")
        entries, following = blocks.entries_of(block, 8)
        self.assertEqual(entries, {0x010F: (ASCII, 6, b"Maker\0"),
                                   0x9000: (UNDEFINED, 4, b"abcd")})
        self.assertEqual((following, len(block)), (0, len(self.block())))
        self.assertEqual(block[-9:], b"behind it")
        self.assertNotIn(struct.pack(">I", 47), block)
        segments = [payload for marker, payload in jpeg_segments(self.read("out.jpg"))
                    if payload.startswith(XMP_PREFIX)]
        self.assertEqual(segments, [XMP_PREFIX + kept])

    def test_positions_in_other_places(self):
        self.write("in.jpg", with_segments(self.base(), [
            (0xE4, b"kept"), (0xEE, b"packet exif:GPSLatitude='47,22.1N'"), (0xE4, b"as well"),
            (0xFE, b"gps 47.368 8.540"), (0xFE, b"words")]))
        result = self.run_tool("straighten", "in.jpg", "out.jpg", *LEVEL, "--strip-gps")
        self.assertIn("its segments of other programs that may hold positions are left out",
                      result.stderr)
        self.assertIn("its texts that may hold positions are left out", result.stderr)
        self.assertEqual([payload for marker, payload in jpeg_segments(self.read("out.jpg"))
                          if marker in (0xE4, 0xEE, 0xFE)], [b"kept", b"as well", b"words"])
        texts = [chunk(b"tEXt", b"exif:GPSInfo\x001234"), chunk(b"tEXt", b"Title\0A")]
        self.write("in.png", png(2, 1, 8, 2, [bytes(6)], texts))
        self.succeed("straighten", "in.png", "out.png", *LEVEL, "--strip-gps")
        self.assertEqual([content for name, content in png_chunks(self.read("out.png"))
                          if name == b"tEXt"], [b"Title\0A"])

    def packet_without_positions(self, packet):
        """The XMP packet that --strip-gps leaves of one, and what is said."""
        self.write("in.jpg", with_segments(self.base(), [(0xE1, XMP_PREFIX + packet)]))
        result = self.run_tool("straighten", "in.jpg", "out.jpg", *LEVEL, "--strip-gps")
        self.assertEqual(result.returncode, 0)
        kept = [payload.removeprefix(XMP_PREFIX) for marker, payload in
                jpeg_segments(self.read("out.jpg")) if payload.startswith(XMP_PREFIX)]
        return kept, result.stderr

    def test_places_on_earth_in_xmp(self):
        space = b"xmlns:%s='http://www.w3.org/2003/01/geo/wgs84_pos#'"
        for prefix in (b"geo", b"w"):
            gone = (prefix + b":lat='47.1'", b"<" + prefix + b":long>8.3</" + prefix + b":long>")
            form = b"<d " + space % prefix + b" %s dc:format='a'>%s</d>"
            kept, said = self.packet_without_positions(form % gone)
            self.assertEqual(kept, [form % tuple(b" " * len(words) for words in gone)])
            self.assertNotIn("XMP", said)

    def test_a_packet_whose_positions_cannot_be_taken_out_goes_as_a_whole(self):
        for position in (
                b"<exif:GPSLatitude rdf:parseType='Resource'><rdf:value>47</rdf:value>"
                b"</exif:GPSLatitude>",
                b"<exif:GPSLatitude><rdf:Alt><rdf:li>47</rdf:li></rdf:Alt></exif:GPSLatitude>",
                b"<exif:GPSLatitude><![CDATA[47]]></exif:GPSLatitude>",
                b"<exif:GPSLatitude><!-- here --></exif:GPSLatitude>",
                b"<" + b"a" * 80 + b":Latitude>47</" + b"a" * 80 + b":Latitude>",
                b"<e " + b"a" * 80 + b":gpsLatitude = '47'/>",
                b"<GPSLatitude xmlns='http://ns.adobe.com/exif/1.0/'>47</GPSLatitude>",
                b"<e GPSLongitude='8'/>",
                b"<geo:Point rdf:parseType='Resource'><rdf:value>47 8</rdf:value></geo:Point>"):
            packet = b"<d tiff:Make='M'>" + position + b"</d>"
            for written in (packet, packet.decode().encode("utf-16"), packet.decode().encode("utf-16-be")):
                kept, said = self.packet_without_positions(written)
                self.assertEqual(kept, [], written)
                self.assertIn("its XMP packet holds positions that cannot be taken out, and is left "
                              "out", said)
        # Words and declarations are no positions.
        for harmless in (b"<d xmlns:gps='x' dc:title='my gps, my latitude'>GPS and longitude</d>",
                         b"<d xmlns:gpsLatitude = 'x' about='http://x/gps/latitude'/>"):
            for written in (harmless, harmless.decode().encode("utf-16")):
                kept, said = self.packet_without_positions(written)
                self.assertEqual((kept, "XMP" in said), ([written], False))

    def test_positions_in_packed_texts(self):
        def packed(text):
            return zlib.compress(text)
        place = b"at GPS 47.368 8.540, " * 20
        wide = "Latitude 47".encode("utf-16-le")
        gone = [
            chunk(b"zTXt", b"Comment\0\0" + packed(place)),
            chunk(b"iTXt", b"Comment\0\1\0de\0Wort\0" + packed(place)),
            chunk(b"iTXt", b"Comment\0\0\0de\0Wort\0" + place),
            chunk(b"zTXt", b"Comment\0\0" + packed(wide)),
            chunk(b"zTXt", b"Comment\0\0" + packed(place)[:-9]),  # nobody knows what it says
            chunk(b"zTXt", b"Comment"), chunk(b"iTXt", b"Comment\0\1"), chunk(b"zTXt", b"Comment\0"),
            chunk(b"zTXt", b"Comment\0\0" + packed(bytes(70 << 20)))]  # nor this
        kept = [chunk(b"zTXt", b"Comment\0\0" + packed(b"a word")),
                chunk(b"iTXt", b"Comment\0\1\0de\0Wort\0" + packed(b"a word")),
                chunk(b"iTXt", b"Comment\0\0\0\0\0"), chunk(b"tEXt", b"Title\0A")]
        for text in gone:
            self.write("in.png", png(2, 1, 8, 2, [bytes(6)], [text, *kept]))
            result = self.run_tool("straighten", "in.png", "out.png", *LEVEL, "--strip-gps")
            self.assertEqual(result.returncode, 0)
            self.assertIn("its texts that may hold positions are left out", result.stderr)
            self.assertEqual([chunk(*parts) for parts in png_chunks(self.read("out.png"))
                              if parts[0].endswith(b"Xt")], kept, text[:40])
        self.write("in.png", png(2, 1, 8, 2, [bytes(6)], kept))
        result = self.run_tool("straighten", "in.png", "out.png", *LEVEL, "--strip-gps")
        self.assertNotIn("texts", result.stderr)

    def test_positions_beside_iptc(self):
        def resource(kind, content):
            return b"8BIM" + struct.pack(">HHI", kind, 0, len(content)) + content
        iptc, path = resource(0x0404, b"\x1c\2\5\0\3abc"), resource(2000, b"123456")
        copies = [resource(kind, self.block() + b"\0" * (len(self.block()) % 2))
                  for kind in (0x0422, 0x0423, 0x0424)]
        everything = copies[0] + iptc + copies[1] + copies[2] + path
        self.write("in.jpg", with_segments(self.base(), [(0xED, b"Photoshop 3.0\0" + everything)]))
        for options, kept in (((), everything), (("--strip-gps",), iptc + path)):
            result = self.run_tool("straighten", "in.jpg", "out.jpg", *LEVEL, *options)
            self.assertEqual([payload for marker, payload in jpeg_segments(self.read("out.jpg"))
                              if marker == 0xED], [b"Photoshop 3.0\0" + kept])
            self.assertEqual("the copies of EXIF and XMP beside its IPTC block are left out"
                             in result.stderr, bool(options))

    def test_everything_but_the_colours(self):
        profile = b"ICC_PROFILE\0\1\1" + bytes(16) + b"RGB " + bytes(200)
        self.write("in.jpg", with_segments(self.base(), [
            (0xE1, b"Exif\0\0" + self.block()), (0xE1, XMP_PREFIX + b"<x/>"), (0xE2, profile),
            (0xE5, b"another's"), (0xED, b"Photoshop 3.0\0more"), (0xFE, b"A comment.")]))
        self.succeed("straighten", "in.jpg", "out.jpg", *LEVEL, "--strip")
        self.assertEqual([(marker, payload) for marker, payload in
                          jpeg_segments(self.read("out.jpg")) if marker >= 0xE1], [(0xE2, profile)])


if __name__ == "__main__":
    unittest.main()
