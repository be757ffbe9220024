"""Soft focus, the operations on colour and those on tone from the command line."""

import os
import re
import resource
import struct
import unittest
import zlib

from pictures import (SANITIZED, ToolTest, chunk, exif, pgm, pgm_rows, photo, plain, png, ppm, ppm_rows,
                      speckled)

# Red, green and blue under the white D50.
SRGB = ((0.4361, 0.2225, 0.0139), (0.3851, 0.7169, 0.0971), (0.1431, 0.0606, 0.7141))
DISPLAY_P3 = ((0.5151, 0.2412, -0.0011), (0.2920, 0.6922, 0.0419), (0.1571, 0.0666, 0.7841))

RED, GREY, WHITE = (200, 20, 20), (90, 90, 90), (255, 255, 255)


def with_profile(pixel, primaries, name):
    """A PNG of one pixel with a colour profile of three primaries and a name."""
    text = name.encode("utf-16-be")
    tags = [(b"desc", b"mluc" + struct.pack(">6I", 0, 1, 12, 0, len(text), 28) + text +
             bytes(-len(text) % 4))]
    tags += [(tag, b"XYZ " + bytes(4) + struct.pack(">3i", *(round(65536 * x) for x in primary)))
             for tag, primary in zip((b"rXYZ", b"gXYZ", b"bXYZ"), primaries)]
    table, contents = struct.pack(">I", len(tags)), b""
    for tag, content in tags:
        place = 132 + 12 * len(tags) + len(contents)
        table += tag + struct.pack(">II", place, len(content))
        contents += content
    size = 128 + len(table) + len(contents)
    head = (struct.pack(">I", size) + bytes(8) + b"mntrRGB XYZ " + bytes(12) + b"acsp" + bytes(28) +
            struct.pack(">3I", 0xF6D6, 0x10000, 0xD32D) + bytes(48))
    profile = zlib.compress(head + table + contents)
    return png(1, 1, 8, 2, [bytes(pixel)], [chunk(b"iCCP", b"camera\0\0" + profile)])


