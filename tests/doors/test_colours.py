"""The names of colours mean the same to the tool and to the Python package."""

import subprocess

from doors import TOOL, write
from roxe._colours import COLOURS
from table import pictures


def test_all_names(tmp_path):
    source = write(tmp_path / "in.ppm", dict(pictures())["noise 1x1"])
    for name, value in COLOURS.items():
        said = subprocess.run([TOOL, "tint", source, tmp_path / "out.ppm", "--colour", name,
                               "--tolerance", "3"], capture_output=True, text=True, check=True)
        assert f": kept {value.upper()} within 3" in said.stdout, name
    assert len(COLOURS) == 148
