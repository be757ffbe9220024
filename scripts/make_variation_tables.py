#!/usr/bin/env python3
"""Makes src/tone/variation_tables.cpp, the two constant tables of tone curves of roxeVariations.

    scripts/make_variation_tables.py            prints the file
    scripts/make_variation_tables.py --check F  exit code 1 unless F is what would be printed

Each row passes exactly through its anchors. Between two of them it follows a power curve, held
between the outputs of the two, so that it never falls.
"""

import math
import sys

ANCHORS = [0, 1, 16, 64, 128, 192, 240, 254, 255]

# exponent of the power curve, outputs at the anchors
LIGHTER = [
    (1.0000, [0, 1, 16, 64, 128, 192, 240, 253, 254]),
    (0.9706, [0, 1, 17, 66, 130, 193, 240, 254, 254]),
    (0.9432, [0, 1, 18, 69, 133, 195, 240, 254, 254]),
    (0.8932, [0, 1, 21, 74, 137, 197, 241, 254, 254]),
    (0.8001, [0, 3, 27, 84, 146, 203, 242, 254, 254]),
    (0.6663, [0, 6, 40, 101, 161, 211, 244, 254, 255]),
    (0.5004, [0, 15, 63, 127, 180, 221, 247, 254, 255]),
    (0.3329, [0, 40, 101, 160, 202, 232, 249, 254, 255]),
]
DARKER = [
    (1.0200, [0, 0, 15, 62, 126, 190, 239, 253, 254]),
    (1.0425, [0, 0, 14, 60, 124, 189, 239, 253, 254]),
    (1.0635, [0, 0, 13, 58, 122, 188, 239, 253, 254]),
    (1.1369, [0, 0, 10, 52, 116, 184, 238, 253, 254]),
    (1.2502, [0, 0, 8, 45, 107, 178, 236, 253, 254]),
    (1.5162, [0, 0, 3, 31, 89, 165, 232, 253, 254]),
    (2.0016, [0, 0, 0, 16, 64, 144, 225, 252, 254]),
    (3.0329, [0, 0, 0, 3, 31, 107, 212, 251, 254]),
]


def curve(exponent, outputs):
    row = [0] * 256
    for (v0, low), (v1, high) in zip(zip(ANCHORS, outputs), zip(ANCHORS[1:], outputs[1:])):
        row[v0], row[v1] = low, high
        for v in range(v0 + 1, v1):
            # The small addend keeps whole numbers whole, whatever the last bit of the power is.
            power = math.floor(255 * (v / 255) ** exponent + 1e-9)
            row[v] = min(max(power, low), high)
    return row


def rows_of(name, curves):
    lines = [f"const uint8_t {name}[8][256] = {{"]
    for exponent, outputs in curves:
        row = curve(exponent, outputs)
        lines.append(f"    // exponent {exponent:.4f}")
        for start in range(0, 256, 16):
            opening = "    {" if start == 0 else "     "
            closing = "}," if start == 240 else ","
            lines.append(opening + ", ".join(f"{v:3d}" for v in row[start : start + 16]) + closing)
    lines.append("};")
    return "\n".join(lines)


def file_text():
    return "\n".join(
        [
            "// Made by scripts/make_variation_tables.py.",
            '#include "tone/variation_tables.h"',
            "",
            "namespace roxe {",
            "",
            "// clang-format off",
            rows_of("LIGHTER_TABLE", LIGHTER),
            "",
            rows_of("DARKER_TABLE", DARKER),
            "// clang-format on",
            "",
            "}  // namespace roxe",
            "",
        ]
    )


if len(sys.argv) == 3 and sys.argv[1] == "--check":
    with open(sys.argv[2], encoding="utf-8") as existing:
        if existing.read() != file_text():
            sys.exit(f"{sys.argv[2]} is not what {sys.argv[0]} makes")
else:
    sys.stdout.write(file_text())
