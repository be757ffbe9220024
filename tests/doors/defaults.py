"""The table of the doors' defaults: what each draws where an option is left away.

    python3 tests/doors/defaults.py DOOR     # prints the table through one door
"""

import hashlib
import sys
from concurrent.futures import ThreadPoolExecutor

from doors import DOORS, Refused
from table import pictures

SHOWN = ("noise 61x47", "scene 200x150", "greys 64x64", "white 40x30", "noise 5x4", "noise 1x1")


def cases(width, height):
    """(operation, options) on a picture of this size."""
    for angle in (0, 90, -90, 180, 270, 360, 450, -3600, 0.001, 7.3, -41.5, 89.999, 133, 200.25):
        yield "rotate", {"angle": angle}
        yield "rotate", {"angle": angle, "expand": True, "background": "purple"}
        yield "rotate", {"angle": angle, "crop": True}
        yield "rotate", {"angle": angle, "crop": "free"}
        yield "rotate", {"angle": angle, "crop": "free", "edges": "keep"}
        yield "rotate", {"angle": angle, "about": (width // 3, height - 1)}
    for line in ((0, 0, width - 1, height // 9), (width - 1, 0, 0, height - 1),
                 (width // 2, 0, width // 3, height - 1), (0, height - 1, width - 1, 0),
                 (0, 0, 0, height - 1), (0, 0, width - 1, 0), (0, 0, 0, 0)):
        yield "straighten", {"line": line}
        yield "straighten", {"line": line, "background": "#e07a2c"}
        yield "straighten", {"line": line, "crop": "fit"}
        yield "straighten", {"line": line, "crop": "free"}
        yield "straighten", {"line": line, "crop": True, "edges": "keep"}
    whole = (0, 0, width, 0, width, height, 0, height)
    slanted = (width // 9, height // 8, width - 1, 1, width - width // 7, height, 1, height - 1)
    mixed = slanted[4:6] + slanted[0:2] + slanted[2:4] + slanted[6:8]
    for corners in (whole, slanted, mixed):
        yield "perspective", {"corners": corners}
        yield "perspective", {"corners": corners, "size": (40, 25), "background": "Orange"}
        yield "perspective", {"corners": corners, "fit": (50, 60)}
        yield "perspective", {"corners": corners, "edges": "keep"}
        yield "warp", {"from_": corners, "to": whole}
        yield "warp", {"from_": corners, "to": slanted, "background": "#fed"}
        yield "warp", {"from_": corners, "to": (30, 20, 0, 20, 0, 0, 30, 0), "size": (31, 22)}
    for radius in (1, 4, 31):
        yield "soft_focus", {"radius": radius}
    for colour in ("#B45A3C", "teal", "Olive", "#123"):
        selection = {"colour": colour, "tolerance": 110}
        yield "replace_colour", selection
        yield "replace_colour", {**selection, "hue": 200}
        yield "replace_colour", {**selection, "saturation": 40}
        yield "replace_colour", {**selection, "value": -30}
        yield "colour_mask", selection
        yield "tint", selection
    yield "temperature", {}
    yield "temperature", {"temperature": 25}
    yield "temperature", {"tint": -25}
    yield "temperature", {"grey": (width // 3, height // 2)}
    yield "auto_gamma", {}
    yield "auto_gamma", {"region": (0, 0, width, (height + 1) // 2)}
    yield "shadow_highlight", {}
    yield "shadow_highlight", {"shadow": 35}
    yield "shadow_highlight", {"highlight": 35}
    yield "shadow_highlight", {"midtone": 35}
    yield "variations", {}
    for name in ("red", "green", "blue", "dark"):
        yield "variations", {name: 2}
        yield "variations", {name: -2, "level": 5}


def words(options):
    return " ".join(f"{name}={str(value).replace(' ', '')}" for name, value in options.items())


def line(door, picture, image, operation, options):
    """Operation, options, picture; size and start of the SHA-256 of the result, or the refusal."""
    head = " ".join(filter(None, (operation, words(options))))
    try:
        result = door.draw(operation, image, options)
    except Refused:
        return f"{head}, {picture}, refused\n"
    size = f"{result.shape[1]}x{result.shape[0]}"
    return f"{head}, {picture}, {size}, {hashlib.sha256(result.tobytes()).hexdigest()[:16]}\n"


def table(door):
    """The table through one door, as text."""
    asked = [(picture, image, *case) for picture, image in pictures() if picture in SHOWN
             for case in cases(*image.shape[1::-1])]
    with ThreadPoolExecutor(2) as pool:
        return "".join(pool.map(lambda case: line(door, *case), asked))


if __name__ == "__main__":
    sys.stdout.write(table(DOORS[sys.argv[1]]))
