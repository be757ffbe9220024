"""Reads the JSON of benchmark runs: prints tables, draws docs/bench.svg, checks the goals.

    report.py [--check] RUN.json [WASM.json]              one build: multiples of memcpy, the goals;
                                                          beside it the module (web/bench.mjs --json)
    report.py [--check] --before RUN... --now RUN...      two builds, measured in turn: their ratios

The time of a benchmark is the least of its repetitions: what disturbs a measurement on a shared
machine only ever adds to it. Ratios are taken between times of the same run.
"""

import argparse
import json
import math
import pathlib
import sys

HERE = pathlib.Path(__file__).parent
TABLES = ["plain", "sse4", "avx2", "avx512", "neon"]
MODULE = "wasm"  # measured in node, in a process of its own
SLACK = 1.15  # an operation may take 15 % longer than its goal before the check fails
SLOWER = 1.03  # and 3 % longer than in the build before
PIXELS = {"64x64": 4096, "1MP": 1152 * 864, "12MP": 12e6, "24MP": 24e6, "100MP": 11552 * 8664}


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


def best_table(times):
    return [table for table in TABLES if any(table == t for _, t, _ in times)][-1]


def operations_of(times, goals):
    """Those measured on 12 megapixels, whatever the table of rows."""
    return in_order({name for name, table, size in times if size == "12MP" and table not in ("-", "peer")},
                    goals)


def in_order(names, goals):
    """As the goals list them, then the others: a run takes benchmarks in random order."""
    listed = list(goals["operations"])
    return sorted(names, key=lambda name: (listed.index(name) if name in listed else 99, name))


def print_operations(times, goals):
    yardstick = times[("memcpy", "-", "12MP")]
    print(f"memcpy of 36 MB: {yardstick:.2f} ms. Multiples of it at 12 MP (ms), goals in brackets:\n")
    operations = operations_of(times, goals)
    measured = [table for table in TABLES + [MODULE] if any(table == t for _, t, _ in times)]
    peers = any(table == "peer" for _, table, _ in times)
    print(f"{'operation':24}" + "".join(f"{table:>24}" for table in measured)
          + (f"{'OpenCV':>12}{'/ ' + best_table(times):>12}" if peers else ""))
    for operation in operations:
        line = f"{operation:24}"
        for table in measured:
            time = times.get((operation, table, "12MP"))
            if time is None:
                line += f"{'':>24}"
                continue
            goal = goals["operations"].get(operation, {}).get(table)
            cell = f"{time / yardstick:.1f} ({time:.1f} ms)" + (f" [{goal}]" if goal else "")
            line += f"{cell:>24}"
        peer = times.get((operation, "peer", "12MP"))
        if peer:
            best = times[(operation, best_table(times), "12MP")]
            line += f"{peer / yardstick:>12.1f}{peer / best:>12.1f}"
        print(line)


