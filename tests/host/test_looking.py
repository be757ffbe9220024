"""info and pick: commands that write nothing."""

import unittest

from pictures import ToolTest, exif, chunk, photo, plain, png, ppm, speckled


class Info(ToolTest):
    def test_a_photograph_with_everything(self):
        name = photo("metadata-exif-xmp-icc.jpg")
        self.assertEqual(self.succeed("info", name),
                         f"file: {name}\nformat: JPEG, colour, 8 bits\n"
                         "size: 403 × 302 pixels, upright\norientation: 1 (stored upright)\n"
                         "EXIF: 1126 bytes\nXMP: 3898 bytes\ncolour profile: 596 bytes\n"
                         "in memory: 302 rows of 1209 bytes, accepted for editing\n")

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

    def test_in_the_upright_picture(self):
        # Stored 1 2 3 4 from left to right; upright from top to bottom.
        name = self.write("in.png", png(4, 1, 8, 0, [b"\1\2\3\4"], [chunk(b"eXIf", exif(6))]))
        self.assertIn("#020202", self.succeed("pick", name, "0,1"))


if __name__ == "__main__":
    unittest.main()
