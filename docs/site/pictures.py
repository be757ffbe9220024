"""Makes the pictures of docs/operations that scripts/demo does not show side by side.

pictures.py TOOL    run in the root of the project; needs Debian's python3-pil. Writes docs/pictures.

Each is the photograph and the results of the commands below, scaled to one height and put side by side.
"""

import os
import shlex
import subprocess
import sys
import tempfile

from PIL import Image, ImageDraw

GAP, WIDTH, QUALITY = 8, 1200, 84

# name: photograph, commands; each command gives one more picture
PICTURES = {
    "rotate": ("coffee-cup.png", ["rotate --angle 20", "rotate --angle 20 --expand --background white",
                                  "rotate --angle 20 --crop"]),
    "colour-mask": ("astronaut-portrait.png",
                    ["replace-colour --colour '#E8683C' --tolerance 50 --mask-only"]),
    "auto-gamma": ("rocket-night.jpg", ["auto-gamma"]),
    "variations": ("orange-dune.jpg", ["variations --red 2 --blue -2", "variations --dark 3"]),
    "natural-size": ("book-page.jpg", []),
}
OUTLINES = {"natural-size": [470, 140, 2130, 10, 2110, 3090, 400, 2950]}


def results(tool, photograph, commands, folder):
    """The upright photograph, then what each command makes of it."""
    level = "straighten --line 0,0,1,0"  # changes no pixel
    for number, command in enumerate([level] + commands):
        operation, *options = shlex.split(command)
        out = os.path.join(folder, f"{number}.png")
        subprocess.run([tool, operation, f"examples/photos/{photograph}", out, *options], check=True,
                       stdout=subprocess.DEVNULL)
        yield Image.open(out).convert("RGB")


def beside(pictures):
    """All at one height, so that the whole is WIDTH wide."""
    shares = [picture.width / picture.height for picture in pictures]
    height = min(480, int((WIDTH - GAP * (len(pictures) - 1)) / sum(shares)))
    scaled = [picture.resize((round(height * share), height), Image.LANCZOS)
              for picture, share in zip(pictures, shares)]
    sheet = Image.new("RGB", (sum(p.width + GAP for p in scaled) - GAP, height), (128, 128, 128))
    x = 0
    for picture in scaled:
        sheet.paste(picture, (x, 0))
        x += picture.width + GAP
    return sheet


def main(tool):
    for name, (photograph, commands) in PICTURES.items():
        with tempfile.TemporaryDirectory() as folder:
            pictures = list(results(tool, photograph, commands, folder))
            if name in OUTLINES:
                values = OUTLINES[name]
                corners = list(zip(values[::2], values[1::2]))
                ImageDraw.Draw(pictures[0]).line(corners + corners[:1], fill=(255, 32, 32), width=24)
            beside(pictures).save(f"docs/pictures/{name}.jpg", quality=QUALITY, optimize=True)


if __name__ == "__main__":
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    main(os.path.abspath(sys.argv[1]))
