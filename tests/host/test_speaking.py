"""What the tool says: names that cannot drive a terminal, answers that must arrive."""

import os
import subprocess
import unittest

from pictures import TOOL, ToolTest, plain, ppm, speckled


class Answers(ToolTest):
    def test_what_cannot_be_printed_is_a_failure(self):
        self.write("in.ppm", ppm(plain(30, 20, (1, 2, 3))))
        self.write("recipe", b"rotate --angle 3")
        corners = ("--corners", "1,1,9,1,9,9,1,9")
        for command in (("info", "in.ppm"), ("pick", "in.ppm", "1,1"), ("--help",), ("--version",),
                        ("rotate", "--help"), ("help",), ("manual",), ("complete", "r"), ("perspective", "in.ppm", "--dry-run", *corners),
                        ("rotate", "in.ppm", "out.ppm", "--angle", "3"),
                        ("run", "recipe", "in.ppm", "--out", "out")):
            with open("/dev/full", "wb") as full:
                result = subprocess.run([TOOL, *command], cwd=self.folder, stdout=full,
                                        stderr=subprocess.PIPE, check=False)
            self.assertEqual(result.returncode, 1, command)
            self.assertIn(b"the answer cannot be printed (No space left on device)", result.stderr)


class Names(ToolTest):
    # name, and how it is shown
    NAMES = (
        (b"a\nb\x1b[2J.ppm", "a?b?[2J.ppm"),                 # line end, escape
        (b"a\xc2\x9b2J\xc2\x80.ppm", "a?2J?.ppm"),           # C1: control sequence introducer
        (b"a\x9b2J\xff.ppm", "a?2J?.ppm"),                   # the same as single bytes
        (b"a\x7f\xe2\x80\xaegpj.ppm", "a??gpj.ppm"),         # delete, from right to left
        (b"a\xc0\x9b\xed\xa0\x80.ppm", "a?????.ppm"),        # overlong, surrogate
        (b"a\xf4\x90\x80\x80\xe2\x82.ppm", "a??????.ppm"),   # beyond the last character, cut short
        ("Übergröße 写真 📷.ppm".encode(), "Übergröße 写真 📷.ppm"),
    )

    def test_no_file_takes_the_place_of_a_closed_stream(self):
        """Sentences would be written into it."""
        os.mkfifo(self.path("in.ppm"))
        tool = subprocess.Popen(["sh", "-c", 'exec "$@" <&- >&- 2>&-', "sh", TOOL, "variations",
                                 "in.ppm", "out.ppm", "--red", "1"], cwd=self.folder)
        with open(self.path("in.ppm"), "wb") as pipe:  # the tool has opened its other end
            streams = [os.readlink(f"/proc/{tool.pid}/fd/{number}") for number in range(3)]
            pipe.write(ppm(speckled(4, 3)))
        self.assertEqual(tool.wait(timeout=300), 1)  # it cannot say what it did
        self.assertEqual(streams, ["/dev/null"] * 3)
        self.assertTrue(self.read("out.ppm").startswith(b"P6"))

    def test_names_cannot_drive_a_terminal(self):
        picture = ppm(plain(9, 9, (1, 2, 3)))
        for name, shown in self.NAMES:
            with open(os.path.join(os.fsencode(self.folder), name), "wb") as file:
                file.write(picture)
            for command in (("info", name), ("rotate", "in.ppm", name, "--angle", "3"),
                            ("rotate", b"no" + name, "out.ppm", "--angle", "3")):
                self.write("in.ppm", picture)
                result = subprocess.run([TOOL, *command], cwd=self.folder, capture_output=True,
                                        check=False)
                said = (result.stdout + result.stderr).decode()
                self.assertIn(shown, said)
                self.assertNotRegex(said, "[\0-\x08\x0b-\x1f\x7f-\x9f\u200e\u200f\u202a-\u202e]")


if __name__ == "__main__":
    unittest.main()
