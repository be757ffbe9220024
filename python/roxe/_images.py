"""numpy arrays as the library's records: views without a copy, or a refusal that says what to do."""

from typing import Callable, Optional, Tuple

import numpy as np
import numpy.typing as npt

from roxe._arguments import choice
from roxe._native import GRAY8, RGB24, PixelArray

Image = npt.NDArray[np.uint8]

_UINT8 = np.dtype(np.uint8)
_LARGEST = 2**31 - 1  # what a field of a record holds


def record(array: Image, name: str, channels: int = 3) -> PixelArray:
    """A record of the array's own memory: shape (height, width, 3), or (height, width) for 1.

    Pixels must be packed and rows a positive stride apart, so sub-images pass. Raises TypeError or
    ValueError with a sentence that begins with name.
    """
    if isinstance(array, np.ndarray) and array.dtype == _UINT8 and array.ndim == (channels + 3) // 2:
        height, width = array.shape[:2]
        row, pixel = array.strides[:2]
        used = channels * width
        if height == 1:
            row = used  # numpy leaves the stride of a single row open
        if (
            0 < used <= row <= _LARGEST
            and 0 < height <= _LARGEST
            and (pixel == channels or width == 1)
            and (channels == 1 or (array.shape[2] == 3 and array.strides[2] == 1))
            and not isinstance(array, np.ma.MaskedArray)
        ):
            kind = RGB24 if channels == 3 else GRAY8
            return PixelArray(kind, width, height, row, array.ctypes.data)
    raise _refusal(array, name, channels)


def _refusal(array: object, name: str, channels: int) -> Exception:
    """Why an array cannot be described by a record, and what to write instead."""
    if not isinstance(array, np.ndarray):
        return TypeError(
            f"{name} needs a numpy array, not {type(array).__name__}: "
            f"np.asarray({name}, dtype=np.uint8)"
        )
    if isinstance(array, np.ma.MaskedArray):
        return TypeError(f"{name} is a masked array, whose mask would be lost: {name}.filled(0)")
    if array.dtype != np.uint8:
        return TypeError(f"{name} has dtype {array.dtype}, not uint8: {_as_bytes(array, name)}")
    problem = _wrong_shape(array, name, channels)
    if problem:
        return ValueError(problem)
    if array.size == 0:
        return ValueError(f"{name} has shape {array.shape} and holds no pixel")
    row, pixel = array.strides[:2]
    if max(array.shape[0], channels * array.shape[1]) > _LARGEST or row > _LARGEST:
        return ValueError(
            f"{name} has a side, a row or a step between rows beyond {_LARGEST} bytes: cut it into "
            "parts, or np.ascontiguousarray if only the step is too long"
        )
    if name == "out":
        return ValueError(
            f"out has strides {array.strides}: its pixels must be packed and its rows a positive "
            "step apart; leave out away and assign the result: target[...] = result"
        )
    if array.ndim == 3 and array.strides[2] == -1:
        return ValueError(
            f"{name} is a view with its channels reversed: give the array as it was with "
            'order="rgb" (or order="bgr"), or np.ascontiguousarray'
            f"({name})"
        )
    return ValueError(
        f"{name} has strides {array.strides}: its pixels must be packed and its rows a positive "
        f"step apart: np.ascontiguousarray({name})"
    )


def _as_bytes(array: npt.NDArray[np.generic], name: str) -> str:
    if array.dtype.kind == "f":
        return f"np.rint({name} * 255).astype(np.uint8) if its values run from 0 to 1"
    if array.dtype.kind == "u" and array.dtype.itemsize == 2:  # in either order of bytes
        return f"({name} >> 8).astype(np.uint8)"
    if array.dtype.kind == "b":
        return f"{name}.astype(np.uint8) * 255"
    return f"{name}.clip(0, 255).astype(np.uint8)"


