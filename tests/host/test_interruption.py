"""An interrupted run leaves the old file or the new one."""

import os
import resource
import signal
import subprocess
import time
import unittest

from pictures import TOOL, ToolTest, photo, plain, ppm


class Interruption(ToolTest):
    COMMAND = ("rotate", photo("spices.jpg"), "out.jpg", "--angle", "10")

    def interrupted_at(self, seconds, how):
        """Runs the command over an old file, ends it after a while and returns what is there."""
        self.write("out.jpg", b"old")
        run = subprocess.Popen([TOOL, *self.COMMAND], cwd=self.folder, stdout=subprocess.DEVNULL,
                               stderr=subprocess.PIPE)
        time.sleep(seconds)
        run.send_signal(how)
        run.communicate(timeout=300)
        return self.read("out.jpg")

    def test_any_moment(self):
        start = time.monotonic()
        self.succeed(*self.COMMAND)
        duration = time.monotonic() - start
        new = self.read("out.jpg")
        for how in (signal.SIGINT, signal.SIGTERM, signal.SIGKILL):
            for step in range(12):
                self.assertIn(self.interrupted_at(duration * step / 10, how), (b"old", new))
                names = [name for name in os.listdir(self.folder) if name != "out.jpg"]
                if how == signal.SIGKILL:  # no program can tidy up after this one
                    for name in names:
                        os.unlink(self.path(name))
                else:
                    self.assertEqual(names, [])

    def test_several_at_a_time(self):
        names = [f"{i}.ppm" for i in range(300)]
        for name in names:
            self.write(name, ppm(plain(20, 15, (1, 2, 3))))
        self.write("recipe", b"rotate --angle 10")
        told = 0
        for step in range(8):
            os.makedirs(self.path("out"), exist_ok=True)
            run = subprocess.Popen([TOOL, "run", "recipe", *names, "--out", "out", "--jobs", "4"],
                                   cwd=self.folder, stdout=subprocess.DEVNULL, text=True,
                                   stderr=subprocess.PIPE)
            # Several are done by now, but for the first time.
            while step and len(os.listdir(self.path("out"))) < 20 * step and run.poll() is None:
                time.sleep(0.001)
            run.send_signal(signal.SIGINT if step % 2 else signal.SIGTERM)
            _, said = run.communicate(timeout=300)
            written = os.listdir(self.path("out"))
            if run.returncode < 0 and said:  # it had begun and was not at its end
                self.assertEqual(said, f"roxe: interrupted: {len(written)} of 300 done\n")
                told += 1
            for name in written:
                self.assertIn(name, names)
                self.assertEqual(len(self.read("out/" + name)), len(self.read(name)))
                os.unlink(self.path("out/" + name))
        self.assertGreater(told, 0)

    def test_no_space_for_the_result(self):
        self.write("out.jpg", b"old")
        self.refuse(1, "out.jpg: cannot be written (File too large)", *self.COMMAND,
                    preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (9999, 9999)))

    def test_a_failed_run_leaves_the_old_file(self):
        self.write("out.jpg", b"old")
        self.write("in.jpg", b"broken")
        self.refuse(1, "is not a JPEG", "rotate", "in.jpg", "out.jpg", "--angle", "10")


if __name__ == "__main__":
    unittest.main()
