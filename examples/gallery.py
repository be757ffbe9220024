"""Runs every operation on the bundled photographs and writes a gallery of before and after.

gallery.py TOOL DIRECTORY    TOOL is the built roxe; needs djpeg and cjpeg (libjpeg-turbo-progs)

The page is DIRECTORY/index.html. It needs no network and no server.
"""

import concurrent.futures
import html
import os
import shlex
import subprocess
import sys
import tempfile
from dataclasses import dataclass, field

EXAMPLES = os.path.dirname(os.path.abspath(__file__))
LARGEST_SIDE = 1300  # of the pictures on the page; the full ones are a click away

CREDITS = {
    "astronaut-portrait.png": "Eileen Collins, official portrait. NASA, public domain",
    "book-page.jpg": "A page of the Boston Cooking-School Cook Book. Matt Zucker, MIT licence",
    "coffee-cup.png": "Coffee cup. Rachel Michetti, CC0",
    "courtyard-colour-cast.jpg": "Casa Milà. CC0",
    "orange-dune.jpg": "Extreme Desert Hike. CC0",
    "otter.jpg": "North American river otter. Derrick Coetzee, CC0",
    "perspective-grid.png": "Handwriting in a ruled grid. Public domain",
    "rocket-night.jpg": "Launch pad at dusk. SpaceX, public domain",
    "spices.jpg": "The Spices of Life. Julius Enriquez, CC0",
    "sunset-tilted-horizon.jpg": "Sunset. Aitzol Berasategi, CC BY 4.0, changed as described here",
    "wooden-facade.jpg": "Friends. Aitzol Berasategi, CC BY 4.0, changed as described here",
}

PAGE_CORNERS = "470,140,2130,10,2110,3090,400,2950"


GEOMETRY = {"straighten", "rotate", "perspective", "warp"}  # before and after are not one frame


@dataclass
class Exhibit:
    operation: str  # the C function
    photo: str
    command: list   # of the tool, without the files
    call: str       # in C
    text: str
    outline: str = ""  # corners to draw over the picture
    variants: list = field(default_factory=list)  # (caption, command) of a contact sheet


