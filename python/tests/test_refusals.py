"""What cannot be right is refused in a sentence that names the argument and says what to write."""

import re
import subprocess
import sys

import numpy as np
import pytest

import roxe
from pictures import noise

PHOTO = noise(30, 40)
READ_ONLY = noise(30, 40)
READ_ONLY.setflags(write=False)
CORNERS = [(3, 4), (30, 2), (31, 20), (5, 23)]
CROSSING = [(3, 4), (31, 20), (30, 2), (5, 23)]


def far_rows():
    """Two rows that lie 2^31 bytes apart; never touched."""
    return np.lib.stride_tricks.as_strided(PHOTO, (2, 4, 3), (2**31, 3, 1), writeable=False)


def long_row():
    return np.lib.stride_tricks.as_strided(PHOTO, (1, 2**30, 3), (3 * 2**30, 3, 1), writeable=False)


IMAGES = [
    ([[1, 2]], TypeError, "needs a numpy array, not list: np.asarray(image, dtype=np.uint8)"),
    (PHOTO.astype(float), TypeError, "dtype float64, not uint8: np.rint(image * 255)"),
    (PHOTO.astype(np.uint16), TypeError, "(image >> 8).astype(np.uint8)"),
    (PHOTO.astype(">u2"), TypeError, "(image >> 8).astype(np.uint8)"),
    (PHOTO.astype(np.int64), TypeError, "image.clip(0, 255).astype(np.uint8)"),
    (PHOTO > 9, TypeError, "image.astype(np.uint8) * 255"),
    (np.ma.array(PHOTO), TypeError, "image.filled(0)"),
    (PHOTO[..., 0], ValueError, "(30, 40), not (height, width, 3): np.stack([image] * 3, axis=-1)"),
    (noise(4, 4).reshape(4, 3, 4), ValueError, "np.ascontiguousarray(image[..., :3])"),
    (noise(4, 4).reshape(3, 4, 4)[:, :, :4].reshape(3, 8, 2), ValueError,
     "np.ascontiguousarray(image.transpose(1, 2, 0))"),
    (PHOTO[None], ValueError, "give one picture at a time"),
    (PHOTO[..., :1], ValueError, "np.repeat(image, 3, axis=2)"),
    (PHOTO[:0], ValueError, "(0, 40, 3) and holds no pixel"),
    (PHOTO[:, :0], ValueError, "(30, 0, 3) and holds no pixel"),
    (PHOTO[:, ::-1], ValueError, "np.ascontiguousarray(image)"),
    (PHOTO[::-1], ValueError, "np.ascontiguousarray(image)"),
    (PHOTO[:, ::2], ValueError, "np.ascontiguousarray(image)"),
    (PHOTO.transpose(1, 0, 2), ValueError, "np.ascontiguousarray(image)"),
    (np.asfortranarray(PHOTO), ValueError, "np.ascontiguousarray(image)"),
    (np.broadcast_to(PHOTO[:1], (9, 40, 3)), ValueError, "np.ascontiguousarray(image)"),
    (np.broadcast_to(PHOTO[0, 0], (9, 9, 3)), ValueError, "np.ascontiguousarray(image)"),
    (PHOTO[..., ::-1], ValueError, 'order="rgb"'),
    (far_rows(), ValueError, "beyond 2147483647 bytes"),
    (long_row(), ValueError, "beyond 2147483647 bytes"),
]


@pytest.mark.parametrize("image, exception, sentence", IMAGES)
def test_arrays_that_no_record_describes(image, exception, sentence):
    for operation in (lambda: roxe.variations(image), lambda: roxe.rotate(image, angle=3),
                      lambda: roxe.straighten(image, line=(0, 0, 1, 1)),
                      lambda: roxe.soft_focus(image, radius=3), lambda: roxe.auto_gamma(image),
                      lambda: roxe.perspective(image, corners=CORNERS),
                      lambda: roxe.warp(image, from_=CORNERS, to=CORNERS),
                      lambda: roxe.colour_mask(image, colour="red", tolerance=3)):
        with pytest.raises(exception, match="^image.*" + re.escape(sentence)):
            operation()