class SoftFocus(ToolTest):
    def setUp(self):
        super().setUp()
        # A white stripe of one column on black.
        rows = plain(21, 9, (0, 0, 0))
        for row in rows:
            row[10] = WHITE
        self.write("in.ppm", ppm(rows))

    def test_a_stripe_spreads(self):
        self.succeed("soft-focus", "in.ppm", "out.ppm", "--radius", 3)
        row = [pixel[0] for pixel in ppm_rows(self.read("out.ppm"))[4]]
        # Three windows of three: 1 3 6 7 6 3 1 parts of 27, less what is rounded down.
        for value, part in zip(row[7:14], (1, 3, 6, 7, 6, 3, 1)):
            self.assertAlmostEqual(value, 255 * part / 27, delta=4)
        self.assertEqual(row[:7] + row[14:], [0] * 14)

    def test_the_mask_keeps_the_white_half_sharp(self):
        for mask in (pgm([[255 if y < 4 else 0] * 21 for y in range(9)]),
                     ppm([[WHITE if y < 4 else (0, 0, 0)] * 21 for y in range(9)])):
            self.write("mask", mask)
            self.succeed("soft-focus", "in.ppm", "out.ppm", "--radius", 3, "--mask", "mask")
            rows = ppm_rows(self.read("out.ppm"))
            self.assertGreaterEqual(rows[1][10][0], 254)
            self.assertLessEqual(rows[1][9][0], 1)
            self.assertLess(rows[7][10][0], 70)
            self.assertGreater(rows[7][9][0], 50)

    def test_few_columns_are_blurred_as_few_rows(self):
        rows, mask = speckled(60, 3), [[7 * (x + 5 * y) % 256 for x in range(60)] for y in range(3)]
        self.write("wide.ppm", ppm(rows))
        self.write("high.ppm", ppm(list(zip(*rows))))
        self.write("wide.pgm", pgm(mask))
        self.write("high.pgm", pgm(list(zip(*mask))))
        for radius, masked in ((7, False), (7, True), (2, True), (99, True)):
            for name in ("wide", "high"):
                more = ("--mask", name + ".pgm", "--mask-radius", 4) if masked else ()
                self.succeed("soft-focus", name + ".ppm", name + "-out.ppm", "--radius", radius, *more)
            self.assertEqual(list(zip(*ppm_rows(self.read("wide-out.ppm")))),
                             [tuple(row) for row in ppm_rows(self.read("high-out.ppm"))])

    def test_masks_of_the_wrong_size_and_other_files(self):
        self.write("mask.pgm", pgm([[0] * 20] * 9))
        self.refuse(1, "the mask mask.pgm has 20 × 9 pixels but the picture has 21 × 9",
                    "soft-focus", "in.ppm", "out.ppm", "--radius", 3, "--mask", "mask.pgm")
        self.refuse(1, "none.pgm: cannot be opened", "soft-focus", "in.ppm", "out.ppm", "--radius",
                    3, "--mask", "none.pgm")
        # Judged as they are seen: 9 × 21 stored on its side is 21 × 9.
        rows = [bytes([255] * 9)] * 21
        self.write("mask.png", png(9, 21, 8, 0, rows, [chunk(b"eXIf", exif(6))]))
        self.succeed("soft-focus", "in.ppm", "out.ppm", "--radius", 3, "--mask", "mask.png")

    def test_arguments(self):
        for radius in ("0", "-1", "100001", "3.5", "wide"):
            self.refuse(2, "--radius needs a whole number from 1 to 100000", "soft-focus", "in.ppm",
                        "out.ppm", "--radius", radius)
        self.refuse(2, "--mask-radius needs --mask", "soft-focus", "in.ppm", "out.ppm",
                    "--radius", 3, "--mask-radius", 3)


    @unittest.skipIf(SANITIZED, "a sanitizer needs more memory than the limits allow")
    def test_without_memory_it_is_right_or_refused(self):
        """The library itself keeps silent where it cannot have what a blur takes."""
        self.write("in.ppm", b"P6 1000 1000 255\n" + (bytes(range(251)) * 11953)[:3000000])
        blur = ("soft-focus", "in.ppm", "out.ppm", "--radius", 900)
        self.succeed(*blur)
        wanted = self.read("out.ppm")
        codes = set()
        for megabytes in range(16, 144, 4):
            os.unlink(self.path("out.ppm"))
            limit = megabytes << 20
            result = self.run_tool(*blur, preexec_fn=lambda: resource.setrlimit(
                resource.RLIMIT_AS, (limit, limit)))
            codes.add(result.returncode)
            if result.returncode == 0:
                self.assertEqual(self.read("out.ppm"), wanted, megabytes)
            else:
                self.write("out.ppm", b"")
        self.assertGreaterEqual(codes, {0, 1})


