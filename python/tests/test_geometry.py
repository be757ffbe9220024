"""Edges, quarter turns, crops and canvases, against literals and a slow independent computation."""

import math

import numpy as np
import pytest

import roxe
from roxe._images import record
from roxe._native import library
from pictures import noise

RAMP = np.repeat(np.arange(1, 13, dtype=np.uint8).reshape(3, 4)[..., None], 3, axis=2)


def test_quarter_turns_move_every_pixel():
    assert roxe.rotate(RAMP, angle=90)[..., 0].tolist() == [
        [9, 5, 1], [10, 6, 2], [11, 7, 3], [12, 8, 4]]
    assert roxe.rotate(RAMP, angle=-90)[..., 0].tolist() == [
        [4, 8, 12], [3, 7, 11], [2, 6, 10], [1, 5, 9]]
    assert roxe.rotate(RAMP, angle=180)[..., 0].tolist() == [
        [12, 11, 10, 9], [8, 7, 6, 5], [4, 3, 2, 1]]
    for angle, same in ((0, 360), (90, -270), (90, 450), (180, -180), (0, -3600), (270, -90)):
        assert np.array_equal(roxe.rotate(RAMP, angle=angle), roxe.rotate(RAMP, angle=same))
    for options in ({"expand": True}, {"crop": True}, {"crop": "free"}):
        assert np.array_equal(roxe.rotate(RAMP, angle=90, **options), roxe.rotate(RAMP, angle=90))
    turned = roxe.rotate(RAMP, angle=360)
    assert np.array_equal(turned, RAMP) and not np.shares_memory(turned, RAMP)
    square = RAMP[:, :3].copy()
    assert roxe.rotate(square, angle=90, out=square)[..., 0].tolist() == [
        [9, 5, 1], [10, 6, 2], [11, 7, 3]]


def test_angle_zero_about_a_point_keeps_the_canvas_and_the_pixels():
    assert np.array_equal(roxe.rotate(RAMP, angle=0, about=(0, 0)), RAMP)
    quarter = roxe.rotate(RAMP, angle=90, about=(0, 0))  # only the left column stays in sight
    assert quarter.shape == RAMP.shape
    assert quarter[0, 0, 0] == 1 and quarter[1:, 0, 0].tolist() == [2, 3]


def test_keep_leaves_the_seam_of_the_library():
    kept = roxe.rotate(RAMP, angle=0, edges="keep", background="#0A1422")
    assert kept[1, 1:3, 0].tolist() == [6, 7]
    assert kept[0].tolist() == [[0x22, 0x14, 0x0A]] * 4  # blue, green, red
    assert roxe.rotate(RAMP, angle=0, edges="keep", background="#0A1422", order="rgb")[0].tolist() == (
        [[0x0A, 0x14, 0x22]] * 4)
    held = np.full_like(RAMP, 99)
    roxe.rotate(RAMP, angle=0, edges="keep", out=held)
    assert held[..., 0].tolist() == [[99] * 4, [99, 6, 7, 99], [99] * 4]


def test_repeat_is_the_library_on_a_picture_with_its_edges_repeated():
    picture = noise(31, 44)
    padded = np.pad(picture, ((1, 1), (1, 1), (0, 0)), mode="edge")
    for angle in (3, -41.5, 130):
        expected = np.zeros_like(picture)
        library().roxeRotateImage(record(padded, "image"), 23, 16, math.radians(angle),
                                  record(expected, "out"), 22, 15)
        assert np.array_equal(roxe.rotate(picture, angle=angle), expected)
    expected = np.zeros_like(picture)
    library().roxeuAutoStraightenImage(record(padded, "image"), 4, 6, 31, 9,
                                       record(expected, "out"))
    assert np.array_equal(roxe.straighten(picture, line=(3, 5, 30, 8)), expected)