EXHIBITS = [
    Exhibit("roxeuAutoStraightenImage", "sunset-tilted-horizon.jpg",
            ["straighten", "--line", "70,1430,4200,1250", "--crop"],
            "roxeuAutoStraightenImage(&src, 70, 1430, 4200, 1250, &dst)",
            "Two points on the far ridge, and the horizon is level: 2.50 degrees clockwise. The "
            "destination is the largest picture of the same proportions that shows no background."),
    Exhibit("roxeRotateImage", "coffee-cup.png", ["rotate", "--angle", "20", "--crop"],
            "roxeRotateImage(&src, 300, 200, 0.34906585f, &dst, 205, 137)",
            "Any angle about any point, positive clockwise; here what the turned picture fills."),
    Exhibit("roxeRotateImage", "coffee-cup.png",
            ["rotate", "--angle", "20", "--expand", "--background", "white"],
            "roxeRotateImage(&src, 300, 200, 0.34906585f, &dst, 350, 291)",
            "The same with room for the corners. The destination was filled with white before; "
            "pixels that the turned picture does not cover keep what they held."),
    Exhibit("roxeGetPerspectiveDistortionCorrectionSize", "book-page.jpg",
            ["perspective", "--corners", PAGE_CORNERS, "--dry-run"],
            "Quad quad = {470, 140, 2130, 10, 2110, 3090, 400, 2950};\n"
            "roxeGetPerspectiveDistortionCorrectionSize(&quad, 0, 0, 1, &width, &height)",
            "The natural size of what the four corners enclose.", outline=PAGE_CORNERS),
    Exhibit("roxePerspectiveDistortionCorrection", "book-page.jpg",
            ["perspective", "--corners", PAGE_CORNERS],
            "roxePerspectiveDistortionCorrection(&src, &dst, &quad, 0, 0, rect)  /* 2: drawn */",
            "The same corners drawn upright. The photograph comes from a telephone that stores it "
            "on its side; corners are given in the upright picture."),
    Exhibit("roxeAffineTransform", "perspective-grid.png",
            ["warp", "--from", "150,14,400,113,300,147,64,40", "--to",
             "0,0,560,0,560,200,0,200", "--size", "560x200"],
            "roxeAffineTransform(&src, &dst, &quad, &dst_quad, (PixelRect){0, 0, 560, 200})",
            "Writing between two ruled lines, seen at a slant: four points moved to the corners of "
            "a strip."),
    Exhibit("roxeAffineTransform", "spices.jpg",
            ["warp", "--from", "0,0,1919,0,1919,1279,0,1279", "--to",
             "160,120,1800,330,1800,950,160,1160", "--background", "#202020"],
            "roxeAffineTransform(&src, &dst, &quad, &dst_quad, (PixelRect){0, 0, 1920, 1280})",
            "The other way round: four corners moved to four places, here a picture on a wall that "
            "leads away to the right."),
    Exhibit("roxeSoftFocus", "otter.jpg",
            ["soft-focus", "--radius", "61", "--mask", "examples/masks/otter.png", "--mask-radius",
             "25"],
            "roxeSoftFocus(&src, &dst, &mask, 61, 25)",
            "Water, stone and grass recede; the mask keeps the animal sharp, and its own blur makes "
            "the border soft."),
    Exhibit("roxeSoftFocus", "astronaut-portrait.png",
            ["soft-focus", "--radius", "15", "--mask", "examples/masks/portrait.png",
             "--mask-radius", "61"],
            "roxeSoftFocus(&src, &dst, &mask, 15, 61)",
            "A portrait: an oval mask over the face, blurred widely."),
    Exhibit("roxeReplaceColor", "astronaut-portrait.png",
            ["replace-colour", "--colour", "#E8683C", "--tolerance", "50", "--hue", "190"],
            "roxeReplaceColor(&src, &dst, 0x3C, 0x68, 0xE8, 50, 190, 0, 0)",
            "The orange of the suit turned by 190 degrees of hue; folds and seams stay."),
    Exhibit("roxeReplaceColorMask", "astronaut-portrait.png",
            ["replace-colour", "--colour", "#E8683C", "--tolerance", "50", "--mask-only"],
            "roxeReplaceColorMask(&src, &mask, 0x3C, 0x68, 0xE8, 50)",
            "What was selected for it: white is replaced fully, black not at all."),
    Exhibit("roxeColorTint", "spices.jpg",
            ["tint", "--colour", "#C8501E", "--tolerance", "50"],
            "roxeColorTint(&src, &dst, 0x1E, 0x50, 0xC8, 50)",
            "One colour stays, the others turn grey."),
    Exhibit("roxeColorTint", "wooden-facade.jpg",
            ["tint", "--colour", "#94653F", "--tolerance", "60"],
            "roxeColorTint(&src, &dst, 0x3F, 0x65, 0x94, 60)",
            "Two warm coats before a grey house, which is now really grey."),
    Exhibit("roxeColorTintMask", "spices.jpg",
            ["tint", "--colour", "#C8501E", "--tolerance", "50", "--mask-only"],
            "roxeColorTintMask(&src, &mask, 0x1E, 0x50, 0xC8, 50)",
            "The selection behind the first of these two."),
    Exhibit("roxeColorTemperature", "courtyard-colour-cast.jpg",
            ["temperature", "--temperature", "-10", "--tint", "-10"],
            "roxeColorTemperature(&src, &dst, -10, -10)",
            "A heavy orange cast made cooler and a little greener, in linear light."),
    Exhibit("roxeColorTemperature", "book-page.jpg",
            ["temperature", "--temperature", "-10", "--tint", "-20"],
            "roxeColorTemperature(&src, &dst, -10, -20)",
            "A page photographed in lamplight becomes white paper."),
    Exhibit("roxeAutoGamma", "rocket-night.jpg", ["auto-gamma"],
            "roxeAutoGamma(&src, &dst, NULL)",
            "One gamma, chosen from the histogram of the green channel. The colour profile of the "
            "photograph (Adobe RGB) is kept."),
    Exhibit("roxeShadowHighlight", "sunset-tilted-horizon.jpg",
            ["shadow-highlight", "--shadow", "35", "--highlight", "20", "--midtone", "10"],
            "roxeShadowHighlight(&src, &dst, 35, 20, 10)",
            "The dark slope opens while the sky stays."),
    Exhibit("roxeShadowHighlight", "rocket-night.jpg",
            ["shadow-highlight", "--shadow", "35", "--highlight", "0", "--midtone", "0"],
            "roxeShadowHighlight(&src, &dst, 35, 0, 0)",
            "Deep shadows beside small, bright lamps."),
    Exhibit("roxeVariations", "orange-dune.jpg",
            ["variations", "--red", "2", "--blue", "-2", "--level", "2"],
            "roxeVariations(&src, &dst, 2, 0, -2, 0, 2)",
            "Two steps of red away, two steps of blue added. Below, three steps of one kind each.",
            variants=[("less red", ["--red", "3"]), ("less green", ["--green", "3"]),
                      ("less blue", ["--blue", "3"]), ("darker", ["--dark", "3"]),
                      ("more red", ["--red", "-3"]), ("more green", ["--green", "-3"]),
                      ("more blue", ["--blue", "-3"]), ("lighter", ["--dark", "-3"])]),
    Exhibit("roxeVerifyPixelArray", "otter.jpg", ["info"],
            "roxeVerifyPixelArray(&src)  /* kRoxeOK */",
            "Every picture is checked before it is touched: its format, its size, the length of its "
            "rows. The tool's info command says what a file holds and what this check answers."),
]

