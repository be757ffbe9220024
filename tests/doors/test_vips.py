"""The module in libvips: what only that host has. Its tables of checksums are those of every door."""

import ctypes
import os
import pathlib
import re
import subprocess

import numpy as np
import pytest
from PIL import Image

from doors import ROOT, TOOL, exported
from vips import HOME, Failed, Vips

pytestmark = pytest.mark.skipif(not HOME, reason="ROXE_VIPSHOME names no module")

PHOTOS = ROOT / "examples/photos"
OPERATIONS = {
    "rotate": ("--angle", "7.3"),
    "straighten": ("--line", "10%,20%,90%,25%"),
    "perspective": ("--corners", "5%,5%,95%,0%,90%,95%,0%,85%"),
    "warp": ("--from", "0%,0%,100%,9%,90%,100%,0%,80%", "--to", "0%,9%,80%,0%,100%,95%,5%,100%"),
    "soft-focus": ("--radius", "21"),
    "replace-colour": ("--colour", "#E8683C", "--tolerance", "120", "--hue", "190"),
    "tint": ("--colour", "orange", "--tolerance", "110"),
    "temperature": ("--temperature", "20", "--tint", "-7"),
    "auto-gamma": (),
    "shadow-highlight": ("--shadow", "40"),
    "variations": ("--red", "2", "--blue", "-2"),
}
CASES = list(OPERATIONS.items()) + [
    ("rotate", ("--angle", "7.3", "--edges", "keep", "--background", "#E07A2C")),
    ("rotate", ("--angle", "-20", "--expand", "--background", "white")),
    ("rotate", ("--angle", "90")),
    ("rotate", ("--angle", "33", "--about", "25%,75%")),
    ("straighten", ("--line", "10%,20%,90%,25%", "--crop=free")),
    ("straighten", ("--line", "10%,20%,90%,25%", "--crop=fit", "--edges", "keep")),
    ("perspective", ("--corners", "5%,5%,95%,0%,90%,95%,0%,85%", "--fit", "80x90")),
    ("temperature", ("--grey", "50%,50%")),
    ("temperature", ("--gray", "30%,60%")),
    ("auto-gamma", ("--region", "10%,10%,30%,30%")),
    ("replace-colour", ("--color", "#E8683C", "--tolerance", "120", "--mask-only")),
    ("tint", ("--colour", "#E8683C", "--tolerance", "120", "--mask-only")),
]


def roxe(command, source, target, *options):
    subprocess.run([TOOL, command, source, target, *options], check=True, capture_output=True)


def vips(command, *words, check=True):
    """The command line of the host."""
    return subprocess.run(["vips", "roxe_" + command.replace("-", "_"), *words], check=check,
                          capture_output=True, text=True, env={**os.environ, "VIPSHOME": HOME})


def samples(path):
    picture = Image.open(path)
    return picture.mode, np.asarray(picture)


def picture(mode):
    """A part of a photograph, some thousand pixels, with opacity of every kind where it has one."""
    part = Image.open(PHOTOS / "astronaut-portrait.png").convert("RGB").crop((60, 40, 261, 203))
    if mode.endswith("A"):
        part = part.convert(mode)
        y, x = np.mgrid[:part.height, :part.width]
        part.putalpha(Image.fromarray((x * 7 + y * 3).astype(np.uint8)))
    return part.convert(mode)


def test_the_host_lists_every_operation_as_the_tool_describes_it():
    listed = subprocess.run(["vips", "-l"], capture_output=True, text=True, check=True,
                            env={**os.environ, "VIPSHOME": HOME}).stdout
    there = dict(re.findall(r"\((roxe_\w+)\), (.*)", listed))
    for name in OPERATIONS:
        description = subprocess.run([TOOL, "help", name], capture_output=True, text=True,
                                     check=True).stdout.splitlines()[0]
        assert there.pop("roxe_" + name.replace("-", "_")) == description
    assert not there


