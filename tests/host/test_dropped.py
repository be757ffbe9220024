"""What a format cannot carry is said, what it can is kept; damage, hostile sizes and JPEG options."""

import os
import resource
import struct
import subprocess
import unittest
import zlib

from pictures import (SANITIZED, ToolTest, chunk, jpeg_segments, photo, plain, png, png_chunks, ppm, ppm_rows,
                      speckled, with_segments)

LEVEL = ("--line", "0,0,1,0", "--background", "black")


class Jpegs(ToolTest):
    def base(self, *options, width=60, height=40):
        self.write("base.ppm", ppm(speckled(width, height)))
        self.succeed("straighten", "base.ppm", "base.jpg", *LEVEL, *options)
        return self.read("base.jpg")

    def notes(self, source, target, *options):
        result = self.run_tool("straighten", source, target, *LEVEL, *options)
        self.assertEqual(result.returncode, 0, result.stderr)
        return result.stderr


class Dropped(Jpegs):
    def test_segments_of_other_programs_stay_in_place_and_order(self):
        added = [(0xE4, b"four"), (0xE1, b"http://ns.adobe.com/xap/1.0/\0<x/>"), (0xEB, b"JP\0\1"),
                 (0xFE, b"text"), (0xE2, b"unknown"), (0xE1, b"Exif\0\0II*\0\x08\0\0\0"),
                 (0xEE, b"not from there"), (0xE0, b"also unknown")]
        self.write("in.jpg", with_segments(self.base(), added))
        self.assertEqual(self.notes("in.jpg", "out.jpg"), "")
        segments = jpeg_segments(self.read("out.jpg"))
        self.assertEqual(segments[1:1 + len(added)], added)
        notes = self.notes("in.jpg", "out.png")
        self.assertIn("note: out.png: its segments APP0 APP2 APP4 APP11 APP14 have no place in a "
                      "PNG and are left out", notes)
        self.assertIn("its JPEG comments have no place in a PNG", notes)

    def test_pictures_and_films_behind_the_picture(self):
        self.write("in.jpg", with_segments(self.base(), [(0xE2, b"MPF\0II*\0")]) +
                   b"\0\0\0\x18ftypmp42")
        notes = self.notes("in.jpg", "out.jpg")
        self.assertIn("note: in.jpg: its further pictures (MPF) are left out", notes)
        self.assertIn("note: in.jpg: the 12 bytes after its end, a film or further pictures, are "
                      "left out", notes)
        self.assertTrue(self.read("out.jpg").endswith(b"\xff\xd9"))
        self.write("in.jpg", self.base() + bytes(5000))  # cameras fill files up
        self.assertEqual(self.notes("in.jpg", "out.jpg"), "")

    def test_what_comes_twice_and_old_thumbnails(self):
        block, packet = b"Exif\0\0II*\0\x08\0\0\0", b"http://ns.adobe.com/xap/1.0/\0<x/>"
        self.write("in.jpg", with_segments(self.base(), [
            (0xE1, block), (0xE1, block), (0xE1, packet), (0xE1, packet), (0xE0, b"JFXX\0\x10abc")]))
        notes = self.notes("in.jpg", "out.jpg")
        for words in ("its second EXIF block", "its second XMP packet", "its JFXX thumbnail"):
            self.assertIn(words, notes)

    def test_chunks(self):
        kept = [chunk(b"cICP", bytes([9, 16, 0, 1])), chunk(b"mDCV", bytes(24)),
                chunk(b"cLLI", bytes(8)), chunk(b"prVt", b"safe to copy"),
                chunk(b"tEXt", b"Title\0A\0B")]
        gone = [chunk(b"bKGD", bytes(6)), chunk(b"prVT", b"not safe"), chunk(b"tIME", bytes(7)),
                chunk(b"acTL", struct.pack(">II", 1, 0)), chunk(b"fcTL", bytes(26))]
        wrong = struct.pack(">I", 3) + b"tEXta\0b" + bytes(4)
        late = [chunk(b"fdAT", bytes(8)), chunk(b"prXt", b"behind")]
        self.write("in.png", png(2, 1, 8, 2, [b"\1\2\3\4\5\6"], kept + gone + [wrong], late) + b"end")
        notes = self.notes("in.png", "out.png")
        self.assertIn("its animation (APNG) is left out", notes)
        self.assertIn("its chunks bKGD prVT tIME do not fit a changed picture and are left out", notes)
        self.assertIn("its chunks tEXt are damaged and are left out", notes)
        self.assertIn("the 3 bytes after its end are left out", notes)
        chunks = [chunk(*found) for found in png_chunks(self.read("out.png"))]
        self.assertEqual(chunks[1:6] + chunks[7:8], kept + late[1:])
        notes = self.notes("in.png", "out.jpg")
        self.assertIn("its PNG chunks cICP cLLI mDCV prVt prXt have no place in a JPEG", notes)
        self.assertIn("its PNG texts have no place in a JPEG", notes)

    def test_a_packet_with_a_zero_in_it(self):
        packet = b"<x>before\0after</x>"
        self.write("in.jpg", with_segments(self.base(),
                                           [(0xE1, b"http://ns.adobe.com/xap/1.0/\0" + packet)]))
        self.copy("in.jpg", "out.png")
        self.assertEqual(dict(png_chunks(self.read("out.png")))[b"iTXt"],
                         b"XML:com.adobe.xmp\0\0\0\0\0" + packet)
        self.copy("out.png", "again.png")
        self.assertEqual(dict(png_chunks(self.read("again.png")))[b"iTXt"],
                         b"XML:com.adobe.xmp\0\0\0\0\0" + packet)

    def test_a_compressed_packet(self):
        text = chunk(b"iTXt", b"XML:com.adobe.xmp\0\1\0en\0\0" + zlib.compress(b"<x>1</x>"))
        self.write("in.png", png(2, 1, 8, 2, [bytes(6)], [text]))
        self.copy("in.png", "out.png")
        self.assertEqual(dict(png_chunks(self.read("out.png")))[b"iTXt"],
                         b"XML:com.adobe.xmp\0\0\0\0\0<x>1</x>")


