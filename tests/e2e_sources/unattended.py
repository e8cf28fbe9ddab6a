# SPDX-License-Identifier: GPL-3.0-or-later
"""A test that records without a user while it moves things about."""

import time

from lumavex_e2e import EndToEndTest, Lumavex, wait_for


class UnattendedTest(EndToEndTest):
    hold = 0.5  # seconds that each state lasts, so that several frames show it

    def begin_recording(self, *options):
        home = self.home().make_settings()
        path = home.videos / "movie.mov"
        program = self.start(Lumavex(home, "--record", 60, "--output", path, "--fps", 10, "--sound", "no", "--cursor", "no",
                                     "--ignore-load", *options))  # fmt: skip
        wait_for("a recording", home.growing_movie)
        time.sleep(self.hold)
        return program, path

    def end_recording(self, program):
        program.send(2)
        self.assertEqual(program.wait(), 0, program.stderr)
