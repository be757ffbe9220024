"""The table of checksums through the binding: the same bytes as from C.

Each case goes through the package's own function where that can express it; what only the library
can say (angles beyond a half turn, centres outside the picture, areas larger than the result) goes
through the declared functions.
"""

import math
import pathlib
from ctypes import byref

import numpy as np

import roxe
from roxe._images import record
from roxe._native import PixelRect, Quad, library

COMMITTED = pathlib.Path(__file__).parents[2] / "tests/checksums/checksums.txt"


class Generator:
    def __init__(self, state):
        self.state = state

    def next(self):
        self.state = (self.state * 1664525 + 1013904223) & 0xFFFFFFFF
        return self.state >> 16


def painted(height, width, padding, paint):
    """A view with padded rows; everything else holds 0xA5 as in C."""
    buffer = np.full((height, 3 * width + padding), 0xA5, np.uint8)
    for y in range(height):
        buffer[y, :3 * width] = [paint(x, y, c) & 255 for x in range(width) for c in range(3)]
    return buffer[:, :3 * width].reshape(height, width, 3), buffer


def view(buffer, width):
    return np.ndarray((len(buffer), width, 3), np.uint8, buffer, 0, (buffer.shape[1], 3, 1))


def pictures():
    noise = Generator(1)

    def random(x, y, c):
        return noise.next()

    def slopes(x, y, c):
        return (x, y, (x + y) // 2)[c]

    def scene(x, y, c):
        block = Generator((x // 23 * 977 + y // 17 * 131 + c * 7919) & 0xFFFFFFFF)
        block.next()
        return 20 + block.next() % 200 + noise.next() % 16

    for name, width, height, padding, paint in (
            ("noise 61x47", 61, 47, 0, random), ("noise 130x21 padded", 130, 21, 5, random),
            ("slopes 100x90", 100, 90, 0, slopes), ("scene 200x150", 200, 150, 8, scene),
            ("scene 97x211 padded", 97, 211, 1, scene),
            ("greys 64x64", 64, 64, 0, lambda x, y, c: 3 * x + y),
            ("white 40x30", 40, 30, 0, lambda x, y, c: 255), ("noise 5x4", 5, 4, 2, random),
            ("noise 1x1", 1, 1, 0, random)):
        yield name, view(painted(height, width, padding, paint)[1], width)


def corners_of(image, inset):
    height, width = image.shape[:2]
    return [inset, inset // 2, width - 1, inset, width - 2 - inset, height - 1,
            int(inset / 3), height - 2 - inset // 2]


def colour_text(blue, green, red):
    return f"#{red:02X}{green:02X}{blue:02X}"


def cases():
    """(name, run): run(image, out) gives the status. `own` cases go through the package."""
    native = library()

    def bare(name, run):
        return name, lambda image, out: run(record(image, "image"), record(out, "out"))

    def own(name, run):
        return name, lambda image, out: run(image, out) is not out  # 0 is success

    for angle in (0.0, 0.017, -0.05, 0.127, 0.785, 1.4835, 2.5, -3.0, 5.0):
        name, single = f"rotate {angle:f}", float(np.float32(angle))
        degrees = single * 180 / math.pi
        if np.float32(math.remainder(degrees, 360) * math.pi / 180) == np.float32(angle):
            yield own(name, lambda image, out, degrees=degrees: roxe.rotate(
                image, angle=degrees, edges="keep", out=out))
        else:
            yield bare(name, lambda s, d, single=single: native.roxeRotateImage(
                s, s.width // 2, s.height // 2, single, d, d.width // 2, d.height // 2))
    yield bare("rotate off centre", lambda s, d: native.roxeRotateImage(s, -3, 7, 0.3, d, 11, -2))
    for line in ((0, 0, 100, 3), (5, 90, 2, 1), (9, 9, -80, 70)):
        yield bare("straighten " + " ".join(map(str, line)),
                   lambda s, d, line=line: native.roxeuAutoStraightenImage(s, *line, d))
    for inset in (0, 1, 5, 12):
        def affine(image, out, inset=inset):
            quad = Quad(*corners_of(image, inset))
            height, width = out.shape[:2]
            return native.roxeAffineTransform(record(image, "image"), record(out, "out"), quad, None,
                                              PixelRect(0, 0, width, height))

        def onto(image, out, inset=inset):
            height, width = out.shape[:2]
            places = Quad(-2, -3, width + 1, 1, width, height, 3, height - 1)
            return native.roxeAffineTransform(
                record(image, "image"), record(out, "out"), Quad(*corners_of(image, inset)), places,
                PixelRect(-5, -5, width - 1, height + 9))

        def perspective(image, out, inset=inset):
            height, width = out.shape[:2]
            return native.roxePerspectiveDistortionCorrection(
                record(image, "image"), record(out, "out"), Quad(*corners_of(image, inset)), 0, 0,
                PixelRect(1, 2, width, height))

        yield f"affine {inset}", affine
        yield f"affine onto corners {inset}", onto
        yield f"perspective {inset}", perspective
    for radius in (0, 2, 3, 8, 21, 100, 400):
        def masked(image, out, radius=radius):
            height, width = image.shape[:2]
            y, x = np.mgrid[:height, :width]
            mask = np.where((x // 9 + y // 7) % 2, 255, 4 * x).astype(np.uint8)
            if radius:
                return roxe.soft_focus(image, radius=radius, mask=mask,
                                       mask_radius=max(1, radius // 2), out=out) is not out
            return native.roxeSoftFocus(record(image, "image"), record(out, "out"),
                                        record(mask, "mask", 1), radius, radius // 2)

        if radius:
            yield own(f"soft focus {radius}", lambda image, out, radius=radius: roxe.soft_focus(
                image, radius=radius, out=out))
        else:
            yield bare("soft focus 0", lambda s, d: native.roxeSoftFocus(s, d, None, 0, 0))
        yield f"soft focus masked {radius}", masked
    for colour in ((60, 90, 180), (255, 0, 0), (128, 128, 128), (3, 2, 1)):
        for tolerance in (0, 40, 80, 200):
            words = " ".join(map(str, (*colour, tolerance)))
            what = {"colour": colour_text(*colour), "tolerance": tolerance}

            def selected(image, out, what=what):
                out[...] = roxe.colour_mask(image, **what)[..., None]
                return out

            yield own("replace colour " + words, lambda image, out, what=what: roxe.replace_colour(
                image, hue=75, saturation=-20, value=30, out=out, **what))
            yield own("replace colour mask " + words, selected)
            yield own("tint " + words, lambda image, out, what=what: roxe.tint(
                image, out=out, **what))
    yield bare("tint mask", lambda s, d: native.roxeColorTintMask(s, d, 60, 90, 180, 80))
    for temperature in (-100, -37, 0, 30, 100):
        for tint in (-60, 0, 45):
            yield own(f"temperature {temperature} {tint}",
                      lambda image, out, temperature=temperature, tint=tint: roxe.temperature(
                          image, temperature=temperature, tint=tint, out=out))
    yield own("auto gamma", lambda image, out: roxe.auto_gamma(image, out=out))
    yield bare("auto gamma in a region", lambda s, d: native.roxeAutoGamma(
        s, d, byref(PixelRect(-4, 0, (s.width + 1) // 2, (s.height + 1) // 2))))
    for shadow in (0, 10, 60):
        for highlight in (0, 35, 100):
            for midtone in (-50, 0, 25):
                yield own(f"shadow highlight {shadow} {highlight} {midtone}",
                          lambda image, out, amounts=(shadow, highlight, midtone):
                          roxe.shadow_highlight(image, shadow=amounts[0], highlight=amounts[1],
                                                midtone=amounts[2], out=out))
    for level in (0, 3, 6):
        for steps in (-7, 0, 2, 40):
            yield own(f"variations {steps} {level}",
                      lambda image, out, steps=steps, level=level: roxe.variations(
                          image, red=steps, green=1, blue=-steps, dark=1, level=level, out=out))


def fnv1a(buffers):
    """The FNV-1a checksums of 64 bits of many buffers of one length, side by side."""
    hashes = np.full(len(buffers), 14695981039346656037, np.uint64)
    prime = np.uint64(1099511628211)
    for byte in np.stack([buffer.ravel() for buffer in buffers], axis=1).astype(np.uint64):
        hashes = (hashes ^ byte) * prime
    return hashes


def test_the_table_of_checksums_through_the_binding():
    work = list(cases())
    lines = {}
    for picture_index, (picture_name, image) in enumerate(pictures()):
        height, width = image.shape[:2]
        _, ground = painted(height, width, 4, lambda x, y, c: 17 * x + 31 * y + 101 * c)
        targets, statuses = [], []
        for _, run in work:
            buffer = ground.copy()
            statuses.append(int(run(image, view(buffer, width))))
            targets.append(buffer)
        for case_index, checksum in enumerate(fnv1a(targets)):
            lines[case_index, picture_index] = (
                f"{work[case_index][0]}, {picture_name}, {statuses[case_index]}, {checksum:016x}")
    assert [lines[key] for key in sorted(lines)] == COMMITTED.read_text().splitlines()
