"""The driver: hands out the tasks, notes what comes back, survives lost workers."""

import contextlib
import hashlib
import os
import sys
import time
from typing import Any, Dict, Iterator, Mapping, Optional, Sequence

import cloudpickle  # type: ignore[import]
import dask
import distributed as typeless
from distributed.scheduler import KilledWorker

from roxe.batch import task
from roxe.batch.folder import Folder, Refusal, line_of
from roxe.batch.task import Entry, Job, results_of, without_paths

RETRIES = 2  # where storage fails; a lost worker is the scheduler's business

distributed: Any = typeless
cloudpickle.register_pickle_by_value(task)


class Progress:
    """Counts and the time left, on standard error: one line on a terminal, else every tenth."""

    def __init__(self, total: int) -> None:
        self._total, self._start = total, time.monotonic()
        self.done = self.failed = self.kept = self.replaced = 0
        self._tenth = 0
        self._redraws = sys.stderr.isatty()

    def advance(self, entry: Entry, known: Optional[Entry]) -> None:
        self.done += 1
        self.failed += "error" in entry
        self.kept += entry is known and "error" not in entry
        if known is not None and "output_sha256" in entry:
            earlier = results_of(known).get(entry["output"], entry["output_sha256"])
            self.replaced += earlier != entry["output_sha256"]
        tenth = 10 * self.done // self._total
        if self._redraws:
            print("\r\033[K" + self.text(), end="", file=sys.stderr, flush=True)
        elif tenth > self._tenth:
            self._tenth = tenth
            print(self.text(), file=sys.stderr, flush=True)

    def text(self) -> str:
        worked = self.done - self.kept
        left = "?"
        if worked > 0:
            seconds = (time.monotonic() - self._start) / worked * (self._total - self.done)
            left = f"{int(seconds) // 60}:{int(seconds) % 60:02d}"
        return (f"{self.done} of {self._total} photographs, {self.failed} failed, "
                f"{self.kept} done before, {left} left")

    def close(self) -> None:
        if self._redraws:
            print("\r\033[K", end="", file=sys.stderr, flush=True)


def failure(job: Job, photograph: str, known: Optional[Entry], error: Optional[BaseException]) -> Entry:
    """The line of a photograph whose task gave none."""
    entry: Entry = {"input": photograph, **job["identity"]}
    if left := results_of(known):
        entry["left"] = left
    if isinstance(error, KilledWorker):
        return {**entry, "error": "every worker died that was given this photograph"}
    if isinstance(error, OSError) and error.strerror:
        return {**entry, "error": f"storage failed: {error.strerror}"}
    message = without_paths(f"{type(error).__name__} {error}", (job["scratch"], job["source"], job["target"]))
    return {**entry, "error": f"the task failed: {message}"}


def run_tasks(client: Any, job: Job, photographs: Sequence[str], known: Mapping[str, Entry],
              folder: Folder, progress: Progress) -> Dict[str, Entry]:
    """All lines of the manifest. Keeps the workers busy without handing out everything at once."""
    from distributed import as_completed
    def submit(photograph: str) -> Any:
        # A key of its own: a scheduler that outlives drivers must not answer from memory. Keys are
        # UTF-8, names of files need not be.
        name = hashlib.sha256(os.fsencode(photograph)).hexdigest()
        key = f"roxe-{os.path.basename(job['scratch'])}-{name}"
        return client.submit(task.process, job, photograph, known.get(photograph), key=key,
                             retries=RETRIES, pure=False)

    entries: Dict[str, Entry] = {}
    with folder.journal() as journal:

        def note(photograph: str, entry: Entry) -> None:
            before = known.get(photograph)
            entry = before if before == entry else entry
            entries[photograph] = entry
            if entry is not before:
                journal.write(line_of(entry))
                journal.flush()
            progress.advance(entry, before)

        waiting = iter(photographs)
        running: Dict[str, str] = {}
        finished = distributed.as_completed()

        def fill() -> None:
            threads = sum(worker["nthreads"] for worker in
                          client.scheduler_info()["workers"].values())
            for photograph in waiting:
                future = submit(photograph)
                running[future.key] = photograph
                finished.add(future)
                if len(running) >= max(16, 4 * threads):
                    break

        suspects = []
        fill()
        for future in finished:
            photograph = running.pop(future.key)
            error = None if future.status == "finished" else future.exception()
            if isinstance(error, KilledWorker):
                suspects.append(photograph)  # or it only waited beside one that kills
            elif error is not None:
                note(photograph, failure(job, photograph, known.get(photograph), error))
            else:
                note(photograph, future.result())
            future.release()
            fill()
        # Alone, each shows whether it was the one.
        for photograph in sorted(suspects):
            future = submit(photograph)
            error = future.exception()
            note(photograph, failure(job, photograph, known.get(photograph), error) if error else future.result())
            future.release()
    return entries


@contextlib.contextmanager
def connected(scheduler: Optional[str], jobs: Optional[int]) -> Iterator[Any]:
    """A client of the named scheduler, or of a cluster on this machine."""
    if scheduler:
        try:
            client = distributed.Client(scheduler)
        except (OSError, ValueError):  # the latter for what is no address
            raise Refusal(f"no scheduler answers at {scheduler}") from None
        with client:
            yield client
        return
    # One lost worker may be bad luck; a photograph that loses two is looked at alone.
    with dask.config.set({"distributed.scheduler.allowed-failures": 1}):
        workers = jobs or len(os.sched_getaffinity(0))
        with distributed.LocalCluster(n_workers=workers, threads_per_worker=1, processes=True, memory_limit=0,
                          dashboard_address=None, silence_logs=50) as cluster:
            with distributed.Client(cluster) as client:
                yield client
