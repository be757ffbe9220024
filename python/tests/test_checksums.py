"""The pictures and parameters of the table of checksums that every door knows, through the binding: the
same bytes as from C.

What the package's functions can be asked for goes through them, into padded targets; what only the
library can be asked for goes through its declared functions.
"""

from ctypes import byref

import numpy as np

import roxe
from roxe._images import record
from roxe._native import PixelRect, Quad, library
from table import affine_corners, cases, fnv1a, pictures, target_rows, view
from conftest import ROOT

COMMITTED = ROOT / "tests/checksums/checksums.txt"


def ask_the_package(operation, image, options, out):
    if operation == "colour_mask":
        out[...] = roxe.colour_mask(image, **options)[..., None]
    else:
        getattr(roxe, operation)(image, out=out, **options)
    return 0


def ask_the_library(name, image, out):
    """The status of a case that is beyond the package's functions."""
    source, target = record(image, "image"), record(out, "out")
    height, width = out.shape[:2]
    what, *numbers = name.rsplit(" ", 1)[0], float(name.split()[-1]) if name[-1].isdigit() else 0
    number = numbers[0]
    if name == "rotate off centre":
        return library().roxeRotateImage(source, -3, 7, 0.3, target, 11, -2)
    if what == "rotate":
        return library().roxeRotateImage(source, width // 2, height // 2, number, target,
                                         width // 2, height // 2)
    if name.startswith("straighten"):
        line = map(int, name.split()[1:])
        return library().roxeuAutoStraightenImage(source, *line, target)
    if name == "auto gamma in a region":
        region = PixelRect(-4, 0, (width + 1) // 2, (height + 1) // 2)
        return library().roxeAutoGamma(source, target, byref(region))
    if name == "soft focus 0":
        return library().roxeSoftFocus(source, target, None, 0, 0)
    if name == "soft focus masked 0":
        mask = np.zeros((height, width), np.uint8)
        y, x = np.mgrid[:height, :width]
        mask[...] = np.where((x // 9 + y // 7) % 2, 255, 4 * x)
        return library().roxeSoftFocus(source, target, record(mask, "mask", 1), 0, 0)
    corners = Quad(*affine_corners(width, height, int(number)))
    if what == "affine":
        return library().roxeAffineTransform(source, target, corners, None,
                                             PixelRect(0, 0, width, height))
    if what == "affine onto corners":
        places = Quad(-2, -3, width + 1, 1, width, height, 3, height - 1)
        return library().roxeAffineTransform(source, target, corners, places,
                                             PixelRect(-5, -5, width - 1, height + 9))
    assert what == "perspective"
    return library().roxePerspectiveDistortionCorrection(source, target, corners, 0, 0,
                                                         PixelRect(1, 2, width, height))


def test_the_table_of_checksums_through_the_binding():
    lines = {}
    for column, (picture, image) in enumerate(pictures()):
        height, width = image.shape[:2]
        ground = target_rows(height, width)
        targets, heads = [], []
        for name, operation, options in cases(width, height):
            rows = ground.copy()
            out = view(rows, width)
            status = (ask_the_package(operation, image, options, out) if operation
                      else ask_the_library(name, image, out))
            targets.append(rows)
            heads.append(f"{name}, {picture}, {status}")
        for row, (head, checksum) in enumerate(zip(heads, fnv1a(targets))):
            lines[row, column] = f"{head}, {checksum:016x}"
    assert len(lines) == 1296
    assert [lines[place] for place in sorted(lines)] == COMMITTED.read_text().splitlines()[:1296]
