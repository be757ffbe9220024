"""A call lets other threads run, and pictures of several threads come out right."""

import ctypes
import sys
import threading
from concurrent.futures import ThreadPoolExecutor

import numpy as np

import roxe
from roxe import _native
from pictures import OPERATIONS, noise


def runs_meanwhile(library, monkeypatch):
    """Whether this thread gets its turn while another one is inside a call of the library."""
    from roxe import _colour_and_tone
    monkeypatch.setattr(_colour_and_tone, "library", lambda: library)
    picture = noise(600, 800)
    seen, ran, calls = [], threading.Event(), 200

    def work():
        for _ in range(calls):  # ends as soon as the other thread has run
            roxe.soft_focus(picture, radius=21, out=picture)
            if ran.is_set():
                seen.append(True)
                return

    # No thread is asked to give way for as long as this test takes: only a call lets others in.
    interval = sys.getswitchinterval()
    sys.setswitchinterval(1000)
    try:
        other = threading.Thread(target=work)
        other.start()
        ran.set()
        other.join()
    finally:
        sys.setswitchinterval(interval)
    return bool(seen)


def test_the_lock_of_the_interpreter_is_released(monkeypatch):
    assert runs_meanwhile(_native.library(), monkeypatch)


def test_many_threads_at_once():
    pictures = [noise(60, 80, seed) for seed in range(8)]
    work = [(name, picture) for name in OPERATIONS for picture in pictures]
    expected = [OPERATIONS[name](picture) for name, picture in work]
    with ThreadPoolExecutor(8) as pool:
        results = list(pool.map(lambda item: OPERATIONS[item[0]](item[1]), work))
    for result, right in zip(results, expected):
        assert np.array_equal(result, right)
