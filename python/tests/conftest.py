"""Finds the package, the library and the tool of this checkout unless the environment names them."""

import os
import pathlib
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path[:0] = [str(ROOT / "python"), str(ROOT / "tests/doors")]
os.environ.setdefault("ROXE_LIBRARY", str(ROOT / "build/release/libroxe.so.1"))
os.environ.setdefault("ROXE_TOOL", str(ROOT / "build/release/host/roxe"))
os.environ["PYTHONPATH"] = str(ROOT / "python")  # for the processes that tests start