@pytest.mark.parametrize("name", OPERATIONS)
def test_arguments_are_the_options_of_the_tool(name):
    """The same names, forms and defaults in the same order, and what they mean."""
    told = subprocess.run([TOOL, "help", name], capture_output=True, text=True, check=True).stdout
    told = told[told.index("Options:"):told.index("  --format")]
    moves = name in ("rotate", "straighten", "perspective", "warp")
    told = re.sub(r"(?<=\S)\n {32}", "  ", told)  # after a long option it stands in the next line
    expected = [(option, meaning) for option, meaning in re.findall(
        r"^  --([a-z-]+)(?:,\S+)?(?: \S+)?(?: \(required\))? +(.*)$", told, re.M)
                if option != "dry-run"]
    expected += [("background", "colour of uncovered pixels")] * moves
    usage = vips(name, check=False).stdout
    declared = re.findall(r"^   ([a-z-]+) +- (.*), input \w+$((?:\n\t.*)*)", usage, re.M)[1:]
    assert [name for name, *_ in declared] == [name for name, _ in expected]
    for (_, text, more), (_, meaning) in zip(declared, expected):
        meaning, default = re.fullmatch(r"(.*?)(?: \(default: (-?\d+)\))?", meaning).groups()
        assert text.startswith(re.sub(r" \(default: [^()]*\)$", "", meaning))
        assert default is None or f"default: {default}\n" in more


def test_ranges_are_told():
    """GObject is told none: it would drop a value outside and draw without it."""
    for name, argument, told in (("soft-focus", "radius", "1 to 100000, required), input gint"),
                                 ("rotate", "angle", "-3600 to 3600, required), input gdouble"),
                                 ("tint", "tolerance", "0 to 200 (required), input gint")):
        usage = vips(name, check=False).stdout
        assert re.search(f"^   {argument} .*{re.escape(told)}$", usage, re.M), usage


@pytest.mark.parametrize("mode", ("RGB", "RGBA", "L", "LA"))
@pytest.mark.parametrize("command, options", CASES)
def test_png(command, options, mode, tmp_path):
    """The colours are those that the tool makes of the opaque picture; opacity moves as they do."""
    whole = picture(mode)
    whole.save(tmp_path / "in.png")
    vips(command, tmp_path / "in.png", tmp_path / "out.png", *options)
    whole.convert("L" if mode[0] == "L" else "RGB").save(tmp_path / "opaque.png")
    roxe(command, tmp_path / "opaque.png", tmp_path / "expected.png", *options)
    drawn_mode, drawn = samples(tmp_path / "out.png")
    expected_mode, expected = samples(tmp_path / "expected.png")
    if "--mask-only" in options or not mode.endswith("A"):
        assert drawn_mode == expected_mode
        assert (drawn == expected).all()
        return
    assert drawn_mode == expected_mode + "A"
    assert (drawn[..., :-1].squeeze() == expected).all()
    opacity = whole.getchannel("A")
    if command in ("rotate", "straighten", "perspective", "warp"):
        opacity.save(tmp_path / "opacity.png")
        if "--background" in options:
            options = options[:options.index("--background")]
        roxe(command, tmp_path / "opacity.png", tmp_path / "moved.png", *options, "--background",
             "white")
        opacity = Image.open(tmp_path / "moved.png")
    assert (drawn[..., -1] == np.asarray(opacity)).all()


@pytest.mark.parametrize("command, options", OPERATIONS.items())
def test_jpeg(command, options, tmp_path):
    """A photograph of many strips, as both decode it."""
    source = PHOTOS / "metadata-exif-xmp-icc.jpg"
    vips(command, source, tmp_path / "out.ppm", *options)
    roxe(command, source, tmp_path / "expected.ppm", *options)
    assert (samples(tmp_path / "out.ppm")[1] == samples(tmp_path / "expected.ppm")[1]).all()


