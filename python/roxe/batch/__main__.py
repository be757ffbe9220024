"""The command line of the batch."""

import argparse
import contextlib
import hashlib
import os
import pathlib
import signal
import subprocess
import sys
import tempfile
import time
from typing import Any, Dict, List, Optional, Sequence, Tuple

from roxe.batch.folder import Folder, Refusal
from roxe.batch.task import Job, printable, result_name, results_of, sha256

OURS = {"--dry-run", "--overwrite", "--skip-existing", "--progress"}  # of the tool's options
# As roxe run takes them from a folder.
EXTENSIONS = {".jpg", ".jpeg", ".png", ".ppm", ".pgm", ".pnm", ".tif", ".tiff", ".webp"}


def find_photographs(source: str, target: str) -> Tuple[List[str], Dict[str, str]]:
    """Paths below source, sorted; hidden files and the folder of the results do not count, nor do
    pipes and devices. Then the folders that cannot be read and why."""
    found, closed = [], {}

    def note(error: OSError) -> None:
        closed[os.path.relpath(error.filename, source)] = error.strerror

    def is_photograph(path: str) -> bool:
        return (os.path.splitext(path)[1].lower() in EXTENSIONS
                and (os.path.isfile(path) or not os.path.exists(path)))

    for folder, folders, names in os.walk(source, onerror=note):
        folders[:] = [name for name in folders if not name.startswith(".")
                      and os.path.realpath(os.path.join(folder, name)) != os.path.realpath(target)]
        found += [os.path.relpath(os.path.join(folder, name), source) for name in names
                  if not name.startswith(".") and is_photograph(os.path.join(folder, name))]
    return sorted(found), closed


def refuse_collisions(photographs: Sequence[str], extension: str) -> None:
    taken: Dict[str, str] = {}
    for photograph in photographs:
        other = taken.setdefault(result_name(photograph, extension), photograph)
        if other != photograph:
            raise Refusal(f"{other} and {photograph} would both become "
                          f"{result_name(photograph, extension)}")


def words_of(line: str) -> List[str]:
    """The words of a recipe's line as the tool takes them: quotes hold words together, a # at the
    start or alone begins a comment, nothing else is special."""
    spaces = " \t\r\v\f"
    words: List[str] = []
    quote, inside = "", False
    if line.lstrip(spaces).startswith("#"):
        return words
    for before, c, after in zip(" " + line, line, line[1:] + " "):
        if not quote and c == "#" and before in spaces and after in spaces:
            break
        if not quote and c in spaces:
            inside = False
            continue
        if not inside:
            words.append("")
            inside = True
        if c == quote:
            quote = ""
        elif not quote and c in "\"'":
            quote = c
        else:
            words[-1] += c
    return words


def masks_of(recipe: str) -> List[str]:
    """The files that a recipe names besides the photograph."""
    masks = []
    for line in recipe.split("\n"):
        words = words_of(line)
        for word, following in zip(words, words[1:] + [""]):
            if word == "--mask":
                masks.append(following)
            elif word.startswith("--mask="):
                masks.append(word[len("--mask="):])
    return sorted(set(masks))


def identity_of(recipe: str, folder: str, arguments: Sequence[str]) -> Dict[str, Any]:
    """What results depend on besides the photograph."""
    raw = recipe.encode("utf-8", errors="surrogateescape")
    identity: Dict[str, Any] = {"recipe_sha256": hashlib.sha256(raw).hexdigest()}
    if arguments:
        identity["options"] = list(arguments)
    with contextlib.suppress(OSError):  # the tool will say that a mask is missing
        paths = masks_of(recipe)
        names = [os.path.basename(path) for path in paths]
        if len(set(names)) < len(names):
            names = paths
        masks = {name: sha256(os.path.join(folder, path)) for name, path in zip(names, paths)}
        if masks:
            identity["masks_sha256"] = masks
    return identity


def joined_values(arguments: Sequence[str]) -> List[str]:
    """--quality 80 as --quality=80, so that the tool takes no word behind a flag for a photograph."""
    joined: List[str] = []
    for word in arguments:
        if joined and joined[-1].startswith("--") and "=" not in joined[-1] and not word.startswith("-"):
            joined[-1] += f"={word}"
        else:
            joined.append(word)
    return joined


def check_recipe(tool: str, recipe: str, arguments: Sequence[str]) -> None:
    """Lets the tool read the recipe before a thousand tasks do."""
    with tempfile.TemporaryDirectory() as folder:
        try:
            # An empty photograph fails (1); a command or recipe without sense is refused (2).
            ran = subprocess.run([tool, "run", recipe, os.devnull, "--out", folder, *arguments],
                                 stdin=subprocess.DEVNULL, capture_output=True, text=True)
        except OSError as error:
            raise Refusal(f"the tool {tool} cannot be run ({error.strerror}): give --tool PATH")
    if ran.returncode != 1:
        raise Refusal(ran.stderr.strip().removeprefix("roxe: ") or
                      f"{tool} is not the tool: it ended with code {ran.returncode}")


