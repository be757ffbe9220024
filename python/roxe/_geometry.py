"""Rotation, levelling, perspective and warping."""

import math
from ctypes import byref, c_int32
from typing import Any, List, Optional, Sequence, Tuple, Union

import numpy as np
import numpy.typing as npt

from roxe import _native
from roxe._arguments import (
    choice,
    colour,
    convex_quad,
    decimal_number,
    flag,
    points,
    require_inside,
    require_near,
    size as size_argument,
)
from roxe._images import Image, record, repeated_edges, is_in_place, target_record
from roxe._native import PixelArray, PixelRect, Quad, expect, library, no_memory

Crop = Union[bool, str]


class _Drawing:
    """One call of a geometric operation: where it reads, where it draws.

    The source is the picture itself (edges="keep") or a copy with its edge pixels repeated once
    around (edges="repeat"), in which everything lies `shift` pixels further right and down.
    """

    def __init__(
        self,
        image: Image,
        out: Optional[Image],
        width: int,
        height: int,
        edges: str,
        background: Optional[str],
        order: str,
    ) -> None:
        self.shift = 1 if choice(edges, ("repeat", "keep"), "edges") == "repeat" else 0
        choice(order, ("bgr", "rgb"), "order")
        source = record(image, "image")
        self.in_place = False
        if out is None:
            red, green, blue = colour("black" if background is None else background, "background")
            fill = (red, green, blue) if order == "rgb" else (blue, green, red)
            self.result: Image = np.zeros((height, width, 3), np.uint8)
            if any(fill):
                self.result[...] = fill
            self.target = record(self.result, "out")
        else:
            if background is not None:
                raise ValueError(
                    "background fills a new array only, and out keeps what it holds beyond the "
                    "picture: fill it before the call, out[...] = …, or leave out away"
                )
            self.result = out
            self.target = target_record(out, (height, width, 3))
            self.in_place = is_in_place(image, source, out, self.target)
        self._image = image
        self._packed: Image = image
        self._record = source

    def source(self) -> PixelArray:
        """The record to read from. What is drawn in place is read from a copy."""
        if self.shift or self.in_place:
            self._packed = repeated_edges(self._image) if self.shift else self._image.copy()
            self._record = record(self._packed, "image")
        return self._record

    def shifted(self, corners: Sequence[Tuple[int, int]]) -> List[int]:
        return [value + self.shift for corner in corners for value in corner]

    def copy(self, picture: Image) -> Image:
        """Takes over the pixels of a picture of the result's shape."""
        self.result[...] = picture
        return self.result


# ---------------------------------------------------------------------------------------- rotation


def _expanded(width: int, height: int, about: Tuple[int, int], angle: float) -> List[int]:
    """Width, height and the place of the centre on the smallest canvas for every turned corner."""
    cos, sin = math.cos(angle), math.sin(angle)
    xs, ys = [0.0], [0.0]
    for x in (-about[0], width - 1 - about[0]):
        for y in (-about[1], height - 1 - about[1]):
            xs.append(x * cos - y * sin)
            ys.append(x * sin + y * cos)
    hair = 1e-6  # a hair of rounding must not cost a whole column
    left, top = math.floor(min(xs) + hair), math.floor(min(ys) + hair)
    right, bottom = math.ceil(max(xs) - hair), math.ceil(max(ys) - hair)
    return [right - left + 1, bottom - top + 1, -left, -top]


def _fits(
    width: int, height: int, angle: float, edges: str, widths: Any, heights: Any
) -> npt.NDArray[np.bool_]:
    """Whether all four corner pixels of results of these sizes show the picture.

    The centre of a result, (widths >> 1, heights >> 1), shows that of the picture.
    """
    # Half a pixel pays for what the library's steps of 1/65536 pixel lose on the way.
    margin = 0.5 if edges == "repeat" else 1.5
    cos, sin = math.cos(angle), math.sin(angle)
    fits = np.ones(np.shape(widths), dtype=bool)
    for x in (-(widths >> 1), widths - 1 - (widths >> 1)):
        for y in (-(heights >> 1), heights - 1 - (heights >> 1)):
            source_x = (width >> 1) + cos * x + sin * y
            source_y = (height >> 1) + cos * y - sin * x
            fits &= (margin <= source_x) & (source_x <= width - 0.5 - margin)
            fits &= (margin <= source_y) & (source_y <= height - 0.5 - margin)
    return fits


