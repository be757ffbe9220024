"""One table of checksums through every front door."""

import subprocess
from concurrent.futures import ThreadPoolExecutor

import pytest

from doors import DOORS, PROGRAM, ROOT
from table import cases, fnv1a, pictures, target_rows, view

COMMITTED = (ROOT / "tests/checksums/checksums.txt").read_text()
DRAWN_APART = {"rotate", "straighten", "perspective"}  # pixels may stay uncovered


def test_the_table_from_c():
    assert subprocess.run([PROGRAM], capture_output=True, text=True).stdout == COMMITTED


def fill(door, operation, image, options, rows):
    """Draws what the door draws into padded rows that hold something already."""
    target = view(rows, image.shape[1])
    if operation not in DRAWN_APART:
        result = door.draw(operation, image, options)
        target[...] = result[..., None] if result.ndim == 2 else result
        return
    dark, light = (door.draw(operation, image, {**options, "background": background})
                   for background in ("black", "white"))
    covered = (dark == light).all(axis=2)
    target[covered] = dark[covered]


@pytest.mark.parametrize("name", DOORS)
def test_the_table_through_a_door(name):
    committed = dict(line.rsplit(", ", 2)[::2] for line in COMMITTED.splitlines())
    compared = 0
    for picture, image in pictures():
        height, width = image.shape[:2]
        ground = target_rows(height, width)
        asked = [case for case in cases(width, height) if case[1]]
        targets = [ground.copy() for _ in asked]
        with ThreadPoolExecutor(2) as pool:
            list(pool.map(lambda case, rows: fill(DOORS[name], case[1], image, case[2], rows),
                          asked, targets))
        for (case, _, _), checksum in zip(asked, fnv1a(targets)):
            assert f"{checksum:016x}" == committed[f"{case}, {picture}"], f"{case}, {picture}"
            compared += 1
    assert compared == 1140