OUTS = [
    ([1], TypeError, "out needs a numpy array"),
    (PHOTO.astype(float), TypeError, "out has dtype float64, not uint8"),
    (READ_ONLY, ValueError, "out is read-only: give an array that can be written, or leave out away"),
    (noise(30, 39), ValueError, "out has shape (30, 39, 3), but the result has (30, 40, 3)"),
    (PHOTO[..., 0], ValueError, "out has shape (30, 40), not (height, width, 3)"),
    (noise(30, 40)[::-1], ValueError, "assign the result: target[...] = result"),
]


@pytest.mark.parametrize("out, exception, sentence", OUTS)
def test_outs(out, exception, sentence):
    for operation in (lambda: roxe.variations(PHOTO, out=out),
                      lambda: roxe.rotate(PHOTO, angle=3, out=out),
                      lambda: roxe.rotate(PHOTO, angle=180, out=out),
                      lambda: roxe.soft_focus(PHOTO, radius=3, out=out)):
        with pytest.raises(exception, match=re.escape(sentence)):
            operation()


def test_an_out_of_a_mask_of_the_wrong_shape():
    with pytest.raises(ValueError, match=re.escape("out = np.empty((height, width), np.uint8)")):
        roxe.colour_mask(PHOTO, colour="red", tolerance=9, out=noise(30, 40))


def test_overlaps_other_than_in_place():
    whole = noise(31, 41)
    before = whole.copy()
    image = whole[:30, :40]
    for out in (whole[1:, :40], whole[:30, 1:]):
        for operation in (lambda: roxe.variations(image, out=out),
                          lambda: roxe.tint(image, colour="red", tolerance=9, out=out, order="rgb"),
                          lambda: roxe.rotate(image, angle=3, out=out),
                          lambda: roxe.soft_focus(image, radius=3, out=out)):
            with pytest.raises(ValueError, match="out overlaps image"):
                operation()
    mask = whole.reshape(31, -1)[:30, :40]
    with pytest.raises(ValueError, match="out overlaps mask: give mask.copy()"):
        roxe.soft_focus(PHOTO, radius=3, mask=mask, out=image)
    with pytest.raises(ValueError, match="out overlaps image: give image.copy()"):
        roxe.colour_mask(image, colour="red", tolerance=9, out=mask)
    assert np.array_equal(whole, before)


