"""A recipe over many photographs."""

import os
import pty
import re
import subprocess
import unittest

from pictures import TOOL, ToolTest, pgm, plain, ppm, ppm_rows, snapshot, speckled

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

    def test_comments_and_backgrounds_in_a_recipe(self):
        self.write("recipe", b"rotate --angle 10 --background #102030   # a corner: '\n"
                             b"rotate --angle 10 #\n")
        self.succeed("run", "recipe", self.inputs[0], "--out", "done", "--background", "red")
        self.succeed("rotate", self.inputs[0], "one.ppm", "--angle", 10, "--background", "#102030")
        self.succeed("rotate", "one.ppm", "two.ppm", "--angle", 10, "--background", "red")
        self.assertEqual(self.read("done/photo0.ppm"), self.read("two.ppm"))
        self.write("recipe", b"rotate --angle 10 --quality 80")
        self.refuse(USAGE, "line 1: --quality belongs on the command line, not in a step", "run",
                    "recipe", self.inputs[0], "--out", "out")

    def test_a_byte_order_mark_and_blank_lines_of_all_kinds(self):
        self.write("plain", b"rotate --angle 10\n")
        self.write("marked", b"\xef\xbb\xbfrotate --angle 10\r\n\v\n\f\n \t\n")
        for recipe in ("plain", "marked"):
            self.succeed("run", recipe, self.inputs[0], "--out", recipe + "-out")
        self.assertEqual(self.read("marked-out/photo0.ppm"), self.read("plain-out/photo0.ppm"))

    def test_masks_lie_beside_the_recipe_and_places_fit_every_size(self):
        os.mkdir(self.path("recipes"))
        self.write("recipes/mask.pgm", pgm([[128] * 20] * 30))
        self.write("recipes/evening", b"soft-focus --radius 9 --mask mask.pgm\n"
                                      b"straighten --line 0%,20%,100%,30%  # the shore\n")
        self.succeed("run", "recipes/evening", self.inputs[0], "--out", "done")
        self.succeed("soft-focus", self.inputs[0], "step.ppm", "--radius", 9, "--mask",
                     "recipes/mask.pgm")
        self.succeed("straighten", "step.ppm", "step.ppm", "--line", "0,6,19,9")
        self.assertEqual(self.read("done/photo0.ppm"), self.read("step.ppm"))
        self.write("recipes/other", b"soft-focus --radius 9 --mask '%s'" % os.fsencode(
            self.path("recipes/mask.pgm")))
        self.succeed("run", "recipes/other", self.inputs[0], "--out", "other")
        self.write("percent", b"straighten --line 0%,20%,100%,30%")
        self.succeed("run", "percent", *self.inputs, "--out", "all")
        for i, name in enumerate(self.names):
            self.succeed("straighten", "photos/" + name, "one.ppm", "--line", f"0,6,{19 + i},9")
            self.assertEqual(self.read("all/" + name), self.read("one.ppm"))

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

    def test_a_format_that_is_only_read(self):
        self.write("recipe", b"auto-gamma")
        self.write("photos/photo9.tif", b"II*\0")
        for more in ((), ("--dry-run",)):
            result = self.run_tool("run", "recipe", "photos", "--out", "out", "--overwrite", *more)
            self.assertEqual(result.returncode, 1)
            self.assertIn("roxe: photos/photo9.tif: its format can be read and not written; --format "
                          "names another\n", result.stderr)
            self.assertIn("7 of 8 photographs", result.stdout)

    def test_failures_do_not_stop_the_others(self):
        self.write("photos/photo2.ppm", b"not a picture")
        self.write("photos/photo4.ppm", ppm(plain(3, 3, (1, 2, 3))))  # smaller than the line
        self.write("recipe", b"straighten --line 0,0,19,5")
        result = self.run_tool("run", "recipe", *self.inputs, "photos/none.jpg", "--out", "done")
        self.assertEqual(result.returncode, FAILED)
        self.assertRegex(result.stdout, r"\A5 of 8 photographs done in .* s, written to done; "
                                        r"3 failed\n\Z")
        lines = sorted(result.stderr.splitlines())  # they come as they happen
        self.assertEqual(len(lines), 3)
        self.assertIn("photos/none.jpg: cannot be opened", lines[0])
        self.assertIn("photos/photo2.ppm: is not a JPEG", lines[1])
        self.assertIn("photos/photo4.ppm: the point (19, 5) lies outside", lines[2])
        self.assertEqual(len(os.listdir(self.path("done"))), 5)

    def test_inputs_that_are_no_photographs_are_named_as_what_they_are(self):
        self.write("recipe", b"rotate --angle 10")
        self.write("notes.txt", b"a text")
        self.write("photo", ppm(speckled(5, 5)))
        result = self.run_tool("run", "recipe", "notes.txt", "none", "photo", "--out", "out")
        self.assertEqual(result.returncode, FAILED)
        for words in ("roxe: notes.txt: is not a JPEG", "roxe: none: cannot be opened",
                      "roxe: out/photo: the extension must say"):
            self.assertIn(words, result.stderr)

    def test_originals_are_safe(self):
        self.write("recipe", b"rotate --angle 10")
        before = self.read("photos/photo0.ppm")
        result = self.run_tool("run", "recipe", "photos/photo0.ppm", "--out", "photos")
        self.assertEqual(result.returncode, FAILED)
        self.assertIn("would replace the photograph itself", result.stderr)
        self.assertEqual(self.read("photos/photo0.ppm"), before)

    def test_other_originals_are_safe_by_any_name(self):
        """A result may not replace an input that lies in the folder of results under its name."""
        self.write("recipe", b"rotate --angle 10")
        os.mkdir(self.path("other"))
        os.mkdir(self.path("out"))
        os.link(self.path("photos/photo1.ppm"), self.path("out/photo0.ppm"))  # hard link
        os.symlink("../photos/photo2.ppm", self.path("out/photo3.ppm"))
        os.symlink("../photos", self.path("out/deep"))
        self.write("photos/deep", b"")
        os.unlink(self.path("photos/deep"))
        os.mkdir(self.path("photos/deep"))
        self.write("photos/deep/photo4.ppm", self.read("photos/photo4.ppm"))
        before = {name: self.read("photos/" + name) for name in self.names}
        result = self.run_tool("run", "recipe", "photos", "--out", "out", "--overwrite")
        self.assertEqual(result.returncode, FAILED)
        self.assertIn("photos/photo0.ppm: the result would replace the photograph photos/photo1.ppm",
                      result.stderr)
        self.assertIn("photos/photo3.ppm: out/photo3.ppm is a link, and a batch follows none",
                      result.stderr)
        self.assertIn("photos/deep/photo4.ppm: out/deep is a link", result.stderr)
        self.assertIn("5 of 8 photographs done", result.stdout)
        self.assertEqual({name: self.read("photos/" + name) for name in self.names}, before)

    def test_recipe_and_masks_are_safe(self):
        """They are no inputs, but a result may not replace them either."""
        os.mkdir(self.path("look"))
        self.write("look/photo0.ppm", ppm(speckled(9, 9)))
        os.link(self.path("look/photo0.ppm"), self.path("look/photo1.ppm"))
        self.write("look/photo2.ppm", b"soft-focus --radius 3 --mask photo0.ppm\n")
        before = {name: self.read("look/" + name) for name in os.listdir(self.path("look"))}
        for rehearsal in (("--dry-run",), ()):
            result = self.run_tool("run", "look/photo2.ppm", "photos", "--out", "look", "--overwrite",
                                   *rehearsal)
            self.assertEqual(result.returncode, FAILED)
            for name in ("photo0", "photo1"):
                self.assertIn(f"photos/{name}.ppm: the result would replace look/photo0.ppm, which "
                              "the recipe names", result.stderr)
            self.assertIn("photos/photo2.ppm: the result would replace the recipe look/photo2.ppm",
                          result.stderr)
            self.assertEqual({name: self.read("look/" + name) for name in before}, before)

    def test_names_in_brackets(self):
        self.write("recipe", b"rotate --angle 10")
        for folder in ("[a,b]", "a", "b", "[]"):
            os.mkdir(self.path(folder))
            self.write(folder + "/" + folder.strip("[]") + "1.ppm", ppm(plain(4, 3, (1, 2, 3))))
        self.succeed("run", "recipe", "[a,b]", "--out", "[one]")
        self.assertEqual(os.listdir(self.path("[one]")), ["a,b1.ppm"])
        self.succeed("run", "recipe", "[]", "--out", "none", "a")
        self.assertEqual(sorted(os.listdir(self.path("none"))), ["[]", "a"])
        result = self.run_tool("run", "recipe", "[a]", "--out", "out")
        self.assertEqual(result.returncode, FAILED)
        self.assertIn("./[a]: cannot be opened", result.stderr)
        self.assertFalse(os.path.exists(self.path("out/a1.ppm")))

    def test_what_is_no_file_in_a_folder(self):
        """Opening a pipe would wait for ever."""
        self.write("recipe", b"rotate --angle 10")
        os.mkfifo(self.path("photos/pipe.jpg"))
        self.assertIn("7 of 7 photographs done", self.succeed("run", "recipe", "photos", "--out", "out"))

    def test_what_exists_is_kept(self):
        self.write("recipe", b"rotate --angle 10")
        os.mkdir(self.path("out"))
        self.write("out/photo1.ppm", b"precious")
        run = ("run", "recipe", "photos", "--out", "out")
        result = self.run_tool(*run)
        self.assertEqual(result.returncode, FAILED)
        self.assertIn("out/photo1.ppm: exists already (--overwrite replaces it, --skip-existing "
                      "leaves it as it is)", result.stderr)
        self.assertEqual(self.read("out/photo1.ppm"), b"precious")
        self.assertIn("6 of 7 photographs done", result.stdout)
        self.write("photos/photo9.ppm", self.read("photos/photo0.ppm"))
        self.assertIn("1 of 8 photographs done", text := self.succeed(*run, "--skip-existing"))
        self.assertIn("; 7 left as they were\n", text)
        self.assertEqual(self.read("out/photo1.ppm"), b"precious")
        self.assertIn("8 of 8 photographs done", self.succeed(*run, "--overwrite"))
        self.assertNotEqual(self.read("out/photo1.ppm"), b"precious")
        self.refuse(USAGE, "exclude each other", *run, "--overwrite", "--skip-existing")

    def test_folders_keep_their_places(self):
        self.write("recipe", b"rotate --angle 10")
        for place in ("card/100CANON", "card/101CANON", "card/.trash", "card/edited"):
            os.makedirs(self.path(place))
            self.write(place + "/IMG_0001.PPM", ppm(speckled(9, 9)))
            self.write(place + "/notes.txt", b"a text")
        text = self.succeed("run", "recipe", "card", "--out", "card/edited", "--overwrite")
        self.assertIn("2 of 2 photographs done", text)
        for inputs in (("card/",), ("card/100CANON/IMG_0001.PPM", "card/101CANON/IMG_0001.PPM"),
                       ("card/100CANON", "./card//101CANON")):
            self.succeed("run", "recipe", *inputs, "--out", "card/edited", "--overwrite")
            for folder in ("100CANON", "101CANON"):
                self.assertEqual(os.listdir(self.path("card/edited/" + folder)), ["IMG_0001.PPM"])
                os.unlink(self.path("card/edited/" + folder + "/IMG_0001.PPM"))
        self.succeed("run", "recipe", "card/100CANON", "--out", "one")
        self.assertEqual(os.listdir(self.path("one")), ["IMG_0001.PPM"])
        os.mkdir(self.path("empty"))
        self.refuse(FAILED, "empty: there is no photograph in this folder", "run", "recipe", "empty",
                    "--out", "out")

    def test_folders_that_cannot_be_read(self):
        """Every disk has one. What can be read is done, and the rest is said."""
        self.write("recipe", b"rotate --angle 10")
        for place in ("photos/lost", "photos/below/lost", "photos/open"):
            os.makedirs(self.path(place))
            self.write(place + "/photo.ppm", self.read("photos/photo0.ppm"))
        anyone = self.as_anyone()
        os.mkdir(self.path("out"))
        os.chmod(self.path("out"), 0o777)
        for place in ("photos/lost", "photos/below/lost"):
            os.chmod(self.path(place), 0)
            self.addCleanup(os.chmod, self.path(place), 0o700)
        for words, options in (("8 of 8 photographs would be done; nothing is written", ("--dry-run",)),
                               ("8 of 8 photographs done in", ())):
            result = self.run_tool("run", "recipe", "photos", "--out", "out", *options, **anyone)
            self.assertEqual(result.returncode, FAILED)
            self.assertIn(words, result.stdout)
            self.assertTrue(result.stdout.endswith("; 2 folders could not be read\n"))
            self.assertEqual(sorted(result.stderr.splitlines()), [
                f"roxe: photos/{place}: the folder cannot be read (Permission denied)"
                for place in ("below/lost", "lost")])
        self.assertEqual(sorted(os.listdir(self.path("out"))), ["open", *self.names])
        self.refuse(FAILED, "photos/lost: the folder cannot be read", "run", "recipe", "photos/lost",
                    "--out", "out", **anyone)

    def test_links_to_folders_are_not_followed(self):
        self.write("recipe", b"rotate --angle 10")
        os.mkdir(self.path("photos/below"))
        os.symlink("..", self.path("photos/below/above"))
        os.symlink("photo0.ppm", self.path("photos/link.ppm"))
        self.assertIn("8 of 8 photographs done", self.succeed("run", "recipe", "photos", "--out", "out"))

    def test_a_rehearsal_writes_nothing(self):
        self.write("recipe", b"rotate --angle 10")
        os.mkdir(self.path("out"))
        self.write("out/photo1.ppm", b"precious")
        before = snapshot(self.folder)
        run = ("run", "recipe", "photos", "--out", "out", "--dry-run")
        result = self.run_tool(*run)
        self.assertEqual(result.returncode, FAILED)
        self.assertIn("photos/photo0.ppm -> out/photo0.ppm\n", result.stdout)
        self.assertIn("6 of 7 photographs would be done; nothing is written; 1 failed", result.stdout)
        self.assertIn("exists already", result.stderr)
        self.assertIn("photos/photo1.ppm -> out/photo1.ppm (exists, left as it is)\n",
                      self.succeed(*run, "--skip-existing"))
        self.assertEqual(snapshot(self.folder), before)

    def test_a_rehearsal_finds_what_could_not_be_read_or_written(self):
        self.write("recipe", b"rotate --angle 10")
        os.mkdir(self.path("photos/below"))
        self.write("photos/below/photo0.ppm", self.read("photos/photo0.ppm"))
        os.mkdir(self.path("out"))
        self.write("out/below", b"no folder")
        os.mkdir(self.path("out/photo1.ppm"))
        os.symlink("nothing", self.path("photos/photo2.ppm.link"))
        os.rename(self.path("photos/photo2.ppm.link"), self.path("photos/photo2.ppm"))
        before = snapshot(self.folder)
        run = ("run", "recipe", "photos", "--out", "out", "--overwrite")
        rehearsed, done = self.run_tool(*run, "--dry-run"), None
        self.assertEqual(snapshot(self.folder), before)
        done = self.run_tool(*run)
        for result in (rehearsed, done):
            self.assertEqual(result.returncode, FAILED)
            self.assertIn("roxe: out/photo1.ppm: is a folder, so it cannot be written\n", result.stderr)
            self.assertIn("roxe: photos/photo2.ppm: cannot be opened (No such file or directory)\n",
                          result.stderr)
            self.assertIn("roxe: out/below/photo0.ppm: cannot be written, out/below is no folder\n",
                          result.stderr)
            self.assertIn("5 of 8 photographs", result.stdout)
        result = self.run_tool("run", "recipe", "photos/photo0.ppm", "--out", "recipe", "--dry-run")
        self.assertIn("recipe/photo0.ppm: cannot be written, recipe is no folder", result.stderr)

    def test_progress_without_a_terminal(self):
        self.write("recipe", b"rotate --angle 10")
        self.write("photos/photo3.ppm", b"broken")
        result = self.run_tool("run", "recipe", "photos", "--out", "out", "--progress", 0, "--jobs",
                               1)
        self.assertEqual(result.stderr.splitlines(), [
            "roxe: 1 of 7 done", "roxe: 2 of 7 done", "roxe: 3 of 7 done",
            "roxe: photos/photo3.ppm: is not a JPEG, PNG, TIFF, WebP, PPM or PGM picture",
            "roxe: 3 of 7 done, 1 failed", "roxe: 4 of 7 done, 1 failed",
            "roxe: 5 of 7 done, 1 failed"])  # the last line is the summary

    def test_what_needs_nothing_is_copied(self):
        self.write("recipe", b"rotate --angle 0")
        self.write("photos/text.ppm", b"P3 1 1 9 1 2 3 # as no encoder writes it")
        result = self.run_tool("run", "recipe", "photos", "--out", "out")
        self.assertEqual(result.returncode, 0)
        self.assertIn("note: out/text.ppm: nothing was to be done, copied as it is", result.stderr)
        self.assertEqual(self.read("out/text.ppm"), self.read("photos/text.ppm"))

    def test_two_results_of_one_name(self):
        self.write("recipe", b"rotate --angle 10")
        self.write("photos/photo0.jpg", b"")
        for inputs in (("photos/photo0.ppm", "photos/photo0.jpg", "--format", "png"),
                       ("photos/photo0.ppm", "photos", "--format", "png")):
            self.refuse(USAGE, "would both become out/photo0.png", "run", "recipe", *inputs,
                        "--out", "out")

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
        self.refuse(FAILED, "photos: is a folder, not a recipe", "run", "photos", *self.inputs, "--out",
                    "out")
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
        self.assertIn("[" + "#" * 30 + "] 6 of 7 done, 1 failed", shown)
        # The bar is gone before a sentence, and at the end.
        self.assertRegex(shown, r"\r\x1b\[Kroxe: photos/photo3.ppm: is not [^\n]*\n")
        self.assertTrue(shown.endswith("\r\x1b[K"), shown)
        self.assertNotIn("\r", self.run_tool(*command[1:]).stderr)


if __name__ == "__main__":
    unittest.main()
