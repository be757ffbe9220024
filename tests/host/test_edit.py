"""One picture: several operations, standard streams, before and after, nothing to do."""

import os
import pty
import struct
import subprocess
import unittest

from pictures import TOOL, ToolTest, photo, plain, png_chunks, ppm, ppm_rows, speckled

USAGE, FAILED = 2, 1


class Steps(ToolTest):
    def setUp(self):
        super().setUp()
        self.write("in.ppm", ppm(speckled(40, 30)))

    def test_one_after_the_other(self):
        text = self.succeed("edit", "in.ppm", "out.ppm", "--then", "rotate --angle 10 --expand",
                            "--then", "shadow-highlight --shadow 20", "--then",
                            "rotate --angle -10 --background '#0000ff'", "--background", "red")
        self.assertRegex(text, r"\Aout.ppm: turned 10.00 degrees clockwise about \(20, 15\); "
                               r"opened shadows by 20.*; turned 10.00 degrees anticlockwise .*\n\Z")
        self.succeed("rotate", "in.ppm", "1.ppm", "--angle", 10, "--expand", "--background", "red")
        self.succeed("shadow-highlight", "1.ppm", "2.ppm", "--shadow", 20)
        self.succeed("rotate", "2.ppm", "3.ppm", "--angle", -10, "--background", "blue")
        self.assertEqual(self.read("out.ppm"), self.read("3.ppm"))

    def test_steps_that_make_no_sense(self):
        edit = ("edit", "in.ppm", "out.ppm")
        self.refuse(USAGE, "--then is required (see roxe edit --help)", *edit)
        for step, words in (("posterize", "there is no operation 'posterize'"),
                            ("", "a step needs an operation"),
                            ("crop", "ROXE neither crops nor resizes"),
                            ("rotate", "--angle is required (see roxe rotate --help)"),
                            ("rotate --angle 3 --quality 9", "--quality belongs on the command"),
                            ("rotate --angle 3 in.ppm", "not expected: in.ppm"),
                            ("perspective --corners 0,0,9,0,9,9,0,9 --dry-run", "--dry-run has no")):
            self.refuse(USAGE, words, *edit, "--then", step)


class Streams(ToolTest):
    def test_in_and_out(self):
        content = ppm(speckled(40, 30))
        self.write("in.ppm", content)
        self.succeed("rotate", "in.ppm", "out.png", "--angle", 10)
        result = subprocess.run([TOOL, "rotate", "-", "-", "--angle", "10", "--format", "png"],
                                input=content, capture_output=True, check=True)
        self.assertEqual(result.stdout, self.read("out.png"))
        self.assertEqual(result.stderr.decode(),
                         "roxe: standard output: turned 10.00 degrees clockwise about (20, 15), "
                         "40 × 30 pixels\n")

    def test_what_cannot_be(self):
        self.write("in.ppm", ppm(speckled(4, 3)))
        self.refuse(USAGE, "--format must say what to write", "rotate", "in.ppm", "-", "--angle", 3)
        self.refuse(FAILED, "standard input: the file is empty", "rotate", "-", "out.png", "--angle",
                    3, stdin=subprocess.DEVNULL)
        terminal, end = pty.openpty()
        result = subprocess.run([TOOL, "rotate", "in.ppm", "-", "--angle", "3", "--format", "png"],
                                cwd=self.folder, stdout=end, stderr=subprocess.PIPE, check=False)
        os.close(end)
        os.close(terminal)
        self.assertEqual(result.returncode, FAILED)
        self.assertIn(b"a picture is not written on a terminal", result.stderr)
        with open("/dev/full", "wb") as full:
            result = subprocess.run(
                [TOOL, "rotate", "in.ppm", "-", "--angle", "3", "--format", "png"], cwd=self.folder,
                stdout=full, stderr=subprocess.PIPE, check=False)
        self.assertEqual(result.returncode, FAILED)
        self.assertIn(b"standard output: cannot be written (No space left", result.stderr)

    def test_standard_input_is_one_picture(self):
        content = ppm(speckled(4, 3))
        self.write("in.ppm", content)
        self.write("content", content)
        blur = ("out.ppm", "--radius", 3, "--mask")
        self.succeed("soft-focus", "in.ppm", *blur, "in.ppm")
        wanted = self.read("out.ppm")
        for arguments, works in ((("in.ppm", *blur, "-"), True), (("-", *blur, "in.ppm"), True),
                                 (("-", *blur, "-"), False)):
            with open(self.path("content"), "rb") as file:
                if works:
                    self.assertEqual(self.run_tool("soft-focus", *arguments, stdin=file).returncode, 0)
                    self.assertEqual(self.read("out.ppm"), wanted)
                else:
                    self.refuse(FAILED, "standard input: can be read only once, as one picture",
                                "soft-focus", *arguments, stdin=file)
        # In a recipe as well, wherever that lies.
        os.mkdir(self.path("sub"))
        self.write("sub/recipe", b"soft-focus --radius 3 --mask -")
        with open(self.path("content"), "rb") as file:
            run = self.run_tool("run", "sub/recipe", "in.ppm", "--out", "out", stdin=file)
        self.assertEqual((run.returncode, self.read("out/in.ppm")), (0, wanted))

    def test_the_format_goes_before_the_extension(self):
        self.write("in.ppm", ppm(speckled(4, 3)))
        self.succeed("rotate", "in.ppm", "out.dat", "--angle", 3, "--format", "png")
        self.assertEqual(png_chunks(self.read("out.dat"))[0][0], b"IHDR")


