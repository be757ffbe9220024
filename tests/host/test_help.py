"""Help, the manual page and completion: three views of one table."""

import os
import pty
import re
import select
import shutil
import subprocess
import unittest

from pictures import TOOL, ToolTest

NO_OPTIONS = {"help", "manual", "info", "pick"}
COMPLETIONS = os.path.join(os.path.dirname(__file__), "..", "..", "host", "completions")


class Help(ToolTest):
    def commands(self):
        listed = self.succeed("--help").split("Commands:")[1]
        return re.findall(r"^  ([a-z-]+) {2,}", listed, re.MULTILINE)

    def test_help_of_a_command(self):
        self.assertIn("soft-focus", self.commands())
        for name in self.commands():
            text = self.succeed("help", name)
            self.assertIn(f"Usage: roxe {name} ", text)
            self.assertEqual(self.succeed(name, "--help"), text)
        self.assertEqual(self.succeed("help"), self.succeed("--help"))

    def test_every_option_says_what_happens_without_it(self):
        for name in self.commands():
            text = re.sub(r"\n {20,}", "  ", self.succeed("help", name))
            options = re.findall(r"^  (--\S+) ?(\S+)? ?(\(required\))?  +(.*)$", text, re.MULTILINE)
            self.assertGreater(len(options) + len(NO_OPTIONS & {name}), 0, text)
            for option, form, required, meaning in options:
                wanted = 1 if form and not required else 0
                self.assertEqual(meaning.count("(default: "), wanted, (name, option, meaning))

    def test_the_manual_page(self):
        page = self.succeed("manual")
        for name in self.commands():
            self.assertIn(f"\n.SS roxe {name} ".replace("-", "\\-"), page)
        self.assertIn("\\fB\\-\\-mask\\-radius\\fR \\fIN\\fR\nthe same for the mask", page)
        if shutil.which("groff"):
            result = subprocess.run(["groff", "-man", "-Tutf8", "-ww"], input=page, text=True,
                                    capture_output=True, check=False)
            self.assertEqual((result.returncode, result.stderr), (0, ""))
            self.assertIn("length of the window that is averaged, in pixels", " ".join(result.stdout.split()))


class Completion(ToolTest):
    def candidates(self, *words):
        lines = self.succeed("complete", "--", *words).splitlines()
        return [line.split("\t")[0] for line in lines]

    def test_candidates(self):
        self.assertIn("straighten", self.candidates("st"))
        self.assertIn("straighten", self.candidates("help", ""))
        self.assertIn("--mask-radius", self.candidates("soft-focus", "in.jpg", "--ma"))
        self.assertIn("--version", self.candidates("--"))
        self.assertEqual(self.candidates("run", "--format", "p")[:2], ["jpg", "png"])
        for words in (("rotate", ""), ("soft-focus", "--mask", "a"), ("nothing", "")):
            self.assertEqual(self.candidates(*words), [])  # the shell offers files

    def tools(self):
        """An environment in which roxe is found."""
        os.symlink(TOOL, self.path("roxe"))
        return {**os.environ, "PATH": self.folder + ":" + os.environ["PATH"], "TERM": "dumb"}

    def test_bash(self):
        script = (f". {COMPLETIONS}/roxe.bash; COMP_WORDS=(roxe soft-focus --mask-r); COMP_CWORD=2;"
                  "_roxe; echo ${COMPREPLY[@]}")
        said = subprocess.run(["bash", "-c", script], env=self.tools(), text=True,
                              capture_output=True, check=True).stdout
        self.assertEqual(said, "--mask-radius\n")

    @unittest.skipUnless(shutil.which("fish"), "there is no fish")
    def test_fish(self):
        self.write("photo.jpg", b"")
        for line, wanted in (("roxe str", "straighten\tLevel"), ("roxe run --format j", "jpg"),
                             ("roxe rotate --exp", "--expand\tmake"), ("roxe rotate ph", "photo.jpg")):
            said = subprocess.run(["fish", "--no-config", "-c",
                                   f"source {COMPLETIONS}/roxe.fish; complete -C '{line}'"],
                                  env={**self.tools(), "HOME": self.folder}, cwd=self.folder,
                                  text=True, capture_output=True, check=True).stdout
            os.unlink(self.path("roxe"))
            self.assertTrue(said.startswith(wanted), (line, said))

    @unittest.skipUnless(shutil.which("zsh"), "there is no zsh")
    def test_zsh(self):
        self.write("photo.jpg", b"")
        for line, wanted in ((b"roxe straig", b"straighten"), (b"roxe tint --mask-o", b"--mask-only"),
                             (b"roxe rotate pho", b"photo.jpg")):
            shell, terminal = pty.openpty()
            start = f"fpath=({COMPLETIONS} $fpath); autoload -U compinit; compinit -u -D; echo READY"
            run = subprocess.Popen(["zsh", "-f", "-i"], stdin=terminal, stdout=terminal,
                                   stderr=terminal, env=self.tools(), cwd=self.folder,
                                   start_new_session=True)
            os.close(terminal)
            os.write(shell, start.encode() + b"\n")
            self.wait_for(shell, b"\nREADY")
            os.write(shell, line + b"\t")
            self.wait_for(shell, wanted)
            run.kill()
            run.wait()
            os.close(shell)
            os.unlink(self.path("roxe"))

    def wait_for(self, terminal, words):
        """Reads what a terminal shows until these words come."""
        shown = b""
        while words not in shown.replace(b"\r", b""):
            ready, _, _ = select.select([terminal], [], [], 60)
            self.assertTrue(ready, (words, shown))
            shown += os.read(terminal, 65536)


if __name__ == "__main__":
    unittest.main()
