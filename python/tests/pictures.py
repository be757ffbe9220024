"""Pictures for tests, and the operations on them under one form."""

import numpy as np

import roxe


def noise(height, width, seed=1):
    return np.random.default_rng(seed).integers(0, 256, (height, width, 3), np.uint8)


def guarded(array, offset=5, padding=7):
    """A copy of the array as a view inside a larger buffer, and that buffer.

    Rows are padding bytes apart and the first pixel lies offset bytes in; guards hold 0xA5.
    """
    height, used = array.shape[0], array[0].size
    buffer = np.full(offset + height * (used + padding) + 9, 0xA5, np.uint8)
    pixel = (3, 1) if array.ndim == 3 else (1,)
    view = np.ndarray(array.shape, np.uint8, buffer, offset, (used + padding, *pixel))
    view[...] = array
    return view, buffer


def guards_of(view, buffer):
    """The bytes of the buffer that belong to no pixel of the view."""
    inside = np.zeros(buffer.size, bool)
    offset = view.ctypes.data - buffer.ctypes.data
    for row in range(view.shape[0]):
        start = offset + row * view.strides[0]
        inside[start:start + view[0].size] = True
    return buffer[~inside]


# Every operation with a picture: name -> function(image, **out and order).
OPERATIONS = {
    "rotate": lambda image, **k: roxe.rotate(image, angle=17, **k),
    "rotate keep": lambda image, **k: roxe.rotate(image, angle=17, edges="keep", **k),
    "half turn": lambda image, **k: roxe.rotate(image, angle=180, **k),
    "straighten": lambda image, **k: roxe.straighten(image, line=_slope(image), **k),
    "perspective": lambda image, **k: roxe.perspective(
        image, corners=_outline(image), size=image.shape[1::-1], **k),
    "warp": lambda image, **k: roxe.warp(
        image, from_=_outline(image), to=_outline(image), edges="keep", **k),
    "soft_focus": lambda image, **k: roxe.soft_focus(image, radius=3, **k),
    "replace_colour": lambda image, **k: roxe.replace_colour(
        image, colour="#B45A3C", tolerance=120, hue=90, value=10, **k),
    "tint": lambda image, **k: roxe.tint(image, colour="orange", tolerance=90, **k),
    "temperature": lambda image, **k: roxe.temperature(image, temperature=30, tint=-20, **k),
    "auto_gamma": roxe.auto_gamma,
    "shadow_highlight": lambda image, **k: roxe.shadow_highlight(
        image, shadow=40, highlight=20, midtone=10, **k),
    "variations": lambda image, **k: roxe.variations(image, red=3, blue=-2, level=4, **k),
}


def _slope(image):
    return (0, 0, image.shape[1] - 1, min(1, image.shape[0] - 1))


def _outline(image):
    height, width = image.shape[:2]
    return [(0, 0), (width, 0), (width, height), (0, height)]
