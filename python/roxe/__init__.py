"""ROXE: thirteen operations on photographs in numpy arrays.

A picture is a uint8 array of shape (height, width, 3), channels blue, green, red unless a call says
order="rgb". Sub-images and other views with packed pixels are used where they lie; what a record of
the library cannot describe is refused with a sentence that says what to write instead. Pixels count
from the top left corner, (0, 0); angles are in degrees, positive clockwise; colours are '#E07A2C' or
names of CSS, whatever the order of the channels.

>>> import numpy as np, roxe
>>> photo = np.full((60, 80, 3), 90, np.uint8)
>>> lighter = roxe.shadow_highlight(photo, shadow=40)
>>> turned = roxe.rotate(lighter, angle=7.5, crop=True)
"""

from roxe._colour_and_tone import (
    auto_gamma,
    colour_mask,
    replace_colour,
    shadow_highlight,
    soft_focus,
    temperature,
    tint,
    variations,
)
from roxe._geometry import (
    natural_size,
    perspective,
    rotate,
    straighten,
    straightening_angle,
    warp,
)

__all__ = [
    "auto_gamma",
    "colour_mask",
    "natural_size",
    "perspective",
    "replace_colour",
    "rotate",
    "shadow_highlight",
    "soft_focus",
    "straighten",
    "straightening_angle",
    "temperature",
    "tint",
    "variations",
    "warp",
]
__version__ = "1.0.0"
