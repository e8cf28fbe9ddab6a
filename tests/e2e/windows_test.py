#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""The program's own windows: seen in the movie or not, and what they have to do with recording."""

import os
import time
import unittest

import numpy
from lumavex_e2e import (PREVIEW, EndToEndTest, Gui, Lumavex, Movie, Process, Scene, click, output_of, place_of, press, screenshot,
                         takes_of, title_of, wait_for)  # fmt: skip

DESKTOP = (40, 90, 160)
NEARLY = 24  # what JPEG may change in a plain area


def is_desktop(picture):
    """Where the picture shows the plain desktop."""
    return (abs(picture.astype(int) - DESKTOP) < NEARLY).all(axis=2)


class WindowsTest(EndToEndTest):
    def setUp(self):
        output_of("xsetroot", "-solid", "#%02x%02x%02x" % DESKTOP)

    def record_by_keys(self, gui, seconds):
        gui.key("ctrl+r")
        gui.wait_for_recording()
        time.sleep(seconds)
        gui.key("ctrl+s")
        return self.save(gui)

    def save(self, gui):
        path = gui.home.videos / "movie.mov"
        gui.save_as(path)
        gui.close_alert()
        return path

    def pictured(self, picture, window):
        """The part of the picture where the window is on the screen."""
        place = place_of(window)
        return picture[place.y : place.y + place.height, place.x : place.x + place.width]

    def test_own_windows_are_in_the_picture_unless_hidden(self):
        for options, shown in (((), True), (("--hide-own-windows",), False)):
            home = self.home().make_settings(b_Screen_Include_Mouse=0)
            # A window of somebody else's, plain, behind all others.
            plain = "#%02x%02x%02x" % DESKTOP
            behind = self.start(Process(["xlogo", "-geometry", "1024x700+0+0", "-bg", plain, "-fg", plain], os.environ))
            wait_for("the window behind", lambda: is_desktop(screenshot())[100:600, 100:900].all())
            scene = self.start(Scene(sounding=False, place=(0, 672)))
            gui = self.start(Gui(home, *options))
            preview = gui.wait_for_window(PREVIEW)
            path = self.record_by_keys(gui, 1.5)
            picture = Movie(path).picture_at(1)
            for window in (gui.main, preview):
                share = is_desktop(self.pictured(picture, window)).mean()
                if shown:
                    self.assertLess(share, 0.95)
                else:
                    self.assertEqual(share, 1.0)
            # Whatever is not ours is there, and moves.
            self.assertFalse(numpy.isnan(Movie(path, scene).scene_times()[0]).any())
            takes_of(Movie(path, scene))
            for each in (gui, scene, behind):
                each.kill()

    def test_cursor_is_drawn_at_the_pointer_or_not(self):
        pictures = {}
        output_of("xdotool", "mousemove", "500", "300")
        for cursor in ("yes", "no"):
            home = self.home().make_settings()
            path = home.videos / "movie.mov"
            program = self.start(Lumavex(home, "--record", 1, "--output", path, "--cursor", cursor, "--ignore-load"))
            self.assertEqual(program.wait(), 0, program.stderr)
            pictures[cursor] = ~is_desktop(Movie(path).picture_at(0.5))
        self.assertFalse(pictures["no"].any())
        rows, columns = numpy.nonzero(pictures["yes"])
        # The picture's lower left corner is its tip.
        self.assertLessEqual(abs(columns.min() - 500), 4)
        self.assertLessEqual(abs(rows.max() - 300), 4)
        self.assertLess(columns.max(), 540)
        self.assertGreater(rows.min(), 260)

    def test_preview_opens_by_itself_when_wanted(self):
        gui = self.start(Gui(self.home().make_settings()))
        gui.wait_for_window(PREVIEW, 2)
        self.assertEqual(output_of("xdotool", "getactivewindow").strip(), gui.main)  # it takes no keyboard
        gui.kill()
        gui = self.start(Gui(self.home().make_settings(i_Open_Preview_Window_On_Startup=0)))
        time.sleep(1.5)
        self.assertIsNone(gui.titled(PREVIEW))

    def test_preview_shows_what_is_recorded(self):
        gui = self.start(Gui(self.home().make_settings(b_Screen_Include_Mouse=0)))
        preview = gui.wait_for_window(PREVIEW)
        # The upper part of the screen, where no window is.
        wait_for("the desktop in the preview", lambda: is_desktop(screenshot(preview))[:45].all())
        output_of("xsetroot", "-solid", "#c08020")
        wait_for("the change in the preview", lambda: not is_desktop(screenshot(preview)).any())

    def test_recording_goes_on_without_a_preview_to_be_seen(self):
        home = self.home().make_settings()
        scene = self.start(Scene(place=(0, 672)))
        gui = self.start(Gui(home))
        preview = gui.wait_for_window(PREVIEW)
        gui.record()
        gui.wait_for_recording()
        time.sleep(1)

        def wait_until_seen(seen):
            wait_for("the preview's change", lambda: (gui.titled(PREVIEW) is not None) == seen)
            time.sleep(1)

        # By the menu, by its shortcut, and by the window's own close button.
        for keys in (("alt+p",), ("ctrl+e",), ("ctrl+e",), ("ctrl+e",)):
            before = gui.titled(PREVIEW) is not None
            gui.key(*keys)
            if keys == ("alt+p",):
                (menu,) = wait_for("the menu", lambda: [each for each in gui.windows() if title_of(each) == ""
                                                        or each not in (gui.main, preview)])  # fmt: skip
                click(*place_of(menu).centre)
            wait_until_seen(not before)
        output_of("xdotool", "windowactivate", "--sync", gui.titled(PREVIEW))
        press("alt+F4")
        wait_until_seen(False)
        self.assertIn(gui.main, gui.windows())
        gui.stop()
        movie = Movie(self.save(gui), scene)
        self.assert_movie(movie)
        (take,) = takes_of(movie)
        self.assertGreater(take.scene_times[-1] - take.scene_times[0], 6)
        self.assertGreater(numpy.mean(abs(take.offsets - take.picture_offset) < 1 / 30), 0.9)
        self.assertLess(abs(take.asynchrony()).max(), 0.053)

    def test_closing_the_main_window_while_recording_keeps_the_recording(self):
        home = self.home().make_settings()
        gui = self.start(Gui(home))
        gui.wait_for_window(PREVIEW)
        gui.record()
        gui.wait_for_recording()
        time.sleep(3)
        gui.key("alt+F4")
        self.assertEqual(gui.wait(10), 0)
        again = self.start(Gui(home))
        again.close_alert()
        (kept,) = home.recovered_folder.iterdir()
        self.assertGreater(Movie(kept).picture_seconds(), 1.5)


if __name__ == "__main__":
    unittest.main(verbosity=2)
