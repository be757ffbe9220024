"""info and pick: commands that write nothing."""

import json
import unittest

from pictures import ToolTest, exif, chunk, photo, plain, png, ppm, speckled


class Info(ToolTest):
    def test_a_photograph_with_everything(self):
        name = photo("metadata-exif-xmp-icc.jpg")
        self.assertEqual(self.succeed("info", name),
                         f"file: {name}\nformat: JPEG, colour, 8 bits\n"
                         "size: 403 × 302 pixels, upright\norientation: 1 (stored upright)\n"
                         "camera: Google Pixel 4a\ntaken: 2022-08-22 20:30:46\n"
                         "EXIF: 1126 bytes\nXMP: 3898 bytes\ncolour profile: 596 bytes\n"
                         "name of the profile: sRGB IEC61966-2.1\n"
                         "in memory: 302 rows of 1209 bytes, accepted for editing\n")

    def test_for_other_programs(self):
        name = photo("metadata-exif-xmp-icc.jpg")
        self.assertEqual(json.loads(self.succeed("info", "--json", name)), {
            "file": name, "format": "JPEG, colour, 8 bits", "width": 403, "height": 302,
            "orientation": 1, "make": "Google", "model": "Pixel 4a", "date": "2022-08-22 20:30:46",
            "profile": "sRGB IEC61966-2.1",
            "bytes": {"exif": 1126, "xmp": 3898, "iptc": 0, "profile": 596}})

    def test_any_name_and_nothing_known_make_a_json_of_ascii(self):
        for file in ("quote\" back\\slash\n\x1b[2J.png", "Süden \u202e.png"):
            self.write(file, png(4, 1, 8, 0, [b"\1\2\3\4"], [chunk(b"eXIf", exif(6))]))
            text = self.succeed("info", file, "--json")
            self.assertTrue(text.isascii())
            self.assertNotIn("\x1b", text)
            told = json.loads(text)
            self.assertEqual((told["file"], told["width"], told["height"], told["orientation"]),
                             (file, 1, 4, 6))
            self.assertEqual([told[key] for key in ("make", "model", "date", "profile")], [None] * 4)

    def test_kinds(self):
        for content, words in (
                (png(1, 1, 8, 0, [b"\1"]), "PNG, grey, 8 bits"),
                (png(1, 1, 1, 0, [b"\1"]), "PNG, grey, 1 bit\n"),
                (png(1, 1, 16, 6, [bytes(8)]), "PNG, colour with transparency, 16 bits"),
                (png(1, 1, 8, 3, [b"\0"], [chunk(b"PLTE", b"\1\2\3")]), "PNG, palette, 8 bits"),
                (ppm(speckled(2, 2)), "PPM, colour, 8 bits"), (b"P5 1 1 999\n\0\1", "16 bits")):
            self.assertIn(words, self.succeed("info", self.write("in", content)))
        name = self.write("in.png", png(4, 1, 8, 0, [b"\1\2\3\4"], [chunk(b"eXIf", exif(6))]))
        text = self.succeed("info", name)
        self.assertIn("size: 1 × 4 pixels, upright", text)
        self.assertIn("orientation: 6 (stored on its side, to be turned clockwise)", text)


class Pick(ToolTest):
    def test_the_colour_of_a_pixel(self):
        name = self.write("in.ppm", ppm([[(1, 2, 3), (255, 165, 0)], [(7, 8, 9), (160, 10, 11)]]))
        self.assertEqual(self.succeed("pick", name, "1,0"),
                         "#FFA500 (red 255, green 165, blue 0)\n")
        self.assertEqual(self.succeed("pick", name, "0,1"), "#070809 (red 7, green 8, blue 9)\n")

    def test_a_place_in_percent(self):
        name = self.write("in.ppm", ppm([[(x, y, 0) for x in range(11)] for y in range(5)]))
        for place, pixel in (("0%,0%", "#000000"), ("100%,100%", "#0A0400"), ("50%,50%", "#050200"),
                             ("34%,3", "#030300"), ("36%,12.6%", "#040100")):
            self.assertIn(pixel, self.succeed("pick", name, place))
        self.refuse(2, "the point (11, 0) lies outside", "pick", name, "110%,0")

    def test_the_mean_of_an_area(self):
        rows = [[(10 * x, y, 7) for x in range(6)] for y in range(6)]
        name = self.write("in.ppm", ppm(rows))
        for area, point, words in (
                (1, "2,3", "#140307 (red 20, green 3, blue 7)\n"),
                (3, "2,3", "#140307 (red 20, green 3, blue 7), the mean of 9 pixels"),
                # 1 ... 4 across and 2 ... 5 down: 25 and 3.5, rounded up
                (4, "3,4", "#190407 (red 25, green 4, blue 7), the mean of 16 pixels"),
                # at the corner two rows of two remain: 5 and 0.5, rounded up
                (3, "0,0", "#050107 (red 5, green 1, blue 7), the mean of 4 pixels"),
                (9999, "5,0", "#190307 (red 25, green 3, blue 7), the mean of 36 pixels")):
            self.assertIn(words, self.succeed("pick", name, point, "--area", area))
        self.refuse(2, "--area needs a whole number from 1 to 9999", "pick", name, "1,1", "--area",
                    0)

    def test_in_the_upright_picture(self):
        # Stored 1 2 3 4 from left to right; upright from top to bottom.
        name = self.write("in.png", png(4, 1, 8, 0, [b"\1\2\3\4"], [chunk(b"eXIf", exif(6))]))
        self.assertIn("#020202", self.succeed("pick", name, "0,1"))


if __name__ == "__main__":
    unittest.main()