def _cropped(width: int, height: int, angle: float, crop: Crop, edges: str) -> Tuple[int, int]:
    """The size of the largest result without background.

    "fit": of the picture's proportions; "free": the largest in area, then in width.
    """
    if crop == "free":
        # Bisects for the largest height at every width at once: a lower result fits as well. No
        # side is longer than the diagonal.
        widths = np.arange(width + height, 0, -1)
        low, high = np.zeros_like(widths), np.full_like(widths, width + height)
        while np.any(low < high):
            middle = (low + high + 1) >> 1
            fits = _fits(width, height, angle, edges, widths, middle)
            low, high = np.where(fits, middle, low), np.where(fits, high, middle - 1)
        best = int(np.argmax(widths * low))  # the first of equal areas is the widest
        found = (int(widths[best]), int(low[best]))
    else:
        widths = np.arange(width, 0, -1)
        heights = np.maximum(1, np.floor(widths * float(height) / width + 0.5).astype(np.int64))
        fits = _fits(width, height, angle, edges, widths, heights)
        first = int(np.argmax(fits))
        found = (int(widths[first]), int(heights[first]) if fits[first] else 0)
    if found[1] < 1:
        raise ValueError("crop: the picture is too small to crop at this angle")
    return found


def _crop_choice(crop: Any) -> Crop:
    """False, "fit" or "free"."""
    if isinstance(crop, (bool, np.bool_)):
        return "fit" if crop else False
    if not isinstance(crop, str) or crop not in ("fit", "free"):
        wrong = ValueError if isinstance(crop, str) else TypeError
        raise wrong(f"crop needs True, False, 'fit' or 'free', not {crop!r}")
    return crop


