"""Puts two JPEGs next to each other in a third, a quarter of their size, with a white bar between.

side_by_side.py LEFT RIGHT OUT    needs djpeg and cjpeg (libjpeg-turbo-progs)
"""

import subprocess
import sys


def read_scaled(path):
    """Width, height and packed RGB bytes of a JPEG at a quarter of its size."""
    ppm = subprocess.run(["djpeg", "-scale", "1/4", "-pnm", path], check=True,
                         stdout=subprocess.PIPE).stdout
    _, width, height = ppm.split(maxsplit=3)[:3]
    width, height = int(width), int(height)
    # A first pixel that looks like white space would have been split off as well.
    return width, height, ppm[len(ppm) - 3 * width * height:]


def main(left_path, right_path, out_path):
    left_width, height, left = read_scaled(left_path)
    right_width, right_height, right = read_scaled(right_path)
    if height != right_height:
        sys.exit("the two pictures differ in height")
    bar = b"\xff" * 3 * 12
    rows = []
    for y in range(height):
        rows += [left[3 * left_width * y:3 * left_width * (y + 1)], bar,
                 right[3 * right_width * y:3 * right_width * (y + 1)]]
    header = b"P6\n%d %d\n255\n" % (left_width + 12 + right_width, height)
    subprocess.run(["cjpeg", "-quality", "90", "-outfile", out_path], check=True,
                   input=header + b"".join(rows))


if __name__ == "__main__":
    main(*sys.argv[1:])