class Comparison(ToolTest):
    def test_before_and_after_side_by_side(self):
        before = speckled(300, 4)
        self.write("in.ppm", ppm(before))
        self.succeed("rotate", "in.ppm", "out.ppm", "--angle", 90, "--compare", "side.ppm",
                     "--background", "red")
        after = ppm_rows(self.read("out.ppm"))  # 4 × 300; the gap is 1 % of 304 pixels
        red = [(255, 0, 0)]
        wanted = [(before[y] if y < 4 else red * 300) + red * 3 + after[y] for y in range(300)]
        self.assertEqual(ppm_rows(self.read("side.ppm")), wanted)

    def test_the_profile_is_kept_and_nothing_else(self):
        self.succeed("rotate", photo("metadata-exif-xmp-icc.jpg"), "out.jpg", "--angle", 1,
                     "--compare", "side.png")
        names = {name for name, _ in png_chunks(self.read("side.png"))}
        self.assertEqual(names, {b"IHDR", b"iCCP", b"IDAT", b"IEND"})

    def test_it_replaces_neither_input_nor_output(self):
        self.write("in.ppm", ppm(speckled(4, 3)))
        os.link(self.path("in.ppm"), self.path("link.ppm"))
        os.symlink(".", self.path("here"))
        for name in ("in.ppm", "out.ppm", "link.ppm", "./out.ppm", "here/out.ppm"):
            self.refuse(USAGE, f"--compare {name} would replace", "rotate", "in.ppm", "out.ppm",
                        "--angle", 3, "--compare", name)

    def test_nothing_replaces_the_mask(self):
        self.write("in.ppm", ppm(speckled(4, 3)))
        self.write("mask.ppm", ppm(plain(4, 3, (9, 9, 9))))
        os.link(self.path("mask.ppm"), self.path("link.ppm"))
        step = ("--radius", 3, "--mask", "mask.ppm")
        for name in ("mask.ppm", "./mask.ppm", "link.ppm"):
            self.refuse(USAGE, f"OUT {name} would replace the mask mask.ppm", "soft-focus",
                        "in.ppm", name, *step)
            self.refuse(USAGE, f"--compare {name} would replace the mask mask.ppm", "edit",
                        "in.ppm", "out.ppm", "--then", "variations --red 1", "--then",
                        "soft-focus --radius 3 --mask mask.ppm", "--compare", name)
        # A picture that is its own mask may be edited in place like any other.
        self.succeed("soft-focus", "in.ppm", "in.ppm", "--radius", 3, "--mask", "in.ppm")

    def test_a_place_that_cannot_be_written(self):
        self.write("in.ppm", ppm(speckled(4, 3)))
        for name in ("none/side.png", "side"):
            result = self.run_tool("rotate", "in.ppm", "out.ppm", "--angle", 3, "--compare", name)
            self.assertNotEqual(result.returncode, 0)
            self.assertEqual(os.listdir(self.folder), ["in.ppm"])  # nor is the picture

    def test_a_comparison_that_cannot_be_written_leaves_everything_as_it_is(self):
        content = ppm(plain(9000, 2, (1, 2, 3)))
        self.write("in.ppm", content)
        for edit in (("rotate", "in.ppm", "in.ppm", "--angle", 180),
                     ("edit", "in.ppm", "in.ppm", "--then", "rotate --angle 180"),
                     ("edit", "in.ppm", "in.ppm", "--then", "rotate --angle 0")):  # a copy
            self.refuse(FAILED, "side.webp: a WebP cannot hold 18180 × 2 pixels", *edit, "--compare",
                        "side.webp")
            self.refuse(FAILED, "side.pgm: a .pgm file holds grey only", *edit, "--compare", "side.pgm")
            self.refuse(USAGE, "--compare needs the name of a file", *edit, "--compare", "-")
            self.assertEqual(self.read("in.ppm"), content)
            self.assertEqual(os.listdir(self.folder), ["in.ppm"])

    def test_a_comparison_that_would_be_too_large(self):
        self.write("in.ppm", ppm(plain(16000, 1, (1, 2, 3))))
        self.refuse(FAILED, "side by side, 16161 × 16000 pixels, are above the limit", "rotate",
                    "in.ppm", "out.ppm", "--angle", 90, "--compare", "side.ppm")


