"""Every front door draws the same where an option is left away, and refuses the same."""

import pathlib
import re
import subprocess

import pytest

import defaults
from doors import DOORS, Python, ROOT, TOOL
from table import pictures

COMMITTED = pathlib.Path(__file__).with_name("defaults.txt").read_text()


@pytest.mark.parametrize("name", DOORS)
def test_the_table_of_defaults(name):
    assert defaults.table(DOORS[name]).splitlines() == COMMITTED.splitlines()


def test_natural_sizes():
    import roxe
    photograph = ROOT / "examples/photos/perspective-grid.png"
    for corners in ((150, 14, 400, 113, 300, 147, 64, 40), (0, 0, 500, 2, 3, 180, 480, 175)):
        said = subprocess.run(
            [TOOL, "perspective", photograph, "--dry-run", "--corners",
             ",".join(map(str, corners))], capture_output=True, text=True, check=True).stdout
        width, height = re.fullmatch(r"natural size: (\d+) × (\d+) pixels\n", said).groups()
        assert roxe.natural_size(corners) == (int(width), int(height))


CORNERS_IN_ONE = (0, 0, 0, 0, 5, 5, 9, 0)
FAR = (0, 0, 900, 4, 9, 9, -9, 7)
CROSSING = (0, 0, 90, 90, 90, 0, 0, 90)
REFUSED = (
    ("rotate", {"angle": 3, "about": (200, 3)}),
    ("straighten", {"line": (3, 3, 3, 3)}),
    ("perspective", {"corners": (0, 0, 90, 0, 0, 90, 5, 5)}),
    ("perspective", {"corners": CORNERS_IN_ONE}),
    ("perspective", {"corners": (0, 0, 4, 4, 9, 9, 9, 0)}),
    ("perspective", {"corners": FAR}),
    ("perspective", {"corners": (0, 0, 150, 0, 150, 1, 0, 1), "fit": (1, 200)}),
    ("warp", {"from_": CROSSING, "to": CROSSING}),
    ("auto_gamma", {"region": (0, 0, 201, 3)}),
    ("auto_gamma", {"region": (0, 0, 0, 3)}))
# The properties of GEGL hold no number out of range, and no colour that is none.
UNREADABLE = (
    ("rotate", {"angle": 3601}), ("rotate", {"angle": 3, "background": "redd"}),
    ("tint", {"colour": "redd", "tolerance": 3}),
    ("tint", {"colour": "red", "tolerance": 201}),
    ("temperature", {"tint": 101}), ("shadow_highlight", {"midtone": -101}),
    ("variations", {"level": 7}))


@pytest.mark.parametrize("name", DOORS)
def test_sentences_are_the_same(name):
    """The tool's sentence with its options is a package's with its arguments."""
    image = dict(pictures())["scene 200x150"]
    for operation, options in REFUSED if name == "gegl" else REFUSED + UNREADABLE:
        sentences = []
        for door in (DOORS["tool"], DOORS[name]):
            with pytest.raises(Exception) as refusal:
                door.draw(operation, image, options)
            sentences.append(plain(str(refusal.value)))
        assert sentences[0] == sentences[1]


def plain(sentence):
    """Without what belongs to one door: dashes, quotes, file names, the way to the help."""
    sentence = re.sub(r"^\S+\.ppm: | \(see roxe .*--help\)$", "", sentence)
    return sentence.replace("--", "").replace("from_", "from").replace("'", "").replace(
        ", ", ",").replace("(", "").replace(")", "")


@pytest.mark.parametrize("name", DOORS)
def test_a_straightening_with_nothing_to_do_gives_the_picture(name):
    image = dict(pictures())["noise 61x47"]
    for line in ((3, 0, 3, 40), (0, 9, 60, 9)):
        assert (DOORS[name].draw("straighten", image, {"line": line}) == image).all()
    assert Python.draw("straighten", image, {"line": (3, 0, 3, 40)}) is not image


def test_names_of_colours_are_the_same():
    from roxe._colours import COLOURS
    listed = re.findall(r'\{"(\w+)", \{0x(\w\w), 0x(\w\w), 0x(\w\w)\}\}',
                        (ROOT / "host/colour_names.h").read_text())
    assert {name: "#" + "".join(digits).lower() for name, *digits in listed} == COLOURS
