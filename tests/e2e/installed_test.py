#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""The program where it is installed, and installed only in part."""

import os
import unittest
from pathlib import Path

from lumavex_e2e import LUMAVEX, EndToEndTest, Movie, Process, output_of, wait_for


class InstalledTest(EndToEndTest):
    def setUp(self):
        super().setUp()
        self.user = self.home().make_settings()
        self.prefix = self.user.root / "usr"
        output_of(os.environ["LUMAVEX_CMAKE"], "--install", Path(LUMAVEX).parent, "--prefix", self.prefix)
        (self.media,) = self.prefix.glob("lib*/**/lumavex-media.so")

    def run_installed(self, *options):
        program = self.start(Process([self.prefix / "bin" / "lumavex", *map(str, options)], self.user.environment))
        return program.wait(), program

    def record(self):
        path = self.user.videos / "movie.mov"
        return path, *self.run_installed("--record", 2, "--output", path, "--sound", "yes", "--ignore-load")

    def test_finds_its_library_wherever_it_is_moved(self):
        moved = self.prefix.rename(self.user.root / "moved")
        self.prefix = moved
        path, status, program = self.record()
        self.assertEqual((status, program.stderr), (0, ""))
        self.assert_movie(Movie(path), 2, tolerance=0.04)

    def test_does_not_load_what_the_window_can_do_without(self):
        needed = output_of("readelf", "--dynamic", self.prefix / "bin" / "lumavex")
        self.assertIn("libQt6Widgets", needed)
        self.assertNotRegex(needed, "libgst|libpulse")
        program = self.start(Process([self.prefix / "bin" / "lumavex", "--record", "60", "--sound", "no", "--ignore-load",
                                      "--output", self.user.videos / "movie.mov"], self.user.environment))  # fmt: skip
        wait_for("a recording", self.user.growing_movie)
        self.assertNotIn(self.media.name, Path(f"/proc/{program.pid}/maps").read_text())

    def test_without_its_library_says_so_and_keeps_the_picture(self):
        self.media.unlink()
        status, program = self.run_installed("--list-cameras")
        self.assertEqual((status, program.stdout), (1, ""))
        self.assertIn("Lumavex is not installed completely", program.stderr)
        status, program = self.run_installed("--record", 1, "--output", self.user.videos / "x.mov", "--source", "camera",
                                             "--camera", "Bars", "--ignore-load")  # fmt: skip
        self.assertEqual(status, 1)
        self.assertIn("Lumavex is not installed completely", program.stderr)
        self.assertNotIn("There is no camera named", program.stderr)
        _, status, program = self.record()
        self.assertEqual(status, 3)
        self.assertIn("The recording goes on without sound. Lumavex is not installed completely", program.stderr)
        (kept,) = self.user.recovered_folder.glob("*.mov")
        self.assertIn(str(kept), program.stderr)
        movie = Movie(kept)
        self.assertEqual(movie.errors(), "")
        self.assertAlmostEqual(movie.picture_seconds(), 2, delta=0.04)


if __name__ == "__main__":
    unittest.main()
