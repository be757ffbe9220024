"""The operations in GEGL as a door: GEGL in this process, one graph for each picture."""

import ctypes
import os
import threading

import numpy as np

# The folder of the module, where there is one.
MODULE = os.environ.get("ROXE_GEGL_MODULE")

# The properties that make up an option of several numbers.
PARTS = {
    "about": ("x", "y"), "grey": ("x", "y"), "line": ("x1", "y1", "x2", "y2"),
    "region": ("x", "y", "width", "height"), "size": ("width", "height"),
    "fit": ("width", "height")}
CORNERS = tuple(axis + str(corner) for corner in range(1, 5) for axis in "xy")
REQUIRED = ("line", "corners", "from", "to")
FORMATS = {1: "Y' u8", 3: "R'G'B' u8", 4: "R'G'B'A u8"}


def load():
    """GEGL with its own modules and ours; what ours says goes to Gegl.said."""
    import gi
    gi.require_version("Gegl", "0.4")
    from gi.repository import Gegl as library, GLib
    own = os.popen("pkg-config --variable=pluginsdir gegl-0.4").read().strip()
    os.environ["GEGL_PATH"] = f"{own}:{MODULE}"
    library.init(None)
    GLib.log_set_handler("roxe", GLib.LogLevelFlags.LEVEL_INFO,
                         lambda domain, level, text, data: Gegl.said.append(text), None)
    return library


def properties(library, options):
    """The properties for options that have the names of the Python package."""
    from roxe._colours import COLOURS
    for name, value in options.items():
        name = name.strip("_").replace("_", "-")
        if value is None:
            yield name, None
        elif name in ("colour", "background"):
            yield name, library.Color.new(COLOURS.get(value.lower(), value))
        elif isinstance(value, (tuple, list)):
            if name not in REQUIRED:
                yield name, True
            numbers = np.ravel(value).tolist()
            for part, number in zip(PARTS.get(name, CORNERS), numbers, strict=True):
                yield f"{name}-{part}", number
        else:
            yield name, "fit" if name == "crop" and value is True else value


def set_property(node, name, value):
    """None is what only C can set: the colour that is no colour."""
    if value is None:
        library = ctypes.CDLL("libgegl-0.4.so.0")
        library.gegl_node_set(ctypes.c_void_p(hash(node)), name.encode(), None, None)
    else:
        node.set_property(name, value)


def render(library, node, channels):
    """The samples of what a node gives, of shape (height, width, channels)."""
    area = node.get_bounding_box()
    target = library.Buffer.new(FORMATS[channels], area.x, area.y, area.width, area.height)
    sink = node.get_parent().create_child("gegl:write-buffer")
    sink.set_property("buffer", target)
    node.link(sink)
    sink.process()
    content = target.get(area, 1.0, FORMATS[channels], library.AbyssPolicy.NONE)
    return np.frombuffer(content, np.uint8).reshape(area.height, area.width, channels)


class Gegl:
    library = None
    lock = threading.Lock()
    said = []

    @classmethod
    def buffer(cls, samples, at):
        """A buffer with its top left corner at (x, y); shape (height, width, channels)."""
        height, width, channels = samples.shape
        buffer = cls.library.Buffer.new(FORMATS[channels], *at, width, height)
        area = cls.library.Rectangle.new(*at, width, height)
        buffer.set(area, FORMATS[channels], np.ascontiguousarray(samples).tobytes())
        return buffer

    @classmethod
    def run(cls, name, samples, options, mask=None, at=(0, 0), before=None, part=None):
        """Place and samples of the result of red, green, blue and, where there is any, opacity.

        at: where the picture lies; before: an operation through which it goes first;
        part: (x, y, width, height) to ask for alone.
        """
        cls.library = cls.library or load()
        library, channels = cls.library, samples.shape[2]
        graph = library.Node()
        operation = graph.create_child("roxe:" + name)
        for option, value in properties(library, options):
            set_property(operation, option, value)
        for pad, content in (("input", samples), ("aux", mask)):
            if content is not None:
                source = graph.create_child("gegl:buffer-source")
                source.set_property("buffer", cls.buffer(content, at))
                if before:
                    first = graph.create_child(before)
                    source.link(first)
                    source = first
                source.connect_to("output", operation, pad)
        last = operation
        if part:
            last = graph.create_child("gegl:crop")
            for side, length in zip(("x", "y", "width", "height"), part):
                last.set_property(side, length)
            operation.link(last)
        cls.said.clear()  # options are set one after the other, and some make no sense alone
        area = last.get_bounding_box()
        return (area.x, area.y), render(library, last, channels)

    @classmethod
    def draw(cls, operation, image, options):
        from doors import Refused
        options = dict(options)
        mask = options.pop("mask", None)
        if operation == "colour_mask":
            operation, options["mask_only"] = "replace_colour", True
        with cls.lock:
            _, drawn = cls.run(operation.replace("_", "-"), image[..., ::-1], options,
                               None if mask is None else mask[..., None])
            if cls.said:
                assert (drawn[..., ::-1] == image).all(), "what is refused stays as it was"
                raise Refused(cls.said[0])
        return drawn[..., 0] if "mask_only" in options else np.ascontiguousarray(drawn[..., ::-1])