def _wrong_shape(array: npt.NDArray[np.uint8], name: str, channels: int) -> Optional[str]:
    shape = array.shape
    if channels == 1:
        if array.ndim == 2:
            return None
        if name == "out":
            advice = "out = np.empty((height, width), np.uint8)"
        else:
            advice = f"np.ascontiguousarray({name}[..., 0])" if array.ndim == 3 else "give one plane"
        return f"{name} has shape {shape}, not (height, width): {advice}"
    if array.ndim == 3 and shape[2] == 3:
        return None
    if name == "out":
        advice = "out = np.empty((height, width, 3), np.uint8)"
    elif array.ndim == 2:
        advice = f"np.stack([{name}] * 3, axis=-1)"
    elif array.ndim == 3 and shape[2] == 1:
        advice = f"np.repeat({name}, 3, axis=2)"
    elif array.ndim == 3 and shape[2] == 4:
        advice = f"np.ascontiguousarray({name}[..., :3])"
    elif array.ndim == 3 and shape[0] == 3:
        advice = f"np.ascontiguousarray({name}.transpose(1, 2, 0))"
    else:
        advice = "give one picture at a time"
    return f"{name} has shape {shape}, not (height, width, 3): {advice}"


def target_record(out: Image, shape: Tuple[int, ...]) -> PixelArray:
    """A record of an array to write into, which must have just this shape."""
    made = record(out, "out", 3 if len(shape) == 3 else 1)
    if out.shape != shape:
        raise ValueError(f"out has shape {out.shape}, but the result has {shape}")
    if not out.flags.writeable:
        raise ValueError("out is read-only: give an array that can be written, or leave out away")
    return made


def _end(picture: PixelArray) -> int:
    channels = 3 if picture.format == RGB24 else 1
    return int(
        picture.pixels + (picture.height - 1) * picture.rowBytes + channels * picture.width
    )


def _touch(source: PixelArray, out: PixelArray) -> bool:
    """Whether the stretches of memory from the first to the last pixel have bytes in common."""
    return bool(source.pixels < _end(out) and out.pixels < _end(source))


def is_in_place(image: Image, source: PixelArray, out: Image, target: PixelArray) -> bool:
    """Whether out is the very same picture as image; ValueError if it overlaps it otherwise."""
    if not _touch(source, target):
        return False
    if (
        source.pixels == target.pixels
        and image.shape == out.shape
        and source.rowBytes == target.rowBytes
    ):
        return True
    if np.shares_memory(image, out):
        raise ValueError(
            "out overlaps image without being the same picture: give out=image to work in place, "
            "or image.copy()"
        )
    return False


def require_apart(
    image: Image, source: PixelArray, out: Image, target: PixelArray, name: str
) -> None:
    """ValueError if out overlaps a picture of another kind."""
    if _touch(source, target) and np.shares_memory(image, out):
        raise ValueError(f"out overlaps {name}: give {name}.copy(), or leave out away")


def swapped(image: Image, into: Optional[Image] = None) -> Image:
    """The picture with its first and third channel exchanged: red, green, blue and back."""
    # Three assignments of planes take a quarter of the time of copying image[..., ::-1].
    result: Image = np.empty(image.shape, np.uint8) if into is None else into
    result[..., 0] = image[..., 2]
    result[..., 1] = image[..., 1]
    result[..., 2] = image[..., 0]
    return result


def repeated_edges(image: Image) -> Image:
    """A copy of the picture with its edge pixels repeated once around: two rows and columns more."""
    height, width = image.shape[:2]
    padded: Image = np.empty((height + 2, width + 2, 3), np.uint8)
    padded[1:-1, 1:-1] = image
    padded[0, 1:-1] = image[0]
    padded[-1, 1:-1] = image[-1]
    padded[:, 0] = padded[:, 1]
    padded[:, -1] = padded[:, -2]
    return padded


def map_pixels(
    image: Image,
    out: Optional[Image],
    order: str,
    call: Callable[[PixelArray, PixelArray], None],
) -> Image:
    """Runs an operation that keeps the size and gives each pixel a new colour.

    call gets the records of a source and a target in the order blue, green, red, which may be the
    same picture.
    """
    rgb = choice(order, ("bgr", "rgb"), "order") == "rgb"
    source = record(image, "image")
    if out is None:
        result: Image = np.zeros(image.shape, np.uint8)  # without memory the library leaves it so
        target = record(result, "out")
    else:
        result = out
        target = target_record(out, image.shape)
        is_in_place(image, source, out, target)
    if rgb:
        work = swapped(image)
        packed = record(work, "image")
        call(packed, packed)
        return swapped(work, result)
    call(source, target)
    return result
