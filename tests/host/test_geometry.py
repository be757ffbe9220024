"""Rotation, straightening, perspective and warp from the command line."""

import itertools
import math
import re
import struct
import unittest

from pictures import ToolTest, chunk, photo, plain, png, png_chunks, ppm, ppm_rows, speckled

BLACK, WHITE, RED = (0, 0, 0), (255, 255, 255), (255, 0, 0)


def with_square(width, height, left, top, size):
    """A white square on black."""
    rows = plain(width, height, BLACK)
    for y in range(top, top + size):
        for x in range(left, left + size):
            rows[y][x] = WHITE
    return rows


def turned(rows, quarters):
    """Rows after so many quarter turns clockwise."""
    for _ in range(quarters):
        rows = [list(column) for column in zip(*rows[::-1])]
    return rows


def colours_of(rows):
    return {pixel for row in rows for pixel in row}


class QuarterTurns(ToolTest):
    """Nothing is lost, added or mixed."""

    def test_every_pixel_finds_its_place(self):
        for width, height in ((9, 7), (8, 8), (1, 1), (1, 5), (4, 1), (40, 33)):
            rows = speckled(width, height)
            self.write("in.ppm", ppm(rows))
            for angle, quarters in ((0, 0), (90, 1), (180, 2), (270, 3), (-90, 3), (-180, 2),
                                    (360, 0), (-3600, 0), (450, 1), ("90.0", 1)):
                for options in ((), ("--expand",), ("--background", "red")):
                    self.succeed("rotate", "in.ppm", "out.ppm", "--angle", angle, *options)
                    self.assertEqual(ppm_rows(self.read("out.ppm")), turned(rows, quarters))

    def test_pixels_per_metre_turn_too(self):
        pixels = [bytes([1, 2, 3])] * 2
        self.write("in.png", png(3, 2, 8, 0, pixels,
                                 [chunk(b"pHYs", struct.pack(">IIB", 1000, 3000, 1))]))
        for angle, density in ((90, (3000, 1000)), (180, (1000, 3000)), (-90, (3000, 1000))):
            self.succeed("rotate", "in.png", "out.png", "--angle", angle)
            chunks = dict(png_chunks(self.read("out.png")))
            self.assertEqual(struct.unpack(">IIB", chunks[b"pHYs"]), (*density, 1))

    def test_what_is_said(self):
        self.write("in.ppm", ppm(speckled(9, 7)))
        for angle, words in ((0, "not turned; copied as it is, 9 × 7"), (360, "not turned; copied as it is, 9 × 7"),
                             (90, "turned 90.00 degrees clockwise, 7 × 9"),
                             (-90, "turned 90.00 degrees anticlockwise, 7 × 9")):
            self.assertIn(words, self.succeed("rotate", "in.ppm", "out.ppm", "--angle", angle))

    def test_about_a_point_the_canvas_stays(self):
        self.write("in.ppm", ppm(speckled(9, 7)))
        text = self.succeed("rotate", "in.ppm", "out.ppm", "--angle", 90, "--about", "4,3")
        self.assertIn("9 × 7 pixels", text)
        rows, before = ppm_rows(self.read("out.ppm")), speckled(9, 7)
        # (4 - d, 3 + e) shows what was at (4 + e, 3 + d); all of it is there.
        self.assertEqual([[rows[3 + e][4 - d] for d in range(-3, 4)] for e in range(-3, 4)],
                         [[before[3 + d][4 + e] for d in range(-3, 4)] for e in range(-3, 4)])

    def test_the_smallest_other_angle_is_no_quarter_turn(self):
        self.write("in.ppm", ppm(speckled(9, 7)))
        text = self.succeed("rotate", "in.ppm", "out.ppm", "--angle", "90.001")
        self.assertIn("9 × 7 pixels", text)


