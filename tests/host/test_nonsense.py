"""Files and arguments that make no sense: one sentence, the right exit code, nothing written."""

import base64
import os
import random
import stat
import struct
import unittest

from pictures import (TOOL, ToolTest, chunk, photo, plain, png, ppm, ppm_rows, pgm, speckled)

FAILED, USAGE = 1, 2
LINE = ("--line", "0,0,5,1")

# 8 × 8 pixels of one colour in cyan, magenta, yellow and black.
CMYK_JPEG = base64.b64decode(
    "/9j/7gAOQWRvYmUAZAAAAAAA/9sAQwBQNzxGPDJQRkFGWlVQX3jIgnhubnj1r7mRyP///////////////////////////"
    "////////////////////////8AAFAgACAAIBEMRAE0RAFkRAEsRAP/EABUAAQEAAAAAAAAAAAAAAAAAAAQD/8QAFBABAA"
    "AAAAAAAAAAAAAAAAAAAP/aAA4EQwBNAFkASwAAPwBiBRr/2Q==")


def jpeg_of_scans(count):
    """8 × 8 grey pixels, progressive: a scan of the mean, then empty scans of the frequencies."""
    def segment(marker, payload):
        return bytes([0xff, marker]) + struct.pack(">H", len(payload) + 2) + payload

    one_code = bytes([1] + [0] * 15) + b"\0"  # the bit 0 says: no bits follow, or end of block
    empty = b"".join(segment(0xda, bytes([1, 1, 0, 1 + i % 63, 1 + i % 63, 0])) + b"\x7f"
                     for i in range(count - 1))
    return (b"\xff\xd8" + segment(0xdb, b"\0" + bytes([1] * 64)) +
            segment(0xc2, struct.pack(">BHHBBBB", 8, 8, 8, 1, 1, 0x11, 0)) +
            segment(0xc4, b"\x00" + one_code) + segment(0xc4, b"\x10" + one_code) +
            segment(0xda, bytes([1, 1, 0, 0, 0, 0])) + b"\x7f" + empty + b"\xff\xd9")