BIG = 2**32 + 5  # 5 in 32 bits
REFUSALS = [
    (lambda: roxe.variations(PHOTO, red=BIG),
     "red needs a whole number from -1000 to 1000, not 4294967301"),
    (lambda: roxe.variations(PHOTO, green=-1001), "green needs a whole number from -1000 to 1000"),
    (lambda: roxe.variations(PHOTO, blue=1.5), "blue needs a whole number from -1000 to 1000, not 1.5"),
    (lambda: roxe.variations(PHOTO, dark="1"), "dark needs a whole number from -1000 to 1000"),
    (lambda: roxe.variations(PHOTO, level=7), "level needs a whole number from 0 to 6, not 7"),
    (lambda: roxe.shadow_highlight(PHOTO, shadow=-1), "shadow needs a whole number from 0 to 100"),
    (lambda: roxe.shadow_highlight(PHOTO, highlight=101), "highlight needs a whole number from 0"),
    (lambda: roxe.shadow_highlight(PHOTO, midtone=BIG), "midtone needs a whole number from -100"),
    (lambda: roxe.temperature(PHOTO, temperature=101), "temperature needs a whole number from -100"),
    (lambda: roxe.temperature(PHOTO, tint=-101), "tint needs a whole number from -100"),
    (lambda: roxe.temperature(PHOTO, tint=3, grey=(1, 1)), "grey cannot go with temperature or tint"),
    (lambda: roxe.temperature(PHOTO, grey=(40, 1)),
     "grey (40, 1) lies outside the picture of 40 × 30 pixels"),
    (lambda: roxe.tint(PHOTO, colour="red", tolerance=201), "tolerance needs a whole number from 0"),
    (lambda: roxe.tint(PHOTO, colour="redd", tolerance=1),
     "colour needs a colour such as '#E07A2C' or orange, not 'redd'"),
    (lambda: roxe.tint(PHOTO, colour="abcd", tolerance=1), "colour needs a colour"),
    (lambda: roxe.tint(PHOTO, colour="#12345g", tolerance=1), "colour needs a colour"),
    (lambda: roxe.tint(PHOTO, colour=(1, 2, 3), tolerance=1), "colour needs a colour"),
    (lambda: roxe.replace_colour(PHOTO, colour="red", tolerance=1, hue=361), "hue needs"),
    (lambda: roxe.replace_colour(PHOTO, colour="red", tolerance=1, saturation=-101),
     "saturation needs"),
    (lambda: roxe.replace_colour(PHOTO, colour="red", tolerance=1, value=101), "value needs"),
    (lambda: roxe.soft_focus(PHOTO, radius=0), "radius needs a whole number from 1 to 100000"),
    (lambda: roxe.soft_focus(PHOTO, radius=3, mask_radius=3), "mask_radius needs a mask"),
    (lambda: roxe.soft_focus(PHOTO, radius=3, mask=PHOTO[..., 0].copy(), mask_radius=0),
     "mask_radius needs a whole number"),
    (lambda: roxe.soft_focus(PHOTO, radius=3, mask=PHOTO[..., 0]),
     "mask has strides (120, 3): its pixels must be packed and its rows a positive step apart: "
     "np.ascontiguousarray(mask)"),
    (lambda: roxe.soft_focus(PHOTO, radius=3, mask=PHOTO),
     "mask has shape (30, 40, 3), not (height, width): np.ascontiguousarray(mask[..., 0])"),
    (lambda: roxe.soft_focus(PHOTO, radius=3, mask=np.zeros((30, 41), np.uint8)),
     "mask has shape (30, 41), but the picture has (30, 40)"),
    (lambda: roxe.auto_gamma(PHOTO, region=(0, 0, 41, 3)),
     "region (0, 0, 41, 3) reaches outside the picture of 40 × 30 pixels"),
    (lambda: roxe.auto_gamma(PHOTO, region=(-1, 0, 4, 3)), "region needs a place inside"),
    (lambda: roxe.auto_gamma(PHOTO, region=(0, 0, 0, 3)), "region needs a place inside"),
    (lambda: roxe.auto_gamma(PHOTO, region=(0, 0, 3)), "region needs 4 whole numbers"),
    (lambda: roxe.auto_gamma(PHOTO, order="RGB"), "order needs 'bgr' or 'rgb', not 'RGB'"),
    (lambda: roxe.soft_focus(PHOTO, radius=1, order="x"), "order needs 'bgr' or 'rgb'"),
    (lambda: roxe.rotate(PHOTO, angle=3601), "angle needs a number from -3600 to 3600, not 3601"),
    (lambda: roxe.rotate(PHOTO, angle=float("nan")), "angle needs a number"),
    (lambda: roxe.rotate(PHOTO, angle="3"), "angle needs a number"),
    (lambda: roxe.rotate(PHOTO, angle=None), "angle needs a number"),
    (lambda: roxe.rotate(PHOTO, angle=3, about=(40, 0)),
     "about (40, 0) lies outside the picture of 40 × 30 pixels"),
    (lambda: roxe.rotate(PHOTO, angle=3, about=(1, 2, 3)), "about needs 2 whole numbers"),
    (lambda: roxe.rotate(PHOTO, angle=3, about=(BIG, 2)), "about: 4294967301 lies far outside"),
    (lambda: roxe.rotate(PHOTO, angle=3, edges="wrap"), "edges needs 'repeat' or 'keep', not 'wrap'"),
    (lambda: roxe.rotate(PHOTO, angle=3, crop="max"), "crop needs True, False, 'fit' or 'free'"),
    (lambda: roxe.rotate(PHOTO, angle=3, crop=True, expand=True), "crop cannot go with expand"),
    (lambda: roxe.rotate(PHOTO, angle=3, crop="free", about=(1, 1)), "crop cannot go with about"),
    (lambda: roxe.rotate(PHOTO[:2, :2], angle=45, crop=True, edges="keep"),
     "crop: the picture is too small to crop at this angle"),
    (lambda: roxe.rotate(PHOTO, angle=3, background="reddish"), "background needs a colour"),
    (lambda: roxe.rotate(PHOTO, angle=3, background="red", out=noise(30, 40)),
     "background fills a new array only"),
    (lambda: roxe.straighten(PHOTO, line=(3, 3, 3, 3)),
     "line needs two different points, and both are (3, 3)"),
    (lambda: roxe.straighten(PHOTO, line=(0, 0, 40, 3)), "line: the point (40, 3) lies outside"),
    (lambda: roxe.straighten(PHOTO, line=(0, 0, 1)), "line needs 4 whole numbers"),
    (lambda: roxe.straightening_angle("1234"), "line needs 4 whole numbers, not '1234'"),
    (lambda: roxe.straighten(PHOTO, line=(0, 0, 9.5, 3)), "line needs 4 whole numbers"),
    (lambda: roxe.natural_size(CORNERS[:3]), "corners needs 8 whole numbers"),
    (lambda: roxe.natural_size([(0, 0), (0, 0), (3, 3), (0, 4)]),
     "corners: corners 1 and 2 are the same point (0, 0)"),
    (lambda: roxe.natural_size([(0, 0), (1, 1), (3, 3), (0, 4)]),
     "corners: corners 1 (0, 0), 2 (1, 1) and 3 (3, 3) lie on one line"),
    (lambda: roxe.natural_size([(0, 0), (9, 0), (0, 9), (2, 2)]),
     "corners: corner 4 (2, 2) lies inside the triangle of the other three"),
    (lambda: roxe.natural_size([(0, 0), (9, 0), (2 * 10**9, 9), (2, 2)]),
     "corners: corner 3 (2000000000, 9) lies far outside any picture"),
    (lambda: roxe.perspective(PHOTO, corners=[(3, 4), (90, 2), (31, 20), (5, 23)]),
     "corners: corner 2 (90, 2) lies far outside the picture of 40 × 30 pixels"),
    (lambda: roxe.perspective(PHOTO, corners=CORNERS, size=(4, 4), fit=(4, 4)),
     "size cannot go with fit"),
    (lambda: roxe.perspective(PHOTO, corners=CORNERS, size=(0, 4)),
     "size needs a width and a height from 1 on"),
    (lambda: roxe.perspective(PHOTO, corners=[(0, 0), (40, 0), (40, 1), (0, 1)], fit=(1, 100)),
     "fit is too narrow for the natural size of these corners, 40 × 1 pixels"),
    (lambda: roxe.warp(PHOTO, from_=CROSSING, to=CORNERS), "from_: the outline from corner 1"),
    (lambda: roxe.warp(PHOTO, from_=CORNERS, to=CROSSING), "to: the outline from corner 1"),
    (lambda: roxe.warp(PHOTO, from_=CORNERS, to=CORNERS, size=(9, 9)),
     "to: corner 2 (30, 2) lies far outside the picture of 9 × 9 pixels"),
]