class Percent(ToolTest):
    """0% is the first pixel of an axis, 100% the last."""

    def test_the_same_as_in_pixels(self):
        self.write("in.ppm", ppm(speckled(41, 31)))
        for name, percent, pixels in (
                ("rotate", ("--angle", 20, "--about", "50%,100%"),
                 ("--angle", 20, "--about", "20,30")),
                ("straighten", ("--line=0%,10%,100%,20.1%",), ("--line=0,3,40,6",)),
                ("straighten", ("--line=2,3,100%,50%",), ("--line=2,3,40,15",)),
                ("perspective", ("--corners=0%,0%,100%,10%,90%,100%,-5%,105%",),
                 ("--corners=0,0,40,3,36,30,-2,32",)),
                ("warp", ("--from=0%,0%,100%,0%,100%,100%,0%,100%",
                          "--to=0%,0%,100%,0%,100%,100%,50%,100%", "--size", "21x11"),
                 ("--from=0,0,40,0,40,30,0,30", "--to=0,0,20,0,20,10,10,10", "--size", "21x11"))):
            self.succeed(name, "in.ppm", "percent.ppm", *percent)
            self.succeed(name, "in.ppm", "pixels.ppm", *pixels)
            self.assertEqual(self.read("percent.ppm"), self.read("pixels.ppm"))

    def test_what_makes_no_sense(self):
        self.write("in.ppm", ppm(speckled(9, 7)))
        for place in ("5%%,0", "%,0", "nan%,0", "501%,0", "1e9%,0", "5 %%,1", "5.5,1"):
            self.refuse(2, "--about needs 2 whole numbers or percentages", "rotate", "in.ppm",
                        "out.ppm", "--angle", 3, "--about=" + place)
        self.refuse(2, "--about (9, 0) lies outside", "rotate", "in.ppm", "out.ppm", "--angle", 3,
                    "--about", "110%,0%")
        self.refuse(2, "two different points, and both are (4, 3)", "straighten", "in.ppm",
                    "out.ppm", "--line", "50%,50%,52%,48%")
        self.refuse(2, "corners 1 and 2 are the same point (0, 0)", "perspective", "in.ppm",
                    "out.ppm", "--corners", "0%,0%,1%,0%,100%,100%,0%,100%")
        self.refuse(2, "--to: the outline from corner 1 to 2 to 3 to 4 crosses", "warp", "in.ppm",
                    "out.ppm", "--from", "0%,0%,100%,0%,100%,100%,0%,100%",
                    "--to", "0%,0%,100%,100%,100%,0%,0%,100%")