class Bounds(ToolTest):
    """With 600 MB of memory at most."""

    def bounded(self, name):
        def limit():
            resource.setrlimit(resource.RLIMIT_AS, (600 << 20, 600 << 20))
        return self.run_tool("info", name, preexec_fn=None if SANITIZED else limit)

    def test_a_chunk_that_claims_two_gigabytes(self):
        self.write("in.png", png(1, 1, 8, 2, [b"\1\2\3"])[:33] + struct.pack(">I", 0x7FFFFFFF) +
                   b"tEXt")
        result = self.bounded("in.png")
        self.assertEqual(result.returncode, 1)
        self.assertIn("the file ends early", result.stderr)

    def test_texts_that_would_unpack_to_gigabytes(self):
        text = zlib.compress(bytes(8_000_000), 9)
        texts = [chunk(b"zTXt", b"key\0\0" + text)] * 400
        self.write("in.png", png(1, 1, 8, 2, [b"\1\2\3"], texts))
        self.assertEqual(self.bounded("in.png").returncode, 0)
        packet = zlib.compress(bytes(70 << 20), 9)
        packet = chunk(b"iTXt", b"XML:com.adobe.xmp\0\1\0\0\0" + packet)
        self.write("in.png", png(1, 1, 8, 2, [b"\1\2\3"], [packet]))
        result = self.run_tool("straighten", self.path("in.png"), "out.ppm", "--line", "0,0,0,1")
        self.write("in.png", png(2, 1, 8, 2, [bytes(6)], [packet]))
        result = self.run_tool("straighten", "in.png", "out.png", *LEVEL)
        self.assertIn("its XMP packet is damaged and is left out", result.stderr)

    def test_texts_together(self):
        text = chunk(b"tEXt", b"key\0" + bytes(30 << 20))
        self.write("in.png", png(2, 1, 8, 2, [bytes(6)], [text] * 3))
        result = self.run_tool("straighten", "in.png", "out.png", *LEVEL)
        self.assertIn("its texts take more than 64 MB and some are left out", result.stderr)
        names = [name for name, _ in png_chunks(self.read("out.png"))]
        self.assertEqual(names.count(b"tEXt"), 2)

    def test_pixels_that_the_file_cannot_hold(self):
        header = struct.pack(">IIBBBBB", 1, 249_000_000, 8, 2, 0, 0, 0)
        self.write("in.png", b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) +
                   chunk(b"IDAT", zlib.compress(b"")) + chunk(b"IEND", b""))
        result = self.run_tool("info", "in.png")
        self.assertIn("the file ends early", result.stderr)

    def test_scans_times_pixels(self):
        def segment(marker, payload):
            return bytes([0xff, marker]) + struct.pack(">H", len(payload) + 2) + payload
        one_code = bytes([1] + [0] * 15) + b"\0"
        # 10,000 × 10,000 pixels: 50 scans. Every block of a scan takes one bit.
        scan = bytes(1250 * 1250 // 8 + 1)
        content = (b"\xff\xd8" + segment(0xdb, b"\0" + bytes([1] * 64)) +
                   segment(0xc2, struct.pack(">BHHBBBB", 8, 10_000, 10_000, 1, 1, 0x11, 0)) +
                   segment(0xc4, b"\x00" + one_code) + segment(0xc4, b"\x10" + one_code) +
                   segment(0xda, bytes([1, 1, 0, 0, 0, 0])) + scan +
                   b"".join(segment(0xda, bytes([1, 1, 0, 1 + i, 1 + i, 0])) + scan
                            for i in range(51)) + b"\xff\xd9")
        self.write("in.jpg", content)
        self.assertIn("more than 50 scans", self.run_tool("info", "in.jpg").stderr)
        # And a frame that the file cannot fill.
        self.write("in.jpg", content[:1000])
        self.assertIn("the file ends early", self.run_tool("info", "in.jpg").stderr)


class Damaged(Jpegs):
    def test_the_end_is_missing(self):
        rows = plain(64, 96, (200, 60, 30))
        self.write("in.ppm", ppm(rows[:48] + speckled(64, 48)))
        self.succeed("straighten", "in.ppm", "whole.jpg", *LEVEL)
        whole = self.read("whole.jpg")
        self.write("in.jpg", whole[:-400])
        self.refuse(1, "damaged, incomplete or of a rare kind", "straighten", "in.jpg", "out.ppm",
                    *LEVEL)
        notes = self.notes("in.jpg", "out.ppm", "--damaged")
        self.assertRegex(notes, r"note: in.jpg: it is damaged from about row \d+ of 96 on; what "
                         r"could not be read is grey or wrong \(Premature end of JPEG file\)")
        self.copy("whole.jpg", "whole.ppm")
        read, expected = ppm_rows(self.read("out.ppm")), ppm_rows(self.read("whole.ppm"))
        self.assertEqual(read[:56], expected[:56])
        self.write("in.jpg", whole[:-2])  # nothing but the mark of the end
        self.assertIn("it is damaged", self.notes("in.jpg", "out.ppm", "--damaged"))
        self.assertEqual(ppm_rows(self.read("out.ppm")), expected)

    def test_one_damaged_spot(self):
        whole = bytearray(self.base("--quality", "90", width=160, height=160))
        spot = len(whole) // 2
        whole[spot:spot + 4] = b"\xff\xd3\xff\xd5"  # marks of restarts that belong nowhere
        self.write("in.jpg", whole)
        self.refuse(1, "damaged, incomplete or of a rare kind", "straighten", "in.jpg", "out.ppm",
                    *LEVEL)
        self.assertIn("note: in.jpg: it is damaged", self.notes("in.jpg", "out.ppm", "--damaged"))
        self.copy("base.jpg", "whole.ppm")
        read, expected = ppm_rows(self.read("out.ppm")), ppm_rows(self.read("whole.ppm"))
        self.assertEqual(read[:56], expected[:56])

    def test_a_head_alone_stays_refused(self):
        content = self.base()
        self.write("in.jpg", content[:100])
        result = self.run_tool("straighten", "in.jpg", "out.ppm", *LEVEL, "--damaged")
        self.assertEqual(result.returncode, 1)

    def test_whole_files_have_no_note(self):
        self.base()
        self.assertEqual(self.notes("base.jpg", "out.ppm", "--damaged"), "")


class Coding(Jpegs):
    def tables(self, name):
        content = b""
        for marker, payload in jpeg_segments(self.read(name)):
            if marker == 0xDB:
                content += payload
        return [content[i + 1:i + 65] for i in range(0, len(content), 65)]

    def sampling(self, name):
        (marker, frame), = [segment for segment in jpeg_segments(self.read(name))
                            if 0xC0 <= segment[0] <= 0xC2]
        return marker, [frame[7 + 3 * i] for i in range(frame[5])]

    def test_tables_and_subsampling_of_the_input_are_kept(self):
        for name, options, sampling in (("4:2:0", (), [0x22, 0x11, 0x11]),
                                        ("4:2:2", (), [0x21, 0x11, 0x11]),
                                        ("4:4:4", ("--progressive",), [0x11] * 3)):
            self.base("--quality", "37", "--subsampling", name, *options)
            for keep in ((), ("--quality", "keep")):
                self.succeed("straighten", "base.jpg", "out.jpg", *LEVEL, *keep)
                self.assertEqual(self.tables("out.jpg"), self.tables("base.jpg"))
                self.assertEqual(self.sampling("out.jpg"), (0xC0, sampling))
            self.succeed("straighten", "base.jpg", "out.jpg", *LEVEL, "--progressive",
                         "--subsampling", "4:2:0")
            self.assertEqual(self.tables("out.jpg"), self.tables("base.jpg"))
            self.assertEqual(self.sampling("out.jpg"), (0xC2, [0x22, 0x11, 0x11]))
            self.succeed("straighten", "base.jpg", "out.jpg", *LEVEL, "--quality", "80")
            self.assertNotEqual(self.tables("out.jpg"), self.tables("base.jpg"))
            self.assertEqual(self.sampling("out.jpg"), (0xC0, [0x11] * 3))

    def test_a_real_photograph(self):
        self.succeed("straighten", photo("spices.jpg"), "out.jpg", *LEVEL)
        with open(photo("spices.jpg"), "rb") as file:
            self.write("in.jpg", file.read())
        self.assertEqual(self.tables("out.jpg"), self.tables("in.jpg"))

    def test_other_formats_have_95(self):
        self.base()
        self.succeed("straighten", "base.ppm", "again.jpg", *LEVEL, "--quality", "95")
        self.assertEqual(self.read("again.jpg"), self.read("base.jpg"))

    def test_turned_pictures_turn_their_tables(self):
        table = bytearray(range(1, 65))
        zigzag = sorted(range(64), key=lambda i: (i // 8 + i % 8, (i // 8 if (i // 8 + i % 8) % 2
                                                                   else i % 8)))
        content = self.base("--subsampling", "4:2:2")
        at = content.index(b"\xff\xdb") + 5
        content = content[:at] + bytes(table) + content[at + 64:]
        block = b"II*\0\x08\0\0\0\1\0" + struct.pack("<HHIHH", 0x112, 3, 1, 6, 0) + bytes(4)
        self.write("in.jpg", with_segments(content, [(0xE1, b"Exif\0\0" + block)]))
        self.succeed("straighten", "in.jpg", "out.jpg", *LEVEL)
        # Zigzag order of a table: position k holds coefficient zigzag[k]; rows and columns swap.
        old = {zigzag[k]: table[k] for k in range(64)}
        turned = bytes(old[place % 8 * 8 + place // 8] for place in zigzag)
        self.assertEqual(self.tables("out.jpg")[0], turned)
        self.assertEqual(self.sampling("out.jpg")[1], [0x12, 0x11, 0x11])

    def test_words_that_make_no_sense(self):
        self.base()
        self.refuse(2, "--subsampling needs keep, 4:4:4, 4:2:2 or 4:2:0, not '411'", "rotate",
                    "base.jpg", "out.jpg", "--angle", 3, "--subsampling", "411")

    def test_the_time_of_change(self):
        self.base()
        os.utime(self.path("base.jpg"), ns=(1, 1_234_567_890_123_456_789))
        self.succeed("rotate", "base.jpg", "out.jpg", "--angle", 3, "--preserve-time")
        self.assertEqual(os.stat(self.path("out.jpg")).st_mtime_ns, 1_234_567_890_123_456_789)
        self.succeed("rotate", "base.jpg", "base.jpg", "--angle", 3, "--preserve-time")
        self.assertEqual(os.stat(self.path("base.jpg")).st_mtime_ns, 1_234_567_890_123_456_789)
        self.succeed("rotate", "base.jpg", "out.jpg", "--angle", 3)
        self.assertNotEqual(os.stat(self.path("out.jpg")).st_mtime_ns, 1_234_567_890_123_456_789)

    def test_the_time_of_standard_input(self):
        """That of the file that a shell opens there, whatever is called - in the folder."""
        self.base()
        self.write("-", b"")
        os.utime(self.path("-"), ns=(1, 1_111_111_111_000_000_000))
        os.utime(self.path("base.jpg"), ns=(1, 1_234_567_890_123_456_789))
        edit = ("rotate", "-", "out.jpg", "--angle", 3, "--preserve-time")
        with open(self.path("base.jpg"), "rb") as file:
            self.assertEqual(self.run_tool(*edit, stdin=file).returncode, 0)
        self.assertEqual(os.stat(self.path("out.jpg")).st_mtime_ns, 1_234_567_890_123_456_789)
        # A pipe has no time that means anything.
        start = os.stat(self.path("base.jpg")).st_ctime_ns
        with subprocess.Popen(["cat", self.path("base.jpg")], stdout=subprocess.PIPE) as pipe:
            self.assertEqual(self.run_tool(*edit, stdin=pipe.stdout).returncode, 0)
        self.assertGreaterEqual(os.stat(self.path("out.jpg")).st_mtime_ns, start)


if __name__ == "__main__":
    unittest.main()
