"""Draws the pictures of this folder anew, by the commands that tool.md and the pages of operations show.

draw.py TOOL    TOOL is the built roxe; needs Debian's python3-pil
"""

import os
import shlex
import subprocess
import sys
import tempfile

from PIL import Image, ImageDraw, ImageOps

FOLDER = os.path.dirname(os.path.abspath(__file__))
PHOTOS = os.path.join("examples", "photos")
WIDTH, MOST_HEIGHT, GAP = 800, 520, 8  # of several panels beside each other

SUIT = "replace-colour --colour '#E8683C' --tolerance 50 "

# Each picture: the photograph and what the panels behind it are made by.
PICTURES = {
    "perspective": ("book-page.jpg", "perspective --corners 470,140,2130,10,2110,3090,400,2950"),
    "warp": ("perspective-grid.png", "warp --from 150,14,400,113,300,147,64,40 "
             "--to 0,0,560,0,560,200,0,200 --size 560x200"),
    "soft-focus": ("otter.jpg",
                   "soft-focus --radius 61 --mask examples/masks/otter.png --mask-radius 25"),
    "portrait": ("astronaut-portrait.png",
                 "soft-focus --radius 15 --mask examples/masks/portrait.png --mask-radius 61"),
    "replace-colour": ("astronaut-portrait.png", SUIT + "--hue 190", SUIT + "--mask-only"),
    "tint": ("spices.jpg", "tint --colour '#C8501E' --tolerance 50"),
    "temperature": ("courtyard-colour-cast.jpg", "temperature --temperature -10 --tint -10"),
    "shadow-highlight": ("rocket-night.jpg", "shadow-highlight --shadow 35"),
    "rotate": ("coffee-cup.png", "rotate --angle 20",
               "rotate --angle 20 --expand --background white", "rotate --angle 20 --crop"),
    "colour-mask": ("astronaut-portrait.png", SUIT + "--mask-only"),
    "auto-gamma": ("rocket-night.jpg", "auto-gamma"),
    "variations": ("orange-dune.jpg", "variations --red 2 --blue -2", "variations --dark 3"),
}

PAGE = [(470, 140), (2130, 10), (2110, 3090), (400, 2950)]  # corners in book-page.jpg
HORIZON = ("sunset-tilted-horizon.jpg", "straighten --line 70,1430,4200,1250 --crop")


def panels(tool, photo, *commands):
    """The upright photograph and the result of each command."""
    source = os.path.join(PHOTOS, photo)
    yield ImageOps.exif_transpose(Image.open(source))
    for command in commands:
        name, *options = shlex.split(command)
        with tempfile.TemporaryDirectory() as folder:
            result = os.path.join(folder, "result.png")
            subprocess.run([tool, name, source, result, *options], check=True,
                           stdout=subprocess.DEVNULL)
            picture = Image.open(result)
            picture.load()
        yield picture


def beside(pictures):
    """All of one height on white, as wide together as WIDTH or as high as MOST_HEIGHT."""
    proportions = sum(picture.width / picture.height for picture in pictures)
    height = min(MOST_HEIGHT, round((WIDTH - GAP * (len(pictures) - 1)) / proportions))
    small = [picture.convert("RGB").resize((round(picture.width * height / picture.height), height),
                                           Image.Resampling.LANCZOS) for picture in pictures]
    together = sum(picture.width for picture in small) + GAP * (len(small) - 1)
    sheet = Image.new("RGB", (together, height), "white")
    left = 0
    for picture in small:
        sheet.paste(picture, (left, 0))
        left += picture.width + GAP
    return sheet


def save(picture, name, profile):
    picture.save(os.path.join(FOLDER, name + ".jpg"), quality=85, icc_profile=profile)


def main(tool):
    tool = os.path.abspath(tool)
    os.chdir(os.path.join(FOLDER, "..", ".."))
    for name, (photo, *commands) in PICTURES.items():
        pictures = list(panels(tool, photo, *commands))
        save(beside(pictures), name, pictures[0].info.get("icc_profile"))
    for name, picture in zip(("before", "after"), panels(tool, *HORIZON)):
        save(picture.reduce(4), "straighten-" + name, picture.info.get("icc_profile"))
    [page] = panels(tool, "book-page.jpg")
    ImageDraw.Draw(page).line(PAGE + PAGE[:1], fill=(255, 32, 32), width=24)
    save(beside([page]), "natural-size", page.info.get("icc_profile"))


if __name__ == "__main__":
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    main(sys.argv[1])
