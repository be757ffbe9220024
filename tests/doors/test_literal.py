"""Every front door against a literal version of edges, quarter turns, canvases and crops.

literal.txt is printed by C code that shares nothing with the doors, over the references of the
operations: roxe_checksums --doors --reference. Its rows are commands of the tool.
"""

import pathlib
import shlex
import subprocess

import pytest

from doors import DOORS, PROGRAM, Refused
from table import fnv1a_of_one, pictures

COMMITTED = pathlib.Path(__file__).with_name("literal.txt").read_text()


def numbers(text):
    return tuple(int(number) for number in text.replace("x", ",").split(","))


MEANINGS = {"angle": float, "about": numbers, "line": numbers, "corners": numbers, "from": numbers,
            "to": numbers, "size": numbers, "colour": str, "background": str, "edges": str}


def operation_of(command):
    """rotate --angle 5 --crop: the package's name and arguments."""
    name, *words = [part for word in shlex.split(command) for part in word.split("=")]
    options = {}
    while words:
        option = words.pop(0).removeprefix("--").replace("-", "_")
        value = words.pop(0) if words and not words[0].startswith("--") else True
        key = "from_" if option == "from" else option
        options[key] = value if value is True or option == "crop" else MEANINGS.get(
            option, int)(value)
    if options.pop("mask_only", False):
        return "colour_mask", options
    return name.replace("-", "_"), options


@pytest.mark.parametrize("kind", ((), ("--reference",)))
def test_the_table_from_c(kind):
    assert subprocess.run([PROGRAM, "--doors", *kind], capture_output=True,
                          text=True).stdout == COMMITTED


@pytest.mark.parametrize("name", DOORS)
def test_the_table_through_a_door(name):
    images, compared, wrong = dict(pictures()), 0, []
    for line in COMMITTED.splitlines():
        command, picture, expected = line.split("; ")
        operation, options = operation_of(command)
        try:
            drawn = DOORS[name].draw(operation, images[picture], options)
            if drawn.ndim == 2:
                drawn = drawn[..., None].repeat(3, axis=2)
            height, width = drawn.shape[:2]
            result = f"{width}x{height}, {fnv1a_of_one(drawn):016x}"
        except Refused:
            result = "refused"
        compared += result != "refused"
        if result != expected:
            wrong.append((line, result))
    assert not wrong
    assert compared == 529
