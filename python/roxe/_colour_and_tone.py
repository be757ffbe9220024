"""Colours, light, and soft focus: operations that keep the size of the picture."""

from typing import Optional, Tuple

import numpy as np

from roxe import _native
from roxe._arguments import (
    choice,
    colour as colour_argument,
    points,
    require_inside,
    whole_number,
    whole_numbers,
)
from roxe._images import Image, is_in_place, map_pixels, record, require_apart, target_record
from roxe._native import PixelArray, PixelRect, expect, library, no_memory

# -------------------------------------------------------------------------------------------- blur


def _blur_bytes(shape: Tuple[int, ...], channels: int, radius: int) -> int:
    """What the library takes for a blur of so many channels, as roxe.h states it."""
    if radius <= 1:
        return 0
    height, width = shape[:2]
    row = channels * (-(-width // 32) * 32)
    windows = (radius, radius, radius | 1)
    kept = sum(min(window + 1, height) for window in windows)
    tall = sum(window > 257 for window in windows)
    return (
        447 + 576 * channels + 24 * row // channels + row * (15 + kept)
        + tall * (64 * channels + 4 * row)
    )


def soft_focus(
    image: Image,
    *,
    radius: int,
    mask: Optional[Image] = None,
    mask_radius: int = 1,
    out: Optional[Image] = None,
    order: str = "bgr",
) -> Image:
    """Blurs a picture, except where a mask keeps it sharp.

    Args:
      image: uint8 of shape (height, width, 3), a view as it is.
      radius: length of the window that is averaged, in pixels, 1 (none) to 100000.
      mask: uint8 of shape (height, width): 255 stays sharp, 0 is blurred.
      mask_radius: the same for the mask, whose edges become soft, 1 (none) to 100000.
      out: an array for the result, or image itself. In place with a mask the source is copied.
      order: of the channels; it makes no difference.

    Returns:
      out, or a new array.

    >>> import numpy as np, roxe
    >>> dots = np.zeros((9, 9, 3), np.uint8)
    >>> dots[4, 4] = 255
    >>> roxe.soft_focus(dots, radius=3)[4, 2:7, 0]
    array([ 6, 13, 16, 13,  6], dtype=uint8)
    """
    radius = whole_number(radius, 1, 100000, "radius")
    mask_radius = whole_number(mask_radius, 1, 100000, "mask_radius")
    choice(order, ("bgr", "rgb"), "order")
    source = record(image, "image")
    selection: Optional[PixelArray] = None
    if mask is not None:
        selection = record(mask, "mask", channels=1)
        if mask.shape != image.shape[:2]:
            raise ValueError(f"mask has shape {mask.shape}, but the picture has {image.shape[:2]}")
    elif mask_radius != 1:
        raise ValueError("mask_radius needs a mask")
    if out is None:
        result: Image = np.empty(image.shape, np.uint8)
        target = record(result, "out")
    else:
        result, target = out, target_record(out, image.shape)
        if mask is not None and selection is not None:
            require_apart(mask, selection, out, target, "mask")
        if is_in_place(image, source, out, target) and selection:
            image = image.copy()  # the blend needs the sharp pixels after the blur
            source = record(image, "image")
    room = _blur_bytes(image.shape, 3, radius)
    if mask is not None:
        room += _blur_bytes(image.shape, 1, mask_radius)
    try:
        # The library does not say so where it cannot have this, and gives something else.
        np.empty(room, np.uint8)
    except MemoryError:
        raise no_memory() from None
    status = library().roxeSoftFocus(source, target, selection, radius, mask_radius)
    expect(status, _native.OK, {_native.INVALID: no_memory()})
    return result


# ------------------------------------------------------------------------------------------ colour


def _selection(colour: str, tolerance: int) -> Tuple[int, int, int, int]:
    """Blue, green, red and tolerance, as the library takes them."""
    red, green, blue = colour_argument(colour, "colour")
    return blue, green, red, whole_number(tolerance, 0, 200, "tolerance")


def replace_colour(
    image: Image,
    *,
    colour: str,
    tolerance: int,
    hue: int = 0,
    saturation: int = 0,
    value: int = 0,
    out: Optional[Image] = None,
    order: str = "bgr",
) -> Image:
    """Changes hue, saturation and brightness of the colours near one colour.

    Args:
      image: uint8 of shape (height, width, 3), a view as it is.
      colour: the reference, '#RRGGBB' or a name.
      tolerance: how far from it colours count, 0 to 200.
      hue: degrees to turn the hue, -360 to 360.
      saturation, value: percent to add, -100 to 100.
      out: an array for the result, or image itself.
      order: of the channels, "bgr" or "rgb", which costs a swapped copy each way.

    Returns:
      out, or a new array.

    >>> import numpy as np, roxe
    >>> red = np.full((1, 1, 3), (255, 0, 0), np.uint8)
    >>> roxe.replace_colour(red, colour="red", tolerance=50, hue=120, order="rgb")[0, 0]
    array([  0, 255,   0], dtype=uint8)
    """
    selection = _selection(colour, tolerance)
    hue = whole_number(hue, -360, 360, "hue")
    saturation = whole_number(saturation, -100, 100, "saturation")
    value = whole_number(value, -100, 100, "value")

    def call(source: PixelArray, target: PixelArray) -> None:
        status = library().roxeReplaceColor(source, target, *selection, hue, saturation, value)
        expect(status, _native.OK, {})

    return map_pixels(image, out, order, call)


def colour_mask(
    image: Image,
    *,
    colour: str,
    tolerance: int,
    out: Optional[Image] = None,
    order: str = "bgr",
) -> Image:
    """The selection of `replace_colour` and `tint` as a grey picture, fit for a mask.

    Args:
      image: uint8 of shape (height, width, 3), a view as it is.
      colour: the reference, '#RRGGBB' or a name.
      tolerance: how far from it colours count, 0 to 200.
      out: an array of shape (height, width) for the result.
      order: of the channels of image, "bgr" or "rgb", which costs a swapped copy.

    Returns:
      uint8 of shape (height, width): 255 at the reference, 0 beyond the tolerance.

    >>> import numpy as np, roxe
    >>> picture = np.array([[(0, 0, 255), (255, 0, 0)]], np.uint8)  # red, blue
    >>> roxe.colour_mask(picture, colour="red", tolerance=50)
    array([[255,   0]], dtype=uint8)
    """
    selection = _selection(colour, tolerance)
    if out is not None:
        source = record(image, "image")
        target = target_record(out, (source.height, source.width))
        require_apart(image, source, out, target, "image")

    def call(source: PixelArray, target: PixelArray) -> None:
        expect(library().roxeReplaceColorMask(source, target, *selection), _native.OK, {})

    grey = map_pixels(image, None, order, call)  # three equal channels
    result: Image = np.zeros(grey.shape[:2], np.uint8) if out is None else out
    result[...] = grey[..., 0]
    return result


def tint(
    image: Image,
    *,
    colour: str,
    tolerance: int,
    out: Optional[Image] = None,
    order: str = "bgr",
) -> Image:
    """Keeps one colour and turns the others grey. White becomes 254.

    Args:
      image: uint8 of shape (height, width, 3), a view as it is.
      colour: the colour to keep, '#RRGGBB' or a name.
      tolerance: how far from it colours count, 0 to 200.
      out: an array for the result, or image itself.
      order: of the channels, "bgr" or "rgb", which costs a swapped copy each way.

    Returns:
      out, or a new array.

    >>> import numpy as np, roxe
    >>> picture = np.array([[(0, 0, 255), (255, 0, 0)]], np.uint8)  # red, blue
    >>> roxe.tint(picture, colour="red", tolerance=50)
    array([[[  0,   0, 255],
            [ 27,  27,  27]]], dtype=uint8)
    """
    selection = _selection(colour, tolerance)

    def call(source: PixelArray, target: PixelArray) -> None:
        expect(library().roxeColorTint(source, target, *selection), _native.OK, {})

    return map_pixels(image, out, order, call)


def _copied(image: Image, out: Optional[Image]) -> Image:
    """The picture as it is, in out or a new array."""
    if out is None:
        return image.copy()
    is_in_place(image, record(image, "image"), out, target_record(out, image.shape))
    out[...] = image
    return out


def _balance_for(pixel: Image) -> Tuple[int, int]:
    """The temperature and tint that bring a colour, blue, green, red, nearest to grey."""
    before = pixel.reshape(1, 1, 3).copy()
    after = np.empty_like(before)
    source, target = record(before, "image"), record(after, "out")
    balance = library().roxeColorTemperature
    best, best_merit = (0, 0), (256, 0)
    for warmth in range(-100, 101):
        for magenta in range(-100, 101):
            expect(balance(source, target, warmth, magenta), _native.OK, {})
            blue, green, red = after.tobytes()
            merit = (max(blue, green, red) - min(blue, green, red), abs(warmth) + abs(magenta))
            if merit < best_merit:
                best, best_merit = (warmth, magenta), merit
    return best


def temperature(
    image: Image,
    *,
    temperature: int = 0,
    tint: int = 0,
    grey: Optional[Tuple[int, int]] = None,
    out: Optional[Image] = None,
    order: str = "bgr",
) -> Image:
    """Corrects the white balance.

    Args:
      image: uint8 of shape (height, width, 3), a view as it is.
      temperature: -100 (cooler) to 100 (warmer).
      tint: -100 (greener) to 100 (more magenta).
      grey: a pixel (x, y) that should be grey: finds the temperature and tint that bring it nearest,
        the gentlest of equals. Where it is grey already the picture stays as it is.
      out: an array for the result, or image itself.
      order: of the channels, "bgr" or "rgb", which costs a swapped copy each way.

    Returns:
      out, or a new array.

    >>> import numpy as np, roxe
    >>> grey = np.full((1, 1, 3), 128, np.uint8)
    >>> blue, green, red = roxe.temperature(grey, temperature=40)[0, 0]
    >>> bool(red > green > blue)
    True
    >>> bluish = np.full((1, 1, 3), (150, 128, 120), np.uint8)
    >>> roxe.temperature(bluish, grey=(0, 0))[0, 0].ptp() < 4
    True
    """
    warmth = whole_number(temperature, -100, 100, "temperature")
    magenta = whole_number(tint, -100, 100, "tint")
    choice(order, ("bgr", "rgb"), "order")
    if grey is not None:
        if warmth or magenta:
            raise ValueError("grey cannot go with temperature or tint")
        place = points(grey, 1, "grey")[0]
        source = record(image, "image")
        require_inside(place, source.width, source.height, "grey")
        pixel = image[place[1], place[0]][:: 1 if order == "bgr" else -1]
        if pixel.min() == pixel.max():
            return _copied(image, out)
        warmth, magenta = _balance_for(pixel)
    no_gains = ValueError(f"temperature {warmth} and tint {magenta} have no white balance")

    def call(source: PixelArray, target: PixelArray) -> None:
        status = library().roxeColorTemperature(source, target, warmth, magenta)
        expect(status, _native.OK, {_native.PARAM: no_gains})

    return map_pixels(image, out, order, call)


# -------------------------------------------------------------------------------------------- tone


def auto_gamma(
    image: Image,
    *,
    region: Optional[Tuple[int, int, int, int]] = None,
    out: Optional[Image] = None,
    order: str = "bgr",
) -> Image:
    """Corrects the exposure automatically.

    Args:
      image: uint8 of shape (height, width, 3), a view as it is.
      region: (x, y, width, height) of the part that is judged; default: all of it.
      out: an array for the result, or image itself.
      order: of the channels, "bgr" or "rgb", which costs a swapped copy each way.

    Returns:
      out, or a new array.

    >>> import numpy as np, roxe
    >>> dark = np.full((4, 4, 3), 40, np.uint8)
    >>> bool(roxe.auto_gamma(dark)[0, 0, 0] > 40)
    True
    """
    part: Optional[PixelRect] = None
    if region is not None:
        x, y, across, down = whole_numbers(region, 4, "region")
        whole = record(image, "image")
        width, height = whole.width, whole.height
        if min(x, y) < 0 or min(across, down) < 1:
            raise ValueError("region needs a place inside the picture and a size of at least 1, 1")
        if x + across > width or y + down > height:
            raise ValueError(
                f"region {(x, y, across, down)} reaches outside the picture of {width} × {height} "
                "pixels"
            )
        part = PixelRect(x, y, x + across, y + down)

    def call(source: PixelArray, target: PixelArray) -> None:
        status = library().roxeAutoGamma(source, target, part)
        expect(status, _native.OK, {_native.INVALID: no_memory()})

    return map_pixels(image, out, order, call)


_MOST_PIXELS = (2**32 - 1) // 8  # the library leaves larger pictures alone


def shadow_highlight(
    image: Image,
    *,
    shadow: int = 0,
    highlight: int = 0,
    midtone: int = 0,
    out: Optional[Image] = None,
    order: str = "bgr",
) -> Image:
    """Opens shadows and tames highlights.

    Args:
      image: uint8 of shape (height, width, 3), a view as it is.
      shadow: opens the shadows, 0 to 100.
      highlight: tames the highlights, 0 to 100.
      midtone: contrast of the midtones, -100 to 100.
      out: an array for the result, or image itself.
      order: of the channels, "bgr" or "rgb", which costs a swapped copy each way.

    Returns:
      out, or a new array.

    >>> import numpy as np, roxe
    >>> dark = np.full((8, 8, 3), 30, np.uint8)
    >>> bool(roxe.shadow_highlight(dark, shadow=50)[4, 4, 0] > 30)
    True
    """
    amounts = (
        whole_number(shadow, 0, 100, "shadow"),
        whole_number(highlight, 0, 100, "highlight"),
        whole_number(midtone, -100, 100, "midtone"),
    )
    whole = record(image, "image")
    if whole.width * whole.height > _MOST_PIXELS:
        raise ValueError(f"image has more than {_MOST_PIXELS} pixels: cut it into parts")

    def call(source: PixelArray, target: PixelArray) -> None:
        expect(library().roxeShadowHighlight(source, target, *amounts), _native.OK, {})

    return map_pixels(image, out, order, call)


def variations(
    image: Image,
    *,
    red: int = 0,
    green: int = 0,
    blue: int = 0,
    dark: int = 0,
    level: int = 2,
    out: Optional[Image] = None,
    order: str = "bgr",
) -> Image:
    """Shifts the colour balance and the brightness in steps.

    Args:
      image: uint8 of shape (height, width, 3), a view as it is.
      red, green, blue: steps of the colour to take away, -1000 to 1000; negative: to add.
      dark: steps to darken, -1000 to 1000; negative: to lighten.
      level: size of a step, 0 (fine) to 6 (coarse).
      out: an array for the result, or image itself.
      order: of the channels, "bgr" or "rgb", which costs a swapped copy each way.

    Returns:
      out, or a new array.

    >>> import numpy as np, roxe
    >>> grey = np.full((1, 1, 3), 128, np.uint8)
    >>> blue, green, red = roxe.variations(grey, red=2)[0, 0]
    >>> bool(red < green and green == blue)
    True
    """
    steps = [
        whole_number(count, -1000, 1000, name)
        for name, count in (("red", red), ("green", green), ("blue", blue), ("dark", dark))
    ]
    level = whole_number(level, 0, 6, "level")

    def call(source: PixelArray, target: PixelArray) -> None:
        expect(library().roxeVariations(source, target, *steps, level), _native.OK, {})

    return map_pixels(image, out, order, call)
