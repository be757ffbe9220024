"""Names of colours, selections, regions and units of the operations that keep the size."""

import numpy as np
import pytest

import roxe
from roxe._arguments import colour
from roxe._colours import COLOURS
from pictures import noise


def test_colours():
    assert colour("#E07A2C", "c") == (0xE0, 0x7A, 0x2C)
    assert colour("#f80", "c") == (0xFF, 0x88, 0x00)
    assert colour("Orange", "c") == (255, 165, 0)
    assert colour("rebeccapurple", "c") == (0x66, 0x33, 0x99)
    assert len(COLOURS) == 148
    assert all(COLOURS[name.replace("grey", "gray")] == COLOURS[name] for name in COLOURS)


@pytest.mark.parametrize("order", ["bgr", "rgb"])
def test_colours_mean_the_same_in_any_order(order):
    picture = np.zeros((1, 2, 3), np.uint8)
    picture[0, 0, 2 if order == "bgr" else 0] = 255  # red
    picture[0, 1, 0 if order == "bgr" else 2] = 255  # blue
    assert roxe.colour_mask(picture, colour="red", tolerance=60, order=order).tolist() == [[255, 0]]
    assert roxe.tint(picture, colour="blue", tolerance=60, order=order)[0, 1].tolist() == (
        picture[0, 1].tolist())
    grey = roxe.tint(picture, colour="blue", tolerance=60, order=order)[0, 0]
    assert grey.min() == grey.max()


def test_hue_turns_in_degrees():
    red = np.array([[(0, 0, 255)]], np.uint8)
    assert roxe.replace_colour(red, colour="red", tolerance=9, hue=120)[0, 0].tolist() == [0, 255, 0]
    assert roxe.replace_colour(red, colour="red", tolerance=9, hue=-120)[0, 0].tolist() == [255, 0, 0]


def test_a_region_judges_and_the_whole_picture_changes():
    picture = np.full((20, 40, 3), 230, np.uint8)
    picture[:, :10] = 25
    dark = roxe.auto_gamma(picture, region=(0, 0, 10, 20))
    light = roxe.auto_gamma(picture, region=(10, 0, 30, 20))
    assert dark[0, 0, 0] > 25 and dark[0, 20, 0] > 230
    assert light[0, 0, 0] < dark[0, 0, 0]
    assert np.array_equal(roxe.auto_gamma(picture, region=(0, 0, 40, 20)), roxe.auto_gamma(picture))


def test_a_white_mask_keeps_the_picture_sharp():
    picture = noise(30, 40)
    sharp = roxe.soft_focus(picture, radius=9, mask=np.full((30, 40), 255, np.uint8))
    assert np.abs(sharp.astype(int) - picture).max() <= 1  # up to one level below it
    blurred = roxe.soft_focus(picture, radius=9, mask=np.zeros((30, 40), np.uint8))
    assert np.array_equal(blurred, roxe.soft_focus(picture, radius=9))


def test_defaults_of_the_steps():
    picture = noise(9, 9)
    assert np.array_equal(roxe.variations(picture, red=2),
                          roxe.variations(picture, red=np.int64(2), level=2))
    assert not np.array_equal(roxe.variations(picture, red=2), roxe.variations(picture, red=2, level=3))


def test_a_pixel_that_should_be_grey():
    picture = noise(8, 9)
    picture[2, 3] = 180, 150, 140
    results = {}
    for temperature in range(-100, 101):
        for tint in range(-100, 101, 4):
            pixel = roxe.temperature(picture[2:3, 3:4], temperature=temperature, tint=tint)[0, 0]
            results[temperature, tint] = int(pixel.max()) - int(pixel.min())
    balanced = roxe.temperature(picture, grey=(3, 2))
    spread = int(balanced[2, 3].max()) - int(balanced[2, 3].min())
    assert spread <= min(results.values()) < 40
    swapped = np.ascontiguousarray(picture[..., ::-1])
    assert np.array_equal(roxe.temperature(swapped, grey=(3, 2), order="rgb"), balanced[..., ::-1])
    picture[2, 3] = 90
    assert np.array_equal(roxe.temperature(picture, grey=(3, 2)), picture)
    assert roxe.temperature(picture, grey=(3, 2)) is not picture
    assert roxe.temperature(picture, grey=(3, 2), out=picture) is picture
