"""The module in libvips as a door: libvips in this process, through its C interface."""

import ctypes
import os
import tempfile
import threading

import numpy as np

# The folder whose modules are loaded, where there is one.
HOME = os.environ.get("ROXE_VIPSHOME")


def load():
    """libvips with its modules."""
    os.environ["VIPSHOME"] = HOME
    library = ctypes.CDLL("libvips.so.42")
    for name in ("vips_operation_new", "vips_image_new_from_file", "vips_image_new_from_memory_copy",
                 "vips_image_new_mode", "vips_image_write_to_memory"):
        getattr(library, name).restype = ctypes.c_void_p
    library.vips_error_buffer.restype = ctypes.c_char_p
    if library.vips_init(b"roxe"):
        raise RuntimeError(library.vips_error_buffer().decode())
    library.vips_cache_set_max(0)  # files of one name may have another content
    return library


class Failed(Exception):
    """What libvips says about the call that failed."""


class Vips:
    library = None
    lock = threading.Lock()  # libvips has one text of errors for all threads

    @classmethod
    def call(cls, operation, arguments, look):
        """Calls an operation with texts and pointers to images for arguments; look is given the
        pointer to its result."""
        with cls.lock:
            cls.library = cls.library or load()
            library = cls.library
            call = ctypes.c_void_p(library.vips_operation_new(operation.encode()))
            try:
                for name, value in arguments.items():
                    if isinstance(value, ctypes.c_void_p):
                        library.g_object_set(call, name.encode(), value, None)
                    elif library.vips_object_set_argument_from_string(
                            call, name.encode(), str(value).encode()):
                        raise Failed
                if library.vips_object_build(call):
                    raise Failed
                out = ctypes.c_void_p()
                library.g_object_get(call, b"out", ctypes.byref(out), None)
                try:
                    return look(out)
                finally:
                    library.g_object_unref(out)
            except Failed:
                message = library.vips_error_buffer().decode().strip()
                library.vips_error_clear()
                raise Failed(message.removeprefix(operation + ": ")) from None
            finally:
                library.vips_object_unref_outputs(call)
                library.g_object_unref(call)

    @classmethod
    def pixels(cls, image):
        """The samples of an image of 8 bits, of the shape (height, width, bands)."""
        size = ctypes.c_size_t()
        memory = cls.library.vips_image_write_to_memory(image, ctypes.byref(size))
        if not memory:
            raise Failed
        shape = tuple(getattr(cls.library, "vips_image_get_" + name)(image)
                      for name in ("height", "width", "bands"))
        samples = np.frombuffer(ctypes.string_at(memory, size.value), np.uint8).reshape(shape)
        cls.library.g_free(ctypes.c_void_p(memory))
        return samples

    @classmethod
    def draw(cls, operation, image, options):
        from doors import Refused, Tool, write
        name, options = operation, dict(options)
        if operation == "colour_mask":
            name, options = "replace_colour", {**options, "mask_only": True}
        with tempfile.TemporaryDirectory() as folder:
            arguments = {"in": write(os.path.join(folder, "in.ppm"), image)}
            for option, value in options.items():
                if option == "mask":
                    value = write(os.path.join(folder, "mask.pgm"), value)
                elif value is True:
                    value = "fit" if option == "crop" else "true"
                else:
                    value = Tool.words("--" + option, value)[-1].removeprefix("--crop=")
                arguments[option.strip("_")] = value
            try:
                samples = cls.call("roxe_" + name, arguments, cls.pixels)
            except Failed as refusal:
                raise Refused(str(refusal)) from None
        if samples.shape[2] == 1:
            return samples[..., 0]
        return np.ascontiguousarray(samples[..., ::-1])