def print_sizes(times, goals):
    sizes = list(PIXELS)
    best = best_table(times)
    print(f"\nMilliseconds of a call, {best} rows; ns a pixel from 1 MP:\n")
    print(f"{'operation':24}" + "".join(f"{size:>20}" for size in sizes))
    for operation in in_order({name for name, _, size in times if size != "row"}, goals):
        line = f"{operation:24}"
        for size in sizes:
            time = times.get((operation, "-" if operation == "memcpy" else best, size))
            if time is not None:
                each = f" {time * 1e6 / PIXELS[size]:.2f}" if size != "64x64" else ""
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
    best = best_table(times)
    for operation, wanted in goals["operations"].items():
        for table, goal in wanted.items():
            time = times.get((operation, table, "12MP"))
            if time is not None and time > SLACK * goal * yardstick:
                yield f"{operation} on {table}: {time / yardstick:.1f} memcpy, goal {goal}"
        sse4, avx2 = (times.get((operation, table, "12MP")) for table in ("sse4", "avx2"))
        goal = goals["sse4 by avx2"][operation]
        if sse4 and avx2 and sse4 > SLACK * goal * avx2:
            yield f"{operation} on sse4: {sse4 / avx2:.1f} times the time of avx2, goal {goal}"
        wasm, goal = times.get((operation, MODULE, "12MP")), goals["wasm by sse4"][operation]
        if sse4 and wasm and wasm > SLACK * goal * sse4:
            yield f"{operation} in wasm: {wasm / sse4:.1f} times the time of sse4, goal {goal}"
        middle, large = (times.get((operation, best, size)) for size in ("12MP", "100MP"))
        goal = goals["growth at 100MP"]
        if middle and large and large / PIXELS["100MP"] > goal * middle / PIXELS["12MP"]:
            growth = large / PIXELS["100MP"] / (middle / PIXELS["12MP"])
            yield f"{operation} at 100 MP: {growth:.2f} times the time of a pixel at 12 MP, goal {goal}"
    for long, short, goal in goals["windows"]:
        longer, shorter = (times.get((name, best, "12MP")) for name in (long, short))
        if longer and shorter and longer > goal * shorter:
            yield f"{long}: {longer / shorter:.2f} times the time of {short}, goal {goal}"
    limits = goals["milliseconds at 64x64"]
    for (operation, table, size), time in times.items():
        limit = limits.get(operation, limits["any"])
        if size == "64x64" and table != "-" and time > limit:
            yield f"{operation} at 64x64: {time:.3f} ms, limit {limit}"
    for row, wanted in goals["rows"].items():
        for table, gain in wanted.items():
            if ("row." + row, table, "row") not in times:
                continue
            now = times[("row." + row, "plain", "row")] / times[("row." + row, table, "row")]
            if now < gain:
                yield f"row {row} on {table}: {now:.2f} times the plain row, stored gain {gain}"


def draw(times, goals, context, path):
    """A bar for each operation and table, in multiples of memcpy on a logarithmic scale; peers where
    they were measured."""
    yardstick = times[("memcpy", "-", "12MP")]
    colours = {"plain": "#bbbbbb", "sse4": "#a8c6e6", "avx2": "#5b8fc7", "avx512": "#1f4e8c", "neon": "#1f4e8c",
               "peer": "#d98c3f"}
    labels = {"plain": "plain rows", "sse4": "SSE4.1 rows", "avx2": "AVX2 rows", "avx512": "AVX-512 rows",
              "neon": "NEON rows", "peer": "nearest OpenCV calls"}
    operations = operations_of(times, goals)
    shown = [t for t in TABLES + ["peer"] if any(t == table for _, table, _ in times)]
    bar, gap, left, width = 9, 8, 150, 860
    longest = 200.0  # multiples of memcpy; the shortest bar begins at 0.5

    def length_of(multiple):
        return math.log(max(multiple, 0.5) / 0.5, longest / 0.5) * (width - left - 40)

    block = bar * len(shown) + gap
    height = 86 + block * len(operations)
    out = [f'<svg xmlns="http://www.w3.org/2000/svg" width="{width}" height="{height}" '
           'font-family="sans-serif" font-size="11">',
           f'<rect width="{width}" height="{height}" fill="white"/>',
           f'<text x="10" y="18" font-size="13">Multiples of memcpy of the same 36 MB '
           f'({yardstick:.2f} ms), one thread, least of {context["repetitions"]} runs; logarithmic scale</text>',
           f'<text x="10" y="34" fill="#555">{context["processor"]}, {context["date"]}</text>']
    x = 10
    for table in shown:
        out.append(f'<rect x="{x}" y="43" width="10" height="10" fill="{colours[table]}"/>'
                   f'<text x="{x + 14}" y="52">{labels[table]}</text>')
        x += 30 + 7 * len(labels[table])
    for multiple in (1, 2, 5, 10, 20, 50, 100):
        x = left + length_of(multiple)
        out.append(f'<line x1="{x:.1f}" y1="76" x2="{x:.1f}" y2="{height}" stroke="#ddd"/>'
                   f'<text x="{x:.1f}" y="72" fill="#555" text-anchor="middle">{multiple}</text>')
    y = 80
    for operation in operations:
        out.append(f'<text x="{left - 6}" y="{y + block / 2}" text-anchor="end">{operation}</text>')
        for table in shown:
            time = times.get((operation, table, "12MP"))
            if time is not None:
                multiple = time / yardstick
                length = length_of(multiple)
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
    """(name, family); the family is 0 where the processor does not tell one."""
    known = {}
    for line in pathlib.Path("/proc/cpuinfo").read_text().splitlines():
        name, _, value = line.partition(":")
        known.setdefault(name.strip(), value.strip())
    name = known.get("model name", known.get("CPU part", "unknown processor"))
    return name, int(known.get("cpu family", 0))


