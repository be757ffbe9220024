"""The operations in GEGL: what only that host has. Its tables of checksums are those of every door."""

import os
import re
import subprocess

import numpy as np
import pytest
from PIL import Image

import gegl
from doors import ROOT, TOOL, exported
from gegl import Gegl

pytestmark = pytest.mark.skipif(not gegl.MODULE, reason="ROXE_GEGL_MODULE names no module")

# Options of the tool, and the same as properties.
CASES = (
    ("rotate", "--angle 7.3", "angle=7.3"),
    ("rotate", "--angle -20 --expand --background #00ffff", "angle=-20 expand=true background=aqua"),
    ("rotate", "--angle 90", "angle=90"),
    ("rotate", "--angle 33 --about 20,90 --edges keep",
     "angle=33 about=true about-x=20 about-y=90 edges=keep"),
    ("straighten", "--line 3,9,190,33 --crop", "line-x1=3 line-y1=9 line-x2=190 line-y2=33 crop=fit"),
    ("straighten", "--line 9,150,30,2", "line-x1=9 line-y1=150 line-x2=30 line-y2=2"),
    ("perspective", "--corners 9,8,190,2,180,150,2,140",
     "corners-x1=9 corners-y1=8 corners-x2=190 corners-y2=2 corners-x3=180 corners-y3=150 "
     "corners-x4=2 corners-y4=140"),
    ("warp", "--from 0,0,200,9,190,160,0,150 --to 0,9,150,0,200,150,9,160",
     "from-x2=200 from-y2=9 from-x3=190 from-y3=160 from-y4=150 "
     "to-y1=9 to-x2=150 to-x3=200 to-y3=150 to-x4=9 to-y4=160"),
    ("soft-focus", "--radius 21", "radius=21"),
    ("soft-focus", "--radius 31 --mask MASK --mask-radius 5",
     "radius=31 mask-radius=5 aux=[ gegl:png-load path=MASK ]"),
    ("replace-colour", "--colour #E8683C --tolerance 120 --hue 190",
     "colour=#E8683C tolerance=120 hue=190"),
    ("tint", "--colour #C8501E --tolerance 110", "colour=#C8501E tolerance=110"),
    ("temperature", "--temperature 20 --tint -7", "temperature=20 tint=-7"),
    ("temperature", "--grey 100,80", "grey=true grey-x=100 grey-y=80"),
    ("auto-gamma", "", ""),
    ("auto-gamma", "--region 20,16,60,49",
     "region=true region-x=20 region-y=16 region-width=60 region-height=49"),
    ("shadow-highlight", "--shadow 40 --highlight 20", "shadow=40 highlight=20"),
    ("variations", "--red 2 --blue -2 --level 5", "red=2 blue=-2 level=5"),
)
OPERATIONS = sorted({case[0] for case in CASES})
MOVING = ("rotate", "straighten", "perspective", "warp")
BY_PIXELS = ("replace-colour", "tint", "temperature", "variations")


@pytest.fixture(scope="module")
def environment(tmp_path_factory):
    """GEGL with our module and those of its own that read and write PNG; all take longer to load."""
    folder = tmp_path_factory.mktemp("modules")
    own = subprocess.run(["pkg-config", "--variable=pluginsdir", "gegl-0.4"], capture_output=True,
                         text=True, check=True).stdout.strip()
    for name in ("gegl-core.so", "png-load.so", "png-save.so"):
        os.symlink(os.path.join(own, name), folder / name)
    return {**os.environ, "GEGL_PATH": f"{folder}:{gegl.MODULE}"}


def command(environment, *words):
    return subprocess.run(["gegl", *map(str, words)], env=environment, check=True,
                          capture_output=True, text=True).stdout


def tool(operation, source, target, options):
    subprocess.run([TOOL, operation, source, target, *options], check=True, capture_output=True)


def samples(path):
    return np.asarray(Image.open(path))


def photograph(mode="RGB"):
    """A part of a photograph, with opacity of every kind where it has one."""
    part = Image.open(ROOT / "examples/photos/astronaut-portrait.png").convert("RGB").crop(
        (60, 40, 261, 203))
    if mode == "RGBA":
        y, x = np.mgrid[:part.height, :part.width]
        part.putalpha(Image.fromarray((x * 7 + y * 3).astype(np.uint8)))
    return part


