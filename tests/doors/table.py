"""The table of checksums as the front doors see it: the same pictures, cases and checksums as in C."""

import math

import numpy as np


class Generator:
    def __init__(self, state):
        self.state = state & 0xFFFFFFFF

    def next(self):
        self.state = (self.state * 1664525 + 1013904223) & 0xFFFFFFFF
        return self.state >> 16


def padded(height, width, padding, paint):
    """Rows of bytes with padding of 0xA5 at their ends."""
    rows = np.full((height, 3 * width + padding), 0xA5, np.uint8)
    for y in range(height):
        rows[y, :3 * width] = [paint(x, y, c) & 255 for x in range(width) for c in range(3)]
    return rows


def view(rows, width):
    """The picture in padded rows."""
    return np.ndarray((len(rows), width, 3), np.uint8, rows, 0, (rows.shape[1], 3, 1))


def pictures():
    """(name, picture), painted from whole numbers only."""
    noise = Generator(1)

    def random(x, y, c):
        return noise.next()

    def slopes(x, y, c):
        return (x, y, (x + y) // 2)[c]

    def scene(x, y, c):
        block = Generator(x // 23 * 977 + y // 17 * 131 + c * 7919)
        block.next()
        return 20 + block.next() % 200 + noise.next() % 16

    def greys(x, y, c):
        return 3 * x + y

    def white(x, y, c):
        return 255

    for name, width, height, padding, paint in (
            ("noise 61x47", 61, 47, 0, random), ("noise 130x21 padded", 130, 21, 5, random),
            ("slopes 100x90", 100, 90, 0, slopes), ("scene 200x150", 200, 150, 8, scene),
            ("scene 97x211 padded", 97, 211, 1, scene), ("greys 64x64", 64, 64, 0, greys),
            ("white 40x30", 40, 30, 0, white), ("noise 5x4", 5, 4, 2, random),
            ("noise 1x1", 1, 1, 0, random)):
        yield name, view(padded(height, width, padding, paint), width)


def target_rows(height, width):
    """What the target of every case holds before the call: rows with four bytes of padding."""
    return padded(height, width, 4, lambda x, y, c: 17 * x + 31 * y + 101 * c)


def affine_corners(width, height, inset):
    return (inset, inset // 2, width - 1, inset, width - 2 - inset, height - 1, int(inset / 3),
            height - 2 - inset // 2)


def cases(width, height):
    """(first field of the line, operation, options) in the table's order.

    The operation is None where no front door can be asked for what the library is asked for: angles
    beyond a half turn, centres and lines outside the picture, areas that are not the whole result.
    """
    for angle in (0.0, 0.017, -0.05, 0.127, 0.785, 1.4835, 2.5, -3.0, 5.0):
        single = np.float32(angle)
        degrees = float(single) * 180 / math.pi
        same = np.float32(math.remainder(degrees, 360) * math.pi / 180) == single
        yield (f"rotate {angle:f}", "rotate" if same else None,
               {"angle": degrees, "edges": "keep"})
    yield "rotate off centre", None, {}
    for line in ((0, 0, 100, 3), (5, 90, 2, 1), (9, 9, -80, 70)):
        inside = all(0 <= x < width and 0 <= y < height for x, y in (line[:2], line[2:]))
        yield ("straighten " + " ".join(map(str, line)), "straighten" if inside else None,
               {"line": line, "edges": "keep"})
    for inset in (0, 1, 5, 12):
        corners = affine_corners(width, height, inset)
        yield (f"affine {inset}", "perspective" if min(width, height) > 30 else None,
               {"corners": corners, "size": (width, height), "edges": "keep"})
        yield f"affine onto corners {inset}", None, {}
        yield f"perspective {inset}", None, {}
    y, x = np.mgrid[:height, :width]
    mask = np.where((x // 9 + y // 7) % 2, 255, 4 * x).astype(np.uint8)
    for radius in (0, 2, 3, 8, 21, 100, 400):
        operation = "soft_focus" if radius > 0 else None
        yield f"soft focus {radius}", operation, {"radius": radius}
        yield (f"soft focus masked {radius}", operation,
               {"radius": radius, "mask": mask, "mask_radius": max(1, radius // 2)})
    for blue, green, red in ((60, 90, 180), (255, 0, 0), (128, 128, 128), (3, 2, 1)):
        for tolerance in (0, 40, 80, 200):
            words = f"{blue} {green} {red} {tolerance}"
            selection = {"colour": f"#{red:02X}{green:02X}{blue:02X}", "tolerance": tolerance}
            yield (f"replace colour {words}", "replace_colour",
                   {**selection, "hue": 75, "saturation": -20, "value": 30})
            yield f"replace colour mask {words}", "colour_mask", selection
            yield f"tint {words}", "tint", selection
    yield "tint mask", "colour_mask", {"colour": "#B45A3C", "tolerance": 80}
    for temperature in (-100, -37, 0, 30, 100):
        for tint in (-60, 0, 45):
            yield (f"temperature {temperature} {tint}", "temperature",
                   {"temperature": temperature, "tint": tint})
    yield "auto gamma", "auto_gamma", {}
    yield "auto gamma in a region", None, {}
    for shadow in (0, 10, 60):
        for highlight in (0, 35, 100):
            for midtone in (-50, 0, 25):
                yield (f"shadow highlight {shadow} {highlight} {midtone}", "shadow_highlight",
                       {"shadow": shadow, "highlight": highlight, "midtone": midtone})
    for level in (0, 3, 6):
        for steps in (-7, 0, 2, 40):
            yield (f"variations {steps} {level}", "variations",
                   {"red": steps, "green": 1, "blue": -steps, "dark": 1, "level": level})


def fnv1a(buffers):
    """The FNV-1a checksums of 64 bits of many buffers of one length, side by side."""
    checksums = np.full(len(buffers), 14695981039346656037, np.uint64)
    prime = np.uint64(1099511628211)
    for byte in np.stack([buffer.ravel() for buffer in buffers], axis=1).astype(np.uint64):
        checksums = (checksums ^ byte) * prime
    return checksums


def fnv1a_of_one(buffer):
    """The same of one buffer, which is faster alone."""
    checksum = 14695981039346656037
    for byte in buffer.tobytes():
        checksum = (checksum ^ byte) * 1099511628211 & 0xFFFFFFFFFFFFFFFF
    return checksum
