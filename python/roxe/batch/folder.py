"""The folder of the results: what stands there, and what was left there by runs that died."""

import contextlib
import fcntl
import json
import os
import shutil
import tempfile
from typing import Dict, Iterator, Mapping, Optional, TextIO

from roxe.batch.task import Entry, mark_of

MANIFEST = "manifest.jsonl"
WORKING = ".roxe-batch"  # journal, lock and temporary files


class Refusal(Exception):
    """The command makes no sense; holds one sentence."""


def line_of(entry: Entry) -> str:
    return json.dumps(entry, sort_keys=True) + "\n"


def entry_of(line: bytes) -> Optional[Entry]:
    """What line_of wrote; None for anything else, such as a line that was torn."""
    try:
        entry = json.loads(line)
    except ValueError:
        return None
    if not isinstance(entry, dict) or not isinstance(entry.get("left", {}), dict):
        return None
    words = [entry.get("input"), *entry.get("left", {}).values()]
    words += [entry["error"]] if "error" in entry else [entry.get("output"), entry.get("output_sha256")]
    return entry if all(isinstance(word, str) for word in words) else None


class Folder:
    """Manifest, journal, lock and temporary files; one batch at a time."""

    def __init__(self, path: str) -> None:
        self._manifest = os.path.join(path, MANIFEST)
        self._working = os.path.join(path, WORKING)
        self._journal = os.path.join(self._working, "journal.jsonl")
        try:
            os.makedirs(self._working, exist_ok=True)
            self._lock = open(os.path.join(self._working, "lock"), "w", encoding="utf-8")
        except OSError as error:
            raise Refusal(f"{path}: the folder cannot be made or written ({error.strerror})") from None
        try:
            fcntl.flock(self._lock, fcntl.LOCK_EX | fcntl.LOCK_NB)
        except OSError:
            raise Refusal(f"another batch is writing to {path}") from None
        # What dead drivers and workers left. A task of theirs that still runs cannot put its
        # result in place any more: it lies here too.
        for name in os.listdir(self._working):
            if name.startswith("run-"):
                shutil.rmtree(os.path.join(self._working, name), ignore_errors=True)
        self.scratch = tempfile.mkdtemp(prefix="run-", dir=self._working)
        os.chmod(self.scratch, 0o777)  # workers may be other users
        made = os.path.dirname(mark_of(self.scratch, ""))
        with contextlib.suppress(FileExistsError):  # left by a run that died
            os.mkdir(made)
            os.chmod(made, 0o777)

    def known(self) -> Dict[str, Entry]:
        """Lines of the manifest, overtaken by those of an interrupted run's journal. Raises Refusal
        where a file of that name is none."""
        entries: Dict[str, Entry] = {}
        for path in (self._manifest, self._journal):
            with contextlib.suppress(FileNotFoundError), open(path, "rb") as file:
                for line in file:
                    entry = entry_of(line)
                    if entry:
                        entries[entry["input"]] = entry
                    elif path == self._manifest:
                        raise Refusal(f"{path}: is not the manifest of a batch, and would be replaced")
        return entries

    @contextlib.contextmanager
    def journal(self) -> Iterator[TextIO]:
        with open(self._journal, "a", encoding="utf-8") as file:
            file.write("\n")  # ends a line that was torn
            yield file

    def finish(self, entries: Mapping[str, Entry]) -> None:
        """Writes the manifest in one step and removes everything temporary."""
        written = os.path.join(self.scratch, MANIFEST)
        with open(written, "w", encoding="utf-8") as file:
            for name in sorted(entries):
                file.write(line_of(entries[name]))
            file.flush()
            os.fsync(file.fileno())
        os.replace(written, self._manifest)
        shutil.rmtree(self._working)

    def close(self) -> None:
        """Removes the temporary files; the journal of an unfinished run stays."""
        shutil.rmtree(self.scratch if os.path.exists(self._journal) else self._working,
                      ignore_errors=True)
        self._lock.close()
