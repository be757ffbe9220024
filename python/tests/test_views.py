"""Views go in without a copy and come out right; nothing beyond their pixels is touched."""

import numpy as np
import pytest
from hypothesis import given, settings, strategies as st

import roxe
from pictures import OPERATIONS, guarded, guards_of, noise

names = st.sampled_from(sorted(OPERATIONS))
sides = st.integers(2, 40)
gaps = st.integers(0, 20)
seeds = st.integers(0, 2**32 - 1)


@settings(max_examples=300, deadline=None)
@given(names, sides, sides, seeds, gaps, gaps, gaps, gaps)
def test_padded_views_give_the_bytes_of_packed_arrays(
        name, height, width, seed, offset, padding, out_offset, out_padding):
    picture = noise(height, width, seed)
    held = noise(height, width, seed + 1)
    expected = OPERATIONS[name](picture.copy(), out=held.copy())

    image, source = guarded(picture, offset, padding)
    out, target = guarded(held, out_offset, out_padding)
    before = source.copy()
    assert OPERATIONS[name](image, out=out) is out
    assert np.array_equal(out, expected)
    assert np.array_equal(source, before)
    assert (guards_of(out, target) == 0xA5).all()


@settings(max_examples=150, deadline=None)
@given(names, sides, sides, seeds, gaps, gaps)
def test_in_place_gives_the_bytes_of_two_arrays(name, height, width, seed, offset, padding):
    picture = noise(height, width, seed)
    expected = OPERATIONS[name](picture, out=picture.copy())
    image, buffer = guarded(picture, offset, padding)
    assert OPERATIONS[name](image, out=image) is image
    assert np.array_equal(image, expected)
    assert (guards_of(image, buffer) == 0xA5).all()


steps = st.sampled_from([1, 1, 2, -1, -3])
cuts = st.integers(0, 4)


@settings(max_examples=300, deadline=None)
@given(names, seeds, steps, steps, st.sampled_from([1, -1]), cuts, cuts, cuts, cuts, st.booleans())
def test_any_view_is_right_or_refused(
        name, seed, down, across, channels, top, bottom, left, right, transposed):
    whole = noise(30, 24, seed)
    view = whole[top:30 - bottom, left:24 - right][::down, ::across, ::channels]
    if transposed:
        view = view.transpose(1, 0, 2)
    describable = down > 0 and across == 1 and channels == 1 and not transposed
    before = whole.copy()
    if describable:
        assert np.array_equal(OPERATIONS[name](view), OPERATIONS[name](view.copy()))
    else:
        with pytest.raises(ValueError, match="image"):
            OPERATIONS[name](view)
        advised = np.ascontiguousarray(view)
        assert OPERATIONS[name](advised).dtype == np.uint8
    assert np.array_equal(whole, before)


@settings(max_examples=60, deadline=None)
@given(sides, sides, seeds, gaps, gaps)
def test_masks_are_views_too(height, width, seed, offset, padding):
    picture = noise(height, width, seed)
    mask = noise(height, width, seed + 1)[..., 0].copy()
    expected = roxe.soft_focus(picture, radius=5, mask=mask, mask_radius=3)
    view, buffer = guarded(mask, offset, padding)
    before = buffer.copy()
    assert np.array_equal(roxe.soft_focus(picture, radius=5, mask=view, mask_radius=3), expected)
    assert np.array_equal(buffer, before)
    in_place = picture.copy()
    roxe.soft_focus(in_place, radius=5, mask=view, mask_radius=3, out=in_place)
    assert np.array_equal(in_place, expected)


def test_a_mask_of_colour_goes_into_a_view():
    picture = noise(20, 30)
    out, buffer = guarded(np.zeros((20, 30), np.uint8))
    expected = roxe.colour_mask(picture, colour="teal", tolerance=150)
    assert roxe.colour_mask(picture, colour="teal", tolerance=150, out=out) is out
    assert np.array_equal(out, expected) and 0 < expected.mean() < 255
    assert (guards_of(out, buffer) == 0xA5).all()


@pytest.mark.parametrize("name", sorted(OPERATIONS))
def test_one_pixel_one_row_and_one_column(name):
    # Two corners of a picture of one pixel, and the ends of a line in it, would coincide.
    if name == "straighten":
        return
    for shape in ((1, 1), (1, 9), (9, 1)):
        picture = noise(*shape)
        whole = noise(shape[0] + 3, shape[1] + 4)
        whole[1:1 + shape[0], 2:2 + shape[1]] = picture
        view = whole[1:1 + shape[0], 2:2 + shape[1]]
        assert np.array_equal(OPERATIONS[name](view), OPERATIONS[name](picture))


@pytest.mark.parametrize("name", sorted(OPERATIONS))
def test_rgb_is_bgr_with_the_channels_exchanged(name):
    picture = noise(23, 31)
    expected = OPERATIONS[name](picture)[..., ::-1]
    swapped = picture[..., ::-1].copy()
    assert np.array_equal(OPERATIONS[name](swapped, order="rgb"), expected)
    out = np.ascontiguousarray(OPERATIONS[name](picture, out=np.full_like(picture, 7))[..., ::-1])
    assert np.array_equal(OPERATIONS[name](swapped, order="rgb", out=np.full_like(picture, 7)), out)


def test_the_halves_of_one_picture_are_two_pictures():
    whole = noise(20, 40)
    left, right = whole[:, :20], whole[:, 20:]
    expected = roxe.tint(left.copy(), colour="red", tolerance=60)
    roxe.tint(left, colour="red", tolerance=60, out=right)
    assert np.array_equal(right, expected)


def test_memory_maps_are_pictures(tmp_path):
    picture = noise(12, 9)
    picture.tofile(tmp_path / "raw")
    mapped = np.memmap(tmp_path / "raw", np.uint8, "r", shape=(12, 9, 3))
    assert np.array_equal(roxe.variations(mapped, red=4), roxe.variations(picture, red=4))
