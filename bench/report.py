"""Reads the JSON of a benchmark run: prints its tables, draws docs/bench.svg, checks the goals.

The time of a benchmark is the least of its repetitions: what disturbs a measurement on a shared
machine only ever adds to it. Ratios are taken between times of the same run.
"""

import argparse
import json
import pathlib
import sys

HERE = pathlib.Path(__file__).parent
TABLES = ["plain", "avx2", "avx512", "neon"]
SLACK = 1.15  # an operation may take 15 % longer than its goal before the check fails


def least_times(runs):
    """{(operation, table, size): milliseconds}"""
    times = {}
    for run in runs:
        if run.get("run_type") == "aggregate":
            continue
        name = run["name"].split("/repeats:")[0]
        operation, table, size = name.rsplit("/", 2)
        key = (operation, table, size)
        times[key] = min(times.get(key, float("inf")), run["real_time"])
    return times


def in_order(names, goals):
    """As the goals list them, then the others: a run takes benchmarks in random order."""
    listed = list(goals["operations"])
    return sorted(names, key=lambda name: (listed.index(name) if name in listed else 99, name))


def print_operations(times, goals):
    yardstick = times[("memcpy", "-", "12MP")]
    print(f"memcpy of 36 MB: {yardstick:.2f} ms. Multiples of it at 12 MP (ms), goals in brackets:\n")
    operations = in_order({n for n, table, size in times if (table, size) == ("plain", "12MP")}, goals)
    print(f"{'operation':24}" + "".join(f"{table:>24}" for table in TABLES[:3]) + f"{'OpenCV':>12}")
    for operation in operations:
        line = f"{operation:24}"
        for table in TABLES:
            time = times.get((operation, table, "12MP"))
            if time is None:
                continue
            goal = goals["operations"].get(operation, {}).get(table)
            cell = f"{time / yardstick:.1f} ({time:.1f} ms)" + (f" [{goal}]" if goal else "")
            line += f"{cell:>24}"
        peer = times.get((operation, "peer", "12MP"))
        print(line + (f"{peer / yardstick:>12.1f}" if peer else ""))


def print_sizes(times, goals):
    sizes = ["64x64", "1MP", "12MP", "24MP", "100MP"]
    best = [table for table in TABLES if any(table == t for _, t, _ in times)][-1]
    print(f"\nMilliseconds of a call, {best} rows; ns a pixel from 1 MP:\n")
    pixels = {"64x64": 4096, "1MP": 1152 * 864, "12MP": 12e6, "24MP": 24e6, "100MP": 11552 * 8664}
    print(f"{'operation':24}" + "".join(f"{size:>20}" for size in sizes))
    for operation in in_order({name for name, _, size in times if size != "row"}, goals):
        line = f"{operation:24}"
        for size in sizes:
            time = times.get((operation, "-" if operation == "memcpy" else best, size))
            if time is not None:
                each = f" {time * 1e6 / pixels[size]:.2f}" if size != "64x64" else ""
                line += f"{f'{time:.3f}' + each:>20}"
        print(line)


def print_rows(times):
    print("\nGain of each row over the plain one:\n")
    for name in sorted(name for name, table, size in times if (table, size) == ("plain", "row")):
        plain = times[(name, "plain", "row")]
        gains = [
            f"{table} {plain / times[(name, table, 'row')]:.2f}"
            for table in TABLES[1:]
            if (name, table, "row") in times
        ]
        print(f"{name:32} " + "  ".join(gains))


def failures(times, goals):
    yardstick = times[("memcpy", "-", "12MP")]
    for operation, wanted in goals["operations"].items():
        for table, goal in wanted.items():
            time = times.get((operation, table, "12MP"))
            if time is not None and time > SLACK * goal * yardstick:
                yield f"{operation} on {table}: {time / yardstick:.1f} memcpy, goal {goal}"
    limit = goals["milliseconds at 64x64"]
    for (operation, _, size), time in times.items():
        if size == "64x64" and time > limit:
            yield f"{operation} at 64x64: {time:.3f} ms, limit {limit}"
    for row, wanted in goals["rows"].items():
        for table, gain in wanted.items():
            if ("row." + row, table, "row") not in times:
                continue
            now = times[("row." + row, "plain", "row")] / times[("row." + row, table, "row")]
            if now < gain:
                yield f"row {row} on {table}: {now:.2f} times the plain row, stored gain {gain}"