def ratios(before, now):
    """{(operation, table, size): time now over time before} of what both builds have"""
    return {key: now[key] / before[key] for key in now if key in before and key[1] != "peer"}


def became_slower(before, now):
    """The operations on vector rows; the plain rows are compared but nobody waits for them."""
    return {
        key: ratio
        for key, ratio in ratios(before, now).items()
        if key[2] == "12MP" and key[1] not in ("-", "plain") and ratio > SLOWER
    }


def print_comparison(before, now, goals, commit):
    both = ratios(before, now)
    print(f"Time now over time at {commit}, least times of runs in turn (ms now):\n")
    tables = [table for table in TABLES if any(table == t for _, t, _ in both)]
    for title, size in (("at 12 MP", "12MP"), ("at 64 x 64", "64x64"), ("a row in the cache", "row")):
        names = in_order({name for name, _, s in both if s == size and name != "memcpy"}, goals)
        if not names:
            continue
        print(f"{title:32}" + "".join(f"{table:>20}" for table in tables))
        for name in names:
            line = f"{name:32}"
            for table in tables:
                key = (name, table, size)
                cell = f"{both[key]:.3f} ({now[key]:.4g})" if key in both else ""
                line += f"{cell:>20}"
            print(line)
        print()


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--check", action="store_true", help="fail where a goal is missed")
    parser.add_argument("--draw", action="store_true", help="draw docs/bench.svg")
    parser.add_argument("--goals-count", action="store_true",
                        help="exit code 0 if the goals count on this processor, else 1")
    parser.add_argument("--slower", action="store_true",
                        help="print what became slower as a regular expression, or nothing")
    parser.add_argument("--commit", default="the build before")
    parser.add_argument("--before", nargs="+", type=pathlib.Path, default=[])
    parser.add_argument("--now", nargs="+", type=pathlib.Path, default=[])
    parser.add_argument("json", nargs="*", type=pathlib.Path)
    arguments = parser.parse_args()

    goals = json.loads((HERE / "goals.json").read_text())
    name, family = processor()
    goals_count = family == goals["family"]
    if arguments.goals_count:
        sys.exit(0 if goals_count else 1)

    if arguments.before:
        before, now = (
            least_times([run for file in files for run in json.loads(file.read_text())["benchmarks"]])
            for files in (arguments.before, arguments.now)
        )
        slower = became_slower(before, now)
        if arguments.slower:
            if slower:
                print("^(" + "|".join(sorted("/".join(key) for key in slower)) + ")$")
            return
        print(f"{name} (family {family})\n")
        print_comparison(before, now, goals, arguments.commit)
        for key, ratio in sorted(slower.items()):
            print(f"SLOWER: {'/'.join(key)}: {ratio:.3f} times the time at {arguments.commit}")
        if not slower:
            print(f"no operation on vector rows is 3 % slower than at {arguments.commit}")
        if arguments.check and not goals_count:
            print(f"The goals count on processors of family {goals['family']}; "
                  "here what counts is the ratio to the commit before.")
        sys.exit(1 if arguments.check and slower else 0)

    run, *module = (json.loads(file.read_text()) for file in arguments.json)
    times = least_times([one for runs in (run, *module) for one in runs["benchmarks"]])
    print(f"{name} (family {family})\n")
    print_operations(times, goals)
    if not arguments.check:
        print_sizes(times, goals)
    print_rows(times)
    if arguments.draw:
        context = {
            "processor": f"{name} (family {family})",
            "date": run["context"]["date"][:10],
            "repetitions": max(r.get("repetitions", 1) for r in run["benchmarks"]),
        }
        draw(times, goals, context, HERE.parent / "docs" / "bench.svg")
    if not arguments.check:
        return
    missed = list(failures(times, goals))
    for line in missed:
        print("MISSED: " + line)
    if not missed:
        print("nothing is 15 % behind its goal, every row keeps its gain")
    sys.exit(1 if missed else 0)


if __name__ == "__main__":
    main()
