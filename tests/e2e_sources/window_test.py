#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Window exclusive: one window, whatever happens to it on the screen."""

import os
import time
import unittest

from lumavex_e2e import Movie, Process, output_of, wait_for
from pictures import SCREEN, UnattendedTest, show_rectangle

BEHIND = (300, 500, 600, 700)


class WindowTest(UnattendedTest):
    def setUp(self):
        show_rectangle(*BEHIND)
        self.window, self.id = self.show("xlogo", "#00ff00", "400x300+100+120")
        text = output_of("xprop", "-id", self.id, "_NET_FRAME_EXTENTS")
        self.frame = [int(each) for each in text.split("=")[1].split(",")]  # left, right, top, bottom

    def show(self, program, colour, geometry):
        """A window of one colour."""
        process = self.start(Process([program, "-bg", colour, "-fg", colour, "-geometry", geometry], os.environ))
        find = ["xdotool", "search", "--onlyvisible", "--class", program]
        return process, wait_for(program, lambda: output_of(*find, check=False).split())[-1]

    def edges(self, width, height):
        """Where the window's own edges are when it is stretched over the frame with what the window manager put around."""
        left, right, top, bottom = self.frame
        across, down = SCREEN[0] / (left + width + right), SCREEN[1] / (top + height + bottom)
        return left * across, (left + width) * across, top * down, (top + height) * down

    def test_window_alone_is_pictured_covered_moved_and_resized(self):
        program, file = self.begin_recording("--window", "XLOGO")
        cover, _ = self.show("xclock", "#202000", "300x300+50+60")
        time.sleep(self.hold)
        output_of("xdotool", "windowmove", self.id, "-150", "-40")
        time.sleep(self.hold)
        sizes = [(400, 300), (311, 457), (900, 700)]
        for size in sizes[1:]:
            output_of("xdotool", "windowsize", self.id, *map(str, size))
            time.sleep(self.hold)
        self.end_recording(program)
        self.assertTrue(cover.is_running())
        self.assertEqual(program.stderr, "")
        self.assert_stages(Movie(file), [self.edges(*size) for size in sizes])

    def test_other_windows_are_pictured_while_it_is_gone_and_that_is_told(self):
        program, file = self.begin_recording("--window", "xlogo")
        name = "The window XLogo ("
        output_of("xdotool", "windowunmap", self.id)
        wait_for("the note", lambda: program.stderr.count("is not on the screen.") == 1)
        time.sleep(self.hold)
        output_of("xdotool", "windowmap", self.id)
        wait_for("the second note", lambda: program.stderr.count("is back.") == 1)
        time.sleep(self.hold)
        self.window.kill()
        wait_for("the note once more", lambda: program.stderr.count("is not on the screen.") == 2)
        time.sleep(self.hold)
        self.end_recording(program)
        self.assertEqual((len(program.stderr.splitlines()), program.stderr.count(name)), (3, 3), program.stderr)
        shown = self.edges(400, 300)
        self.assert_stages(Movie(file), [shown, BEHIND, shown, BEHIND])


if __name__ == "__main__":
    unittest.main(verbosity=2)
