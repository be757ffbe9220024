"""Runs the blocks of code in the documentation.

blocks.py [PAGE...]    by default every page; run in the root of the project, after scripts/docs

A block tagged c, sh, python or js runs as it stands, in the order of its page, in a folder of the page's
own that holds `examples` and the photographs. C is compiled as C99 with -Wall -Wextra -Werror against the built library,
`roxe` is on the path, and Python, node, libvips and GEGL find what is built for them. Python's later blocks on a page go
on from the earlier ones. The first block of a page that fails names its file and line, and ends the page.
"""

import concurrent.futures
import os
import re
import subprocess
import sys
import tempfile

ROOT = os.getcwd()
BUILD = os.path.join(ROOT, "build/release")
LEFT_OUT = ("build", "out", "node_modules", ".git", "tests", "fuzz")
FENCE = re.compile(r"^```(\w*)[^\n]*\n(.*?)^```\s*$", re.S | re.M)
LANGUAGES = ("c", "sh", "python", "js")


class Block:
    def __init__(self, page, text, found):
        self.language = found[1]
        self.line = text.count("\n", 0, found.start(2)) + 1
        self.place = f"{page}:{self.line}"
        # Below as many lines as stand above it, so that messages name the lines of the page.
        self.text = "\n" * (self.line - 1) + found[2]


def pages():
    for folder, folders, names in os.walk("."):
        folders[:] = sorted(name for name in folders if name not in LEFT_OUT and name[0] != ".")
        for name in sorted(names):
            if name.endswith(".md") and not folder.startswith("./web/dist"):
                yield os.path.normpath(os.path.join(folder, name))


def blocks_of(page):
    with open(page, encoding="utf-8") as file:
        text = file.read()
    found = [Block(page, text, match) for match in FENCE.finditer(text)]
    for block in found:
        if block.language not in LANGUAGES + ("text", ""):
            sys.exit(f"{block.place}: no one knows how to run a block of {block.language}")
    return [block for block in found if block.language in LANGUAGES]


def environment():
    gegl = subprocess.run(["pkg-config", "--variable=pluginsdir", "gegl-0.4"], text=True, check=True,
                          capture_output=True).stdout.strip()
    return os.environ | {
        "PATH": f"{BUILD}/host:{os.environ['PATH']}",
        "PYTHONPATH": f"{ROOT}/python",
        "PYTHONDONTWRITEBYTECODE": "1",
        "ROXE_LIBRARY": f"{BUILD}/libroxe.so.1",
        "VIPSHOME": f"{BUILD}/vips-home",
        "GEGL_PATH": f"{gegl}:{BUILD}/gegl-modules",
        "LD_LIBRARY_PATH": BUILD,  # and for blocks of sh that compile:
        "CPATH": f"{ROOT}/include",
        "LIBRARY_PATH": BUILD,
    }


def commands(block, page, earlier_python, folder):
    """What runs one block: lists of words, one after the other."""
    path = os.path.join(folder, f"block.{ {'js': 'mjs', 'python': 'py'}.get(block.language, block.language) }")
    text = block.text
    if block.language == "python":  # what earlier blocks have made is made again, at its own lines
        lines = text.split("\n")
        for block_before in earlier_python:
            for i, line in enumerate(block_before.text.split("\n")):
                lines[i] = lines[i] or line
        text = "\n".join(lines)
    if block.language == "sh":
        text = "set -eE -o pipefail; trap 'echo \"line $LINENO: $BASH_COMMAND\" >&2' ERR" + text
    with open(path, "w", encoding="utf-8") as file:
        file.write(text)
    if block.language == "c":
        return [["cc", "-std=c99", "-Wall", "-Wextra", "-Werror", "-O1", f"-I{ROOT}/include",
                 f"-I{ROOT}/examples/c", path, f"-L{BUILD}", "-lroxe", "-lm", "-pthread", "-o",
                 os.path.join(folder, "block")], [os.path.join(folder, "block")]]
    return [[{"sh": "bash", "python": "/usr/bin/python3", "js": "node"}[block.language], path]]


def run(page, variables):
    """Runs the blocks of a page. Returns their number, and what failed or nothing."""
    blocks = blocks_of(page)
    with tempfile.TemporaryDirectory() as folder:
        os.symlink(os.path.join(ROOT, "examples"), os.path.join(folder, "examples"))
        for photograph in os.listdir("examples/photos"):
            os.symlink(os.path.join(ROOT, "examples/photos", photograph), os.path.join(folder, photograph))
        os.mkdir(os.path.join(folder, "node_modules"))
        os.symlink(os.path.join(ROOT, "web"), os.path.join(folder, "node_modules/roxe"))
        python = []
        for block in blocks:
            for command in commands(block, page, python, folder):
                ran = subprocess.run(command, cwd=folder, env=variables, text=True, check=False,
                                     stdin=subprocess.DEVNULL, capture_output=True)
                if ran.returncode != 0:
                    return len(blocks), f"{block.place}: this block of {block.language} fails\n{ran.stdout}{ran.stderr}"
            if block.language == "python":
                python.append(block)
    return len(blocks), None


def main(chosen):
    variables = environment()
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        results = list(pool.map(lambda page: run(page, variables), chosen))
    failures = [failure for _, failure in results if failure]
    for failure in failures:
        print(failure, file=sys.stderr)
    count = sum(number for number, _ in results)
    print(f"{count} blocks of code on {sum(number > 0 for number, _ in results)} pages, "
          f"{len(failures)} pages fail")
    sys.exit(1 if failures or count == 0 else 0)


if __name__ == "__main__":
    main(sys.argv[1:] or list(pages()))