@pytest.mark.parametrize("mode", ("RGB", "L", "RGBA"))
def test_masks(mode, tmp_path):
    """What is transparent in a mask counts as black, as for the tool."""
    picture("RGB").save(tmp_path / "in.png")
    picture(mode).transpose(Image.Transpose.ROTATE_180).save(tmp_path / "mask.png")
    options = ("--radius", "31", "--mask", tmp_path / "mask.png", "--mask-radius", "5")
    vips("soft-focus", tmp_path / "in.png", tmp_path / "out.png", *options)
    roxe("soft-focus", tmp_path / "in.png", tmp_path / "expected.png", *options)
    assert (samples(tmp_path / "out.png")[1] == samples(tmp_path / "expected.png")[1]).all()


def refusal(operation, arguments):
    with pytest.raises(Failed) as failure:
        Vips.call(operation, arguments, Vips.pixels)
    return str(failure.value)


def arguments_of(options):
    """Options as texts by the names of arguments."""
    return dict(zip((option.strip("-") for option in options[::2]), options[1::2]))


@pytest.mark.parametrize("name", OPERATIONS)
def test_only_eight_bits(name, tmp_path):
    """Sixteen bits and other spaces are refused in a sentence."""
    operation, one = "roxe_" + name.replace("-", "_"), tmp_path / "one.png"
    Image.new("RGB", (9, 7), "orange").save(one)
    many, others = {}, arguments_of(OPERATIONS[name])
    for command, *options in (("colourspace", "rgb16"), ("colourspace", "grey16"),
                              ("colourspace", "lab"), ("cast", "float")):
        many[options[0]] = tmp_path / (options[0] + ".v")
        subprocess.run(["vips", command, one, many[options[0]], *options], check=True)
    convert = "; convert it first, for example by vips colourspace IN OUT srgb"
    for other, bits in (("rgb16", "16 bits (ushort)"), ("grey16", "16 bits (ushort)"),
                        ("lab", "32 bits (float)"), ("float", "32 bits (float)")):
        assert refusal(operation, {"in": many[other], **others}) == (
            f"the picture has samples of {bits}, and ROXE edits those of 8 (uchar)" + convert)
    Image.new("CMYK", (9, 7)).save(tmp_path / "cmyk.jpg")
    assert refusal(operation, {"in": tmp_path / "cmyk.jpg", **others}) == (
        "the picture has 4 bands of the interpretation cmyk, and ROXE edits srgb or rgb of 3 or 4 "
        "bands and b-w of 1 or 2" + convert)


def test_sentences_of_arguments(tmp_path):
    """What goes together is judged as by the tool."""
    picture("RGB").save(tmp_path / "in.png")
    picture("L").save(tmp_path / "mask.png")
    subprocess.run(["vips", "cast", tmp_path / "mask.png", tmp_path / "deep.v", "ushort"],
                   check=True)
    Image.new("L", (3, 2)).save(tmp_path / "small.png")
    for name, arguments, sentence in (
            ("rotate", {}, "--angle is required"),
            ("tint", {"colour": "red"}, "--tolerance is required"),
            ("rotate", {"angle": 3, "crop": "fit", "expand": "true"},
             "--expand and --crop exclude each other"),
            ("rotate", {"angle": 3, "crop": "fit", "about": "3,3"},
             "--about and --crop exclude each other"),
            ("rotate", {"angle": 3, "edges": "none"}, "--edges needs repeat or keep, not 'none'"),
            ("soft_focus", {"radius": 3, "mask-radius": 3}, "--mask-radius needs --mask"),
            ("soft_focus", {"radius": 0},
             "--radius needs a whole number from 1 to 100000, not '0'"),
            ("soft_focus", {"radius": 3, "mask": tmp_path / "small.png"},
             f"the mask {tmp_path}/small.png has 3 × 2 pixels but the picture has 201 × 163"),
            ("soft_focus", {"radius": 3, "mask": tmp_path / "deep.v"},
             "the mask has samples of 16 bits (ushort), and ROXE edits those of 8 (uchar); convert "
             "it first, for example by vips colourspace IN OUT srgb")):
        assert refusal("roxe_" + name, {"in": tmp_path / "in.png", **arguments}) == sentence