@pytest.mark.parametrize("call, sentence", REFUSALS)
def test_arguments(call, sentence):
    before = PHOTO.copy()
    with pytest.raises((TypeError, ValueError), match="^.{0,8}" + re.escape(sentence)):
        call()
    assert np.array_equal(PHOTO, before)


WRONG_TYPES = [
    (lambda: roxe.rotate(PHOTO, angle="3"), "angle needs a number from -3600 to 3600, not '3'"),
    (lambda: roxe.rotate(PHOTO, angle=b"3"), "angle needs a number from -3600 to 3600, not b'3'"),
    (lambda: roxe.rotate(PHOTO, angle=3, expand="no"), "expand needs True or False, not 'no'"),
    (lambda: roxe.rotate(PHOTO, angle=3, crop=1), "crop needs True, False, 'fit' or 'free', not 1"),
    (lambda: roxe.rotate(PHOTO, angle=3, edges=None), "edges needs 'repeat' or 'keep', not None"),
    (lambda: roxe.tint(PHOTO, colour=(1, 2, 3), tolerance=1), "colour needs a colour such as"),
    (lambda: roxe.tint(PHOTO, colour="red", tolerance=1, order=np.array(["rgb", "bgr"])),
     "order needs 'bgr' or 'rgb', not array"),
    (lambda: roxe.straighten(PHOTO, line=((1, 2, 30), (9,))), "line needs 4 whole numbers"),
    (lambda: roxe.straighten(PHOTO, line=(1, (2, 30), 9)), "line needs 4 whole numbers"),
    (lambda: roxe.straighten(PHOTO, line={1, 2, 30, 9}), "line needs 4 whole numbers"),
    (lambda: roxe.straighten(PHOTO, line={1: 0, 2: 0, 30: 0, 9: 0}), "line needs 4 whole numbers"),
]