def rotate(
    image: Image,
    *,
    angle: float,
    about: Optional[Tuple[int, int]] = None,
    expand: bool = False,
    crop: Crop = False,
    edges: str = "repeat",
    background: Optional[str] = None,
    out: Optional[Image] = None,
    order: str = "bgr",
) -> Image:
    """Turns a picture by any angle.

    Args:
      image: uint8 of shape (height, width, 3), a view as it is.
      angle: degrees from -3600 to 3600; positive turns clockwise.
      about: the point (x, y) that stays in place; default: the centre.
      expand: make the picture larger, so that nothing is cut off.
      crop: True or "fit": only the largest part without background, in the proportions of the
        picture; "free": the largest part of all. Not with expand or about.
      edges: "repeat" draws right to the edge: the source is copied with its edge pixels repeated
        once around, and quarter turns without about are exact. "keep" copies nothing and leaves
        the seam of a pixel that the library leaves.
      background: what the picture does not cover in a new array, a colour; default: black.
      out: an array for the result, or image itself. Pixels that are not covered keep what they
        hold. In place the source is copied.
      order: of the channels, "bgr" or "rgb"; it matters for the background alone.

    Returns:
      out, or a new array.

    >>> import numpy as np, roxe
    >>> picture = np.arange(18, dtype=np.uint8).reshape(2, 3, 3)
    >>> roxe.rotate(picture, angle=90)[..., 0]  # the left column becomes the top row
    array([[ 9,  0],
           [12,  3],
           [15,  6]], dtype=uint8)
    """
    degrees = decimal_number(angle, -3600, 3600, "angle")
    source = record(image, "image")
    width, height = source.width, source.height
    cropping, expand = _crop_choice(crop), flag(expand, "expand")
    if cropping and (expand or about is not None):
        raise ValueError(f"crop cannot go with {'expand' if expand else 'about'}")
    turn = math.remainder(degrees, 360.0)
    radians = turn * math.pi / 180

    if edges == "repeat" and about is None and turn in (0, 90, -90, 180, -180):
        upright = np.rot90(image, -int(turn) // 90)
        drawing = _Drawing(
            image, out, upright.shape[1], upright.shape[0], edges, background, order
        )
        return drawing.copy(upright)

    centre = (width // 2, height // 2)
    if about is not None:
        centre = points(about, 1, "about")[0]
        require_inside(centre, width, height, "about")
    canvas = [width, height, *centre]
    if expand:
        canvas = _expanded(width, height, centre, radians)
    elif cropping:
        choice(edges, ("repeat", "keep"), "edges")
        cut = _cropped(width, height, radians, cropping, edges)
        canvas = [*cut, cut[0] >> 1, cut[1] >> 1]
    drawing = _Drawing(image, out, canvas[0], canvas[1], edges, background, order)
    status = library().roxeRotateImage(
        drawing.source(), *drawing.shifted([centre]), radians, drawing.target, canvas[2], canvas[3]
    )
    expect(status, _native.OK, {})
    return drawing.result


def straightening_angle(line: Sequence[int]) -> float:
    """By how many degrees `straighten` turns for a line (x1, y1, x2, y2); clockwise is positive.

    0.0: the line is level or upright already, and there is nothing to do.

    >>> import roxe
    >>> roxe.straightening_angle((0, 0, 100, 100))
    -45.0
    >>> roxe.straightening_angle((0, 40, 100, 40))
    0.0
    """
    (x1, y1), (x2, y2) = points(line, 2, "line")
    if (x1, y1) == (x2, y2):
        raise ValueError(f"line needs two different points, and both are {(x1, y1)}")
    dx, dy = x2 - x1, y2 - y1
    if dx == 0 or dy == 0:
        return 0.0
    return math.degrees(math.atan(dx / dy if abs(dy) > abs(dx) else -dy / dx))


def straighten(
    image: Image,
    *,
    line: Sequence[int],
    crop: Crop = False,
    edges: str = "repeat",
    background: Optional[str] = None,
    out: Optional[Image] = None,
    order: str = "bgr",
) -> Image:
    """Levels a picture along a line drawn on it, such as the horizon.

    The line becomes level or upright, whichever is nearer. Where it is so already there is nothing
    to turn and the result is a copy; `straightening_angle` tells.

    Args:
      image: uint8 of shape (height, width, 3), a view as it is.
      line: (x1, y1, x2, y2), two different points of the picture.
      crop: True or "fit": only the largest part without background, in the proportions of the
        picture; "free": the largest part of all.
      edges, background, out, order: as for `rotate`.

    Returns:
      out, or a new array.

    >>> import numpy as np, roxe
    >>> photo = np.full((60, 80, 3), 200, np.uint8)
    >>> roxe.straighten(photo, line=(0, 30, 79, 33)).shape
    (60, 80, 3)
    >>> roxe.straighten(photo, line=(0, 30, 79, 33), crop=True).shape
    (56, 75, 3)
    """
    source = record(image, "image")
    width, height = source.width, source.height
    ends = points(line, 2, "line")
    degrees = straightening_angle([*ends[0], *ends[1]])
    for end in ends:
        require_inside(end, width, height, "line: the point")
    cropping = _crop_choice(crop)
    if degrees == 0:  # the library would leave its destination alone
        return _Drawing(image, out, width, height, edges, background, order).copy(image)
    if cropping:
        choice(edges, ("repeat", "keep"), "edges")
        (x1, y1), (x2, y2) = ends
        dx, dy = x2 - x1, y2 - y1
        radians = math.atan(dx / dy if abs(dy) > abs(dx) else -dy / dx)
        width, height = _cropped(width, height, radians, cropping, edges)
    drawing = _Drawing(image, out, width, height, edges, background, order)
    status = library().roxeuAutoStraightenImage(
        drawing.source(), *drawing.shifted(ends), drawing.target
    )
    expect(status, _native.OK, {})
    return drawing.result


# ------------------------------------------------------------------------------------- perspective


def _natural_size(corners: Sequence[Tuple[int, int]]) -> Tuple[int, int]:
    width, height = c_int32(), c_int32()
    quad = Quad(*(value for corner in corners for value in corner))
    done = library().roxeGetPerspectiveDistortionCorrectionSize(
        quad, 0, 0, 1, byref(width), byref(height)
    )
    no_rectangle = ValueError("corners: no rectangle seen in perspective has these corners")
    expect(done, 1, {0: no_rectangle})  # this function's own words for success and failure
    return width.value, height.value


def natural_size(corners: Sequence[Any]) -> Tuple[int, int]:
    """The size (width, height) at which `perspective` draws these corners unless told otherwise.

    Args:
      corners: of something rectangular, in any order: eight numbers or four pairs.

    >>> import roxe
    >>> roxe.natural_size([(0, 0), (40, 0), (40, 30), (0, 30)])
    (40, 30)
    """
    return _natural_size(convex_quad(corners, "corners", any_order=True))


def _fitted(natural: Tuple[int, int], fit: Tuple[int, int]) -> Tuple[int, int]:
    """What is left of a frame when the natural proportions are fitted into it."""
    if natural[0] * fit[1] > natural[1] * fit[0]:
        drawn = (fit[0], natural[1] * fit[0] // natural[0])
    else:
        drawn = (natural[0] * fit[1] // natural[1], fit[1])
    if min(drawn) < 1:
        raise ValueError(
            "fit is too narrow for the natural size of these corners, "
            f"{natural[0]} × {natural[1]} pixels"
        )
    return drawn


def perspective(
    image: Image,
    *,
    corners: Sequence[Any],
    size: Optional[Tuple[int, int]] = None,
    fit: Optional[Tuple[int, int]] = None,
    edges: str = "repeat",
    background: Optional[str] = None,
    out: Optional[Image] = None,
    order: str = "bgr",
) -> Image:
    """Draws something rectangular, seen at a slant, upright.

    Args:
      image: uint8 of shape (height, width, 3), a view as it is.
      corners: of the thing, in any order: eight numbers or four pairs (x, y).
      size: (width, height) to draw it at.
      fit: (width, height) into which it is drawn as large as fits, in its natural proportions.
        Default: its natural size.
      edges, background, out, order: as for `rotate`.

    Returns:
      out, or a new array.

    >>> import numpy as np, roxe
    >>> photo = np.full((60, 80, 3), 200, np.uint8)
    >>> roxe.perspective(photo, corners=[(10, 5), (70, 9), (68, 50), (12, 55)]).shape
    (45, 58, 3)
    """
    around = convex_quad(corners, "corners", any_order=True)
    natural = _natural_size(around)
    source = record(image, "image")
    require_near(around, source.width, source.height, "corners")
    if size is not None and fit is not None:
        raise ValueError("size cannot go with fit")
    drawn = natural
    if size is not None:
        drawn = size_argument(size, "size")
    elif fit is not None:
        drawn = _fitted(natural, size_argument(fit, "fit"))
    drawing = _Drawing(image, out, *drawn, edges, background, order)
    packed = drawing.source()
    quad = Quad(*drawing.shifted(around))
    if size is not None or fit is not None:
        status = library().roxeAffineTransform(
            packed, drawing.target, quad, None, PixelRect(0, 0, *drawn)
        )
        expect(status, _native.OK, {_native.PARAM: no_memory()})
    else:
        status = library().roxePerspectiveDistortionCorrection(
            packed, drawing.target, quad, 0, 0, PixelRect(0, 0, *drawn)
        )
        # 2 is this function's own word for success.
        expect(status, 2, {4: ValueError("corners have no natural size"), 0: no_memory()})
    return drawing.result


def warp(
    image: Image,
    *,
    from_: Sequence[Any],
    to: Sequence[Any],
    size: Optional[Tuple[int, int]] = None,
    edges: str = "repeat",
    background: Optional[str] = None,
    out: Optional[Image] = None,
    order: str = "bgr",
) -> Image:
    """Moves four points of a picture to four other places.

    Args:
      image: uint8 of shape (height, width, 3), a view as it is.
      from_: four points of the picture around their outline: eight numbers or four pairs.
      to: where these four come to lie, in the same order.
      size: (width, height) of the result; default: that of the picture.
      edges, background, out, order: as for `rotate`.

    Returns:
      out, or a new array.

    >>> import numpy as np, roxe
    >>> picture = np.full((60, 80, 3), 200, np.uint8)
    >>> page = [(10, 5), (70, 9), (68, 50), (12, 55)]
    >>> roxe.warp(picture, from_=page, to=[(0, 0), (40, 0), (40, 30), (0, 30)], size=(40, 30)).shape
    (30, 40, 3)
    """
    start = convex_quad(from_, "from_", any_order=False)
    end = convex_quad(to, "to", any_order=False)
    source = record(image, "image")
    drawn = (source.width, source.height) if size is None else size_argument(size, "size")
    require_near(start, source.width, source.height, "from_")
    require_near(end, *drawn, "to")
    drawing = _Drawing(image, out, *drawn, edges, background, order)
    packed = drawing.source()
    places = Quad(*(value for corner in end for value in corner))
    status = library().roxeAffineTransform(
        packed, drawing.target, Quad(*drawing.shifted(start)), places, PixelRect(0, 0, *drawn)
    )
    expect(status, _native.OK, {_native.PARAM: no_memory()})
    return drawing.result
