"""Puts the shared library beside the package, so that a wheel carries it.

The library is built from the sources around this folder, or taken from ROXE_LIBRARY if that names
one. Everything else stands in pyproject.toml.
"""

import os
import pathlib
import shutil
import subprocess
import sys

from setuptools import Distribution, setup
from setuptools.command.build_py import build_py
from wheel.bdist_wheel import bdist_wheel

LIBRARY = {"darwin": "libroxe.1.dylib", "win32": "libroxe-1.dll"}.get(sys.platform, "libroxe.so.1")
SOURCES = pathlib.Path(__file__).resolve().parent.parent


class BuildWithLibrary(build_py):
    def run(self) -> None:
        super().run()
        target = pathlib.Path(self.build_lib, "roxe", LIBRARY)
        named = os.environ.get("ROXE_LIBRARY")
        shutil.copyfile(named or self._built(), target)

    def _built(self) -> pathlib.Path:
        folder = pathlib.Path(self.get_finalized_command("build").build_temp).resolve()
        subprocess.run(["cmake", "-S", SOURCES, "-B", folder, "-DCMAKE_BUILD_TYPE=Release",
                        "-DROXE_HOST=OFF", "-DROXE_TESTS=OFF"], check=True)
        subprocess.run(["cmake", "--build", folder, "--target", "roxe", "--parallel"], check=True)
        return folder / LIBRARY


class AnyPython(bdist_wheel):
    """For one platform, but for every Python 3: nothing is compiled against the interpreter."""

    def get_tag(self) -> tuple[str, str, str]:
        return ("py3", "none", super().get_tag()[2])


class WithLibrary(Distribution):
    def has_ext_modules(self) -> bool:
        return True


setup(cmdclass={"build_py": BuildWithLibrary, "bdist_wheel": AnyPython}, distclass=WithLibrary)
