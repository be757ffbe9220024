"""A photograph from start to end in Python: level, crop, lighten, accent, and a page drawn upright.

    python3 examples/python/evening.py [FOLDER]     # writes pictures to FOLDER, out/python if none

Written in cells, which editors with notebooks run one by one. Needs Debian's python3-numpy and
python3-pil, and roxe on the path of Python.
"""

# %% Photographs come as arrays of red, green, blue: order="rgb" says so
import pathlib
import sys

import numpy as np
from PIL import Image, ImageOps

import roxe

photos = pathlib.Path(__file__).resolve().parents[1] / "photos"
folder = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else "out/python")
folder.mkdir(parents=True, exist_ok=True)


def load(name: str) -> np.ndarray:
    """A photograph as it is seen, shape (height, width, 3)."""
    return np.array(ImageOps.exif_transpose(Image.open(photos / name)).convert("RGB"))


def save(name: str, picture: np.ndarray) -> None:
    Image.fromarray(picture).save(folder / name)
    print(f"{folder / name}: {picture.shape[1]} × {picture.shape[0]} pixels")


# %% Level a horizon and cut what shows no background
sunset = load("sunset-tilted-horizon.jpg")
horizon = (70, 1430, 4200, 1250)
print(f"turned by {roxe.straightening_angle(horizon):.2f} degrees")
level = roxe.straighten(sunset, line=horizon, crop=True, order="rgb")
save("level.jpg", level)

# %% Open the shadows of one part only: a slice is a picture too, and out= draws into it
rocket = load("rocket-night.jpg")
half = rocket[:, rocket.shape[1] // 2:]
roxe.shadow_highlight(half, shadow=60, midtone=10, out=half, order="rgb")
save("half.jpg", rocket)

# %% Keep one colour, blur the rest: a selection of colour is a mask for soft focus
portrait = load("astronaut-portrait.png")
suit = roxe.colour_mask(portrait, colour="#E8683C", tolerance=70, order="rgb")
accent = roxe.tint(portrait, colour="#E8683C", tolerance=70, order="rgb")
accent = roxe.soft_focus(accent, radius=21, mask=suit, mask_radius=31)
save("accent.png", accent)

# %% Draw a page upright, at its natural size
page = load("book-page.jpg")
corners = [(470, 140), (2130, 10), (2110, 3090), (400, 2950)]
print("the page is", "%d × %d pixels" % roxe.natural_size(corners))
save("page.jpg", roxe.perspective(page, corners=corners, order="rgb"))

# %% A strip of eight warmths, side by side in one array
dune = load("orange-dune.jpg")[::6, ::6]
strip = np.empty((dune.shape[0], 8 * dune.shape[1], 3), np.uint8)
for i, warmth in enumerate(range(-70, 71, 20)):
    part = strip[:, i * dune.shape[1]:(i + 1) * dune.shape[1]]
    roxe.temperature(dune.copy(), temperature=warmth, out=part, order="rgb")
save("warmth.jpg", strip)
