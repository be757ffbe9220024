"""Arguments other than pictures: numbers, points, sizes and colours, refused in one sentence."""

import math
import operator
from typing import Any, List, Sequence, Tuple

import numpy as np

from roxe._colours import COLOURS

_FARTHEST = 1_000_000_000  # no picture reaches farther
_LARGEST = 2**31 - 1


def whole_number(value: Any, low: int, high: int, name: str) -> int:
    """value as an int from low to high."""
    try:
        number = operator.index(value)
    except TypeError:
        raise TypeError(f"{name} needs a whole number from {low} to {high}, not {value!r}") from None
    if not low <= number <= high:
        raise ValueError(f"{name} needs a whole number from {low} to {high}, not {number}")
    return number


def decimal_number(value: Any, low: int, high: int, name: str) -> float:
    """value as a float from low to high; not a number is refused as well."""
    try:
        number = math.nan if isinstance(value, (str, bytes, bytearray)) else float(value)
    except OverflowError:  # a whole number that no float holds
        value = number = math.inf
    except (TypeError, ValueError):
        raise TypeError(f"{name} needs a number from {low} to {high}, not {value!r}") from None
    if not low <= number <= high:
        wrong = TypeError if isinstance(value, (str, bytes, bytearray)) else ValueError
        raise wrong(f"{name} needs a number from {low} to {high}, not {value!r}")
    return number


def choice(value: str, known: Sequence[str], name: str) -> str:
    if not isinstance(value, str) or value not in known:
        wrong = ValueError if isinstance(value, str) else TypeError
        raise wrong(f"{name} needs {' or '.join(map(repr, known))}, not {value!r}")
    return value


def whole_numbers(values: Any, count: int, name: str) -> List[int]:
    """count numbers of 32 bits from a sequence, or from a sequence of pairs."""
    try:
        parts = [part if hasattr(part, "__len__") else (part,) for part in values]
        flat = [operator.index(number) for part in parts for number in part]
    except TypeError:
        parts, flat = [], []
    all_alone_or_all_pairs = {len(part) for part in parts} in ({1}, {2})
    is_no_sequence = isinstance(values, (str, bytes, set, frozenset, dict))
    if len(flat) != count or not all_alone_or_all_pairs or is_no_sequence:
        raise TypeError(f"{name} needs {count} whole numbers, not {values!r}")
    for number in flat:
        if not -_LARGEST <= number <= _LARGEST:
            raise ValueError(f"{name}: {number} lies far outside any picture")
    return flat


def points(values: Any, count: int, name: str) -> List[Tuple[int, int]]:
    """count points (x, y) from 2 * count numbers or count pairs."""
    flat = whole_numbers(values, 2 * count, name)
    return list(zip(flat[::2], flat[1::2]))


def size(value: Any, name: str) -> Tuple[int, int]:
    """A pair (width, height), both at least 1, whose rows a record can hold."""
    width, height = whole_numbers(value, 2, name)
    if width < 1 or height < 1 or 3 * width > _LARGEST:
        raise ValueError(f"{name} needs a width and a height from 1 on, not {value!r}")
    return width, height


def colour(text: Any, name: str) -> Tuple[int, int, int]:
    """Red, green and blue of '#RRGGBB', '#RGB' or a name of CSS, in capitals or not."""
    if isinstance(text, str):
        digits = text.lower()
        if digits in COLOURS:
            digits = COLOURS[digits]
        if len(digits) == 4 and digits[0] == "#":
            digits = "#" + "".join(2 * digit for digit in digits[1:])
        if len(digits) == 7 and digits[0] == "#" and set(digits[1:]) <= set("0123456789abcdef"):
            value = int(digits[1:], 16)
            return value >> 16, value >> 8 & 255, value & 255
    wrong = ValueError if isinstance(text, str) else TypeError
    raise wrong(f"{name} needs a colour such as '#E07A2C' or orange, not {text!r}")


def flag(value: Any, name: str) -> bool:
    """True or False, of Python or of numpy."""
    if not isinstance(value, (bool, np.bool_)):
        raise TypeError(f"{name} needs True or False, not {value!r}")
    return bool(value)


# ---- corners of something seen in perspective


def _cross(a: Tuple[int, int], b: Tuple[int, int], c: Tuple[int, int]) -> int:
    """Twice the area of a triangle; the sign tells the sense of turning."""
    return (b[0] - a[0]) * (c[1] - a[1]) - (b[1] - a[1]) * (c[0] - a[0])


def _is_convex(corners: Sequence[Tuple[int, int]]) -> bool:
    turns = sum(
        _cross(corners[i], corners[(i + 1) % 4], corners[(i + 2) % 4]) > 0 for i in range(4)
    )
    return turns in (0, 4)


def convex_quad(values: Any, name: str, any_order: bool) -> List[Tuple[int, int]]:
    """Four corners around their outline. With any_order they are sorted into one."""
    corners = points(values, 4, name)
    for i, corner in enumerate(corners, 1):
        if max(abs(corner[0]), abs(corner[1])) > _FARTHEST:
            raise ValueError(f"{name}: corner {i} {corner} lies far outside any picture")
    for i in range(4):
        for j in range(i + 1, 4):
            if corners[i] == corners[j]:
                raise ValueError(
                    f"{name}: corners {i + 1} and {j + 1} are the same point {corners[i]}"
                )
    for i, j, k in ((0, 1, 2), (0, 1, 3), (0, 2, 3), (1, 2, 3)):
        if _cross(corners[i], corners[j], corners[k]) == 0:
            raise ValueError(
                f"{name}: corners {i + 1} {corners[i]}, {j + 1} {corners[j]} and {k + 1} "
                f"{corners[k]} lie on one line"
            )
    for i in range(4):
        a, b, c = (corners[(i + step) % 4] for step in (1, 2, 3))
        left = sum(_cross(*edge, corners[i]) > 0 for edge in ((a, b), (b, c), (c, a)))
        if left in (0, 3):
            raise ValueError(
                f"{name}: corner {i + 1} {corners[i]} lies inside the triangle of the other three"
            )
    # Exactly one of the three ways around four such points does not cross itself.
    ways = [[0, 1, 2, 3], [0, 1, 3, 2], [0, 2, 1, 3]] if any_order else [[0, 1, 2, 3]]
    for way in ways:
        around = [corners[i] for i in way]
        if _is_convex(around):
            return around
    raise ValueError(
        f"{name}: the outline from corner 1 to 2 to 3 to 4 crosses itself; give the corners in "
        "order around the outline"
    )


def require_near(corners: Sequence[Tuple[int, int]], width: int, height: int, name: str) -> None:
    """Refuses corners farther from the picture than its own size."""
    for i, (x, y) in enumerate(corners, 1):
        if not (-width <= x <= 2 * width and -height <= y <= 2 * height):
            raise ValueError(
                f"{name}: corner {i} {(x, y)} lies far outside the picture of {width} × {height} "
                "pixels"
            )


def require_inside(point: Tuple[int, int], width: int, height: int, name: str) -> None:
    if not (0 <= point[0] < width and 0 <= point[1] < height):
        raise ValueError(
            f"{name} {point} lies outside the picture of {width} × {height} pixels"
        )