STYLE = """
:root { color-scheme: light dark; --line: #8886; }
body { font: 16px/1.5 system-ui, sans-serif; max-width: 62rem; margin: 2rem auto; padding: 0 1rem; }
h2 { margin: 3rem 0 0.3rem; font: 600 1.2rem ui-monospace, monospace; overflow-wrap: anywhere; }
p { margin: 0.3rem 0; }
pre { margin: 0.4rem 0; padding: 0.6rem 0.8rem; border: 1px solid var(--line); border-radius: 6px;
  white-space: pre-wrap; overflow-wrap: anywhere; font-size: 0.85rem; }
small { opacity: 0.75; }
.pair { position: relative; display: grid; margin: 0.8rem 0; background: #808080; --at: 50%; }
.pair > * { grid-area: 1 / 1; }
.pair img, .pair svg { width: 100%; height: 100%; max-height: 44rem; object-fit: contain; }
.pair .before { clip-path: inset(0 calc(100% - var(--at)) 0 0); background: #808080; }
.pair::after { content: ""; position: absolute; top: 0; bottom: 0; left: var(--at); width: 2px;
  background: #fff; box-shadow: 0 0 3px #000; pointer-events: none; }
.pair.single::after { display: none; }
.pair input, .pair span { position: relative; }
.pair input { width: 100%; height: 100%; margin: 0; opacity: 0; cursor: ew-resize; }
.pair:focus-within { outline: 3px solid #48f; }
.pair span { align-self: end; margin: 0.4rem; padding: 0 0.5rem; border-radius: 4px; color: #fff;
  background: #0008; font-size: 0.8rem; pointer-events: none; }
.pair .left { justify-self: start; } .pair .right { justify-self: end; }
.beside { display: grid; grid-template-columns: repeat(auto-fit, minmax(18rem, 1fr)); gap: 0.6rem;
  align-items: end; margin: 0.8rem 0; }
.beside figure { margin: 0; } .beside img { width: 100%; max-height: 44rem; object-fit: contain; }
.beside figcaption, nav { font-size: 0.85rem; }
nav ul { columns: 3 14rem; column-gap: 2.4rem; padding-left: 1.2rem; margin: 0.5rem 0; }
.sheet { display: grid; grid-template-columns: repeat(4, 1fr); gap: 0.5rem; }
.sheet figure { margin: 0; } .sheet img { width: 100%; } .sheet figcaption { font-size: 0.8rem; }
"""


