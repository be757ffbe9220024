"""The front doors of the library under one form: draw(operation, image, options) -> image.

Operations and options have the names of the Python package; a picture is a numpy array of shape
(height, width, 3), channels blue, green, red. A door that joins is a class with draw() in DOORS.
"""

import atexit
import base64
import json
import os
import pathlib
import subprocess
import sys
import tempfile
import threading

import numpy as np

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "python"))
os.environ.setdefault("ROXE_LIBRARY", str(ROOT / "build/release/libroxe.so.1"))
PROGRAM = os.environ.get("ROXE_CHECKSUMS", ROOT / "build/release/tests/roxe_checksums")
TOOL = os.environ.setdefault("ROXE_TOOL", str(ROOT / "build/release/host/roxe"))

import gegl  # noqa: E402
import roxe  # noqa: E402
import vips  # noqa: E402


class Refused(Exception):
    """The door refuses, in one sentence."""


def exported(library):
    """The names that a shared object shows to whoever loads it."""
    names = subprocess.run(["nm", "-D", "--defined-only", library], capture_output=True, text=True,
                           check=True).stdout
    return sorted(line.split()[-1] for line in names.splitlines())


class Python:
    """The package over numpy arrays."""

    @staticmethod
    def draw(operation, image, options):
        try:
            return getattr(roxe, operation)(image, **options)
        except ValueError as error:
            raise Refused(str(error)) from None


class Tool:
    """The command-line tool over files of pixels."""

    @staticmethod
    def draw(operation, image, options):
        command, more = operation.replace("_", "-"), []
        if operation == "colour_mask":
            command, more = "replace-colour", ["--mask-only"]
        with tempfile.TemporaryDirectory() as folder:
            for name, value in options.items():
                if name == "mask":
                    value = write(os.path.join(folder, "mask.pgm"), value)
                more += Tool.words("--" + name.strip("_").replace("_", "-"), value)
            source = write(os.path.join(folder, "in.ppm"), image)
            target = os.path.join(folder, "out.pgm" if operation == "colour_mask" else "out.ppm")
            ran = subprocess.run([TOOL, command, source, target, *more], capture_output=True,
                                 text=True)
            if ran.returncode:
                raise Refused(ran.stderr.strip().removeprefix("roxe: "))
            return read(target)

    @staticmethod
    def words(option, value):
        """An option as the command line has it."""
        if value is True:
            return [option]
        if option == "--crop":
            return [f"--crop={value}"]
        if option in ("--size", "--fit"):
            return [option, f"{value[0]}x{value[1]}"]
        if isinstance(value, (tuple, list)):
            return [option, ",".join(map(str, np.ravel(value)))]
        return [option, str(value)]


class Web:
    """The WebAssembly module in one node process."""

    process = None
    lock = threading.Lock()

    @classmethod
    def draw(cls, operation, image, options):
        def camel(name):
            head, *rest = name.strip("_").split("_")
            return head + "".join(word.capitalize() for word in rest)

        asked = {camel(name): list(np.ravel(value)) if isinstance(value, tuple) else value
                 for name, value in options.items()}
        if "mask" in asked:
            asked["mask"] = cls.rgba(np.repeat(asked["mask"][..., None], 3, axis=2))
        line = json.dumps({"operation": camel(operation), "image": cls.rgba(image),
                           "options": asked}, default=int)
        with cls.lock:
            if not (ROOT / "web/dist/roxe.wasm").exists():
                raise FileNotFoundError("web/dist/roxe.wasm is missing: run scripts/web first")
            if cls.process is None:
                cls.process = subprocess.Popen(
                    ["node", ROOT / "tests/doors/web.mjs"], stdin=subprocess.PIPE,
                    stdout=subprocess.PIPE, text=True)
                atexit.register(cls.process.kill)
            cls.process.stdin.write(line + "\n")
            cls.process.stdin.flush()
            answer = json.loads(cls.process.stdout.readline())
        if "refused" in answer:
            raise Refused(answer["refused"])
        pixels = np.frombuffer(base64.b64decode(answer["data"]), np.uint8)
        pixels = pixels.reshape(answer["height"], answer["width"], 4)
        assert (pixels[..., 3] == 255).all()
        if operation == "colour_mask":
            return np.ascontiguousarray(pixels[..., 0])
        return np.ascontiguousarray(pixels[..., 2::-1])

    @staticmethod
    def rgba(image):
        opaque = np.full(image.shape[:2] + (1,), 255, np.uint8)
        pixels = np.concatenate([image[..., ::-1], opaque], axis=2)
        return {"width": image.shape[1], "height": image.shape[0],
                "data": base64.b64encode(pixels.tobytes()).decode()}


DOORS = {"tool": Tool, "python": Python, "web": Web}
if gegl.MODULE:
    DOORS["gegl"] = gegl.Gegl
if vips.HOME:
    DOORS["vips"] = vips.Vips


def write(path, image):
    """Writes a portable pixmap or graymap; returns its path."""
    kind = b"P6" if image.ndim == 3 else b"P5"
    with open(path, "wb") as file:
        file.write(kind + b" %d %d 255\n" % (image.shape[1], image.shape[0]))
        file.write(np.ascontiguousarray(image[..., ::-1] if image.ndim == 3 else image).tobytes())
    return path


def read(path):
    content = pathlib.Path(path).read_bytes()
    kind, width, height, _ = content.split(maxsplit=4)[:4]
    if kind == b"P5":
        size = int(height), int(width)
        return np.frombuffer(content[-size[0] * size[1]:], np.uint8).reshape(size)
    size = int(height), int(width), 3
    pixels = np.frombuffer(content[-size[0] * size[1] * 3:], np.uint8).reshape(size)
    return np.ascontiguousarray(pixels[..., ::-1])