def test_the_host_lists_every_operation(environment):
    listed = command(environment, "--list-all").split()
    assert sorted(name for name in listed if name.startswith("roxe:")) == [
        "roxe:" + name for name in OPERATIONS]
    told = subprocess.run([TOOL, "help"], capture_output=True, text=True, check=True).stdout
    assert all(re.search(rf"^  {name} ", told, re.M) for name in OPERATIONS)


@pytest.mark.parametrize("name", OPERATIONS)
def test_the_host_describes_operations_and_properties_as_the_tool(name):
    run("variations")  # loads the library
    library = Gegl.library
    told = subprocess.run([TOOL, "help", name], capture_output=True, text=True, check=True).stdout
    description = library.Operation.get_key("roxe:" + name, "description")
    assert description.startswith(told.splitlines()[0] + ". ")
    assert "8 bits a channel" in description and "rounded" in description
    declared = {spec.name: spec for spec in library.Operation.list_properties("roxe:" + name)}
    told = told[told.index("Options:"):told.index("  --format")]
    told = re.sub(r"(?<=\S)\n {32}", "  ", told)  # after a long option it stands in the next line
    for option, meaning in re.findall(
            r"^  --([a-z-]+)(?:,\S+)?(?: \S+)?(?: \(required\))? +(.*)$", told, re.M):
        if option in ("mask", "dry-run"):
            continue
        mine = [spec for key, spec in declared.items()
                if key == option or re.fullmatch(option + r"-([xy]\d?|width|height)", key)]
        meaning, default = re.fullmatch(r"(.*?)(?: \(default: (-?\d+)\))?", meaning).groups()
        for spec in mine:
            assert spec.blurb.startswith(re.sub(r" \(default: [^()]*\)$", "", meaning)), spec.name
        assert mine, option
        if default:
            assert mine[0].default_value == int(default)
        for spec in mine:
            del declared[spec.name]
    assert sorted(declared) == ["background"] * (name in MOVING)


def test_ranges():
    run("variations")
    for operation, name, least, most in (
            ("rotate", "angle", -3600, 3600), ("soft-focus", "radius", 1, 100000),
            ("replace-colour", "hue", -360, 360), ("tint", "tolerance", 0, 200),
            ("shadow-highlight", "midtone", -100, 100), ("variations", "level", 0, 6)):
        spec = next(spec for spec in Gegl.library.Operation.list_properties("roxe:" + operation)
                    if spec.name == name)
        assert (spec.minimum, spec.maximum) == (least, most)


@pytest.mark.parametrize("mode", ("RGB", "RGBA"))
@pytest.mark.parametrize("operation, options, properties", CASES)
def test_png(operation, options, properties, mode, environment, tmp_path):
    """The colours are those that the tool makes of the opaque picture; opacity moves as they do.

    The command copies its input where it does not know an operation or a value: bytes tell.
    """
    mask = tmp_path / "mask.png"
    photograph(mode).transpose(Image.Transpose.ROTATE_180).save(mask)
    options = options.replace("MASK", str(mask)).split()
    properties = properties.replace("MASK", str(mask)).split()
    whole = photograph(mode)
    whole.save(tmp_path / "in.png")
    command(environment, tmp_path / "in.png", "--", "roxe:" + operation, *properties,
            "gegl:png-save", f"path={tmp_path}/out.png", "bitdepth=8")
    whole.convert("RGB").save(tmp_path / "opaque.png")
    tool(operation, tmp_path / "opaque.png", tmp_path / "expected.png", options)
    drawn, expected = samples(tmp_path / "out.png"), samples(tmp_path / "expected.png")
    assert drawn.shape == expected.shape[:2] + (len(mode),)
    assert (drawn[..., :3] == expected).all()
    assert expected.shape != (163, 201, 3) or (expected != samples(tmp_path / "opaque.png")).any()
    if mode == "RGBA":
        opacity = whole.getchannel("A")
        if operation in MOVING:
            opacity.save(tmp_path / "opacity.png")
            if "--background" in options:
                options = options[:options.index("--background")]
            tool(operation, tmp_path / "opacity.png", tmp_path / "moved.png",
                 [*options, "--background", "white"])
            opacity = Image.open(tmp_path / "moved.png")
        assert (drawn[..., 3] == np.asarray(opacity)).all()