def parse(arguments: Optional[Sequence[str]]) -> argparse.Namespace:
    parser = argparse.ArgumentParser(
        prog="python3 -m roxe.batch",
        description="Apply a recipe to all photographs of a folder, on one machine or on many. "
        "Results and their manifest go to the folder OUT; what stands there already is kept.")
    parser.add_argument("recipe", metavar="RECIPE", help="a text file, as for roxe run")
    parser.add_argument("source", metavar="IN", help="the folder of the photographs")
    parser.add_argument("--out", required=True, metavar="DIR", help="the folder for the results")
    where = parser.add_mutually_exclusive_group()
    where.add_argument("--scheduler", metavar="ADDRESS",
                       help="of a Dask cluster, such as tcp://host:8786 (default: this machine)")
    where.add_argument("--jobs", type=int, metavar="N",
                       help="photographs at a time on this machine (default: all processors)")
    parser.add_argument("--tool", default=os.environ.get("ROXE_TOOL", "roxe"), metavar="PATH",
                        help="the command-line tool, on every machine (default: roxe)")
    parser.add_argument("--format", metavar="NAME",
                        help="of the results: jpg, png, ... (default: as each photograph)")
    parser.epilog = ("Other options, behind IN, say how pictures are written and go to roxe run as they "
                     "are.")
    options, others = parser.parse_known_args(arguments)
    options.others = others
    return options


def prepare(options: argparse.Namespace) -> Tuple[Job, List[str], Dict[str, str]]:
    """The job without its scratch folder, the photographs, and the folders that cannot be read.
    Raises Refusal."""
    if options.jobs is not None and not 1 <= options.jobs <= 64:
        raise Refusal(f"--jobs needs a whole number from 1 to 64, not {options.jobs}")
    if not options.out:
        raise Refusal("--out needs a name, not ''")
    if not os.path.isdir(options.source):
        raise Refusal(f"{options.source}: is not a folder")
    source, target = os.path.realpath(options.source), os.path.realpath(options.out)
    if os.path.commonpath([source, target]) == target:
        raise Refusal(f"{options.out}: results there could replace the photographs")
    try:
        recipe = pathlib.Path(options.recipe).read_bytes().decode("utf-8", errors="surrogateescape")
    except OSError as error:
        raise Refusal(f"{options.recipe}: cannot be read ({error.strerror})")
    arguments = [*(["--format", options.format] if options.format else []), *options.others]
    for before, word in zip(["", *arguments], arguments):
        if not word.startswith("-") and not before.startswith("--"):
            raise Refusal(f"this argument was not expected: {word}")
        if word.split("=")[0] in OURS:
            raise Refusal(f"{word} has no place here: results are always written to --out and kept "
                          "while the manifest says that they are right")
    joined = joined_values(arguments)
    check_recipe(options.tool, options.recipe, joined)
    extension = f".{options.format}" if options.format else ""
    photographs, closed = find_photographs(source, target)
    if "." in closed:
        raise Refusal(f"{options.source}: the folder cannot be read ({closed['.']})")
    if not photographs:
        raise Refusal(f"{options.source}: holds no photograph")
    refuse_collisions(photographs, extension)
    job: Job = {"tool": options.tool, "source": source, "target": target, "scratch": "",
                "recipe": os.path.abspath(options.recipe), "arguments": joined,
                "extension": extension,
                "identity": identity_of(recipe, os.path.dirname(options.recipe), arguments)}
    return job, photographs, closed


def run(arguments: Optional[Sequence[str]] = None) -> int:
    """Does what the command line says; returns its exit code."""
    options = parse(arguments)
    job, photographs, closed = prepare(options)
    from roxe.batch.driver import Progress, connected, run_tasks  # takes a second to import

    start = time.monotonic()
    with contextlib.closing(Folder(job["target"])) as folder:
        job["scratch"] = folder.scratch
        known = folder.known()
        with connected(options.scheduler, options.jobs) as client:
            with contextlib.closing(Progress(len(photographs))) as progress:
                entries = run_tasks(client, job, photographs, known, folder, progress)
        # What stands there of photographs that are not here any more, or of a folder that cannot be
        # read today, is still the batch's own.
        unseen = {name: entry for name, entry in known.items()
                  if any(name.startswith(place + os.sep) for place in closed)
                  or any(os.path.exists(os.path.join(job["target"], result))
                         for result in results_of(entry))}
        folder.finish({**unseen, **entries})
    for name in sorted(entries):
        if "error" in entries[name]:
            print(printable(f"roxe.batch: {name}: {entries[name]['error']}"), file=sys.stderr)
    for name in sorted(closed):
        print(printable(f"roxe.batch: {name}: the folder cannot be read ({closed[name]})"), file=sys.stderr)
    print(f"{progress.done - progress.failed} of {progress.done} photographs done "
          f"({progress.kept} before{f', {progress.replaced} replaced' if progress.replaced else ''}) "
          f"in {time.monotonic() - start:.1f} s, "
          f"written to {printable(options.out)}"
          + (f"; {progress.failed} failed" if progress.failed else "")
          + (f"; {len(closed)} folder{'s' if len(closed) > 1 else ''} could not be read" if closed else ""))
    return 1 if progress.failed or closed else 0


def main() -> int:
    signal.signal(signal.SIGTERM, signal.default_int_handler)
    try:
        return run()
    except Refusal as refusal:
        print(printable(f"roxe.batch: {refusal}"), file=sys.stderr)
        return 2
    except KeyboardInterrupt:
        print("roxe.batch: interrupted; the same command goes on from here", file=sys.stderr)
        return 130


if __name__ == "__main__":
    sys.exit(main())
