#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Follow cursor and region: the recorded rectangle is read off the movie's pixels."""

import time
import unittest

import numpy
from lumavex_e2e import Gui, Movie, output_of
from pictures import SCREEN, UnattendedTest, show_rectangle


def point(x, y):
    """Counted upward."""
    output_of("xdotool", "mousemove", str(x), str(SCREEN[1] - 1 - y))


def cut_out(rectangle, x, y, width, height):
    """Where the rectangle's edges are when this part of the screen, counted upward, is fitted into the frame. Sizes grow by
    tenths of the frame's width or height until they pass it."""
    steps = 0
    upright = height > width
    step = SCREEN[1] / 10 * width / height if upright else SCREEN[0] / 10
    while SCREEN[0] > width + steps * step and SCREEN[1] > (width + steps * step) * height / width:
        steps += 1
    scale = (width + steps * step) / width
    left, top = (SCREEN[0] - width * scale) / 2, (SCREEN[1] - height * scale) / 2
    edges = numpy.array(rectangle) - (x, x, SCREEN[1] - y - height, SCREEN[1] - y - height)
    edges = numpy.clip(edges, 0, (width, width, height, height)) * scale + (left, left, top, top)
    return tuple(numpy.clip(edges, 0, (SCREEN[0], SCREEN[0], SCREEN[1], SCREEN[1])))


def follow_cursor(x, y, width, height):
    """The part of the screen that follows the pointer."""
    x = min(max(x, width * 0.5), SCREEN[0] - width * 0.5)
    y = min(max(y, height / 2.2), SCREEN[1] - height / 2.2)
    return x - 0.5 * width, y - 0.5 * height, width, height


class ScreenTest(UnattendedTest):
    def test_follow_cursor_holds_the_pointer_and_stops_at_the_edges(self):
        rectangle, size = (212, 812, 184, 584), (401, 223)
        show_rectangle(*rectangle)
        path = [(512, 384), (300, 500), (0, 767), (1023, 300), (700, 0)]
        point(*path[0])
        program, file = self.begin_recording("--type", "follow", "--follow", "%dx%d" % size)
        for place in path[1:]:
            point(*place)
            time.sleep(self.hold)
        self.end_recording(program)
        self.assert_stages(Movie(file), [cut_out(rectangle, *follow_cursor(*place, *size)) for place in path])

    def test_region_follows_its_handles_while_it_is_recorded(self):
        home = self.home().make_settings(i_Screen_Capture_FPS=10, b_Show_Select_Region_How_To=0, b_Screen_Include_Mouse=0,
                                         b_Record_Include_Audio=0)  # fmt: skip
        rectangle = (400, 600, 300, 460)
        show_rectangle(*rectangle)
        gui = self.start(Gui(home, "--hide-own-windows"))
        output_of("xdotool", "windowmove", gui.main, "0", "0")  # beside the rectangle
        gui.key("ctrl+r")
        gui.wait_for_recording()
        time.sleep(self.hold)
        gui.key("ctrl+7")
        time.sleep(self.hold)
        # Handles of 10 x 10 around the corners of 320 x 240 in the middle; their lower left corners go to the pointer.
        regions = [(352, 264, 320, 240)]
        for grip, place, region in (((352, 264), (200, 200), (205, 205, 467, 299)), ((672, 504), (795, 595), (205, 205, 595, 395))):
            point(*grip)
            output_of("xdotool", "mousedown", "1")
            point(*place)
            time.sleep(self.hold)
            output_of("xdotool", "mouseup", "1")
            regions.append(region)
        point(205 + 595 // 2, 205 + 395 // 2)
        output_of("xdotool", "click", "1")
        time.sleep(self.hold)
        gui.key("ctrl+s")
        gui.save_as(home.videos / "movie.mov")
        gui.close_alert()
        self.assert_stages(Movie(home.videos / "movie.mov"), [rectangle, *(cut_out(rectangle, *region) for region in regions)])


if __name__ == "__main__":
    unittest.main(verbosity=2)
