#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Whatever breaks on the way, the recording is kept and the user is told."""

import os
import unittest
from pathlib import Path

from lumavex_e2e import PREVIEW, EndToEndTest, Gui, Movie, place_of, wait_for


class FaultsTest(EndToEndTest):
    def test_no_sound_server(self):
        """The user is told, and the recording goes on to its end with silence."""
        home = self.home().make_settings()
        program, path = self.start_recording(home, 2, PULSE_SERVER="unix:/nonexistent/socket")
        self.assertEqual(program.wait(), 0, program.stderr)
        self.assertEqual(program.stderr.count("There is no sound server"), 1)
        movie = Movie(path)
        self.assert_movie(movie, 2, tolerance=0.04)
        self.assertEqual(abs(movie.sound()).max(), 0)

    def test_no_sound_is_told_in_the_window(self):
        home = self.home().make_settings()
        gui = self.start(Gui(home, PULSE_SERVER="unix:/nonexistent/socket"))
        preview = gui.wait_for_window(PREVIEW)
        height = place_of(gui.main).height
        gui.record()
        gui.wait_for_recording()
        wait_for("the message strip", lambda: place_of(gui.main).height > height + 10, 3)

        def is_covered():
            main = place_of(gui.main)
            return place_of(preview).y < main.y + main.height

        wait_for("the preview to make room", lambda: not is_covered(), 3)

    def test_saving_to_another_file_system(self):
        home = self.home().make_settings()
        path = Path(f"/dev/shm/lumavex-e2e-{os.getpid()}.mov")
        if not path.parent.is_dir() or path.parent.stat().st_dev == home.documents.stat().st_dev:
            self.skipTest("there is one file system only")
        self.addCleanup(path.unlink, missing_ok=True)
        program, _ = self.start_recording(home, 1, output=path)
        self.assertEqual((program.wait(), program.stdout), (0, f"{path}\n"), program.stderr)
        self.assert_movie(Movie(path), 1, tolerance=0.04)
        self.assertEqual(home.working_files(), [])


if __name__ == "__main__":
    unittest.main(verbosity=2)