def draw(times, goals, context, path):
    """A bar for each operation and table, in multiples of memcpy; peers where they were measured."""
    yardstick = times[("memcpy", "-", "12MP")]
    colours = {"plain": "#bbbbbb", "avx2": "#5b8fc7", "avx512": "#1f4e8c", "neon": "#1f4e8c",
               "peer": "#d98c3f"}
    labels = {"plain": "plain rows", "avx2": "AVX2 rows", "avx512": "AVX-512 rows",
              "neon": "NEON rows", "peer": "nearest OpenCV calls"}
    operations = in_order({n for n, table, size in times if (table, size) == ("plain", "12MP")}, goals)
    shown = [t for t in TABLES + ["peer"] if any(t == table for _, table, _ in times)]
    bar, gap, left, width = 9, 8, 150, 860
    longest = 60.0  # multiples of memcpy; longer bars are cut and say so
    block = bar * len(shown) + gap
    height = 70 + block * len(operations)
    out = [f'<svg xmlns="http://www.w3.org/2000/svg" width="{width}" height="{height}" '
           'font-family="sans-serif" font-size="11">',
           f'<rect width="{width}" height="{height}" fill="white"/>',
           f'<text x="10" y="18" font-size="13">Multiples of memcpy of the same 36 MB '
           f'({yardstick:.2f} ms), one thread, least of {context["repetitions"]} runs</text>',
           f'<text x="10" y="34" fill="#555">{context["processor"]}, {context["date"]}</text>']
    x = 10
    for table in shown:
        out.append(f'<rect x="{x}" y="43" width="10" height="10" fill="{colours[table]}"/>'
                   f'<text x="{x + 14}" y="52">{labels[table]}</text>')
        x += 30 + 7 * len(labels[table])
    y = 64
    for operation in operations:
        out.append(f'<text x="{left - 6}" y="{y + block / 2}" text-anchor="end">{operation}</text>')
        for table in shown:
            time = times.get((operation, table, "12MP"))
            if time is not None:
                multiple = time / yardstick
                length = min(multiple, longest) * (width - left - 60) / longest
                out.append(f'<rect x="{left}" y="{y}" width="{length:.1f}" height="{bar - 1}" '
                           f'fill="{colours[table]}"/>'
                           f'<text x="{left + length + 4:.1f}" y="{y + bar - 1}" font-size="9">'
                           f'{multiple:.1f}</text>')
            y += bar
        y += gap
    out.append("</svg>\n")
    path.parent.mkdir(exist_ok=True)
    path.write_text("\n".join(out))


def processor():
    for line in pathlib.Path("/proc/cpuinfo").read_text().splitlines():
        if line.startswith(("model name", "CPU part")):
            return line.split(":", 1)[1].strip()
    return "unknown processor"


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--check", action="store_true", help="fail where a goal is missed")
    parser.add_argument("json", type=pathlib.Path)
    arguments = parser.parse_args()

    run = json.loads(arguments.json.read_text())
    goals = json.loads((HERE / "goals.json").read_text())
    times = least_times(run["benchmarks"])
    print_operations(times, goals)
    if not arguments.check:
        print_sizes(times, goals)
    print_rows(times)
    if not arguments.check:
        context = {
            "processor": processor(),
            "date": run["context"]["date"][:10],
            "repetitions": max(r.get("repetitions", 1) for r in run["benchmarks"]),
        }
        draw(times, goals, context, HERE.parent / "docs" / "bench.svg")
        return
    missed = list(failures(times, goals))
    for line in missed:
        print("MISSED: " + line)
    if not missed:
        print("nothing is 15 % behind its goal, every row keeps its gain")
    sys.exit(1 if missed else 0)


if __name__ == "__main__":
    main()
