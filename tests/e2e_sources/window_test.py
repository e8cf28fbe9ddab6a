#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Window exclusive: one window, whatever happens to it on the screen."""

import time
import unittest

from lumavex_e2e import PREVIEW, Gui, Lumavex, Movie, output_of, press, wait_for
from pictures import SCREEN, Coded, PictureWindow, plain, stages_of, stretched
from unattended import UnattendedTest

WITHIN_A_PIXEL = 1.0
HOLD = 0.5


class WindowTest(UnattendedTest):
    hold = HOLD

    @classmethod
    def setUpClass(cls):
        cls.backdrop, cls.picture = Coded(1), Coded(2)

    def setUp(self):
        self.start(PictureWindow(self.backdrop.pixels, "backdrop", background=True))

    def chosen_window(self):
        return self.start(PictureWindow(self.picture.pixels, "chosen", 100, 120, 400, 300))

    def identifier(self, window):
        return f"chosen ({window.pid}) ({window.window})"

    def test_window_alone_is_pictured_covered_moved_and_resized(self):
        window = self.chosen_window()
        frame = window.frame()
        program, file = self.begin_recording("--window", "chosen")
        cover = self.start(PictureWindow(plain((250, 250, 0)), "cover", 50, 60, 300, 300))
        time.sleep(HOLD)
        output_of("xdotool", "windowmove", window.window, "-150", "-40")
        time.sleep(HOLD)
        output_of("xdotool", "windowmove", window.window, str(SCREEN[0] - 200), str(SCREEN[1] - 90))
        time.sleep(HOLD)
        sizes = [(400, 300), (640, 300), (311, 457), (900, 700)]
        for size in sizes[1:]:
            output_of("xdotool", "windowsize", window.window, *map(str, size))
            time.sleep(HOLD)
        self.end_recording(program)
        self.assertTrue(cover.is_running())
        self.assertEqual(program.stderr, "")
        stages = [(self.picture, stretched(*size, *frame)) for size in sizes]
        self.assertEqual(stages_of(Movie(file), stages, WITHIN_A_PIXEL), list(range(len(stages))))

    def test_other_windows_are_pictured_while_it_is_gone_and_that_is_told(self):
        window = self.chosen_window()
        frame = window.frame()
        program, file = self.begin_recording("--window", "CHOSEN")
        gone = f"The window {self.identifier(window)} is not on the screen."
        back = f"The window {self.identifier(window)} is back."
        output_of("xdotool", "windowminimize", window.window)
        wait_for("the note", lambda: program.stderr.count(gone) == 1)
        time.sleep(HOLD)
        output_of("xdotool", "windowmap", window.window)
        wait_for("the second note", lambda: program.stderr.count(back) == 1)
        time.sleep(HOLD)
        window.kill()
        wait_for("the note once more", lambda: program.stderr.count(gone) == 2)
        time.sleep(HOLD)
        self.end_recording(program)
        self.assertEqual(len(program.stderr.splitlines()), 3, program.stderr)
        shown = (self.picture, stretched(400, 300, *frame))
        others = (self.backdrop, stretched(*SCREEN))
        seen = stages_of(Movie(file), [shown, others, shown, others], WITHIN_A_PIXEL)
        # Between them stands the title bar alone, as the window manager lets it fly to where windows are minimised.
        self.assertEqual([each for each in seen if isinstance(each, int)], [0, 1, 2, 3])

    def test_its_last_picture_is_held_while_it_is_gone_when_that_is_asked_for(self):
        window = self.chosen_window()
        frame = window.frame()
        program, file = self.begin_recording("--window", "chosen", "--when-window-goes", "hold")
        held = f"The window {self.identifier(window)} is not on the screen. Its last picture is held"
        output_of("xdotool", "windowminimize", window.window)
        wait_for("the note", lambda: program.stderr.count(held) == 1)
        time.sleep(2 * HOLD)
        output_of("xdotool", "windowmap", window.window)
        wait_for("the second note", lambda: program.stderr.count(f"The window {self.identifier(window)} is back.") == 1)
        time.sleep(HOLD)
        window.kill()
        wait_for("the note once more", lambda: program.stderr.count(held) == 2)
        time.sleep(HOLD)
        self.end_recording(program)
        stages = [(self.picture, stretched(400, 300, *frame)), (self.backdrop, stretched(*SCREEN))]
        seen = stages_of(Movie(file), stages, WITHIN_A_PIXEL)
        self.assertEqual({each for each in seen if isinstance(each, int)}, {0}, seen)
        self.assertEqual(seen[-1], 0)

    def test_window_is_chosen_in_the_menu_while_recording(self):
        window = self.chosen_window()
        frame = window.frame()
        other = Coded(3)
        self.start(PictureWindow(other.pixels, "another", 560, 90, 320, 200))
        home = self.home().make_settings(i_Screen_Capture_FPS=10, b_Show_WindowExclusive_How_To=0, b_Screen_Include_Mouse=0,
                                         b_Record_Include_Audio=0)  # fmt: skip
        gui = self.start(Gui(home, "--window", "another"))
        gui.wait_for_window(PREVIEW)
        listed = self.start(Lumavex(self.home(), "--list-windows"))
        self.assertEqual(listed.wait(), 0)
        names = [line.split("\t")[0] for line in listed.stdout.splitlines()]
        self.assertIn(self.identifier(window), names)
        gui.key("ctrl+r")
        gui.wait_for_recording()
        time.sleep(HOLD)
        gui.key("alt+f")
        # Frame, Window: the last of its menus; and there below the command that lists anew.
        press("Up", "Right", *["Down"] * (names.index(self.identifier(window)) + 1))
        press("Return")
        time.sleep(2 * HOLD)
        window.kill()
        wait_for("the note", lambda: gui.stderr.count(f"The window {self.identifier(window)} is not on the screen.") == 1)
        time.sleep(6 * HOLD)  # a busy machine repeats frames
        gui.key("ctrl+s")
        gui.save_as(home.videos / "movie.mov")
        gui.close_alert()
        stages = [(other, stretched(320, 200, *frame)), (self.picture, stretched(400, 300, *frame)), (self.backdrop, stretched(*SCREEN))]
        self.assertEqual(stages_of(Movie(home.videos / "movie.mov"), stages, WITHIN_A_PIXEL), [0, 1, 2])


if __name__ == "__main__":
    unittest.main(verbosity=2)