@pytest.mark.parametrize("has_empty_name", (False, True))
def test_a_mask_in_memory(has_empty_name, tmp_path, monkeypatch):
    """It has no name of a file, and is a mask nevertheless."""
    samples = np.asarray(picture("L"))
    picture("RGB").save(tmp_path / "in.png")
    picture("L").save(tmp_path / "mask.png")
    photo = {"in": tmp_path / "in.png", "radius": 21}
    expected = Vips.call("roxe_soft_focus", {**photo, "mask": tmp_path / "mask.png"}, Vips.pixels)
    library, images = Vips.library, []

    def keep(pointer):
        images.append(ctypes.c_void_p(pointer))
        return images[-1]

    def mask(width, height):
        image = keep(library.vips_image_new_from_memory_copy(
            samples.tobytes(), ctypes.c_size_t(samples.size), width, height, 1, 0))
        if not has_empty_name:
            return image
        nameless = keep(library.vips_image_new_mode(b"", b"p"))
        assert library.vips_image_write(image, nameless) == 0
        return nameless

    height, width = samples.shape
    drawn = Vips.call("roxe_soft_focus", {**photo, "mask": mask(width, height)}, Vips.pixels)
    assert (drawn == expected).all()
    assert refusal("roxe_soft_focus", {**photo, "mask": mask(height, width)}) == (
        "the mask in memory has 163 × 201 pixels but the picture has 201 × 163")
    for image in images:
        library.g_object_unref(image)
    Image.new("L", (3, 2)).save(tmp_path / "temp-7.png")
    monkeypatch.chdir(tmp_path)  # a file that is called nearly so
    assert refusal("roxe_soft_focus", {**photo, "mask": "temp-7.png"}).startswith(
        "the mask temp-7.png has")


def test_null_is_nothing(tmp_path):
    """Programs in C may set an argument to it."""
    null = ctypes.c_void_p(None)
    picture("RGB").save(tmp_path / "in.png")
    photo = {"in": tmp_path / "in.png"}
    for name, arguments, nothing in (("soft_focus", {"radius": 9}, "mask"),
                                     ("rotate", {"angle": 9}, "background"),
                                     ("rotate", {"angle": 9}, "crop"),
                                     ("auto_gamma", {}, "region")):
        asked = {**photo, **arguments}
        expected = Vips.call("roxe_" + name, asked, Vips.pixels)
        drawn = Vips.call("roxe_" + name, {**asked, nothing: null}, Vips.pixels)
        assert (drawn == expected).all()
    assert refusal("roxe_tint", {**photo, "tolerance": 9, "colour": null}) == "--colour is required"
    assert refusal("roxe_auto_gamma", {"in": null}) == (
        "the picture is required, and null was given")


def test_refused_on_the_command_line(tmp_path):
    """Exit code 1, the sentence of the tool, no file."""
    said = vips("shadow-highlight", PHOTOS / "coffee-cup.png", tmp_path / "out.png", "--shadow",
                "101", check=False)
    assert said.returncode == 1
    assert said.stderr.strip() == (
        "roxe_shadow_highlight: --shadow needs a whole number from 0 to 100, not '101'")
    assert not (tmp_path / "out.png").exists()


METADATA = ("icc-profile-data", "exif-data", "xmp-data")


def metadata(image):
    """The blocks of an image, and its resolution."""
    library, blocks = Vips.library, {}
    library.vips_image_get_typeof.restype = ctypes.c_size_t
    library.vips_image_get_xres.restype = library.vips_image_get_yres.restype = ctypes.c_double
    for name in METADATA:
        data, size = ctypes.c_void_p(), ctypes.c_size_t()
        if library.vips_image_get_typeof(image, name.encode()):
            assert library.vips_image_get_blob(image, name.encode(), ctypes.byref(data),
                                               ctypes.byref(size)) == 0
            blocks[name] = ctypes.string_at(data, size.value)
    return blocks, library.vips_image_get_xres(image), library.vips_image_get_yres(image)