class Edges(ToolTest):
    """A picture of one colour stays so up to its edge; of the background nothing comes in."""

    def holes(self, rows, angle, centre):
        """Background where the source lies on or between the outermost pixels of the picture."""
        width, height = len(rows[0]), len(rows)
        cosine, sine = math.cos(math.radians(angle)), math.sin(math.radians(angle))
        slack = 0.01  # positions are in steps of 1 / 65536
        count = 0
        for y, x in itertools.product(range(height), range(width)):
            dx, dy = x - centre[0], y - centre[1]
            source_x, source_y = (centre[0] + cosine * dx + sine * dy,
                                  centre[1] + cosine * dy - sine * dx)
            if (slack <= source_x <= width - 1 - slack and
                    slack <= source_y <= height - 1 - slack):
                count += rows[y][x] != WHITE
        return count

    def test_no_seam_after_a_turn(self):
        self.write("in.ppm", ppm(plain(40, 30, WHITE)))
        for angle in (-160, -91, -45, -5, -0.5, 0.5, 5, 30, 89, 130):
            for about, centre in (((), (20, 15)), (("--about", "3,27"), (3, 27))):
                command = ("rotate", "in.ppm", "out.ppm", "--angle", angle, *about, "--background",
                           "red", "--edges")
                self.succeed(*command, "repeat")
                self.assertEqual(self.holes(ppm_rows(self.read("out.ppm")), angle, centre), 0)
                self.succeed(*command, "keep")
                self.assertGreater(self.holes(ppm_rows(self.read("out.ppm")), angle, centre), 0)
        command = ("straighten", "in.ppm", "out.ppm", "--line", "0,4,39,0",
                   "--background", "red")
        self.succeed(*command)
        angle = math.degrees(math.atan2(4, 39))
        self.assertEqual(self.holes(ppm_rows(self.read("out.ppm")), angle, (20, 15)), 0)

    def test_no_seam_where_nothing_moves(self):
        self.write("in.ppm", ppm(plain(40, 30, WHITE)))
        whole = "0,0,39,0,39,29,0,29"
        for name, *options in (("rotate", "--angle", 0, "--about", "3,3"),
                               ("perspective", "--corners", whole, "--size", "39x29"),
                               ("warp", "--from", whole, "--to", whole)):
            self.succeed(name, "in.ppm", "out.ppm", *options, "--background", "red")
            self.assertEqual(colours_of(ppm_rows(self.read("out.ppm"))), {WHITE}, name)
        self.succeed("warp", "in.ppm", "out.ppm", "--from", whole, "--to", whole, "--background",
                     "red", "--edges", "keep")
        self.assertIn(RED, colours_of(ppm_rows(self.read("out.ppm"))))

    def test_no_wrapped_colours_outside(self):
        # Between -1 and 0 the library extrapolates: past dark beside bright it wraps around.
        rows = [[(250, 250, 250) if x > 0 and y > 0 else (5, 5, 5) for x in range(30)]
                for y in range(20)]
        self.write("in.ppm", ppm(rows))
        for command in (("perspective", "--corners=-3,-3,33,-3,33,23,-3,23", "--size", "150x110"),
                        ("warp", "--from=-3,-3,33,-3,33,23,-3,23", "--to",
                         "0,0,150,0,150,110,0,110", "--size", "150x110")):
            name, *options = command
            for edges, bright in (("repeat", False), ("keep", True)):
                self.succeed(name, "in.ppm", "out.ppm", *options, "--edges", edges)
                out = ppm_rows(self.read("out.ppm"))
                # The first column of the picture begins at 3 * 150 / 36 = 12.5 pixels.
                self.assertEqual(any(row[x][0] > 100 for row in out for x in range(12)), bright)

    def test_expanded_nothing_is_cut_off(self):
        rows = plain(40, 30, BLACK)
        for x, y in ((0, 0), (39, 0), (39, 29), (0, 29)):
            rows[y][x] = WHITE
        self.write("in.ppm", ppm(rows))
        for angle in (-170, -80, -30, 7, 45, 100):
            self.succeed("rotate", "in.ppm", "out.ppm", "--angle", angle, "--expand")
            light = sum(pixel[0] for row in ppm_rows(self.read("out.ppm")) for pixel in row)
            self.assertGreater(light, 4 * 255 * 0.8)

    def test_other_words(self):
        self.write("in.ppm", ppm(plain(4, 3, WHITE)))
        for edges in ("none", "mirror", "Repeat"):
            self.refuse(2, f"--edges needs repeat or keep, not '{edges}'", "rotate", "in.ppm",
                        "out.ppm", "--angle", 3, "--edges=" + edges)


