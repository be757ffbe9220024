#!/usr/bin/env python3
"""Makes src/rows/colour_tables.inl: the constant tables of the colour rows.

    scripts/make_colour_tables.py            prints the file
    scripts/make_colour_tables.py --check F  exit code 1 unless F is what would be printed

The formulas are those of linear_light.cpp and colour_distance.cpp, in single precision with
elementary functions rounded from double precision.
"""

import math
import struct
import sys


def f32(x):
    """x rounded to single precision."""
    return struct.unpack("f", struct.pack("f", x))[0]


# Sums, products and quotients of two single-precision numbers are exact enough in double precision
# for a second rounding to change nothing.
def add(a, b):
    return f32(a + b)


def mul(a, b):
    return f32(a * b)


def linear_light(byte):
    encoded = mul(f32(byte), f32(0.003921569))
    if encoded <= f32(0.03928):
        linear = mul(encoded, f32(0.07739938))
    else:
        linear = f32(mul(add(encoded, f32(0.055)), f32(0.94786733)) ** f32(2.4))
    return int(mul(linear, 4096.0))


def encoded_light(i):
    linear = i / 4096  # exact
    if linear <= f32(0.00304):
        encoded = mul(linear, f32(12.92))
    else:
        encoded = add(mul(f32(1.055), f32(linear ** f32(0.41666666))), -f32(0.055))
    return min(max(int(encoded * 255.0 + 0.5), 0), 255)


def first_lights():
    encoded = [encoded_light(i) for i in range(4097)]
    assert encoded == sorted(encoded)
    return [encoded.index(byte) for byte in range(256)]


def fade(value):
    x = f32(value)
    return int(mul(256.0, f32(math.exp(mul(mul(f32(-0.005), x), x)))))


def cosine(degrees):
    radians = f32(mul(f32(degrees), f32(3.1415927)) / f32(180.0))
    return int(mul(32768.0, f32(math.cos(radians))))


def table(comment, declaration, entries):
    lines = [f"// {comment}", f"static constexpr {declaration}[{len(entries)}] = {{"]
    line = "   "
    for entry in entries:
        if len(line) + len(f" {entry},") > 100:
            lines.append(line)
            line = "   "
        line += f" {entry},"
    lines.append(line)
    lines.append("};")
    return "\n".join(lines)


def file_text():
    return "\n".join(
        [
            "// Made by scripts/make_colour_tables.py.",
            "",
            "// clang-format off",
            table(
                "By byte: linear light 0 ... 4096, with the transfer function of sRGB.",
                "uint16_t kLinearLight",
                [linear_light(i) for i in range(256)],
            ),
            "",
            table(
                "By byte: the first linear light 0 ... 4096 that it stands for, on the way back.",
                "uint16_t kFirstLight",
                first_lights(),
            ),
            "",
            table(
                "By value: how far the saturation is pulled toward it, 1 / 256.",
                "uint32_t kFade",
                [fade(i) for i in range(256)],
            ),
            "",
            table(
                "By degree, 1 / 32768.",
                "int32_t kCosine",
                [cosine(i) for i in range(361)],
            ),
            "// clang-format on",
            "",
        ]
    )


if len(sys.argv) == 3 and sys.argv[1] == "--check":
    with open(sys.argv[2], encoding="utf-8") as existing:
        if existing.read() != file_text():
            sys.exit(f"{sys.argv[2]} is not what {sys.argv[0]} makes")
else:
    sys.stdout.write(file_text())
