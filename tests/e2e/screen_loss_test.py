#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""A screen that changes or goes away while it is recorded."""

import os
import subprocess
import time
import unittest

from lumavex_e2e import EndToEndTest, Gui, Lumavex, Movie, output_of, wait_for


class Screen:
    """An X server of its own, without a window manager."""

    def __init__(self, size):
        self.process = subprocess.Popen(["Xvfb", "-displayfd", "1", "-screen", "0", f"{size}x24", "-nolisten", "tcp", "-noreset"],
                                        stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)  # fmt: skip
        self.display = ":" + self.process.stdout.readline().decode().strip()
        self.process.stdout.close()

    def run(self, *command):
        subprocess.run(command, env={**os.environ, "DISPLAY": self.display}, stdin=subprocess.DEVNULL, capture_output=True,
                       timeout=20, check=True)  # fmt: skip

    def kill(self):
        self.process.kill()
        self.process.wait()


class ScreenLossTest(EndToEndTest):
    def screen(self, size):
        return self.start(Screen(size))

    def test_resolution_changes_while_recording(self):
        home = self.home().make_settings(b_Screen_Include_Mouse=0)
        screen = self.screen("800x600")
        screen.run("xsetroot", "-solid", "#2060c0")
        program, path = self.start_recording(home, 5, DISPLAY=screen.display)
        time.sleep(1.5)
        # Upright, and smaller than the movie.
        screen.run("xrandr", "--newmode", "upright", "10", "384", "390", "395", "400", "512", "520", "528", "540")
        screen.run("xrandr", "--addmode", "screen", "upright")
        screen.run("xrandr", "--output", "screen", "--mode", "upright")
        self.assertEqual(program.wait(), 0, program.stderr)
        movie = Movie(path)
        self.assert_movie(movie, 5, tolerance=0.04)
        self.assertEqual(movie.picture_at(0.5).shape, (600, 800, 3))
        self.assertLess(abs(movie.picture_at(0.5)[300, 5].astype(int) - (0x20, 0x60, 0xC0)).max(), 24)
        last = movie.picture_at(4.5).astype(int)
        self.assertLess(abs(last[300, 400] - (0x20, 0x60, 0xC0)).max(), 24)
        self.assertLess(last[300, 5].max(), 24)  # in its own proportions, on black

    def test_server_goes_while_recording_without_a_user(self):
        home = self.home().make_settings()
        screen = self.screen("640x480")
        # The loss is heard in a warning of Qt's, which must not be lost to the user's rules for logging.
        program, path = self.start_recording(home, 60, DISPLAY=screen.display, QT_LOGGING_RULES="*=false")
        time.sleep(3)
        screen.kill()
        self.assertEqual((program.wait(20), program.stdout), (3, f"{path}\n"), program.stderr)
        # By the windows' connection or by the grabbing one, whichever hears of it first.
        self.assertRegex(program.stderr, "The screen is gone, so the recording was ended|The connection to the screen was lost")
        movie = Movie(path)
        self.assertEqual(movie.errors(), "")
        self.assertGreater(movie.picture_seconds(), 2.5)
        self.assertAlmostEqual(movie.picture_seconds(), movie.sound_seconds(), delta=0.2)
        self.assertEqual(home.working_files(), [])

    def test_server_goes_while_recording_in_the_window(self):
        home = self.home().make_settings()
        screen = self.screen("1024x768")
        program = self.start(Lumavex(home, "--ignore-load", DISPLAY=screen.display))
        # Without a window manager the window beneath the pointer has the keyboard.
        screen.run("xdotool", "search", "--sync", "--onlyvisible", "--name", "^Lumavex$", "mousemove", "--window", "%1", "40", "60")

        def recording():
            screen.run("xdotool", "key", "ctrl+r")
            time.sleep(0.5)
            return home.growing_movie()

        path = wait_for("a recording", recording)
        time.sleep(3)
        screen.kill()
        self.assertEqual(program.wait(20), 1)
        finished = Movie(path)
        self.assertEqual(path.read_bytes()[4:12], b"ftypmp42")  # complete already
        self.assertGreater(finished.picture_seconds(), 2.5)
        # The next start joins and tells.
        again = self.start(Gui(home))
        again.close_alert()
        (kept,) = home.recovered_folder.glob("*.mov")
        self.assertEqual(kept.name, path.name)
        self.assertEqual(Movie(kept).errors(), "")
        self.assertEqual(len(Movie(kept).streams()), 2)
        self.assertEqual(output_of("find", home.recovered_folder, "-type", "f").split(), [str(kept)])


if __name__ == "__main__":
    unittest.main(verbosity=2)