# --------------------------------------------------------------------------- parts, threads, places

NOISE = np.random.default_rng(7).integers(0, 256, (300, 517, 4), np.uint8)
OPTIONS = {
    "rotate": {"angle": 7.3}, "straighten": {"line": (3, 9, 190, 33)},
    "perspective": {"corners": (9, 8, 190, 2, 180, 150, 2, 140)},
    "warp": {"from": (0, 0, 200, 9, 190, 160, 0, 150), "to": (0, 9, 150, 0, 200, 150, 9, 160)},
    "soft-focus": {"radius": 21, "mask_radius": 5},
    "replace-colour": {"colour": "#E8683C", "tolerance": 200, "hue": 190},
    "tint": {"colour": "#C8501E", "tolerance": 150},
    "temperature": {"temperature": 20, "tint": -7}, "auto-gamma": {},
    "shadow-highlight": {"shadow": 40, "highlight": 20}, "variations": {"red": 2, "level": 5}}


def run(name, picture=NOISE[:20, :30], options=None, **more):
    with Gegl.lock:
        return Gegl.run(name, picture, OPTIONS[name] if options is None else options, **more)


@pytest.mark.parametrize("name", OPERATIONS)
def test_parts_and_threads(name):
    """A picture in parts, and by several threads, is the picture in one go.

    What lies before the operation makes only what it is asked for.
    """
    def drawn_by(**more):
        return run(name, NOISE, before="gegl:invert-gamma", mask=mask, **more)[1]

    mask = NOISE[..., :1] if name == "soft-focus" else None
    run(name)
    settings = Gegl.library.config()
    drawn = {}
    for threads in (1, 2):
        settings.set_property("threads", threads)
        drawn[threads] = drawn_by()
    assert (drawn[1] == drawn[2]).all()
    for left, top, right, bottom in ((0, 0, 64, 64), (100, 37, 333, 128), (30, 20, 31, 21)):
        bottom, right = min(bottom, len(drawn[1])), min(right, drawn[1].shape[1])
        part = drawn_by(part=(left, top, right - left, bottom - top))
        assert (part == drawn[1][top:bottom, left:right]).all()


@pytest.mark.parametrize("name", OPERATIONS)
def test_pictures_that_begin_elsewhere(name):
    """Places count from the top left corner of a picture, wherever that is."""
    picture = NOISE[:170, :210]
    (x, y), drawn = run(name, picture)
    assert (x, y) == (0, 0)
    (x, y), moved = run(name, picture, at=(-35, 1000))
    assert (x, y) == (-35, 1000)
    assert (moved == drawn).all()