class Gallery:
    def __init__(self, tool, directory):
        self.tool = os.path.abspath(tool)
        self.directory = directory
        self.root = os.path.dirname(EXAMPLES)
        os.makedirs(directory, exist_ok=True)

    def path(self, name):
        return os.path.join(self.directory, name)

    def run_tool(self, command, photo, *output):
        """Runs one command in the root of the project; returns what it says."""
        files = [os.path.join("examples", "photos", photo), *map(os.path.abspath, output)]
        ran = subprocess.run([self.tool, command[0], *files, *command[1:]], text=True,
                             cwd=self.root, capture_output=True, check=False)
        if ran.returncode != 0:
            sys.exit(ran.stderr)
        return ran.stdout

    def shrink(self, name, largest=LARGEST_SIDE):
        """A JPEG for the page: the file itself if it is small, or a copy at so many eighths."""
        side = max(jpeg_size(self.path(name)))
        if side <= largest:
            return name
        eighths = max(1, 8 * largest // side)
        small = name.replace(".jpg", "-small.jpg")
        with tempfile.NamedTemporaryFile() as profile:
            pixels = subprocess.run(["djpeg", "-scale", f"{eighths}/8", "-icc", profile.name,
                                     self.path(name)], check=True, capture_output=True).stdout
            with_profile = ["-icc", profile.name] if os.path.getsize(profile.name) else []
            subprocess.run(["cjpeg", "-quality", "88", *with_profile, "-outfile", self.path(small)],
                           check=True, input=pixels)
        return small

    def before(self, photo):
        """The photograph as an upright JPEG: a level line needs no straightening, but with a
        quality the file is written anew."""
        name = os.path.splitext(photo)[0] + ".jpg"
        self.run_tool(["straighten", "--line", "0,0,1,0", "--quality", "95"], photo, self.path(name))
        return name, self.shrink(name)

    def after(self, number, exhibit):
        """Name of the result, its small copy and what the tool said."""
        if exhibit.command[0] == "info" or "--dry-run" in exhibit.command:
            return None, None, self.run_tool(exhibit.command, exhibit.photo)
        name = f"{number:02}-{exhibit.command[0]}.jpg"
        said = self.run_tool(exhibit.command, exhibit.photo, self.path(name))
        return name, self.shrink(name), said

    def variant(self, number, exhibit, index):
        name = f"{number:02}-variant-{index}.jpg"
        self.run_tool(exhibit.command[:1] + exhibit.variants[index][1], exhibit.photo,
                      self.path(name))
        small = self.shrink(name, 480)
        if small != name:  # no page shows the large one
            os.unlink(self.path(name))
        return small

    def write(self):
        with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
            photos = sorted({exhibit.photo for exhibit in EXHIBITS})
            befores = dict(zip(photos, pool.map(self.before, photos)))
            numbered = list(enumerate(EXHIBITS, 1))
            afters = list(pool.map(lambda pair: self.after(*pair), numbered))
            sections = []
            for (number, exhibit), after in zip(numbered, afters):
                sheet = list(pool.map(lambda i: self.variant(number, exhibit, i),
                                      range(len(exhibit.variants))))
                sections.append(section(number, exhibit, befores[exhibit.photo], after, sheet,
                                        self.path(befores[exhibit.photo][0])))
        with open(self.path("index.html"), "w", encoding="utf-8") as page:
            page.write(document(sections))


def jpeg_size(path):
    """Width and height from the frame header of a JPEG."""
    with open(path, "rb") as file:
        content = file.read()
    position = 2
    while not 0xC0 <= content[position + 1] <= 0xC2:
        position += 2 + int.from_bytes(content[position + 2:position + 4], "big")
    height = int.from_bytes(content[position + 5:position + 7], "big")
    return int.from_bytes(content[position + 7:position + 9], "big"), height


def shown_command(exhibit):
    files = ["examples/photos/" + exhibit.photo]
    if exhibit.command[0] != "info" and "--dry-run" not in exhibit.command:
        files.append("out.jpg")
    return "roxe " + shlex.join([exhibit.command[0], *files, *exhibit.command[1:]])


def slider(before, after, label):
    return f"""<div class="pair">
<img class="after" loading="lazy" src="{after}" alt="{label}, after">
<img class="before" loading="lazy" src="{before}" alt="{label}, before">
<span class="left">before</span><span class="right">after</span>
<input type="range" min="0" max="100" value="50" step="0.1" aria-label="{label}: before and after"
 oninput="this.parentNode.style.setProperty('--at', this.value + '%')">
</div>"""


def beside(before, after, label):
    """Two pictures of different shapes: nothing lies over the same thing."""
    return f"""<div class="beside">
<figure><img loading="lazy" src="{before}" alt="{label}, before"><figcaption>before</figcaption></figure>
<figure><img loading="lazy" src="{after}" alt="{label}, after"><figcaption>after</figcaption></figure>
</div>"""


def single(picture, label, outline, size):
    corners = ""
    if outline:
        values = outline.split(",")
        shape = " ".join(f"{x},{y}" for x, y in zip(values[::2], values[1::2]))
        corners = (f'<svg viewBox="0 0 {size[0]} {size[1]}"><polygon points="{shape}" '
                   f'fill="#4488ff33" stroke="#ff2020" stroke-width="{size[0] // 250}"/></svg>')
    return f'<div class="pair single"><img loading="lazy" src="{picture}" alt="{label}">{corners}</div>'


def title(exhibit):
    """The command, its options without a value and the photograph."""
    words = exhibit.command + ["--"]
    flags = [word for word, following in zip(words, words[1:])
             if word.startswith("--") and following.startswith("--")]
    return f"{' '.join(words[:1] + flags)}: {os.path.splitext(exhibit.photo)[0].replace('-', ' ')}"


def section(number, exhibit, before, after, sheet, before_path):
    name, small, said = after
    label = html.escape(f"{exhibit.command[0]} on {exhibit.photo}")
    if name:
        show = beside if exhibit.command[0] in GEOMETRY else slider
        picture = show(before[1], small, label)
        links = (f'full size: <a href="{before[0]}">before</a>, <a href="{name}">after</a>')
    else:
        picture = single(before[1], label, exhibit.outline, jpeg_size(before_path))
        picture += f"\n<pre>{html.escape(said.strip())}</pre>"
        links = f'full size: <a href="{before[0]}">the photograph</a>'
    figures = "".join(
        f'<figure><img loading="lazy" src="{small_name}" alt="{caption}"><figcaption>{caption}: '
        f"{' '.join(options)}</figcaption></figure>"
        for small_name, (caption, options) in zip(sheet, exhibit.variants))
    return f"""<section id="{number}">
<h2>{html.escape(title(exhibit))}</h2>
<p>{html.escape(exhibit.text)}</p>
{picture}
{f'<div class="sheet">{figures}</div>' if figures else ""}
<pre>{html.escape(shown_command(exhibit))}</pre>
<pre>{html.escape(exhibit.call)}</pre>
<p><small>{html.escape(CREDITS[exhibit.photo])} · {links}</small></p>
</section>"""


def document(sections):
    contents = chr(10).join(f'<li><a href="#{number}">{html.escape(title(exhibit))}</a></li>'
                            for number, exhibit in enumerate(EXHIBITS, 1))
    return f"""<!DOCTYPE html>
<html lang="en">
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<title>ROXE: fifteen operations, before and after</title>
<style>{STYLE}</style>
<h1>ROXE: fifteen operations, before and after</h1>
<p>Under each picture stand the command that made it and the call behind the command. Where both
pictures have one frame, move the bar between them with the mouse, a finger or the arrow keys.</p>
<nav><ul>
{contents}
</ul></nav>
{chr(10).join(sections)}
</html>
"""


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    Gallery(*sys.argv[1:]).write()
