#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""A program that is killed loses at most the last moments of its recording, and the next start completes it."""

import concurrent.futures
import os
import random
import time
import unittest

from lumavex_e2e import PREVIEW, EndToEndTest, Gui, Lumavex, Movie, Scene, output_of, press, takes_of, wait_for

KILLS = int(os.environ.get("LUMAVEX_KILLS", "10"))
MAY_BE_LOST = 1.5


class KillingTest(EndToEndTest):
    def killed_after(self, seconds):
        """(what ffmpeg finds wrong with the file that is left, its seconds, those of the recording)."""
        home = self.home().make_settings()
        program = self.start(Lumavex(home, "--record", 60, "--output", home.videos / "never.mov", "--ignore-load"))
        path = wait_for("a recording", home.growing_movie)
        begin = time.monotonic()
        time.sleep(seconds)
        program.kill()
        recorded = time.monotonic() - begin
        movie = Movie(path)
        return movie.errors(), movie.frame_times()[-1], recorded

    def test_file_of_a_killed_recording_decodes(self):
        self.start(Scene(place=(0, 672)))  # something new in every frame
        with concurrent.futures.ThreadPoolExecutor(2) as pool:
            outcomes = list(pool.map(self.killed_after, [random.uniform(3, 5) for _ in range(KILLS)]))
        for errors, kept, recorded in outcomes:
            self.assertEqual(errors, "")
            self.assertGreater(kept, recorded - MAY_BE_LOST)

    def test_next_start_completes_the_recording(self):
        home = self.home().make_settings()
        scene = self.start(Scene(place=(0, 672)))
        gui = self.start(Gui(home))
        gui.wait_for_window(PREVIEW)
        gui.record()
        gui.wait_for_recording()
        time.sleep(4)
        gui.kill()
        stamp = home.growing_movie().name

        # The first button shows where it is, with whatever the desktop has for that.
        path = self.fake_encoder(home, 'exec "$REAL" "$@"')
        shown = home.root / "shown"
        handler = home.root / "bin" / "xdg-open"
        handler.write_text(f'#!/bin/sh\necho "$1" >> {shown}\n')
        handler.chmod(0o755)
        again = self.start(Gui(home, PATH=path))
        alert = again.wait_for_alert()
        output_of("xdotool", "windowactivate", "--sync", alert)
        press("Return")
        wait_for("the folder", shown.exists)
        wait_for("its name", lambda: shown.read_text().rstrip().endswith(str(home.recovered_folder)))
        self.assertEqual([file.name for file in home.recovered_folder.iterdir()], [stamp])
        self.assertEqual(home.working_files(), [])
        movie = Movie(home.recovered_folder / stamp, scene)
        self.assertEqual(sorted(each["codec_name"] for each in movie.streams()), ["mjpeg", "pcm_s16le"])
        self.assertEqual(movie.errors(), "")
        self.assertGreater(movie.picture_seconds(), 4 - MAY_BE_LOST)
        self.assertGreater(movie.sound_seconds(), 4 - MAY_BE_LOST)
        (take,) = takes_of(movie)
        self.assertLess(abs(take.asynchrony()).max(), 0.053)

        # What was completed once is not touched again.
        before = (home.recovered_folder / stamp).stat()
        again.kill()
        third = self.start(Gui(home))
        time.sleep(1.5)
        self.assertIsNone(third.alert())
        after = (home.recovered_folder / stamp).stat()
        self.assertEqual((before.st_ino, before.st_mtime_ns), (after.st_ino, after.st_mtime_ns))


if __name__ == "__main__":
    unittest.main(verbosity=2)