class Colours(ToolTest):
    def setUp(self):
        super().setUp()
        self.write("in.ppm", ppm([[RED, GREY, (20, 20, 200), WHITE]]))

    def out(self, *arguments):
        self.succeed(arguments[0], "in.ppm", "out.ppm", *arguments[1:])
        return ppm_rows(self.read("out.ppm"))[0]

    def test_replace_colour(self):
        selection = ("--colour", "#C81414", "--tolerance", 40)
        red, grey, blue, white = self.out("replace-colour", *selection, "--hue", 120)
        self.assertEqual((grey, blue, white), (GREY, (20, 20, 200), WHITE))
        self.assertGreater(red[1], 190)  # red turned by 120 degrees is green
        self.assertLess(max(red[0], red[2]), 30)
        darker = self.out("replace-colour", *selection, "--value", -40)[0]
        self.assertAlmostEqual(darker[0], 200 - 0.4 * 255, delta=3)
        paler = self.out("replace-colour", *selection, "--saturation", -100)[0]
        self.assertLess(max(paler) - min(paler), 4)

    def test_tint(self):
        red, grey, blue, white = self.out("tint", "--color", "#c81414", "--tolerance", 40)
        self.assertEqual(red, RED)
        for pixel in (grey, blue, white):
            self.assertEqual(len(set(pixel)), 1)
        self.assertEqual(white, (254, 254, 254))  # the weights sum to 255 / 256

    def test_masks_are_grey_files(self):
        for command in ("replace-colour", "tint"):
            for name in ("mask.pgm", "mask.png"):
                self.succeed(command, "in.ppm", name, "--colour", "#C81414", "--tolerance", 40,
                             "--mask-only")
            self.assertEqual(pgm_rows(self.read("mask.pgm")), [[255, 0, 0, 0]])
            self.assertEqual(self.read("mask.png")[25], 0)  # one channel

    def test_a_mask_has_no_colour_profile_and_needs_no_note(self):
        result = self.run_tool("tint", photo("astronaut-portrait.png"), "out.png", "--colour",
                               "orange", "--tolerance", 40, "--mask-only")
        self.assertEqual((result.returncode, "profile" in result.stderr), (0, False))
        self.assertNotIn(b"iCCP", self.read("out.png"))

    def test_temperature(self):
        self.write("in.ppm", ppm([[(120, 120, 120)]]))
        cool, = self.out("temperature", "--temperature", -40)
        warm, = self.out("temperature", "--temperature", 40)
        self.assertGreater(cool[2], cool[0])
        self.assertGreater(warm[0], warm[2])
        green, = self.out("temperature", "--tint", -40)
        magenta, = self.out("temperature", "--tint", 40)
        self.assertGreater(green[1] - green[0], magenta[1] - magenta[0])

    def test_the_balance_that_makes_a_pixel_grey(self):
        def spread(pixel):
            return max(pixel) - min(pixel)

        for colour in ((120, 130, 150), (200, 180, 160), (90, 60, 40)):
            self.write("in.ppm", ppm([[(9, 9, 9), colour]]))
            text = self.succeed("temperature", "in.ppm", "out.ppm", "--grey", "1,0")
            after = ppm_rows(self.read("out.ppm"))[0][1]
            names = ["#%02X%02X%02X" % pixel for pixel in (colour, after)]
            self.assertIn(f", which turns {names[0]} at (1, 0) into {names[1]}", text)
            temperature, tint = map(int, re.search(r"temperature (\S+), tint (\S+),", text).groups())
            self.assertLessEqual(spread(after), 2)
            # What it says is what it does, and nothing near or far is better, or as good and gentler.
            self.succeed("temperature", "in.ppm", "same.ppm", "--temperature", temperature, "--tint",
                         tint)
            self.assertEqual(self.read("same.ppm"), self.read("out.ppm"))
            others = [(temperature + i, tint + j) for i in (-2, -1, 1, 2) for j in (-1, 0, 1)]
            others += [(i, j) for i in range(-90, 91, 30) for j in range(-90, 91, 30)]
            for i, j in others:
                self.succeed("temperature", "in.ppm", "other.ppm", "--temperature", i, "--tint", j)
                other = ppm_rows(self.read("other.ppm"))[0][1]
                self.assertGreaterEqual((spread(other), abs(i) + abs(j)),
                                        (spread(after), abs(temperature) + abs(tint)))

    def test_a_grey_pixel_asks_for_nothing(self):
        self.write("in.ppm", ppm([[(77, 77, 77)]]))
        text = self.succeed("temperature", "in.ppm", "out.ppm", "--gray", "100%,0%")
        self.assertIn("not balanced: #4D4D4D at (0, 0) is grey already", text)
        self.assertEqual(self.read("out.ppm"), self.read("in.ppm"))

    def test_a_profile_other_than_srgb_gets_a_note_where_temperature_changes_something(self):
        self.write("p3.png", with_profile(RED, DISPLAY_P3, "Display P3"))
        self.write("srgb.png", with_profile(RED, SRGB, "sRGB IEC61966-2.1"))
        self.write("plain.png", png(1, 1, 8, 2, [bytes(RED)]))
        self.write("recipe", b"variations --red 1\ntemperature --tint 9\ntemperature --tint -9\n")
        note = ("roxe: note: p3.png: its colour profile (Display P3) is not sRGB, for which "
                "temperature takes its numbers\n")
        warmer, grey = ("--temperature", 20), ("--grey", "0,0")
        for picture in ("p3.png", "srgb.png", "plain.png"):
            for command in (("temperature", picture, "out.png", *warmer),
                            ("temperature", picture, "out.png", *grey),
                            ("run", "recipe", picture, "--out", "out", "--overwrite")):
                result = self.run_tool(*command)
                self.assertEqual(result.returncode, 0, result.stderr)
                self.assertEqual(result.stderr, note if picture == "p3.png" else "")
        self.write("grey.png", with_profile(GREY, DISPLAY_P3, "Display P3"))
        for command in (("temperature", "grey.png", "out.png", *grey),  # is as it should be
                        ("auto-gamma", "p3.png", "out.png")):
            result = self.run_tool(*command)
            self.assertEqual((result.returncode, result.stderr), (0, ""))

    def test_so_do_chunks_that_say_what_the_numbers_mean(self):
        def of(*numbers):
            return struct.pack(f">{len(numbers)}I", *numbers)
        srgb = (31270, 32900, 64000, 33000, 30000, 60000, 15000, 6000)
        adobe = (31270, 32900, 64000, 33000, 21000, 71000, 15000, 6000)
        gamma, primaries = chunk(b"gAMA", of(45455)), chunk(b"cHRM", of(*srgb))
        linear, wide = chunk(b"gAMA", of(100000)), chunk(b"cHRM", of(*adobe))
        video, web = (chunk(b"cICP", bytes(code)) for code in ((9, 16, 0, 1), (1, 13, 0, 1)))
        for chunks, words in (([gamma, primaries], ""), ([chunk(b"gAMA", of(45000))], ""),
                              ([linear, wide], "its gAMA and cHRM chunks are"),
                              ([gamma, wide], "its cHRM chunk is"), ([linear], "its gAMA chunk is"),
                              ([video], "its cICP chunk is"), ([video, chunk(b"sRGB", b"\0")],
                                                               "its cICP chunk is"),
                              ([web, linear, wide], ""), ([chunk(b"sRGB", b"\0")], "")):
            self.write("in.png", png(1, 1, 8, 2, [bytes(RED)], chunks))
            result = self.run_tool("temperature", "in.png", "out.png", "--temperature", 20)
            self.assertEqual(result.stderr, words and f"roxe: note: in.png: {words} not sRGB, for "
                             "which temperature takes its numbers\n")

    def test_names_of_colours(self):
        self.write("in.ppm", ppm([[GREY]]))
        for name, colour in (("rebeccapurple", "#663399"), ("LightGoldenRodYellow", "#FAFAD2"),
                             ("darkslategrey", "#2F4F4F"), ("darkslategray", "#2F4F4F"),
                             ("aliceblue", "#F0F8FF"), ("yellowgreen", "#9ACD32")):
            self.assertIn(f"kept {colour} within 3", self.succeed(
                "tint", "in.ppm", "out.ppm", "--colour", name, "--tolerance", 3))

    def test_arguments(self):
        command = ("replace-colour", "in.ppm", "out.ppm")
        self.refuse(2, "--colour", *command, "--tolerance", 3)
        self.refuse(2, "--tolerance", *command, "--colour", "red")
        red = (*command, "--colour", "red", "--tolerance")
        for tolerance in (-1, 201, "much"):
            self.refuse(2, "--tolerance needs a whole number from 0 to 200", *red, tolerance)
        self.refuse(2, "--hue needs a whole number from -360 to 360", *red, 9, "--hue", 361)
        self.refuse(2, "--saturation needs a whole number", *red, 9, "--saturation", -101)
        self.refuse(2, "--value needs a whole number", *red, 9, "--value", 101)
        self.refuse(2, "exclude", "temperature", "in.ppm", "out.ppm", "--grey", "0,0", "--tint", 3)
        self.refuse(2, "--grey (4, 0) lies outside the picture of 4 × 1", "temperature", "in.ppm",
                    "out.ppm", "--grey", "4,0")
        for option in ("--temperature", "--tint"):
            for value in (-101, 101, "warm"):
                self.refuse(2, option + " needs a whole number from -100 to 100", "temperature",
                            "in.ppm", "out.ppm", option, value)