class NothingToDo(ToolTest):
    def test_the_file_is_copied(self):
        with open(photo("metadata-exif-xmp-icc.jpg"), "rb") as file:
            content = file.read()
        self.write("in.jpg", content)
        text = self.succeed("rotate", "in.jpg", "out.jpg", "--angle", 0)
        self.assertEqual(text, "out.jpg: not turned; copied as it is, 403 × 302 pixels\n")
        self.assertEqual(self.read("out.jpg"), content)
        self.succeed("edit", "in.jpg", "out2.jpg", "--then", "rotate --angle 360", "--then",
                     "straighten --line 0,0,9,0")
        self.assertEqual(self.read("out2.jpg"), content)

    def test_but_not_where_something_else_is_asked_for(self):
        self.write("in.ppm", b"P3 1 1 255 1 2 3")
        for name, options in (("out.png", ()), ("out.pgm", ()), ("out.ppm", ("--quality", 90))):
            result = self.run_tool("rotate", "in.ppm", name, "--angle", 0, *options)
            self.assertNotIn("copied", result.stdout)
        self.assertEqual(self.read("out.ppm"), ppm(plain(1, 1, (1, 2, 3))))

    def test_a_replaced_file_keeps_its_owner(self):
        self.write("in.ppm", ppm(speckled(4, 3)))
        self.write("out.ppm", b"old")
        if os.geteuid() == 0:
            os.chown(self.path("out.ppm"), 65534, 65533)
        before = os.stat(self.path("out.ppm"))
        self.succeed("rotate", "in.ppm", "out.ppm", "--angle", 3)
        after = os.stat(self.path("out.ppm"))
        self.assertEqual((after.st_uid, after.st_gid, after.st_mode),
                         (before.st_uid, before.st_gid, before.st_mode))
        self.assertNotEqual(after.st_ino, before.st_ino)

    def test_a_replaced_file_keeps_its_access_list_and_tags(self):
        """Without the list its mask would become the permissions of the file's group."""
        self.write("in.ppm", ppm(speckled(4, 3)))
        self.write("out.ppm", b"old")
        nobody = 2**32 - 1
        # The owner and user 1234 read and write, by the mask; group and others do nothing.
        entries = ((1, 6, nobody), (2, 6, 1234), (4, 0, nobody), (16, 6, nobody), (32, 0, nobody))
        access = struct.pack("<I", 2) + b"".join(struct.pack("<HHI", *entry) for entry in entries)
        attributes = {"user.xdg.tags": b"sea,2026", "user.empty": b"",
                      "system.posix_acl_access": access}
        try:
            for name, value in attributes.items():
                os.setxattr(self.path("out.ppm"), name, value)
        except OSError as error:
            self.skipTest(f"this file system keeps no such attributes ({error.strerror})")
        for arguments in (("in.ppm", "out.ppm"), ("out.ppm", "out.ppm")):
            self.succeed("rotate", *arguments, "--angle", 3)
            self.assertTrue(self.read("out.ppm").startswith(b"P6"))
            self.assertEqual({name: os.getxattr(self.path("out.ppm"), name)
                              for name in attributes}, attributes)
            self.assertEqual(os.stat(self.path("out.ppm")).st_mode & 0o777, 0o660)
        # A file of another name has none of it.
        self.succeed("rotate", "out.ppm", "new.ppm", "--angle", 3)
        self.assertFalse(attributes.keys() & set(os.listxattr(self.path("new.ppm"))))


if __name__ == "__main__":
    unittest.main()
