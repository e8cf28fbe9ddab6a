#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""A machine whose processors are all busy: the user is told, and no recording begins.

How busy other programs keep the machine is not known, so nothing here waits for an idle one.
"""

import os
import sys
import time
import unittest

from lumavex_e2e import PREVIEW, EndToEndTest, Gui, Process, output_of, place_of, press, screenshot, wait_for

INFORMATION = "Processor Load"
MEASUREMENT = 3


class LoadTest(EndToEndTest):
    def keep_processors_busy(self):
        for _ in range(os.cpu_count()):
            # Below other programs, which it is not to hinder; the time counts as busy all the same.
            self.start(Process(["nice", "-n", "15", sys.executable, "-c", "while True: pass"], os.environ))

    def measurements(self, gui):
        return gui.stderr_file.read_text(errors="replace").count("Usage: ")

    def test_overload_is_told_and_nothing_is_recorded(self):
        self.keep_processors_busy()
        time.sleep(2)
        home = self.home().make_settings()
        gui = self.start(Gui(home, ignore_load=False))
        gui.wait_for_window(PREVIEW)
        information = gui.wait_for_window(INFORMATION, 40)
        # With something to read, and beside the main window, which floats above all others.
        self.assertGreater(screenshot(information).std(), 5)
        place, main = place_of(information), place_of(gui.main)
        self.assertTrue(place.y >= main.y + main.height or place.y + place.height <= main.y, "it covers the buttons")
        self.assertNotEqual(output_of("xdotool", "getactivewindow").strip(), information)  # it takes no keyboard
        gui.record()
        time.sleep(1.5)
        self.assertIsNone(home.growing_movie())
        self.assertIsNotNone(gui.titled(INFORMATION))
        gui.key("ctrl+r")
        time.sleep(1.5)
        self.assertIsNone(home.growing_movie())

        # Closed by the keyboard, it comes back with the next measurement.
        information = gui.titled(INFORMATION)
        output_of("xdotool", "windowactivate", "--sync", information)
        press("Escape")
        wait_for("the end of the window", lambda: information not in gui.windows(), MEASUREMENT)
        gui.wait_for_window(INFORMATION, 4 * MEASUREMENT)
        self.assertTrue(gui.is_running())

    def test_nothing_is_measured_beneath_a_menu_or_a_dialog(self):
        gui = self.start(Gui(self.home().make_settings(), QT_LOGGING_RULES="lumavex.load.info=true"))
        gui.wait_for_window(PREVIEW)
        wait_for("a measurement", lambda: self.measurements(gui) > 0)

        def assert_none_for_two(what):
            before = self.measurements(gui)
            time.sleep(2 * MEASUREMENT + 1)
            self.assertEqual(self.measurements(gui), before, what)
            press("Escape")
            wait_for("the next measurement", lambda: self.measurements(gui) > before, MEASUREMENT + 2)

        known = set(gui.windows())
        gui.key("alt+f")
        wait_for("the menu", lambda: set(gui.windows()) - known)
        assert_none_for_two("menu")
        gui.key("ctrl+t")
        panel = gui.wait_for_save_panel(title="Select a folder to save the captured image")
        assert_none_for_two("panel")
        self.assertNotIn(panel, gui.windows())


if __name__ == "__main__":
    unittest.main(verbosity=2)
