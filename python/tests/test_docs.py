"""The blocks of Python in the documentation run as they stand, and so does the example."""

import os
import re
import subprocess
import sys

import pytest

from conftest import ROOT


def blocks(path):
    return re.findall(r"^```python\n(.*?)^```$", (ROOT / path).read_text(), re.S | re.M)


@pytest.mark.parametrize("path, count", [("README.md", 1), ("docs/python.md", 3)])
def test_the_blocks_of_a_page_run(path, count, tmp_path, monkeypatch, capsys):
    found = blocks(path)
    assert len(found) == count
    for photograph in (ROOT / "examples/photos").glob("*.jpg"):
        os.symlink(photograph, tmp_path / photograph.name)
    monkeypatch.chdir(tmp_path)
    exec(compile("".join(found), path, "exec"), {})
    for sentence in capsys.readouterr().out.splitlines():
        assert f"\n    {sentence}\n" in (ROOT / path).read_text()


def test_the_example_runs(tmp_path):
    from PIL import Image
    ran = subprocess.run([sys.executable, ROOT / "examples/python/evening.py", tmp_path],
                         capture_output=True, text=True, check=True)
    assert "turned by 2.50 degrees\n" in ran.stdout
    assert "the page is 1690 × 2945 pixels\n" in ran.stdout
    sizes = {path.name: Image.open(path).size for path in tmp_path.iterdir()}
    assert sizes == {"level.jpg": (4011, 2674), "half.jpg": (640, 427), "accent.png": (512, 512),
                     "page.jpg": (1690, 2945), "warmth.jpg": (5120, 427)}
