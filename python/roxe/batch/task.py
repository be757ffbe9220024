"""The task: one photograph. Sent to the workers by value, so that they need no package but Dask."""

import hashlib
import os
import re
import subprocess
import tempfile
from typing import Any, Dict, Mapping, Optional, Sequence, TypedDict

Entry = Dict[str, Any]  # one line of the manifest


class Job(TypedDict):
    """What all tasks have in common; a plain dictionary, which needs no class to be unpickled.

    All paths are the same on every machine.
    """

    tool: str
    source: str  # folders
    target: str
    scratch: str
    recipe: str  # the file; its masks lie where it names them
    arguments: Sequence[str]  # of the tool
    extension: str  # of the results; empty: as each photograph
    identity: Mapping[str, Any]  # what tells this recipe from others in the manifest


def sha256(path: str) -> str:
    digest = hashlib.sha256()
    with open(path, "rb") as file:
        while block := file.read(1 << 20):
            digest.update(block)
    return digest.hexdigest()


def result_name(photograph: str, extension: str) -> str:
    return os.path.splitext(photograph)[0] + extension if extension else photograph


def printable(text: str) -> str:
    """Without what no terminal shows, or is driven by, as the tool says names of any bytes."""
    return "".join(c if c.isprintable() else "?" for c in text)


def without_paths(message: str, folders: Sequence[str]) -> str:
    """The message with paths below the folders made relative and all others cut to their name."""
    for folder in sorted(folders, key=len, reverse=True):
        message = message.replace(folder.rstrip("/") + "/", "")
    return re.sub(r"(?<![^\s'\"(])/(?:[^\s'\":]*/)?(?=[^\s/'\":])", "", message)


def is_unchanged(job: Job, entry: Entry, known: Optional[Entry]) -> bool:
    """Whether a line of the manifest has this input and recipe, and its result is in place."""
    if known is None or "output_sha256" not in known:
        return False
    output = result_name(entry["input"], job["extension"])
    wanted = {**entry, "output": output, "output_sha256": known["output_sha256"]}
    if {key: value for key, value in known.items() if key != "left"} != wanted:
        return False
    try:
        return bool(sha256(os.path.join(job["target"], output)) == known["output_sha256"])
    except OSError:
        return False


def results_of(known: Optional[Entry]) -> Dict[str, str]:
    """The hashes of what was made of a photograph, by name: the result of its line, and what other
    recipes and formats left before."""
    if known is None:
        return {}
    results = dict(known.get("left", {}))
    if "output_sha256" in known:
        results[known["output"]] = known["output_sha256"]
    return results


def mark_of(scratch: str, digest: str) -> str:
    """The file beside scratch that says that a batch has made a result of this content: no line may
    speak of it if the driver dies."""
    return os.path.join(os.path.dirname(scratch), "made", digest)


def reason_to_keep(job: Job, output: str, digest: str, before: Mapping[str, str]) -> Optional[str]:
    """Why what stands at a result's place is not replaced: it is not what a batch has made."""
    try:
        present = sha256(os.path.join(job["target"], output))
    except FileNotFoundError:
        return None
    if present in (digest, before.get(output)) or os.path.exists(mark_of(job["scratch"], present)):
        return None
    if output in before:
        return f"{output} was changed since the batch made it: delete it to have it made again"
    return f"{output} exists already, and no batch has made it"


def process(job: Job, photograph: str, known: Optional[Entry]) -> Entry:
    """Makes one photograph's result and its line of the manifest. Raises OSError if storage fails."""
    source = os.path.join(job["source"], photograph)
    entry: Entry = {"input": photograph, "input_sha256": sha256(source), **job["identity"]}
    if known is not None and is_unchanged(job, entry, known):
        return known
    before = results_of(known)
    made = make(job, photograph, before)
    left = {output: digest for output, digest in before.items()
            if output != made.get("output") and os.path.exists(os.path.join(job["target"], output))}
    return {**entry, **made, **({"left": left} if left else {})}


def make(job: Job, photograph: str, before: Mapping[str, str]) -> Dict[str, str]:
    """Puts a photograph's result in place; returns what its line says of it, or of the error."""
    if sha256(job["recipe"]) != job["identity"]["recipe_sha256"]:
        return {"error": "the recipe was changed while the batch ran"}
    source = os.path.join(job["source"], photograph)
    output = result_name(photograph, job["extension"])
    with tempfile.TemporaryDirectory(dir=job["scratch"]) as folder:
        alive = os.path.join(folder, "alive")  # gone where another run has swept this one
        open(alive, "x", encoding="utf-8").close()
        results = os.path.join(folder, "result")
        ran = subprocess.run(
            [job["tool"], "run", job["recipe"], source, "--out", results, "--jobs", "1", *job["arguments"]],
            stdin=subprocess.DEVNULL, capture_output=True, text=True,
            errors="replace")
        if ran.returncode < 0:
            return {"error": f"the tool was ended by signal {-ran.returncode}"}
        if ran.returncode > 0:
            said = [line for line in ran.stderr.splitlines() if not line.startswith("roxe: note:")]
            message = said[-1] if said else f"the tool ended with code {ran.returncode}"
            folders = (folder, results, job["source"], job["target"],
                       os.path.dirname(job["recipe"]))
            message = without_paths(message.removeprefix("roxe: "), folders)
            return {"error": message.removeprefix(f"{printable(photograph)}: ")}
        result = os.path.join(results, os.path.basename(output))
        digest = sha256(result)
        target = os.path.join(job["target"], output)
        if os.path.realpath(os.path.dirname(target)) != os.path.dirname(target):
            return {"error": f"{output}: a link leads out of the folder"}
        os.makedirs(os.path.dirname(target), exist_ok=True)
        reason = reason_to_keep(job, output, digest, before)
        if reason:
            return {"error": reason}
        open(mark_of(job["scratch"], digest), "a", encoding="utf-8").close()
        os.stat(alive)
        os.replace(result, target)
    return {"output": output, "output_sha256": digest}
