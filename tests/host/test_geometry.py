"""Rotation, straightening, perspective and warp from the command line."""

import unittest

from pictures import ToolTest, photo, plain, ppm, ppm_rows, speckled

BLACK, WHITE, RED = (0, 0, 0), (255, 255, 255), (255, 0, 0)


def with_square(width, height, left, top, size):
    """A white square on black."""
    rows = plain(width, height, BLACK)
    for y in range(top, top + size):
        for x in range(left, left + size):
            rows[y][x] = WHITE
    return rows


class Rotate(ToolTest):
    def test_no_angle_keeps_all_but_the_seam(self):
        rows = speckled(9, 7)
        self.write("in.ppm", ppm(rows))
        text = self.succeed("rotate", "in.ppm", "out.ppm", "--angle", 0, "--background", "red")
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
        # All but the seam around is there: 38 × 28 pixels at least.
        white = sum(pixel == WHITE for row in rows for pixel in row)
        self.assertGreater(white, 36 * 26)


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
        self.refuse(1, "damaged or incomplete", "straighten", "cut.jpg", "out.jpg", "--line",
                    "70,1430,4200,1250")


if __name__ == "__main__":
    unittest.main()