@pytest.mark.parametrize("call, sentence", WRONG_TYPES)
def test_wrong_types(call, sentence):
    with pytest.raises(TypeError, match="^" + re.escape(sentence)):
        call()


def test_numbers_that_no_float_holds():
    with pytest.raises(ValueError, match="^angle needs a number from -3600 to 3600, not inf$"):
        roxe.rotate(PHOTO, angle=10**400)


def test_the_order_counts_where_nothing_is_to_be_done():
    with pytest.raises(ValueError, match="^order needs 'bgr' or 'rgb', not 'xyz'$"):
        roxe.temperature(np.full((3, 3, 3), 7, np.uint8), grey=(1, 1), order="xyz")


def test_what_is_as_good_as_the_usual_type():
    cropped = roxe.rotate(PHOTO, angle=3, crop=True)
    assert np.array_equal(roxe.rotate(PHOTO, angle=3, crop=np.True_), cropped)
    assert roxe.rotate(PHOTO, angle=3, crop=np.False_, expand=np.False_).shape == PHOTO.shape
    level = roxe.straighten(PHOTO, line=(1, 2, 30, 9))
    for line in (iter([1, 2, 30, 9]), [(1, 2), (30, 9)], np.array([[1, 2], [30, 9]])):
        assert np.array_equal(roxe.straighten(PHOTO, line=line), level)


def test_pictures_beyond_the_memory_of_shadow_highlight():
    # 8 bytes a pixel no longer fit 32 bits; the pixels are never touched.
    side = np.lib.stride_tricks.as_strided(PHOTO, (2**16, 2**13, 3), (3 * 2**13, 3, 1),
                                           writeable=False)
    with pytest.raises(ValueError, match="image has more than 536870911 pixels"):
        roxe.shadow_highlight(side, shadow=9)


def test_everything_but_the_image_goes_by_keyword():
    with pytest.raises(TypeError):
        roxe.rotate(PHOTO, 3)


def test_without_memory_a_blur_is_right_or_refused():
    """The library itself keeps silent where it cannot have what a blur takes."""
    script = """
import resource
import numpy as np
import roxe
image = np.arange(3000000, dtype=np.uint32).astype(np.uint8).reshape(1000, 1000, 3)
mask = np.ascontiguousarray(image[..., 0])
options = {"radius": 900, "mask": mask, "mask_radius": 900}
wanted = roxe.soft_focus(image, **options)
said = set()
for kilobytes in range(0, 60000, 1500):
    with open("/proc/self/status") as status:
        used = next(int(line.split()[1]) for line in status if line.startswith("VmSize"))
    resource.setrlimit(resource.RLIMIT_AS, ((used + kilobytes) << 10, resource.RLIM_INFINITY))
    try:
        said.add("right" if np.array_equal(roxe.soft_focus(image, **options), wanted) else "wrong")
    except MemoryError:
        said.add("refused")
    finally:
        resource.setrlimit(resource.RLIMIT_AS, (resource.RLIM_INFINITY, resource.RLIM_INFINITY))
print(sorted(said))
"""
    ran = subprocess.run([sys.executable, "-c", script], capture_output=True, text=True, check=True)
    assert ran.stdout == "['refused', 'right']\n"