class Crop(ToolTest):
    """The largest upright picture without background."""

    @staticmethod
    def fits(width, height, w, h, angle, edges):
        """Whether all four corners of w × h pixels lie inside a turned picture, half a pixel off
        where the library draws."""
        cosine, sine = math.cos(angle), math.sin(angle)
        least = 0.5 if edges == "repeat" else 1.5
        for x, y in itertools.product((-(w // 2), w - 1 - w // 2), (-(h // 2), h - 1 - h // 2)):
            source_x = width // 2 + cosine * x + sine * y
            source_y = height // 2 + cosine * y - sine * x
            if not (least <= source_x <= width - least - 0.5 and
                    least <= source_y <= height - least - 0.5):
                return False
        return True

    def largest(self, width, height, angle, edges, free):
        """By trying every size."""
        if not free:
            for w in range(width, 0, -1):
                h = max(1, math.floor(w * height / width + 0.5))
                if self.fits(width, height, w, h, angle, edges):
                    return w, h
        sizes = itertools.product(range(1, width + height), repeat=2)
        area, w = max((w * h, w) for w, h in sizes
                      if self.fits(width, height, w, h, angle, edges))
        return w, area // w

    def check(self, size, command, angle, *options):
        """No background shows and no larger size would do."""
        self.write("in.ppm", ppm(plain(*size, WHITE)))
        for edges in ("repeat", "keep"):
            for form in (("--crop",), ("--crop", "fit"), ("--crop", "free")):
                self.succeed(command, "in.ppm", "out.ppm", *options, *form, "--edges", edges,
                             "--background", "magenta")
                rows = ppm_rows(self.read("out.ppm"))
                self.assertEqual(colours_of(rows), {WHITE})
                self.assertEqual((len(rows[0]), len(rows)),
                                 self.largest(*size, angle, edges, "free" in form))

    def test_rotations_of_any_size(self):
        for size in ((20, 15), (15, 20), (31, 30), (9, 9), (40, 8)):
            for angle in (-170, -89.5, -44, -3, 0.5, 10, 45, 93, 150):
                self.check(size, "rotate", math.radians(angle), "--angle", angle)

    def test_straightenings(self):
        for line, angle in (("2,3,18,5", math.atan2(-2, 16)), ("18,5,2,3", math.atan2(-2, 16)),
                            ("3,14,6,1", math.atan2(-3, 13)), ("1,1,9,9", math.radians(-45)),
                            ("1,9,9,1", math.radians(45))):
            self.check((20, 15), "straighten", angle, "--line", line)

    def test_large_pictures_show_no_background_either(self):
        # Positions are sums of steps of 1 / 65536, and an error grows along the way.
        for size in ((70000, 60), (60, 40000), (4000, 3000)):
            self.write("in.ppm", b"P6\n%d %d\n255\n" % size + b"\xff" * (3 * size[0] * size[1]))
            for angle, form in ((-0.02, "fit"), (0.011, "free"), (1.7, "fit"), (90.01, "free")):
                self.succeed("rotate", "in.ppm", "out.ppm", "--angle", angle, "--crop", form,
                             "--background", "magenta")
                pixels = self.read("out.ppm").split(b"\n", 3)[3]
                self.assertEqual(pixels.count(b"\xff"), len(pixels), (size, angle))

    def test_quarter_turns_lose_nothing(self):
        rows = speckled(9, 7)
        self.write("in.ppm", ppm(rows))
        for angle, quarters in ((0, 0), (90, 1), (-180, 2)):
            for form in (("--crop",), ("--crop", "free")):
                self.succeed("rotate", "in.ppm", "out.ppm", "--angle", angle, *form)
                self.assertEqual(ppm_rows(self.read("out.ppm")), turned(rows, quarters))

    def test_what_cannot_be(self):
        self.write("in.ppm", ppm(plain(20, 15, WHITE)))
        command = ("rotate", "in.ppm", "out.ppm", "--angle", 10, "--crop")
        self.refuse(2, "--crop", *command, "--expand")
        self.refuse(2, "--crop", *command, "--about", "3,3")
        self.refuse(2, "--crop needs free, fit or nothing, not 'big'", *command, "big")
        self.write("in.ppm", ppm(plain(1, 1, WHITE)))
        self.refuse(1, "the picture is too small to crop at this angle", *command)


class Rotate(ToolTest):
    def test_kept_edges_lose_a_seam(self):
        rows = speckled(9, 7)
        self.write("in.ppm", ppm(rows))
        text = self.succeed("rotate", "in.ppm", "out.ppm", "--angle", 0, "--background", "red",
                            "--edges", "keep")
        self.assertIn("not turned", text)
        inner = [[rows[y][x] if 0 < x < 8 and 0 < y < 6 else RED for x in range(9)]
                 for y in range(7)]
        self.assertEqual(ppm_rows(self.read("out.ppm")), inner)

    def test_positive_turns_clockwise(self):
        # A square to the right of the centre (20, 20) goes below it.
        self.write("in.ppm", ppm(with_square(41, 41, 29, 19, 3)))
        text = self.succeed("rotate", "in.ppm", "out.ppm", "--angle", 90)
        self.assertIn("turned 90.00 degrees clockwise", text)
        rows = ppm_rows(self.read("out.ppm"))
        self.assertEqual((rows[30][20], rows[20][30], rows[10][20]), (WHITE, BLACK, BLACK))
        text = self.succeed("rotate", "in.ppm", "out.ppm", "--angle", "-90")
        self.assertIn("turned 90.00 degrees anticlockwise", text)
        rows = ppm_rows(self.read("out.ppm"))
        self.assertEqual((rows[30][20], rows[20][30], rows[10][20]), (BLACK, BLACK, WHITE))

    def test_about_a_point(self):
        self.write("in.ppm", ppm(with_square(41, 41, 29, 19, 3)))
        self.succeed("rotate", "in.ppm", "out.ppm", "--angle", 90, "--about", "30,10")
        rows = ppm_rows(self.read("out.ppm"))
        self.assertEqual(rows[10][20], WHITE)  # from below that point to the left of it

    def test_expand_makes_room(self):
        self.write("in.ppm", ppm(plain(40, 30, WHITE)))
        text = self.succeed("rotate", "in.ppm", "out.ppm", "--angle", 90, "--expand")
        self.assertIn("30 × 40 pixels", text)
        # The diagonal of 39 steps by 29, turned by 45 degrees: 68 / sqrt(2) = 48.08 both ways.
        self.succeed("rotate", "in.ppm", "out.ppm", "--angle", 45, "--expand")
        rows = ppm_rows(self.read("out.ppm"))
        self.assertIn(len(rows), (50, 51))
        self.assertIn(len(rows[0]), (50, 51))
        self.assertEqual((rows[0][0], rows[25][25]), (BLACK, WHITE))
        white = sum(pixel == WHITE for row in rows for pixel in row)
        self.assertGreater(white, 40 * 30)


class Straighten(ToolTest):
    def slanted(self, dx, dy):
        """A white line of five pixels' thickness through the middle, and its two ends."""
        rows = plain(121, 121, BLACK)
        for y in range(121):
            for x in range(121):
                if abs((x - 60) * dy - (y - 60) * dx) <= 2.5 * (dx * dx + dy * dy) ** 0.5:
                    rows[y][x] = WHITE
        self.write("in.ppm", ppm(rows))
        ends = (60 - dx, 60 - dy, 60 + dx, 60 + dy)
        return ",".join(map(str, ends))

    def test_a_line_that_rises_to_the_right_turns_clockwise_and_is_level(self):
        line = self.slanted(50, -10)
        text = self.succeed("straighten", "in.ppm", "out.ppm", "--line", line)
        self.assertIn("turned 11.31 degrees clockwise, so that the line is level", text)
        rows = ppm_rows(self.read("out.ppm"))
        for x in (25, 60, 95):
            self.assertEqual((rows[60][x], rows[55][x], rows[65][x]), (WHITE, BLACK, BLACK))

    def test_a_line_that_falls_to_the_right_turns_anticlockwise(self):
        line = self.slanted(50, 10)
        text = self.succeed("straighten", "in.ppm", "out.ppm", "--line", line)
        self.assertIn("turned 11.31 degrees anticlockwise, so that the line is level", text)
        rows = ppm_rows(self.read("out.ppm"))
        self.assertEqual([rows[60][x] for x in (25, 60, 95)], [WHITE] * 3)

    def test_a_steep_line_becomes_upright(self):
        line = self.slanted(10, 50)
        text = self.succeed("straighten", "in.ppm", "out.ppm", "--line", line)
        self.assertIn("turned 11.31 degrees clockwise, so that the line is upright", text)
        rows = ppm_rows(self.read("out.ppm"))
        for y in (25, 60, 95):
            self.assertEqual((rows[y][60], rows[y][55], rows[y][65]), (WHITE, BLACK, BLACK))

    def test_the_angle_that_is_named_is_the_one_turned_by(self):
        self.write("in.ppm", ppm(speckled(60, 50)))
        for line in ("0,7,59,9", "59,9,0,7", "3,40,50,2", "7,0,9,49", "9,49,7,0", "2,30,30,49",
                     "1,1,40,40", "1,40,40,1", "40,1,1,40", "0,0,59,49"):
            text = self.succeed("straighten", "in.ppm", "straight.ppm", "--line", line)
            degrees, way = re.search(r"turned ([0-9.]+) degrees (\w+)", text).groups()
            angle = float(degrees) if way == "clockwise" else -float(degrees)
            self.succeed("rotate", "in.ppm", "turned.ppm", "--angle", angle)
            apart = [abs(a - b) for a, b in zip(self.read("straight.ppm"), self.read("turned.ppm"))]
            # Two decimals are 0.005 degrees, 0.003 pixels at the corners.
            self.assertLess(sum(value > 3 for value in apart), 20, text)

    def test_a_level_line_keeps_every_pixel(self):
        rows = speckled(13, 11)
        self.write("in.ppm", ppm(rows))
        for line, words in (("1,5,9,5", "already level"), ("4,0,4,9", "already upright")):
            self.assertIn(words, self.succeed("straighten", "in.ppm", "out.ppm", "--line", line))
            self.assertEqual(ppm_rows(self.read("out.ppm")), rows)

    def test_damaged_and_odd_files(self):
        """The first things that go wrong in practice."""
        with open(photo("sunset-tilted-horizon.jpg"), "rb") as file:
            self.write("cut.jpg", file.read()[:300_000])
        self.refuse(1, "damaged, incomplete or of a rare kind", "straighten", "cut.jpg", "out.jpg", "--line",
                    "70,1430,4200,1250")


QUARTERS = (RED, (0, 255, 0), (0, 0, 255), WHITE)  # top left, top right, bottom right, bottom left


def quarters(width, height, left, top, right, bottom):
    """A rectangle in four colours on black."""
    rows = plain(width, height, BLACK)
    for y in range(top, bottom):
        for x in range(left, right):
            column, row = 2 * x >= left + right, 2 * y >= top + bottom
            rows[y][x] = QUARTERS[(3 if not column else 2) if row else int(column)]
    return rows


def middles(rows):
    """The colours in the middles of the four quarters, in the order of QUARTERS."""
    width, height = len(rows[0]), len(rows)
    return tuple(rows[height * y // 4][width * x // 4] for x, y in ((1, 1), (3, 1), (3, 3), (1, 3)))


class Perspective(ToolTest):
    def setUp(self):
        super().setUp()
        self.write("in.ppm", ppm(quarters(100, 80, 20, 10, 80, 50)))

    def test_corners_in_any_order(self):
        corners = ("20,10", "80,10", "80,50", "20,50")
        for order in itertools.permutations(corners):
            text = self.succeed("perspective", "in.ppm", "out.ppm", "--corners", ",".join(order))
            self.assertIn("60 × 40 pixels", text)
            self.assertEqual(middles(ppm_rows(self.read("out.ppm"))), QUARTERS)

    def test_a_slant_becomes_upright(self):
        # Every row is shifted by half its height: the sides lean, top and bottom stay.
        rows = quarters(100, 80, 20, 10, 60, 50)
        rows = [row[-(y // 2):] + row[:-(y // 2)] if y > 1 else row for y, row in enumerate(rows)]
        self.write("in.ppm", ppm(rows))
        self.succeed("perspective", "in.ppm", "out.ppm", "--corners", "25,10,65,10,85,50,45,50")
        self.assertEqual(middles(ppm_rows(self.read("out.ppm"))), QUARTERS)

    def test_sizes(self):
        corners = ("--corners", "20,10,80,10,80,50,20,50")
        self.assertEqual(self.succeed("perspective", "in.ppm", *corners, "--dry-run"),
                         "natural size: 60 × 40 pixels\n")
        for options, size in ((("--size", "31x77"), "31 × 77"), (("--fit", "300x300"), "300 × 200"),
                              (("--fit", "300x100"), "150 × 100"), (("--fit", "2x50"), "2 × 1"),
                              (("--fit", "240000000x1"), "1 × 1")):
            text = self.succeed("perspective", "in.ppm", "out.ppm", *corners, *options)
            self.assertIn(f"{size} pixels", text)
        self.succeed("perspective", "in.ppm", "out.ppm", *corners, "--size", "31x77")
        self.assertEqual(middles(ppm_rows(self.read("out.ppm"))), QUARTERS)
        self.succeed("perspective", "in.ppm", "out.ppm", *corners, "--fit", "300x300")
        self.assertEqual(middles(ppm_rows(self.read("out.ppm"))), QUARTERS)

    def test_corners_that_make_no_quadrilateral(self):
        for corners, words in (
                ("20,10,80,10,20,10,20,50", "corners 1 and 3 are the same point (20, 10)"),
                ("20,10,80,10,80,50,80,50", "corners 3 and 4 are the same point (80, 50)"),
                ("0,0,80,10,40,5,20,50", "corners 1 (0, 0), 2 (80, 10) and 3 (40, 5) lie on one"),
                ("0,0,70,10,30,10,20,10", "corners 2 (70, 10), 3 (30, 10) and 4 (20, 10) lie on"),
                ("0,0,80,0,41,20,40,60", "corner 3 (41, 20) lies inside the triangle"),
                ("0,0,80,0,40,60,41,20", "corner 4 (41, 20) lies inside the triangle"),
                ("0,0,80,0,80,60,0,161", "corner 4 (0, 161) lies far outside the picture"),
                ("-101,0,80,0,80,60,0,60", "corner 1 (-101, 0) lies far outside the picture"),
                ("0,0,80,0,80,60", "--corners needs 8 whole numbers"),
                ("0,0,80,0,80,60,0,2147483648", "--corners needs 8 whole numbers")):
            self.refuse(2, words, "perspective", "in.ppm", "out.ppm", "--corners=" + corners)

    def test_corners_at_the_ends_of_the_numbers(self):
        least, most = -2**31, 2**31 - 1
        corners = f"{least},{least},{most},{least},{most},{most},{least},{most}"
        words = f"corner 1 ({least}, {least}) lies far outside any picture"
        self.refuse(2, words, "perspective", "in.ppm", "--dry-run", "--corners", corners)
        self.refuse(2, words, "warp", "in.ppm", "out.ppm", "--from", corners, "--to", corners)

    def test_sizes_that_make_no_sense(self):
        command = ("perspective", "in.ppm", "out.ppm", "--corners", "20,10,80,10,80,50,20,50")
        for size in ("0x5", "5", "axb", "-5x5", "5x5x5", "5 by 5"):
            self.refuse(2, "--size needs a size such as 800x600", *command, "--size=" + size)
        self.refuse(2, "above the limit of 250 megapixels", *command, "--size", "100000x100000")
        self.refuse(2, "--fit is too narrow for the natural size of these corners, 60 × 40", *command,
                    "--fit", "1x50")
        self.refuse(2, "exclude each other", *command, "--fit", "5x5", "--size", "5x5")
        self.refuse(2, "OUT, the picture to write, is missing", "perspective", "in.ppm", *command[3:])

    def test_a_page_photographed_by_telephone(self):
        # Corners in the upright picture; the file stores it on its side.
        text = self.succeed("perspective", photo("book-page.jpg"), "--dry-run", "--corners",
                            "470,140,2130,10,2110,3090,400,2950")
        self.assertEqual(text, "natural size: 1690 × 2945 pixels\n")


class Warp(ToolTest):
    def setUp(self):
        super().setUp()
        self.write("in.ppm", ppm(quarters(80, 60, 0, 0, 80, 60)))
        self.corners = "0,0,80,0,80,60,0,60"

    def test_each_point_goes_where_it_is_sent(self):
        # The same outline, a quarter turn further each time.
        places = ["0,0", "80,0", "80,60", "0,60"]
        for turn in range(4):
            self.succeed("warp", "in.ppm", "out.ppm", "--from", self.corners, "--to",
                         ",".join(places[turn:] + places[:turn]))
            rows = ppm_rows(self.read("out.ppm"))
            self.assertEqual(middles(rows), QUARTERS[-turn:] + QUARTERS[:-turn])

    def test_mirrored_and_smaller(self):
        text = self.succeed("warp", "in.ppm", "out.ppm", "--from", self.corners, "--to",
                            "40,0,0,0,0,30,40,30", "--size", "50x40", "--background", "#ff00ff")
        self.assertIn("50 × 40 pixels", text)
        rows = ppm_rows(self.read("out.ppm"))
        self.assertEqual((rows[7][30], rows[7][10], rows[22][10], rows[22][30]), QUARTERS)
        self.assertEqual((rows[35][10], rows[10][45]), ((255, 0, 255), (255, 0, 255)))

    def test_points_that_make_no_quadrilateral(self):
        good = self.corners
        for start, end, words in (
                ("0,0,80,60,80,0,0,60", good, "--from: the outline from corner 1 to 2 to 3 to 4"),
                (good, "0,0,80,60,80,0,0,60", "--to: the outline from corner 1 to 2 to 3 to 4"),
                (good, "0,0,80,60,80,0,0,0", "--to: corners 1 and 4 are the same point"),
                (good, "0,0,80,0,80,60,70,10", "--to: corner 4 (70, 10) lies inside"),
                (good, "0,0,80,0,80,60,0,900", "--to: corner 4 (0, 900) lies far outside"),
                ("0,0,80,0,80,900,0,60", good, "--from: corner 3 (80, 900) lies far outside")):
            self.refuse(2, words, "warp", "in.ppm", "out.ppm", "--from", start, "--to", end)


if __name__ == "__main__":
    unittest.main()