class Tone(ToolTest):
    def test_auto_gamma_lightens_a_dark_picture(self):
        rows = [[(10 + x // 4,) * 3 for x in range(160)] for _ in range(20)]
        rows[0][0] = WHITE
        self.write("in.ppm", ppm(rows))
        self.succeed("auto-gamma", "in.ppm", "out.ppm")
        after = ppm_rows(self.read("out.ppm"))
        self.assertGreater(after[10][80][1], rows[10][80][1] + 10)

    def test_auto_gamma_by_a_region(self):
        rows = [[(25,) * 3 if x < 20 else (230,) * 3 for x in range(40)] for _ in range(20)]
        self.write("in.ppm", ppm(rows))
        self.succeed("auto-gamma", "in.ppm", "dark.ppm", "--region", "0,0,20,20")
        self.succeed("auto-gamma", "in.ppm", "light.ppm", "--region", "20,0,20,20")
        dark, light = (ppm_rows(self.read(name))[5][5][1] for name in ("dark.ppm", "light.ppm"))
        self.assertGreater(dark, light)
        for region in ("0,0,41,20", "-1,0,5,5", "0,0,0,5", "39,19,2,1", "0,0,5", "all"):
            self.refuse(2, "--region", "auto-gamma", "in.ppm", "out.ppm", "--region=" + region)

    def test_a_region_in_percent(self):
        self.write("in.ppm", ppm([[(x * y % 256,) * 3 for x in range(40)] for y in range(21)]))
        for region, pixels in (("0%,0%,50%,100%", "0,0,20,21"), ("50%,50%,50%,50%", "20,10,20,11"),
                               ("100%,100%,0.1%,0.1%", "39,20,1,1"), ("25%,3,5,10%", "10,3,5,2")):
            self.succeed("auto-gamma", "in.ppm", "out.ppm", "--region", region)
            self.succeed("auto-gamma", "in.ppm", "pixels.ppm", "--region", pixels)
            self.assertEqual(self.read("out.ppm"), self.read("pixels.ppm"))
        for region in ("60%,0,50%,5", "-1%,0,5,5", "0,0,0%,5"):
            self.refuse(2, "--region", "auto-gamma", "in.ppm", "out.ppm", "--region=" + region)

    def test_shadow_highlight(self):
        rows = [[(30,) * 3 if x < 40 else (220,) * 3 for x in range(80)] for _ in range(40)]
        self.write("in.ppm", ppm(rows))
        self.succeed("shadow-highlight", "in.ppm", "out.ppm", "--shadow", 60)
        after = ppm_rows(self.read("out.ppm"))
        self.assertGreater(after[20][5][1], 40)
        self.succeed("shadow-highlight", "in.ppm", "out.ppm", "--highlight", 60)
        after = ppm_rows(self.read("out.ppm"))
        self.assertLess(after[20][75][1], 210)
        for option, value in (("--shadow", 101), ("--highlight", -1), ("--midtone", 101)):
            self.refuse(2, option + " needs a whole number", "shadow-highlight", "in.ppm", "out.ppm",
                        option, value)

    def test_variations(self):
        self.write("in.ppm", ppm([[(120, 120, 120)]]))
        for option, less in (("--red", 0), ("--green", 1), ("--blue", 2)):
            self.succeed("variations", "in.ppm", "out.ppm", option, 2)
            pixel = ppm_rows(self.read("out.ppm"))[0][0]
            self.assertLess(pixel[less], 120)
            self.assertGreater(min(pixel[:less] + pixel[less + 1:]), 120)
        self.succeed("variations", "in.ppm", "out.ppm", "--dark", 1)
        fine = ppm_rows(self.read("out.ppm"))[0][0]
        self.succeed("variations", "in.ppm", "out.ppm", "--dark", 1, "--level", 6)
        coarse = ppm_rows(self.read("out.ppm"))[0][0]
        self.assertLess(coarse[0], fine[0])
        self.assertLess(fine[0], 120)
        self.refuse(2, "--level needs a whole number from 0 to 6", "variations", "in.ppm",
                    "out.ppm", "--level", 7)


class AllInOneRecipe(ToolTest):
    def test_every_operation_can_be_a_step(self):
        self.write("in.ppm", ppm(speckled(60, 40)))
        self.write("mask.pgm", pgm([[128] * 60] * 40))
        self.write("recipe", b"""
rotate --angle 3
straighten --line 1,2,50,4
soft-focus --radius 3 --mask mask.pgm --mask-radius 3
replace-colour --colour '#C81414' --tolerance 50 --hue 20
tint --colour orange --tolerance 150
temperature --temperature 10 --tint -5
auto-gamma --region 5,5,20,20
shadow-highlight --shadow 10 --highlight 10 --midtone 10
variations --red 1 --green -1 --blue 1 --dark -1 --level 1
perspective --corners 5,5,50,8,55,35,2,30 --fit 100x100
warp --from 0,0,50,0,50,50,0,50 --to 0,0,60,5,50,50,5,45
""")
        self.succeed("run", "recipe", "in.ppm", "--out", "out")
        self.assertEqual(len(ppm_rows(self.read("out/in.ppm"))[0]), 100)


if __name__ == "__main__":
    unittest.main()
