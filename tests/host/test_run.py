"""A recipe over many photographs."""

import os
import pty
import re
import subprocess
import unittest

from pictures import TOOL, ToolTest, plain, ppm, ppm_rows, speckled

USAGE, FAILED = 2, 1


def read_all(terminal):
    """Everything that was shown on a terminal whose other end is closed."""
    shown = b""
    try:
        while part := os.read(terminal, 65536):
            shown += part
    except OSError:  # this is how a terminal says that nothing follows
        pass
    os.close(terminal)
    return shown


class Recipes(ToolTest):
    def setUp(self):
        super().setUp()
        os.mkdir(self.path("photos"))
        self.names = [f"photo{i}.ppm" for i in range(7)]
        for i, name in enumerate(self.names):
            self.write("photos/" + name, ppm(speckled(20 + i, 30)))
        self.inputs = ["photos/" + name for name in self.names]

    def test_a_chain_gives_what_its_steps_give_one_by_one(self):
        self.write("recipe", b"# turn twice\n\n  rotate --angle 10 --expand\r\n"
                             b"straighten --line '0,0,9,2'")
        text = self.succeed("run", "recipe", *self.inputs, "--out", "done", "--background", "red")
        self.assertRegex(text, r"\A7 of 7 photographs done in [0-9.]+ s, written to done\n\Z")
        self.assertEqual(sorted(os.listdir(self.path("done"))), self.names)
        for name in self.names:
            self.succeed("rotate", "photos/" + name, "step.ppm", "--angle", 10, "--expand",
                         "--background", "red")
            self.succeed("straighten", "step.ppm", "step.ppm", "--line", "0,0,9,2", "--background",
                         "#ff0000")
            self.assertEqual(self.read("done/" + name), self.read("step.ppm"))

    def test_a_byte_order_mark_and_blank_lines_of_all_kinds(self):
        self.write("plain", b"rotate --angle 10\n")
        self.write("marked", b"\xef\xbb\xbfrotate --angle 10\r\n\v\n\f\n \t\n")
        for recipe in ("plain", "marked"):
            self.succeed("run", recipe, self.inputs[0], "--out", recipe + "-out")
        self.assertEqual(self.read("marked-out/photo0.ppm"), self.read("plain-out/photo0.ppm"))

    def test_the_number_at_a_time_changes_nothing(self):
        self.write("recipe", b"rotate --angle -20")
        self.succeed("run", "recipe", *self.inputs, "--out", "one", "--jobs", 1)
        self.succeed("run", "recipe", *self.inputs, "--out", "many", "--jobs", 7)
        for name in self.names:
            self.assertEqual(self.read("one/" + name), self.read("many/" + name))

    def test_another_format(self):
        self.write("recipe", b"straighten --line 0,0,1,0")
        self.succeed("run", "recipe", *self.inputs, "--out", "a/new/folder", "--format", "png")
        self.assertEqual(sorted(os.listdir(self.path("a/new/folder"))),
                         [name.replace("ppm", "png") for name in self.names])

    def test_failures_do_not_stop_the_others(self):
        self.write("photos/photo2.ppm", b"not a picture")
        self.write("photos/photo4.ppm", ppm(plain(3, 3, (1, 2, 3))))  # smaller than the line
        self.write("recipe", b"straighten --line 0,0,19,5")
        result = self.run_tool("run", "recipe", *self.inputs, "photos/none.jpg", "--out", "done")
        self.assertEqual(result.returncode, FAILED)
        self.assertRegex(result.stdout, r"\A5 of 8 photographs done in .* s, written to done; "
                                        r"3 failed\n\Z")
        lines = result.stderr.splitlines()
        self.assertEqual(len(lines), 3)
        self.assertIn("photos/photo2.ppm: is not a JPEG", lines[0])
        self.assertIn("photos/photo4.ppm: the point (19, 5) lies outside", lines[1])
        self.assertIn("photos/none.jpg: cannot be opened", lines[2])
        self.assertEqual(len(os.listdir(self.path("done"))), 5)

    def test_inputs_that_are_no_photographs_are_named_as_what_they_are(self):
        self.write("recipe", b"rotate --angle 10")
        self.write("notes.txt", b"a text")
        self.write("photo", ppm(speckled(5, 5)))
        result = self.run_tool("run", "recipe", "photos", "notes.txt", "none", "photo", "--out",
                               "out")
        self.assertEqual(result.returncode, FAILED)
        for line, words in zip(result.stderr.splitlines(), (
                "photos: is a folder", "notes.txt: is not a JPEG", "none: cannot be opened",
                "out/photo: the extension must say")):
            self.assertIn(words, line)

    def test_originals_are_safe(self):
        self.write("recipe", b"rotate --angle 10")
        before = self.read("photos/photo0.ppm")
        result = self.run_tool("run", "recipe", "photos/photo0.ppm", "--out", "photos")
        self.assertEqual(result.returncode, FAILED)
        self.assertIn("would replace the photograph itself", result.stderr)
        self.assertEqual(self.read("photos/photo0.ppm"), before)

    def test_two_results_of_one_name(self):
        self.write("recipe", b"rotate --angle 10")
        self.write("photo0.ppm", ppm(plain(9, 9, (1, 2, 3))))
        self.refuse(USAGE, "would both become out/photo0.ppm", "run", "recipe", "photos/photo0.ppm",
                    "photo0.ppm", "--out", "out")

    def test_recipes_that_make_no_sense(self):
        for recipe, words in ((b"", "holds no operation"), (b"# nothing\n\n", "holds no operation"),
                              (b"rotate --angle 1\nposterize", "line 2: there is no operation"),
                              (b"rotate", "line 1: --angle is required"),
                              (b"rotate --angle far", "line 1: --angle needs a number"),
                              (b"rotate --angle 3 in.jpg out.jpg", "expected: in.jpg out.jpg"),
                              (b"\f\n\v", "holds no operation"),
                              (b"rotate --angle '3", "line 1: a quotation mark is not closed"),
                              (b"rotate --help", "line 1: "), (b"info", "no operation 'info'"),
                              (b"\0\1", "is not a text file")):
            self.write("recipe", recipe)
            self.refuse(USAGE, words, "run", "recipe", *self.inputs, "--out", "out")
        self.refuse(FAILED, "none: cannot be opened", "run", "none", *self.inputs, "--out", "out")

    def test_folders_that_cannot_be_made(self):
        self.write("recipe", b"rotate --angle 10")
        for folder in ("recipe", "recipe/below"):
            self.refuse(FAILED, "the folder cannot be made", "run", "recipe", *self.inputs, "--out",
                        folder)

    def test_a_bar_on_a_terminal_and_none_elsewhere(self):
        self.write("recipe", b"rotate --angle 10")
        self.write("photos/photo3.ppm", b"broken")
        command = [TOOL, "run", "recipe", *self.inputs, "--out", "done"]
        terminal, end = pty.openpty()
        run = subprocess.run(command, cwd=self.folder, stdout=subprocess.PIPE, stderr=end,
                             check=False)
        os.close(end)
        shown = read_all(terminal).decode()
        self.assertEqual(run.returncode, FAILED)
        self.assertIn("] 0 of 7", shown)
        self.assertIn("[" + "#" * 30 + "] 7 of 7, 1 failed", shown)
        last = re.split(r"\r\x1b\[K", shown)[-1]  # the bar is gone before the sentences
        self.assertRegex(last, r"\Aroxe: photos/photo3.ppm: is not [^\n]*\n\Z")
        self.assertNotIn("\r", self.run_tool(*command[1:]).stderr)


if __name__ == "__main__":
    unittest.main()
