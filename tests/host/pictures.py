"""Small picture files made and read by other means than the tool's own codecs."""

import os
import shutil
import struct
import subprocess
import tempfile
import unittest
import zlib

PHOTOS = os.path.join(os.path.dirname(__file__), "..", "..", "examples", "photos")
TOOL = os.environ["ROXE_TOOL"]
with open(TOOL, "rb") as _tool:
    SANITIZED = b"__asan" in _tool.read()  # and needs far more memory by itself


def photo(name):
    return os.path.join(PHOTOS, name)


class ToolTest(unittest.TestCase):
    """A fresh folder for every test, and ways to run the tool in it."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = folder.name

    def path(self, name):
        return os.path.join(self.folder, name)

    def write(self, name, content):
        with open(self.path(name), "wb") as file:
            file.write(content)
        return self.path(name)

    def read(self, name):
        with open(self.path(name), "rb") as file:
            return file.read()

    def run_tool(self, *arguments, **options):
        return subprocess.run([TOOL, *map(str, arguments)], cwd=self.folder, text=True,
                              capture_output=True, timeout=600, **options)

    def succeed(self, *arguments):
        """Standard output of a run that must work."""
        result = self.run_tool(*arguments)
        self.assertEqual(result.returncode, 0, result.stderr)
        return result.stdout

    def copy(self, source, target):
        """Decodes and encodes: a level line needs no straightening, but with an option about the
        output the file is written anew."""
        return self.succeed("straighten", source, target, "--line", "0,0,1,0", "--background",
                            "black")

    def as_anyone(self):
        """Options of run_tool with which permissions count: the administrator, who may do everything,
        becomes no one, who must be able to get here."""
        if os.geteuid() != 0:
            return {}
        shutil.copy(TOOL, self.path("tool"))
        subprocess.run(["chmod", "-R", "a+rX", self.folder], check=True)  # whatever the umask is
        options = {"user": 65534, "executable": self.path("tool")}
        if self.run_tool("--version", **options).returncode != 0:
            self.skipTest("the temporary folder is closed to other users")
        return options

    def refuse(self, code, words, *arguments, **options):
        """A run that must fail with one sentence and leave the folder as it was."""
        before = snapshot(self.folder)
        result = self.run_tool(*arguments, **options)
        self.assertEqual(result.returncode, code, result.stdout + result.stderr)
        self.assertEqual(result.stdout, "")
        self.assertRegex(result.stderr, r"\Aroxe: [^\n]+\n\Z")
        self.assertIn(words, result.stderr)
        self.assertEqual(snapshot(self.folder), before)


def snapshot(folder):
    """Every file below a folder with its content."""
    content = {}
    for place, _, names in os.walk(folder):
        for name in names:
            path = os.path.join(place, name)
            if os.path.isfile(path):
                with open(path, "rb") as file:
                    content[path] = file.read()
            else:
                content[path] = None
    return content


# ---- portable pixmaps: pixels are lists of rows of (red, green, blue)


def ppm(rows):
    pixels = bytes(channel for row in rows for pixel in row for channel in pixel)
    return b"P6\n%d %d\n255\n" % (len(rows[0]), len(rows)) + pixels


def pgm(rows):
    return b"P5\n%d %d\n255\n" % (len(rows[0]), len(rows)) + bytes(v for row in rows for v in row)


def ppm_rows(content):
    magic, width, height, largest = content.split(maxsplit=4)[:4]
    assert magic == b"P6" and largest == b"255"
    width, height = int(width), int(height)
    pixels = content[len(content) - 3 * width * height:]
    return [[tuple(pixels[3 * (y * width + x):][:3]) for x in range(width)] for y in range(height)]


def pgm_rows(content):
    magic, width, height, largest = content.split(maxsplit=4)[:4]
    assert magic == b"P5" and largest == b"255"
    width, height = int(width), int(height)
    pixels = content[len(content) - width * height:]
    return [list(pixels[y * width:(y + 1) * width]) for y in range(height)]


def plain(width, height, colour):
    return [[colour] * width for _ in range(height)]


def speckled(width, height):
    """Every pixel differs from its neighbours."""
    return [[((37 * x + 11 * y) % 256, (5 * x + 59 * y) % 256, (83 * x + 29 * y) % 256)
             for x in range(width)] for y in range(height)]


# ---- PNG


def chunk(name, content):
    return struct.pack(">I", len(content)) + name + content + struct.pack(
        ">I", zlib.crc32(name + content))


def png(width, height, depth, colour_type, rows, before_pixels=(), after_pixels=()):
    """rows: the packed bytes of each row. The other arguments are further chunks."""
    header = struct.pack(">IIBBBBB", width, height, depth, colour_type, 0, 0, 0)
    pixels = zlib.compress(b"".join(b"\0" + bytes(row) for row in rows))
    return b"".join([b"\x89PNG\r\n\x1a\n", chunk(b"IHDR", header), *before_pixels,
                     chunk(b"IDAT", pixels), *after_pixels, chunk(b"IEND", b"")])


def png_chunks(content):
    chunks, position = [], 8
    while position < len(content):
        length, = struct.unpack_from(">I", content, position)
        chunks.append((content[position + 4:position + 8],
                       content[position + 8:position + 8 + length]))
        position += 12 + length
    return chunks


# ---- JPEG


def jpeg_segments(content):
    """(marker, payload) of every segment before the picture data."""
    segments, position = [], 2
    while content[position + 1] != 0xDA:
        length, = struct.unpack_from(">H", content, position + 2)
        segments.append((content[position + 1], content[position + 4:position + 2 + length]))
        position += 2 + length
    return segments


def with_segments(content, segments):
    """A JPEG with more segments right at its start."""
    added = b"".join(b"\xff" + bytes([marker]) + struct.pack(">H", len(payload) + 2) + payload
                     for marker, payload in segments)
    return content[:2] + added + content[2:]


def exif(orientation, byte_order="<"):
    """A TIFF structure of two tags, orientation the second."""
    head = b"II*\0" if byte_order == "<" else b"MM\0*"
    return (head + struct.pack(byte_order + "IH", 8, 2) +
            struct.pack(byte_order + "HHII", 0x0106, 4, 1, 77) +
            struct.pack(byte_order + "HHIHH", 0x0112, 3, 1, orientation, 0) +
            struct.pack(byte_order + "I", 0))