@pytest.mark.parametrize("name, options", OPERATIONS.items())
def test_metadata_is_kept_byte_for_byte(name, options):
    photo = {"in": PHOTOS / "metadata-exif-xmp-icc.jpg"}
    before = Vips.call("copy", photo, metadata)
    assert all(len(before[0][block]) > 100 for block in METADATA)
    assert Vips.call("roxe_" + name.replace("-", "_"), {**photo, **arguments_of(options)}, metadata) == before


def test_profile_in_files(tmp_path):
    source = PHOTOS / "metadata-exif-xmp-icc.jpg"
    for name in ("out.jpg", "out.png"):
        vips("shadow-highlight", source, tmp_path / name, "--shadow", "40")
        assert Image.open(tmp_path / name).info["icc_profile"] == Image.open(
            source).info["icc_profile"]


def test_metadata_of_other_forms(tmp_path):
    """A quarter turn swaps the resolutions, and no profile describes a mask."""
    photo = {"in": tmp_path / "in.jpg"}
    with Image.open(PHOTOS / "metadata-exif-xmp-icc.jpg") as source:
        source.resize((30, 20)).save(photo["in"], dpi=(254, 508),
                                     icc_profile=source.info["icc_profile"])
    _, across, down = Vips.call("copy", photo, metadata)
    assert (across, down) == (10, 20)
    assert Vips.call("roxe_rotate", {**photo, "angle": 90}, metadata)[1:] == (20, 10)
    assert Vips.call("roxe_rotate", {**photo, "angle": 180}, metadata)[1:] == (10, 20)
    for name in ("tint", "replace_colour"):
        mask = {"colour": "red", "tolerance": 9, "mask_only": "true"}
        assert Vips.call("roxe_" + name, {**photo, **mask}, metadata) == ({}, 10, 20)


def form(image):
    return (Vips.library.vips_image_get_bands(image),
            Vips.library.vips_image_get_interpretation(image))


def test_forms_of_results(tmp_path):
    """Grey is b-w as long as it is grey, a mask is b-w, and what has colours is srgb."""
    b_w, srgb = 1, 22
    for mode in ("RGB", "RGBA", "L", "LA"):
        picture(mode).save(tmp_path / (mode + ".png"))
    turned = {"angle": 20, "background": "red"}
    for operation, arguments, mode, expected in (
            ("rotate", {"angle": 20}, "L", (1, b_w)), ("rotate", {"angle": 20}, "LA", (2, b_w)),
            ("rotate", turned, "L", (3, srgb)), ("rotate", turned, "LA", (4, srgb)),
            ("rotate", turned, "RGB", (3, srgb)), ("auto_gamma", {}, "RGBA", (4, srgb)),
            *(("tint", {"colour": "red", "tolerance": 9, "mask_only": "true"}, mode, (1, b_w))
              for mode in ("RGB", "RGBA", "L", "LA"))):
        asked = {"in": tmp_path / (mode + ".png"), **arguments}
        assert Vips.call("roxe_" + operation, asked, form) == expected


def test_a_profile_that_is_not_srgb_is_noted_once(tmp_path):
    profile = pathlib.Path(PHOTOS / "metadata-exif-xmp-icc.jpg")
    with Image.open(profile) as source:
        foreign = bytearray(source.info["icc_profile"])
    start = foreign.index(b"rXYZ")  # the tag of the red primary is called otherwise
    foreign[start:start + 4] = b"xXYZ"
    picture("RGB").resize((700, 900)).save(tmp_path / "in.png", icc_profile=bytes(foreign))
    said = vips("temperature", tmp_path / "in.png", tmp_path / "out.png", "--tint", "9").stderr
    assert said.count("is not sRGB, for which temperature takes its numbers") == 1
    said = vips("temperature", profile, tmp_path / "out.png", "--tint", "9").stderr
    assert said == ""


def test_shows_nothing_of_its_inside():
    module, = pathlib.Path(HOME).glob("*/vips-modules-*/vips-roxe.*")
    assert exported(module) == ["g_module_check_init"]
