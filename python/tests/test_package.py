"""The types hold, and the package installs offline with the library inside."""

import os
import pathlib
import subprocess
import sys
import zipfile

PACKAGE = pathlib.Path(__file__).resolve().parents[1]


def test_strict_types(tmp_path):
    done = subprocess.run(["mypy", "--strict", "--cache-dir", tmp_path, "roxe"], cwd=PACKAGE,
                          capture_output=True, text=True)
    assert done.returncode == 0, done.stdout


def test_a_wheel_carries_the_library_and_runs_without_the_sources(tmp_path):
    # A copy, so that nothing is built in the checkout; ROXE_LIBRARY spares compiling once more.
    copy = tmp_path / "python"
    subprocess.run(["cp", "-r", PACKAGE, copy], check=True)
    subprocess.run([sys.executable, "-m", "pip", "wheel", "--no-build-isolation", "--no-deps",
                    "--no-index", "-q", "-w", tmp_path, "."], cwd=copy, check=True)
    wheel, = tmp_path.glob("roxe-1.0.0-py3-none-linux_*.whl")
    names = zipfile.ZipFile(wheel).namelist()
    assert "roxe/libroxe.so.1" in names and "roxe/py.typed" in names

    subprocess.run([sys.executable, "-m", "pip", "install", "--no-deps", "--no-index", "-q",
                    "--target", tmp_path / "site", wheel], check=True)
    kept = {key: value for key, value in os.environ.items() if key != "ROXE_LIBRARY"}
    ran = subprocess.run(
        [sys.executable, "-c",
         "import numpy, roxe, roxe._native\n"
         "print(roxe.rotate(numpy.ones((2, 3, 3), numpy.uint8), angle=90).shape)\n"
         "print(roxe._native.library()._name)"],
        env={**kept, "PYTHONPATH": str(tmp_path / "site")}, cwd=tmp_path, capture_output=True,
        text=True, check=True)
    assert ran.stdout.splitlines() == ["(3, 2, 3)", str(tmp_path / "site/roxe/libroxe.so.1")]
