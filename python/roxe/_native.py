"""The shared library: its records, its fifteen functions and where it is found.

Every function gets its argument and result types from SIGNATURES. Without them ctypes would pass
records by value and crash the interpreter.
"""

import ctypes
import functools
import os
import pathlib
import sys
from ctypes import POINTER, c_float, c_int32, c_uint32
from typing import Any, Mapping, Sequence

RGB24 = 0
GRAY8 = 3

OK = 0
INVALID = 1
NULL = 2
FAILED = 3
PARAM = 4


class PixelArray(ctypes.Structure):
    """A picture: row y starts y * rowBytes bytes after pixels."""

    _fields_ = [
        ("format", c_uint32),
        ("width", c_int32),
        ("height", c_int32),
        ("rowBytes", c_int32),
        ("pixels", ctypes.c_void_p),
    ]


class PixelRect(ctypes.Structure):
    """A rectangle; right and bottom are exclusive."""

    _fields_ = [(side, c_int32) for side in ("left", "top", "right", "bottom")]


class Quad(ctypes.Structure):
    """Four corners in the order of the boundary."""

    _fields_ = [(axis + str(i), c_int32) for i in range(4) for axis in "xy"]


_picture = POINTER(PixelArray)
_quad = POINTER(Quad)
_rect = POINTER(PixelRect)
_out = POINTER(c_int32)
_int, _uint = c_int32, c_uint32

# Argument types; every function returns an int32_t.
SIGNATURES: Mapping[str, Sequence[Any]] = {
    "roxeVerifyPixelArray": (_picture,),
    "roxeRotateImage": (_picture, _int, _int, c_float, _picture, _int, _int),
    "roxeuAutoStraightenImage": (_picture, _int, _int, _int, _int, _picture),
    "roxeAffineTransform": (_picture, _picture, _quad, _quad, PixelRect),
    "roxeGetPerspectiveDistortionCorrectionSize": (_quad, _int, _int, _int, _out, _out),
    "roxePerspectiveDistortionCorrection": (_picture, _picture, _quad, _int, _int, PixelRect),
    "roxeSoftFocus": (_picture, _picture, _picture, _int, _int),
    "roxeReplaceColor": (_picture, _picture, _uint, _uint, _uint, _uint, _int, _int, _int),
    "roxeReplaceColorMask": (_picture, _picture, _uint, _uint, _uint, _uint),
    "roxeColorTint": (_picture, _picture, _uint, _uint, _uint, _uint),
    "roxeColorTintMask": (_picture, _picture, _uint, _uint, _uint, _uint),
    "roxeColorTemperature": (_picture, _picture, _int, _int),
    "roxeAutoGamma": (_picture, _picture, _rect),
    "roxeShadowHighlight": (_picture, _picture, _uint, _uint, _int),
    "roxeVariations": (_picture, _picture, _int, _int, _int, _int, _int),
}

# The name of the shared library, which cmake gives it on each system.
_FILE = {"darwin": "libroxe.1.dylib", "win32": "libroxe-1.dll"}.get(sys.platform, "libroxe.so.1")


def _open() -> ctypes.CDLL:
    # CDLL releases the interpreter's lock during a call: other threads go on.
    named = os.environ.get("ROXE_LIBRARY")
    if named:
        try:
            return ctypes.CDLL(named)
        except OSError as error:
            raise ImportError(f"ROXE_LIBRARY names {named}, which cannot be loaded: {error}")
    beside = pathlib.Path(__file__).with_name(_FILE)
    try:
        return ctypes.CDLL(str(beside) if beside.exists() else _FILE)
    except OSError as error:
        raise ImportError(
            f"{_FILE} cannot be loaded ({error}): install the library, or set ROXE_LIBRARY to its "
            "path"
        )


@functools.lru_cache(maxsize=None)
def library() -> ctypes.CDLL:
    """The library with all types declared, opened by the first call.

    Looked for in ROXE_LIBRARY (the path of the file), then beside this package, then where the
    system's loader looks. Raises ImportError.
    """
    opened = _open()
    for name, arguments in SIGNATURES.items():
        function = getattr(opened, name, None)
        if function is None:
            raise ImportError(f"{opened._name} is not this version of the library: it lacks {name}")
        function.argtypes = arguments
        function.restype = c_int32
    return opened


def expect(status: int, success: int, meanings: Mapping[int, Exception]) -> None:
    """Raises what a status means. The arguments were checked before, so memory is the usual one."""
    if status == success:
        return
    raise meanings.get(
        status, RuntimeError(f"the library refused the operation with status {status}")
    )


def no_memory() -> MemoryError:
    return MemoryError("the operation could not get the memory it needs")