class Inputs(ToolTest):
    def refuse_file(self, words, content, name="in.jpg"):
        path = self.write(name, content)
        self.refuse(FAILED, words, "straighten", path, "out.jpg", *LINE)
        self.refuse(FAILED, words, "info", path)

    def samples(self):
        """A small file of every kind that can be read."""
        self.write("small.ppm", ppm(speckled(64, 48)))
        self.copy("small.ppm", "small.jpg")
        self.copy("small.ppm", "small.png")
        return {name: self.read(name) for name in ("small.ppm", "small.jpg", "small.png")}

    def test_truncated_anywhere(self):
        for name, content in self.samples().items():
            for tenth in range(10):
                cut = content[:max(1, len(content) * tenth // 10)]
                self.refuse_file(": ", cut, "cut-" + name)
            self.refuse_file(": ", content[:-1 if name.endswith("ppm") else -12], "cut-" + name)

    def test_truncated_photographs(self):
        for name in ("spices.jpg", "coffee-cup.png"):
            with open(photo(name), "rb") as file:
                content = file.read()
            self.refuse_file("damaged, incomplete or of a rare kind", content[:len(content) // 2], name)

    def test_damaged_bytes_never_crash(self):
        chance = random.Random(7)
        for name, content in self.samples().items():
            for _ in range(60):
                damaged = bytearray(content)
                for _ in range(chance.randrange(1, 4)):
                    damaged[chance.randrange(len(damaged))] = chance.randrange(256)
                path = self.write("damaged", damaged)
                result = self.run_tool("straighten", path, "out.png", *LINE)
                # A changed pixel is still a picture; anything else is refused with a sentence.
                self.assertIn(result.returncode, (0, FAILED), result.stderr)
                if result.returncode == FAILED:
                    self.assertRegex(result.stderr, r"\Aroxe: [^\n]+\n\Z")

    def test_files_that_are_no_pictures(self):
        self.refuse_file("is not a JPEG, PNG, TIFF, WebP, PPM or PGM picture", b"Dear diary,\n")
        self.refuse_file("the file is empty", b"")
        self.refuse_file("is not a JPEG, PNG, TIFF, WebP, PPM or PGM picture", bytes(1000))
        missing = self.succeed("--version").partition("; without ")[2]
        tiff = ("this roxe was built without libtiff" if "libtiff" in missing else
                "the TIFF is damaged, incomplete or")
        webp = ("this roxe was built without libwebp" if "libwebp" in missing else
                "the WebP is damaged or incomplete")
        for magic, words in ((b"GIF89a", "a GIF picture"), (b"II*\0", tiff), (b"MM\0*", tiff),
                             (b"RIFF\0\0\0\0WEBP", webp),
                             (b"BM", "a BMP picture"), (b"%PDF-1.7", "a PDF"),
                             (b"\0\0\0\x18ftypheic", "a HEIF, AVIF or video file")):
            self.refuse_file(words, magic + bytes(100))

    def test_missing_files_and_folders(self):
        self.refuse(FAILED, "none.jpg: cannot be opened (No such file or directory)",
                    "straighten", "none.jpg", "out.jpg", *LINE)
        self.refuse(FAILED, "is a folder, not a picture", "straighten", self.folder, "out.jpg",
                    *LINE)
        self.refuse(FAILED, "is a folder, not a picture", "info", self.folder)
        # A name cannot break the sentence in two, nor command the terminal.
        self.refuse(FAILED, "no?such?[2Jfile.jpg: cannot be opened", "info", "no\nsuch\x1b[2Jfile.jpg")

    def test_absurdly_large(self):
        words = "above the limit of 250 megapixels"
        header = struct.pack(">IIBBBBB", 100_000, 100_000, 8, 2, 0, 0, 0)
        content = b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + chunk(b"IDAT", b"")
        self.refuse_file(words, content, "in.png")
        header = struct.pack(">IIBBBBB", 2**31 - 1, 2**31 - 1, 8, 2, 0, 0, 0)
        content = b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + chunk(b"IDAT", b"")
        self.refuse_file(words, content, "in.png")
        self.refuse_file(words, b"P6 2000000000 2000000000 255\n")
        self.refuse_file("a number that is too large", b"P6 99999999999 1 255\n")
        jpeg = bytearray(self.samples()["small.jpg"])
        frame = jpeg.index(b"\xff\xc0")
        jpeg[frame + 5:frame + 9] = struct.pack(">HH", 65500, 65500)
        self.refuse_file(words, jpeg)

    def test_no_end_of_scans(self):
        self.write("many.jpg", jpeg_of_scans(500))
        self.succeed("info", "many.jpg")
        self.refuse_file("more than 500 scans", jpeg_of_scans(501))

    def test_empty_and_malformed_headers(self):
        self.refuse_file("0 × 5 pixels is empty", b"P6 0 5 255\n")
        for header in (b"P6 5 5 0\n", b"P6 5 5 65536\n"):
            self.refuse_file("its largest value is not between 1 and 65535", header + bytes(75))
        for header in (b"P6 5 x 255\n", b"P5 -5 5 255\n"):
            self.refuse_file("a number is missing", header + bytes(75))
        self.refuse_file("its header is damaged", b"P6 5 5 255x" + bytes(75))
        self.refuse_file("the file ends early", b"P6 5 5 255")
        self.refuse_file("above the largest value", b"P2 1 1 10\n11\n")
        self.refuse_file("damaged, incomplete or of a rare kind", b"\xff\xd8\xff")

    def test_cyan_magenta_yellow_black(self):
        self.refuse_file("a CMYK JPEG cannot be edited", CMYK_JPEG)


class Conversions(ToolTest):
    """What is not plain 8-bit colour is converted."""

    def rows_of(self, content, *options):
        name = self.write("in", content)
        result = self.run_tool("straighten", name, "out.ppm", "--line", "0,0,1,0",
                               "--quality", 95, *options)
        self.assertEqual(result.returncode, 0, result.stderr)
        return ppm_rows(self.read("out.ppm")), result.stderr

    def test_sixteen_bits_are_rounded_with_a_note(self):
        row = struct.pack(">6H", 0, 128, 129, 257 * 99, 257 * 99 + 129, 65535)
        rows, stderr = self.rows_of(png(2, 1, 16, 2, [row]))
        self.assertEqual(rows, [[(0, 0, 1), (99, 100, 255)]])
        self.assertIn("note: ", stderr)
        self.assertIn("16 bits a channel are rounded to 8", stderr)
        rows, stderr = self.rows_of(b"P6 2 1 65535\n" + row)
        self.assertEqual(rows, [[(0, 0, 1), (99, 100, 255)]])
        self.assertIn("16 bits a channel are rounded to 8", stderr)

    def test_palette_and_few_bits(self):
        palette = chunk(b"PLTE", bytes([9, 8, 7, 200, 100, 50, 1, 2, 3, 255, 0, 255]))
        rows, _ = self.rows_of(png(4, 1, 2, 3, [bytes([0b00011011])], [palette]))
        self.assertEqual(rows, [[(9, 8, 7), (200, 100, 50), (1, 2, 3), (255, 0, 255)]])
        rows, _ = self.rows_of(png(4, 1, 1, 0, [bytes([0b01010000])]))
        self.assertEqual(rows, [[(0,) * 3, (255,) * 3, (0,) * 3, (255,) * 3]])
        rows, _ = self.rows_of(png(2, 1, 4, 0, [bytes([0x3c])]))
        self.assertEqual(rows, [[(0x33,) * 3, (0xcc,) * 3]])

    def test_transparency_shows_the_background(self):
        row = bytes([200, 100, 50, 255, 200, 100, 50, 0])
        rows, stderr = self.rows_of(png(2, 1, 8, 6, [row]))
        self.assertEqual(rows, [[(200, 100, 50), (0, 0, 0)]])
        self.assertIn("transparency is replaced by the background", stderr)
        rows, _ = self.rows_of(png(2, 1, 8, 6, [row]), "--background", "#102030")
        self.assertEqual(rows, [[(200, 100, 50), (16, 32, 48)]])
        row = bytes([80, 255, 80, 0])
        rows, _ = self.rows_of(png(2, 1, 8, 4, [row]), "--background", "orange")
        self.assertEqual(rows, [[(80, 80, 80), (255, 165, 0)]])
        key = chunk(b"tRNS", struct.pack(">3H", 1, 2, 3))
        rows, _ = self.rows_of(png(2, 1, 8, 2, [bytes([1, 2, 3, 4, 5, 6])], [key]),
                               "--background", "white")
        self.assertEqual(rows, [[(255, 255, 255), (4, 5, 6)]])

    def test_portable_maps(self):
        text = b"P3 # a comment\n2 1\n# and another\n100\n0 50 100  1 2 99\n"
        self.assertEqual(self.rows_of(text)[0], [[(0, 128, 255), (3, 5, 252)]])
        self.assertEqual(self.rows_of(b"P2\n2 1\n255\n7 200")[0], [[(7,) * 3, (200,) * 3]])
        self.assertEqual(self.rows_of(pgm([[7, 200]]))[0], [[(7,) * 3, (200,) * 3]])
        self.assertEqual(self.rows_of(b"P5 2 1 3\n\1\2")[0], [[(85,) * 3, (170,) * 3]])

    def test_the_content_decides_and_not_the_name(self):
        self.write("in.jpg", ppm(plain(3, 2, (1, 2, 3))))
        self.copy("in.jpg", "out.PPM")
        self.assertEqual(ppm_rows(self.read("out.PPM")), plain(3, 2, (1, 2, 3)))

    def test_grey_is_written_as_one_channel(self):
        self.write("grey.pgm", pgm([[7, 200]]))
        self.copy("grey.pgm", "out.png")
        self.assertEqual(self.read("out.png")[25], 0)  # colour type of the header
        self.copy("out.png", "out.pgm")
        self.assertEqual(self.read("out.pgm"), pgm([[7, 200]]))


class Outputs(ToolTest):
    def setUp(self):
        super().setUp()
        self.write("in.ppm", ppm(plain(8, 6, (10, 20, 30))))

    def test_unknown_extensions(self):
        for name in ("out.gif", "out", "out.tif", ".jpg", "outjpg"):
            self.refuse(USAGE, "the extension must say what to write", "straighten", "in.ppm", name,
                        *LINE)

    def test_places_that_cannot_be_written(self):
        self.refuse(FAILED, "there is no folder", "straighten", "in.ppm", "none/out.jpg", *LINE)
        self.refuse(FAILED, "there is no folder", "straighten", "in.ppm", "in.ppm/out.jpg", *LINE)
        os.mkdir(self.path("folder.jpg"))
        self.refuse(FAILED, "is a folder", "straighten", "in.ppm", "folder.jpg", *LINE)
        os.mkfifo(self.path("pipe.jpg"))
        self.refuse(FAILED, "is not a regular file", "straighten", "in.ppm", "pipe.jpg", *LINE)

    def test_folders_and_files_without_permission(self):
        os.mkdir(self.path("closed"))
        os.chmod(self.path("closed"), 0o555)
        anyone = self.as_anyone()
        self.refuse(FAILED, "the folder refuses it (Permission denied)", "straighten", "in.ppm",
                    "closed/out.jpg", *LINE, **anyone)
        self.write("kept.jpg", b"old")
        os.chmod(self.path("kept.jpg"), 0o444)
        os.chmod(self.folder, 0o777)
        self.refuse(FAILED, "is write-protected", "straighten", "in.ppm", "kept.jpg", *LINE,
                    **anyone)

    def test_colours_do_not_go_into_a_grey_file(self):
        self.refuse(FAILED, "a .pgm file holds grey only", "straighten", "in.ppm", "out.pgm", *LINE)

    def test_the_case_of_an_extension_makes_no_difference(self):
        self.write("grey.ppm", ppm(plain(2, 1, (7, 7, 7))))
        for name in ("out.pgm", "out.PGM", "out.Pgm"):
            self.copy("grey.ppm", name)
            self.assertEqual(self.read(name), pgm([[7, 7]]))

    def test_a_link_that_leads_nowhere(self):
        os.symlink("none.png", self.path("link.png"))
        self.refuse(FAILED, "leads nowhere", "straighten", "in.ppm", "link.png", *LINE)
        os.symlink("loop.png", self.path("loop.png"))
        self.refuse(FAILED, "leads nowhere", "straighten", "in.ppm", "loop.png", *LINE)

    def test_a_replaced_file_keeps_its_permissions_and_a_link_its_target(self):
        self.write("real.png", b"old")
        os.chmod(self.path("real.png"), 0o640)
        os.symlink("real.png", self.path("link.png"))
        self.succeed("straighten", "in.ppm", "link.png", *LINE)
        self.assertTrue(os.path.islink(self.path("link.png")))
        self.assertTrue(self.read("real.png").startswith(b"\x89PNG"))
        self.assertEqual(stat.S_IMODE(os.stat(self.path("real.png")).st_mode), 0o640)

    def test_the_input_may_be_replaced(self):
        self.succeed("straighten", "in.ppm", "in.ppm", "--line", "0,0,5,0")
        self.assertEqual(ppm_rows(self.read("in.ppm")), plain(8, 6, (10, 20, 30)))


class Arguments(ToolTest):
    def setUp(self):
        super().setUp()
        self.write("in.ppm", ppm(speckled(80, 60)))

    def refuse_arguments(self, words, *arguments):
        self.refuse(USAGE, words, *arguments)

    def test_commands(self):
        self.refuse_arguments("a command is required (see roxe --help)")
        self.refuse_arguments("posterize", "posterize", "in.ppm", "out.ppm")
        self.refuse_arguments("IN is required (see roxe info --help)", "info")
        self.refuse_arguments("OUT is required (see roxe rotate --help)", "rotate", "in.ppm",
                              "--angle", "3")
        self.refuse_arguments("--angle is required", "rotate", "in.ppm", "out.ppm")
        self.refuse_arguments("--sharpen", "rotate", "in.ppm", "out.ppm", "--angle", 3, "--sharpen")
        self.refuse_arguments("there is no option --angel", "rotate", "in.ppm", "out.ppm",
                              "--angel", 3)
        self.refuse_arguments("this argument was not expected: b.ppm (see roxe rotate --help)",
                              "rotate", "in.ppm", "out.ppm", "b.ppm", "--angle", 3)
        for command in (("crop",), ("resize", "in.ppm"), ("help", "crop")):
            self.refuse_arguments("ROXE neither crops nor resizes", *command)
        self.refuse_arguments("there is no command 'rotat' (see roxe --help)", "help", "rotat")
        self.refuse_arguments("these arguments were not expected: b c --d", "rotate", "in.ppm",
                              "out.ppm", "b", "c", "--d", "--angle", 3)

    def test_options(self):
        rotate = ("rotate", "in.ppm", "out.ppm", "--angle", 3)
        self.refuse_arguments("--angle may stand only once (see roxe rotate --help)", *rotate,
                              "--angle", 4)
        self.refuse_arguments("--about needs a value (see roxe rotate --help)", *rotate, "--about")
        self.refuse_arguments("--expand takes no value", *rotate, "--expand=yes")
        self.refuse_arguments("--mask-radius needs --mask", "soft-focus", "in.ppm", "out.ppm",
                              "--radius", 3, "--mask-radius", 4)
        self.refuse_arguments("--size and --fit exclude each other", "perspective", "in.ppm",
                              "out.ppm", "--corners", "0,0,9,0,9,9,0,9", "--size", "9x9", "--fit",
                              "9x9")
        self.refuse_arguments("--format needs jpg, png, webp, ppm or pgm, not 'gif' (see roxe run --help)",
                              "run", "recipe", "in.ppm", "--out", "out", "--format", "gif")

    def test_names_that_are_empty(self):
        """As a shell makes them of a variable that is not set."""
        self.write("in.ppm", ppm(speckled(4, 3)))
        self.write("recipe", b"auto-gamma")
        for what, arguments in (
                ("IN", ("auto-gamma", "", "out.ppm")), ("IN", ("info", "")), ("IN", ("pick", "", "0,0")),
                ("OUT", ("auto-gamma", "in.ppm", "")),
                ("--compare", ("auto-gamma", "in.ppm", "out.ppm", "--compare", "")),
                ("--mask", ("soft-focus", "in.ppm", "out.ppm", "--radius", 3, "--mask", "")),
                ("--mask", ("edit", "in.ppm", "out.ppm", "--then", "soft-focus --radius 3 --mask ''")),
                ("RECIPE", ("run", "", "in.ppm", "--out", "out")),
                ("IN", ("run", "recipe", "in.ppm", "", "--out", "out")),
                ("--out", ("run", "recipe", "in.ppm", "--out", "")),
                ("--out", ("run", "recipe", "in.ppm", "--out", "", "--dry-run"))):
            self.refuse(2, f"{what} needs a name, not ''", *arguments)

    def test_numbers(self):
        rotate = ("rotate", "in.ppm", "out.ppm")
        for angle in ("much", "", "1e999", "nan", "inf", "12deg", "1e99", "-3601", "+-5", "+"):
            self.refuse_arguments("--angle needs a number from -3600 to 3600", *rotate, "--angle",
                                  angle)
        self.assertIn("turned 5.00 degrees clockwise", self.succeed(*rotate, "--angle", "+5"))
        os.unlink(self.path("out.ppm"))
        for point in ("1", "1,2,3", "a,b", "1.5,2", "1,2,", ",", "99999999999,1", ""):
            self.refuse_arguments("--about", *rotate, "--angle", 3, "--about=" + point)
        self.refuse_arguments("--about (80, 3) lies outside the picture of 80 × 60 pixels", *rotate,
                              "--angle", 3, "--about", "80,3")
        for quality in ("0", "101", "best"):
            self.refuse_arguments("--quality", *rotate, "--angle", 3, "--quality", quality)

    def test_lines(self):
        straighten = ("straighten", "in.ppm", "out.ppm", "--line")
        for line in ("1,2,3", "1,2,3,4,5", "a,b,c,d", "", "1 2 3 4"):
            self.refuse_arguments("--line needs 4 whole numbers", *straighten, line)
        self.refuse_arguments("two different points, and both are (7, 8)", *straighten, "7,8,7,8")
        self.refuse_arguments("(0, 60) lies outside the picture", *straighten, "0,60,5,5")
        self.refuse_arguments("(-1, 0) lies outside the picture", *straighten, "-1,0,5,5")

    def test_colours(self):
        for colour in ("#12345", "#12345g", "reddish", "", "123456", "#1234567", "# 12345"):
            self.refuse_arguments("--background needs a colour", "rotate", "in.ppm", "out.ppm",
                                  "--angle", 3, "--background", colour)

    def test_points(self):
        self.refuse_arguments("(80, 0) lies outside the picture of 80 × 60", "pick", "in.ppm", "80,0")
        self.refuse_arguments("POINT needs 2 whole numbers", "pick", "in.ppm", "8")


if __name__ == "__main__":
    unittest.main()
