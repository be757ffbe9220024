"""The table of signatures against the header, the search for the library, the meaning of statuses."""

import ctypes
import ctypes.util
import os
import pathlib
import re
import subprocess
import sys

import numpy as np
import pytest

import roxe
from roxe import _native

HEADER = pathlib.Path(__file__).parents[2] / "include/roxe.h"
TYPES = {
    "const PixelArray*": ctypes.POINTER(_native.PixelArray),
    "PixelArray*": ctypes.POINTER(_native.PixelArray),
    "Quad*": ctypes.POINTER(_native.Quad),
    "const Quad*": ctypes.POINTER(_native.Quad),
    "const PixelRect*": ctypes.POINTER(_native.PixelRect),
    "int32_t*": ctypes.POINTER(ctypes.c_int32),
    "PixelRect": _native.PixelRect,
    "int32_t": ctypes.c_int32,
    "uint32_t": ctypes.c_uint32,
    "float": ctypes.c_float,
}


def declarations():
    """Name and argument types of every function of the header."""
    text = re.sub(r"//[^\n]*", "", HEADER.read_text())
    found = {}
    for name, arguments in re.findall(r"ROXE_API int32_t (\w+)\(([^)]*)\);", text):
        types = [re.fullmatch(r"\s*(.*?)\s*\w+\s*", one, re.S).group(1) for one in
                 arguments.split(",")]
        found[name] = tuple(TYPES[re.sub(r"\s+", " ", one)] for one in types)
    assert text.count("ROXE_API") - text.count("#define ROXE_API") == len(found)
    return found


def test_the_table_of_signatures_is_the_header():
    assert len(declarations()) == 15
    assert {name: tuple(types) for name, types in _native.SIGNATURES.items()} == declarations()


def test_every_function_of_the_opened_library_has_its_types():
    for name, types in declarations().items():
        function = getattr(_native.library(), name)
        assert tuple(function.argtypes) == types
        assert function.restype is ctypes.c_int32


def test_records_have_the_layout_of_the_header():
    assert ctypes.sizeof(_native.PixelArray) == 24
    assert _native.PixelArray.pixels.offset == 16
    assert ctypes.sizeof(_native.PixelRect) == 16
    assert _native.Quad.y1.offset == 12 and _native.Quad.x2.offset == 16
    constants = dict(re.findall(r"(kRoxe\w+) = (\d+)", HEADER.read_text()))
    assert constants == {
        "kRoxeFormatRGB24": str(_native.RGB24), "kRoxeFormatGray8": str(_native.GRAY8),
        "kRoxeOK": str(_native.OK), "kRoxeErrInvalid": str(_native.INVALID),
        "kRoxeErrNull": str(_native.NULL), "kRoxeErrFailed": str(_native.FAILED),
        "kRoxeErrParam": str(_native.PARAM)}


def load(code, **environment):
    """Runs code in a fresh interpreter; without ROXE_LIBRARY unless it is given."""
    kept = {key: value for key, value in os.environ.items() if key != "ROXE_LIBRARY"}
    return subprocess.run([sys.executable, "-c", code], env={**kept, **environment},
                          capture_output=True, text=True)


LOAD = "import roxe._native; print(roxe._native.library()._name)"


def test_the_library_is_looked_for_where_the_environment_says():
    path = os.environ["ROXE_LIBRARY"]
    assert load(LOAD, ROXE_LIBRARY=path).stdout.strip() == path
    missing = load(LOAD, ROXE_LIBRARY="/nowhere/libroxe.so.1")
    assert "ImportError: ROXE_LIBRARY names /nowhere/libroxe.so.1, which cannot be loaded" in (
        missing.stderr)


def test_then_by_the_loader_and_a_missing_library_says_what_to_do():
    folder = os.path.dirname(os.environ["ROXE_LIBRARY"])
    assert load(LOAD, LD_LIBRARY_PATH=folder).stdout.strip() == "libroxe.so.1"
    import_alone = load("import roxe; print(roxe.__version__)", LD_LIBRARY_PATH="/nowhere")
    assert import_alone.stdout == "1.0.0\n"


class Answers:
    """In place of the library: every function answers with one status."""

    def __init__(self, status):
        self.status = status

    def __getattr__(self, name):
        return lambda *arguments: self.status


def test_another_library_is_named():
    """One without the functions is as good as none."""
    other = ctypes.util.find_library("c")
    ran = subprocess.run(
        [sys.executable, "-c", "import roxe; roxe.natural_size([0, 0, 9, 0, 9, 9, 0, 9])"],
        env={**os.environ, "ROXE_LIBRARY": other}, capture_output=True, text=True)
    assert f"ImportError: {other} is not this version of the library: it lacks roxe" in ran.stderr


PHOTO = np.full((40, 50, 3), 100, np.uint8)
CORNERS = [(3, 4), (40, 2), (41, 30), (5, 33)]


@pytest.mark.parametrize("status, call, exception, sentence", [
    (0, lambda: roxe.natural_size(CORNERS), ValueError,
     "corners: no rectangle seen in perspective has these corners"),
    (4, lambda: roxe.soft_focus(PHOTO, radius=3), RuntimeError, "status 4"),
    (1, lambda: roxe.soft_focus(PHOTO, radius=3), MemoryError, "memory"),
    (4, lambda: roxe.temperature(PHOTO, temperature=7, tint=2), ValueError,
     "temperature 7 and tint 2 have no white balance"),
    (1, lambda: roxe.auto_gamma(PHOTO), MemoryError, "memory"),
    (2, lambda: roxe.rotate(PHOTO, angle=3), RuntimeError, "status 2"),
    (3, lambda: roxe.warp(PHOTO, from_=CORNERS, to=CORNERS), RuntimeError, "status 3"),
    (4, lambda: roxe.warp(PHOTO, from_=CORNERS, to=CORNERS), MemoryError, "memory"),
    (3, lambda: roxe.tint(PHOTO, colour="red", tolerance=4), RuntimeError, "status 3"),
])
def test_a_status_becomes_an_exception(monkeypatch, status, call, exception, sentence):
    from roxe import _colour_and_tone, _geometry
    for module in (_geometry, _colour_and_tone):
        monkeypatch.setattr(module, "library", lambda: Answers(status))
    with pytest.raises(exception, match=sentence):
        call()


@pytest.mark.parametrize("status, exception", [(4, ValueError), (0, MemoryError), (1, RuntimeError)])
def test_success_of_perspective_is_2(monkeypatch, status, exception):
    real = _native.library()

    class Perspective(Answers):
        roxeGetPerspectiveDistortionCorrectionSize = real.roxeGetPerspectiveDistortionCorrectionSize

    from roxe import _geometry
    monkeypatch.setattr(_geometry, "library", lambda: Perspective(2))
    assert roxe.perspective(PHOTO, corners=CORNERS).shape == (28, 36, 3)
    monkeypatch.setattr(_geometry, "library", lambda: Perspective(status))
    with pytest.raises(exception):
        roxe.perspective(PHOTO, corners=CORNERS)