def test_expand_holds_every_corner():
    white = np.full((20, 30, 3), 255, np.uint8)
    turned = roxe.rotate(white, angle=45, expand=True)
    # Corners lie at (-15, -10) ... (14, 9) from the centre; turned by 45 degrees x runs from
    # (-15 - 9) / sqrt 2 = -16.97 to (14 + 10) / sqrt 2 = 16.97, y from -17.68 to 16.26.
    assert turned.shape == (36, 35, 3)
    assert abs(int((turned[..., 0] > 127).sum()) - 600) < 40


def fits(width, height, angle, edges, w, h):
    """The corners of a w x h result one by one."""
    low, high = (0.5, 1) if edges == "repeat" else (1.5, 2)
    for x in (-(w // 2), w - 1 - w // 2):
        for y in (-(h // 2), h - 1 - h // 2):
            sx = width // 2 + math.cos(angle) * x + math.sin(angle) * y
            sy = height // 2 + math.cos(angle) * y - math.sin(angle) * x
            if not (low <= sx <= width - high and low <= sy <= height - high):
                return False
    return True


def slow_crop(width, height, angle, edges, crop):
    if crop == "fit":
        for w in range(width, 0, -1):
            h = max(1, math.floor(w * height / width + 0.5))
            if fits(width, height, angle, edges, w, h):
                return w, h
        return None
    sides = range(1, width + height)
    sizes = [(w * h, w, h) for w in sides for h in sides
             if fits(width, height, angle, edges, w, h)]
    return max(sizes)[1:] if sizes else None


@pytest.mark.parametrize("edges", ["repeat", "keep"])
@pytest.mark.parametrize("crop", ["fit", "free"])
def test_crops_are_the_largest_without_background(edges, crop):
    for width, height in ((23, 16), (9, 30), (12, 12), (40, 7), (3, 3)):
        white = np.full((height, width, 3), 255, np.uint8)
        for angle in (0.3, -1, 7.3, 20, 45, -60, 89.5, 110, 179.4, 271):
            radians = math.remainder(angle, 360) * math.pi / 180
            size = slow_crop(width, height, radians, edges, crop)
            if size is None:
                with pytest.raises(ValueError, match="too small to crop at this angle"):
                    roxe.rotate(white, angle=angle, crop=crop, edges=edges)
                continue
            turned = roxe.rotate(white, angle=angle, crop=crop, edges=edges, background="black")
            assert turned.shape == (size[1], size[0], 3)
            assert turned.min() == 255


def test_crops_of_large_pictures_show_no_background():
    for width, height in ((4000, 300), (1501, 1103)):
        white = np.full((height, width, 3), 255, np.uint8)
        for angle in (-0.01, 0.7, 33.3, 90.2, 200):
            for edges in ("repeat", "keep"):
                for crop in (True, "free"):
                    assert roxe.rotate(white, angle=angle, crop=crop, edges=edges).min() == 255


@pytest.mark.parametrize("line, degrees", [
    ((0, 0, 10, 1), -math.degrees(math.atan(0.1))), ((10, 1, 0, 0), -math.degrees(math.atan(0.1))),
    ((0, 9, 3, 0), -math.degrees(math.atan(1 / 3))), ((0, 0, 3, 9), math.degrees(math.atan(1 / 3))),
    ((0, 9, 9, 0), 45.0), ((5, 0, 5, 9), 0.0), ((0, 4, 9, 4), 0.0)])
def test_straightening_angles(line, degrees):
    assert roxe.straightening_angle(line) == pytest.approx(degrees, abs=1e-12)


def test_straightening_turns_by_its_angle():
    picture = noise(50, 60)
    for line in ((2, 3, 57, 8), (5, 45, 9, 2), (2, 3, 42, 43), (2, 43, 42, 3)):
        for edges in ("repeat", "keep"):
            levelled = roxe.straighten(picture, line=line, edges=edges)
            rotated = roxe.rotate(picture, angle=roxe.straightening_angle(line), edges=edges)
            # The library's own angle is rounded to single precision on another way.
            assert np.abs(levelled.astype(int) - rotated).max() <= 2
            white = np.full_like(picture, 255)
            for crop in ("fit", "free"):
                cut = roxe.straighten(white, line=line, crop=crop, edges=edges)
                assert cut.min() == 255
                assert cut.shape == roxe.rotate(
                    white, angle=roxe.straightening_angle(line), crop=crop, edges=edges).shape


@pytest.mark.parametrize("edges", ["repeat", "keep"])
def test_a_straightening_with_nothing_to_do_copies(edges):
    picture = noise(9, 12)
    for line in ((3, 0, 3, 8), (0, 4, 11, 4)):
        assert roxe.straightening_angle(line) == 0
        levelled = roxe.straighten(picture, line=line, edges=edges)
        assert np.array_equal(levelled, picture) and not np.shares_memory(levelled, picture)
        out = np.full_like(picture, 9)
        assert np.array_equal(roxe.straighten(picture, line=line, edges=edges, out=out), picture)
        assert np.array_equal(roxe.straighten(picture, line=line, crop=True), picture)


def test_perspective_draws_what_is_upright_already():
    picture = noise(40, 50)
    corners = [(30, 25), (10, 5), (10, 25), (30, 5)]  # in no order
    assert roxe.natural_size(corners) == (20, 20)
    for edges in ("repeat", "keep"):
        assert np.array_equal(roxe.perspective(picture, corners=corners, edges=edges),
                              picture[5:25, 10:30])
    flat = (30, 25, 10, 5, 10, 25, 30, 5)
    assert np.array_equal(roxe.perspective(picture, corners=flat, size=(20, 20)),
                          picture[5:25, 10:30])
    assert roxe.perspective(picture, corners=np.array(corners), fit=(60, 30)).shape == (30, 30, 3)
    assert roxe.perspective(picture, corners=corners, size=(7, 3)).shape == (3, 7, 3)


@pytest.mark.parametrize("shape, corners, fit", [
    ((6, 4), (3, 1, 1, 4, 0, 2, 4, 2), (75, 41)),
    ((6, 96), (29, 4, 5, 2, 74, 2, 41, 0), (29, 28)),
    ((2, 18), (7, 2, 11, 1, 18, 1, 16, 0), (71, 48)),
    ((5, 3), (1, 4, 3, 4, 0, 3, 1, 1), (79, 58)),
    ((40, 50), (10, 5, 30, 5, 30, 25, 10, 25), (10**8, 60))])
def test_fit_is_a_size_of_the_natural_proportions(shape, corners, fit):
    """However flat the corners lie; as the tool draws it."""
    picture = noise(*shape)
    fitted = roxe.perspective(picture, corners=corners, fit=fit)
    natural, drawn = roxe.natural_size(corners), fitted.shape[1::-1]
    assert all(drawn[i] <= fit[i] for i in (0, 1)) and any(drawn[i] == fit[i] for i in (0, 1))
    assert abs(drawn[0] * natural[1] - drawn[1] * natural[0]) < max(natural)
    assert np.array_equal(fitted, roxe.perspective(picture, corners=corners, size=drawn))


def test_repeat_reaches_the_last_row_and_column():
    picture = np.full((20, 30, 3), 200, np.uint8)
    corners = [(0, 0), (30, 0), (30, 20), (0, 20)]
    assert roxe.perspective(picture, corners=corners).min() == 200
    kept = roxe.perspective(picture, corners=corners, edges="keep")
    assert kept[-1].max() == 0 and kept[:, -1].max() == 0 and kept[:-1, :-1].min() == 200


def test_warp_moves_the_corners_in_their_order():
    picture = noise(40, 40)
    square = [(10, 10), (20, 10), (20, 20), (10, 20)]
    mirrored = [(10, 0), (0, 0), (0, 10), (10, 10)]
    result = roxe.warp(picture, from_=square, to=mirrored, size=(10, 10))
    # Column x of the result shows column 20 - x.
    assert np.array_equal(result, picture[10:20, 20:10:-1])
    assert roxe.warp(picture, from_=square, to=square).shape == picture.shape
