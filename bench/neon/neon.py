#!/usr/bin/env python3
"""What the rows cost on 64-bit ARM, on any machine: bench/neon/neon.py [ROW...]

Prints for each row, plain and neon, the instructions a pixel that an emulator executes, and the cycles
a pixel that llvm-mca expects for them on two processors. Every executed instruction of a call is
logged; a part from the middle of the call, in the order of execution, is what llvm-mca is given. It
takes caches and predictions of branches to be perfect.
"""
import pathlib
import re
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parents[2]
PROCESSORS = ("neoverse-n1", "apple-m1")
TABLES = ("plain", "neon")
PART = 40000  # instructions
COMPILE = ("aarch64-linux-gnu-g++ -std=c++20 -O3 -DNDEBUG -ffp-contract=off -fno-exceptions "
           "-fno-rtti -fno-math-errno -static -Isrc -Iinclude -Ibench").split()


def output(*command, **more):
    done = subprocess.run(command, stdout=subprocess.PIPE, text=True, cwd=ROOT, **more)
    if done.returncode:
        sys.exit(f"failed: {' '.join(map(str, command))}")
    return done.stdout


def build(folder):
    program, rows_neon = folder / "count_rows", folder / "rows_neon.cpp"
    rows_set = (ROOT / "src/rows/rows_set.cpp.in").read_text()
    rows_neon.write_text(rows_set.replace("@set@", "neon").replace("@table@", "kNeonRows"))
    sources = ["bench/neon/count_rows.cpp", "src/geometry/xrml.cpp", "src/rows/rows.cpp",
               "src/rows/rows_plain.cpp", rows_neon]
    for part in ("bench/rows", "src/colour", "src/frame"):  # what the benchmarks of rows call
        sources += sorted(str(path.relative_to(ROOT)) for path in (ROOT / part).glob("*.cpp"))
    output(*COMPILE, "-o", program, *sources)
    return program


def listing(program):
    """(instruction by address, address by marker), as llvm-mca reads them: without targets of branches"""
    text, markers = {}, {}
    for line in output("llvm-objdump-19", "-d", "--no-show-raw-insn", program).splitlines():
        if match := re.match(r"([0-9a-f]+) <(row_begins|row_ends)>:", line):
            markers[match[2]] = int(match[1], 16)
        elif match := re.match(r"\s*([0-9a-f]+):\s+(\S.*)", line):
            instruction = re.sub(r"\s*(<[^>]*>|//.*)", "", match[2])
            # Calls and returns are executed like branches; llvm-mca would add 100 cycles to each.
            instruction = re.sub(r"^(blr?|br|ret)\b.*", "b 0x0", instruction)
            instruction = re.sub(r"^((?:b|b\.\w+|bl|cbn?z|tbn?z|adrp?)\s.*?)0x[0-9a-f]+$", r"\g<1>0",
                                 instruction)
            text[int(match[1], 16)] = instruction
    return text, markers


def executed(program, row, table, markers, log):
    """(pixels, addresses of the instructions of the second call in the order of execution)"""
    pixels = int(output("qemu-aarch64", "-singlestep", "-d", "exec,nochain", "-D", log, program, row,
                        table))
    addresses, calls = None, []
    with open(log) as lines:
        for line in lines:
            match = re.search(r"/([0-9a-f]{16})/", line)
            if not match:
                continue
            address = int(match[1], 16)
            if address == markers["row_begins"]:
                addresses = []
            elif address == markers["row_ends"] and addresses is not None:
                calls.append(addresses)
                addresses = None
            elif addresses is not None:
                addresses.append(address)
    return pixels, calls[1]


def cycles_by_instruction(instructions, processor):
    first = max(0, (len(instructions) - PART) // 2)
    part = instructions[first:first + PART]
    report = output("llvm-mca-19", "-mtriple=aarch64", f"-mcpu={processor}", "-iterations=1",
                    "-all-views=false", "-summary-view", input="\n".join(part))
    return int(re.search(r"Total Cycles:\s+(\d+)", report)[1]) / len(part)


def main():
    subprocess.run([ROOT / "scripts/packages", "g++-aarch64-linux-gnu", "qemu-user", "llvm-19"], check=True)
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        program = build(folder)
        text, markers = listing(program)
        rows = sys.argv[1:] or output("qemu-aarch64", program).split()
        titles = ["instructions"] + [f"cycles on {processor}" for processor in PROCESSORS]
        print("A pixel, plain -> neon (code of g++):\n")
        print("| row | " + " | ".join(titles) + " |")
        print("|---" * (len(titles) + 1) + "|")
        for row in rows:
            figures = []
            for table in TABLES:
                pixels, addresses = executed(program, row, table, markers, folder / "log")
                instructions = [text[address] for address in addresses]
                count = len(instructions) / pixels
                figures.append([count] + [count * cycles_by_instruction(instructions, processor)
                                          for processor in PROCESSORS])
            cells = [f"{plain:.3g} -> {neon:.3g}" for plain, neon in zip(*figures)]
            print(f"| {row} | " + " | ".join(cells) + " |", flush=True)


if __name__ == "__main__":
    main()
