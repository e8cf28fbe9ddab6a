#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""A program that is killed loses at most the last moments of its recording, and the next start completes it."""

import concurrent.futures
import os
import random
import signal
import time
import unittest

from lumavex_e2e import PREVIEW, EndToEndTest, Gui, Lumavex, Movie, Scene, output_of, press, takes_of, wait_for

KILLS = int(os.environ.get("LUMAVEX_KILLS", "6"))
MAY_BE_LOST = 1.5


class KillingTest(EndToEndTest):
    def run_again(self, home):
        """The next run, which completes what is left, and what it completed."""
        program = self.start(Lumavex(home, "--record", 0.2, "--output", home.videos / "next.mov", "--ignore-load", "--sound", "no"))
        self.assertEqual(program.wait(), 0, program.stderr)
        self.assertEqual(home.working_files(), [])
        return list(home.recovered_folder.iterdir()) if home.recovered_folder.exists() else []

    def assert_whole(self, path):
        movie = Movie(path)
        self.assertEqual(movie.errors(), "")
        self.assertEqual(sorted(each["codec_name"] for each in movie.streams()), ["mjpeg", "pcm_s16le"])
        self.assert_rate(movie)
        return movie

    def killed_after(self, seconds):
        """What a kill after so many seconds costs."""
        home = self.home().make_settings()
        program = self.start(Lumavex(home, "--record", 60, "--output", home.videos / "never.mov", "--ignore-load"))
        path = wait_for("a recording", home.growing_movie)
        begin = time.monotonic()
        time.sleep(seconds)
        program.kill()
        recorded = time.monotonic() - begin
        movie = Movie(path)
        self.assertEqual(movie.errors(), "")
        kept = movie.frame_times()[-1]
        (completed,) = self.run_again(home)
        self.assertEqual(completed.name, path.name)
        self.assertEqual(self.assert_whole(completed).frame_times()[-1], kept)
        return recorded - kept

    def killed_while_finishing(self, seconds):
        """A kill so many seconds after the recording was told to end: it is where it was wanted, or it is rescued."""
        home = self.home().make_settings()
        path = home.videos / "movie.mov"
        program = self.start(Lumavex(home, "--record", 60, "--output", path, "--ignore-load"))
        wait_for("a recording", home.growing_movie)
        time.sleep(2)
        program.send(signal.SIGTERM)
        time.sleep(seconds)
        program.kill()
        completed = self.run_again(home)
        self.assertTrue(path.exists() or completed)
        for file in (*completed, *([path] if path.exists() else [])):
            self.assertGreater(self.assert_whole(file).picture_seconds(), 2 - MAY_BE_LOST)

    def at_random_instants(self, kills, kill, *between):
        with concurrent.futures.ThreadPoolExecutor(2) as pool:
            return list(pool.map(kill, [random.uniform(*between) for _ in range(kills)]))

    def test_killed_recording_decodes_and_is_completed(self):
        self.start(Scene(place=(0, 672)))  # something new in every frame
        lost = self.at_random_instants(KILLS, self.killed_after, 2, 5)
        print(f"\n{KILLS} kills cost {min(lost):.2f} to {max(lost):.2f} s, {sum(lost) / KILLS:.2f} s on average")
        self.assertLess(max(lost), MAY_BE_LOST)

    def test_killed_while_finishing_is_saved_or_completed(self):
        self.at_random_instants(KILLS // 2, self.killed_while_finishing, 0, 0.6)

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
        wait_for("nothing else", lambda: [file.name for file in home.recovered_folder.iterdir()] == [stamp])  # it is told
        self.assertEqual(home.working_files(), [])
        movie = Movie(home.recovered_folder / stamp, scene)
        self.assertEqual(sorted(each["codec_name"] for each in movie.streams()), ["mjpeg", "pcm_s16le"])
        self.assertEqual(movie.errors(), "")
        self.assertGreater(movie.picture_seconds(), 4 - MAY_BE_LOST)
        self.assertGreater(movie.sound_seconds(), 4 - MAY_BE_LOST)
        (take,) = takes_of(movie)
        self.assertLess(abs(take.asynchrony()).max(), 0.053)

        # A completed recording is not touched again.
        before = (home.recovered_folder / stamp).stat()
        again.kill()
        third = self.start(Gui(home))
        time.sleep(1.5)
        self.assertIsNone(third.alert())
        after = (home.recovered_folder / stamp).stat()
        self.assertEqual((before.st_ino, before.st_mtime_ns), (after.st_ino, after.st_mtime_ns))


if __name__ == "__main__":
    unittest.main(verbosity=2)