def test_the_centre_stays_in_place():
    """Of 41 x 31 pixels (20, 15): 17 + 3, 12 + 3 and so on."""
    picture = NOISE[:31, :41]
    for options, place, size in (
            ({"angle": 90}, (5, -5), (31, 41)), ({"angle": 180}, (0, 0), (41, 31)),
            ({"angle": 90, "expand": True, "edges": "keep"}, (5, -5), (31, 41)),
            ({"angle": 90, "expand": True, "about": (0, 0)}, (-30, 0), (31, 41))):
        at, drawn = run("rotate", picture, options)
        assert (at, drawn.shape[1::-1]) == (place, size)
    (x, y), drawn = run("rotate", picture, {"angle": 20, "crop": True})
    width, height = drawn.shape[1::-1]
    assert width < 41 and (x + width // 2, y + height // 2) == (20, 15)
    (x, y), drawn = run("straighten", picture, {"line": (0, 0, 40, 9), "crop": "free"})
    width, height = drawn.shape[1::-1]
    assert width < 41 and (x + width // 2, y + height // 2) == (20, 15)


def test_what_is_uncovered_may_be_transparent():
    opaque = np.full((30, 40, 4), 255, np.uint8)
    _, drawn = run("rotate", opaque, {"angle": 45, "background": "#12345678"})
    assert drawn[0, 0].tolist() == [0x12, 0x34, 0x56, 0x78]
    assert drawn[15, 20].tolist() == [255, 255, 255, 255]


def test_no_colour_is_black():
    """A program in C may take a colour away."""
    for name, options, colour in (("rotate", {"angle": 45}, "background"),
                                  ("tint", {"tolerance": 60}, "colour")):
        place, drawn = run(name, NOISE[:30, :40], {**options, colour: "black"})
        again, same = run(name, NOISE[:30, :40], {**options, colour: None})
        assert place == again and (drawn == same).all()


# ------------------------------------------------------------------------------ what makes no sense

def test_an_operation_with_nothing_to_work_on_gives_the_picture():
    picture = NOISE[:60, :80]
    for name, options, said in (
            ("straighten", {}, "--line needs two different points, and both are (0, 0)"),
            ("straighten", {"line": (0, 0, 80, 3)},
             "the point (80, 3) lies outside the picture of 80 × 60 pixels"),
            ("perspective", {}, "--corners: corners 1 and 2 are the same point (0, 0)"),
            ("rotate", {"angle": 3, "about": (80, 3)},
             "--about (80, 3) lies outside the picture of 80 × 60 pixels"),
            ("auto-gamma", {"region": (0, 0, 81, 3)},
             "--region 0,0,81,3 reaches outside the picture of 80 × 60 pixels"),
            ("auto-gamma", {"region": (0, 0, 0, 3)},
             "--region needs a place inside the picture and a size of at least 1,1")):
        (x, y), drawn = run(name, picture, options)
        assert (drawn == picture).all() and Gegl.said[0] == said


def test_what_another_option_rules_out_has_no_effect():
    picture = NOISE[:60, :80]
    for name, wanted, ruled_out in (
            ("rotate", {"angle": 9, "crop": True}, {"expand": True, "about": (3, 3)}),
            ("temperature", {"grey": (30, 3)}, {"temperature": 50, "tint": 9}),
            ("perspective", {"corners": (0, 0, 80, 3, 70, 60, 3, 50), "fit": (30, 30)},
             {"size": (7, 7)}),
            ("soft-focus", {"radius": 9}, {"mask_radius": 9})):
        place, drawn = run(name, picture, wanted)
        assert not Gegl.said
        again, same = run(name, picture, {**ruled_out, **wanted})
        assert not Gegl.said and place == again and (drawn == same).all()
        assert name == "soft-focus" or run(name, picture, ruled_out)[1].tobytes() != same.tobytes()


def test_a_mask_that_does_not_reach_leaves_the_rest_to_the_blur():
    picture = NOISE[:60, :80, :3]
    white = np.full((60, 80, 1), 255, np.uint8)
    options = {"radius": 9}
    _, blurred = run("soft-focus", picture, options)
    _, sharp = run("soft-focus", picture, options, mask=white)
    _, half = run("soft-focus", picture, options, mask=white[:, :40])
    assert (half[:, :40] == sharp[:, :40]).all() and (half[:, 40:] == blurred[:, 40:]).all()
    assert (sharp != blurred).any()


@pytest.mark.parametrize("name", OPERATIONS)
def test_hosts_with_no_picture_or_an_endless_one(name):
    run(name)
    library = Gegl.library
    operation = library.Node().create_child("roxe:" + name)
    area = operation.get_bounding_box()
    assert (area.width, area.height) == (0, 0)
    for source in ("gegl:color", "gegl:checkerboard"):
        graph = library.Node()
        operation = graph.create_child("roxe:" + name)
        for option, value in gegl.properties(library, OPTIONS[name]):
            operation.set_property(option, value)
        endless = graph.create_child(source)
        crop = graph.create_child("gegl:crop")
        for side, length in (("x", -20), ("y", 7), ("width", 30), ("height", 20)):
            crop.set_property(side, length)
        endless.link(operation)
        operation.link(crop)
        drawn = gegl.render(library, crop, 4)
        if name not in BY_PIXELS:  # these need no end
            endless.link(crop)
            assert (drawn == gegl.render(library, crop, 4)).all()
        assert drawn.shape == (20, 30, 4)


@pytest.mark.parametrize("name", OPERATIONS)
def test_small_pictures(name):
    for height, width in ((1, 1), (1, 9), (9, 1), (2, 3)):
        _, drawn = run(name, NOISE[:height, :width])
        assert drawn.size


def test_shows_nothing_of_its_inside():
    assert exported(f"{gegl.MODULE}/gegl-roxe.so") == ["gegl_module_query", "gegl_module_register"]
