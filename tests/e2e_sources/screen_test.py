#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Follow cursor and region: the recorded rectangle is read off the movie's pixels."""

import time
import unittest

from lumavex_e2e import Gui, Movie, output_of
from pictures import SCREEN, Coded, PictureWindow, cut_out, follow_cursor, frames_of, point, stages_of, stretched
from unattended import UnattendedTest

WITHIN_A_PIXEL = 1.0
HOLD = 0.35


class ScreenTest(UnattendedTest):
    hold = HOLD

    @classmethod
    def setUpClass(cls):
        cls.picture = Coded(1)

    def setUp(self):
        self.start(PictureWindow(self.picture.pixels, "backdrop", background=True))

    def end_recording(self, program):
        super().end_recording(program)
        self.assertEqual(program.stderr, "")

    def test_follow_cursor_holds_the_pointer_and_stops_at_the_edges(self):
        right, bottom = SCREEN[0] - 1, SCREEN[1] - 1
        for size in ((640, 480), (401, 223)):
            path = [(512, 384), (300, 500), (0, 0), (right, 0), (right, bottom), (0, bottom), (0, 300), (611, bottom), (right, 400),
                    (333, 333)]  # fmt: skip
            point(*path[0])
            program, file = self.begin_recording("--type", "follow", "--follow", "%dx%d" % size)
            for place in path[1:]:
                point(*place)
                time.sleep(HOLD)
            # Without a rest: every frame lies somewhere on the way.
            for x in range(333, 600, 3):
                point(x, x)
            time.sleep(HOLD)
            self.end_recording(program)

            measured = [self.picture.measure(frame) for frame in frames_of(Movie(file))]
            rests = [cut_out(*follow_cursor(*place, *size)) for place in path]
            way = [cut_out(*follow_cursor(x, x, *size)) for x in range(333, 600, 3)]
            expected = rests + way
            at = 0
            visited = set()
            for number, shown in enumerate(measured):
                self.assertIsNotNone(shown, f"frame {number} of {file}")
                following = [i for i in range(at, len(expected)) if shown.distance(expected[i]) <= WITHIN_A_PIXEL]
                self.assertTrue(following, f"frame {number}: {shown}, last at {at}: {expected[at]}")
                at = following[0]
                visited.add(at)
            self.assertEqual(visited & set(range(len(rests))), set(range(len(rests))))
            self.assertEqual(at, len(expected) - 1)

    def test_region_of_the_command_line_counts_from_the_upper_left_corner(self):
        for x, y, width, height in ((500, 200, 320, 240), (0, 0, 333, 127)):
            program, file = self.begin_recording("--region", f"{x},{y},{width},{height}")
            self.end_recording(program)
            shown = cut_out(x, SCREEN[1] - y - height, width, height)
            self.assertEqual(stages_of(Movie(file), [(self.picture, shown)], WITHIN_A_PIXEL), [0])

    def test_region_follows_its_handles_while_it_is_recorded(self):
        home = self.home().make_settings(i_Screen_Capture_FPS=10, b_Show_Select_Region_How_To=0, b_Screen_Include_Mouse=0,
                                         b_Record_Include_Audio=0)  # fmt: skip
        gui = self.start(Gui(home, "--hide-own-windows"))
        gui.key("ctrl+r")
        gui.wait_for_recording()
        time.sleep(HOLD)

        def up(x, y):
            """xdotool's place for a place that is counted upward."""
            return x, SCREEN[1] - 1 - y

        gui.key("ctrl+7")
        time.sleep(1)
        # Handles of 10 x 10 around the corners of 320 x 240 in the middle of 1024 x 768.
        regions = [(352, 264, 320, 240)]
        drags = [
            # From the middle of a handle by steps; its lower left corner goes to the pointer.
            ((352, 264), [(300, 250), (200, 200)], [(305, 255, 367, 249), (205, 205, 467, 299)]),
            ((672, 504), [(795, 595)], [(205, 205, 595, 395)]),
            ((205, 600), [(100, 650), (95, 645)], [(105, 205, 695, 450), (100, 205, 700, 445)]),
            ((800, 205), [(700, 300)], [(100, 305, 605, 345)]),
        ]  # fmt: skip
        for grip, places, expected in drags:
            point(*up(*grip))
            output_of("xdotool", "mousedown", "1")
            for place, region in zip(places, expected, strict=True):
                point(*up(*place))
                regions.append(region)
                time.sleep(2 * HOLD)
            output_of("xdotool", "mouseup", "1")
        centre = regions[-1][0] + regions[-1][2] // 2, regions[-1][1] + regions[-1][3] // 2
        point(*up(*centre))
        output_of("xdotool", "click", "1")
        time.sleep(HOLD)
        gui.key("ctrl+s")
        gui.save_as(home.videos / "movie.mov")
        gui.close_alert()

        stages = [(self.picture, stretched(*SCREEN))] + [(self.picture, cut_out(*region)) for region in regions]
        self.assertEqual(stages_of(Movie(home.videos / "movie.mov"), stages, WITHIN_A_PIXEL), list(range(len(stages))))
        self.assertEqual(gui.stderr, "")


if __name__ == "__main__":
    unittest.main(verbosity=2)
