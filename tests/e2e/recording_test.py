#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""A recording made by the buttons is what was seen and heard."""

import random
import shutil
import subprocess
import time
import unittest

import numpy
from lumavex_e2e import FRAME, PREVIEW, WAIT_SECONDS, EndToEndTest, Gui, Lumavex, Movie, Scene, takes_of, wait_for

SYNC_TOLERANCE = FRAME + 0.020


def gstreamer_plays(path):
    """How GStreamer's reader of this format, and a decoder, get to the picture's end."""
    reader = "! qtdemux name=d d.video_0 ! queue ! jpegdec ! fakesink sync=false"
    return subprocess.run(["gst-launch-1.0", "-q", "filesrc", f"location={path}", *reader.split()],
                          stdin=subprocess.DEVNULL, capture_output=True, timeout=60, check=False)  # fmt: skip


class RecordingTest(EndToEndTest):
    def assert_follows_scene(self, take, tones):
        """Every frame shows its own moment, and each tone is heard as its flash is seen."""
        late = take.offsets - take.picture_offset
        self.assertGreater(numpy.mean(abs(late) < FRAME), 0.9, f"frames off by {late.round(3).tolist()}")
        self.assertTrue((numpy.diff(take.scene_times) >= 0).all(), "the picture goes back in time")
        self.assertGreaterEqual(len(take.sound_offsets), tones)
        self.assertLess(abs(take.asynchrony()).max(), SYNC_TOLERANCE, f"{take.asynchrony().round(3).tolist()}")

    def assert_playable(self, path):
        movie = Movie(path)
        self.assertEqual(movie.errors(), "")
        played = gstreamer_plays(path)
        self.assertEqual((played.returncode, played.stderr), (0, b""))
        middle = movie.frame_times()[-1] / 2
        self.assertGreater(movie.picture_at(middle).std(), 1)

    def test_pauses_are_in_neither_picture_nor_sound(self):
        home = self.home().make_settings()
        scene = self.start(Scene(place=(0, 672)))
        gui = self.start(Gui(home))
        gui.wait_for_window(PREVIEW)

        gui.record()
        for _ in range(3):
            time.sleep(1.5 + random.random())
            gui.pause()
            time.sleep(1.3 + random.random())
            gui.record()
        time.sleep(1.7)
        growing = home.root / "copy.mov"
        shutil.copy(gui.wait_for_recording(), growing)
        gui.stop()
        path = home.videos / "three pauses.mov"
        gui.save_as(path)
        gui.close_alert()

        movie = Movie(path, scene)
        self.assert_movie(movie)
        takes = takes_of(movie)
        self.assertEqual(len(takes), 4)
        for take in takes:
            self.assert_follows_scene(take, tones=2)
        # The takes follow each other without a gap: each begins a frame after the one before it ended.
        seen = sum(take.scene_times[-1] - take.scene_times[0] for take in takes) + 3 * FRAME
        shown = movie.frame_times()[-1] - movie.frame_times()[1]
        self.assertAlmostEqual(seen, shown, delta=FRAME)
        self.assertEqual(home.working_files(), [])

        # Both the growing and the finished file are read by everybody.
        self.assert_playable(growing)
        self.assert_playable(path)
        self.assertGreater(Movie(growing).frame_times()[-1], movie.frame_times()[-1] - 2.5)

    def test_lengths_agree_at_any_phase_of_a_second(self):
        home = self.home().make_settings()
        scene = self.start(Scene(place=(0, 672)))
        gui = self.start(Gui(home))
        gui.wait_for_window(PREVIEW)
        for number, phase in enumerate((0.15, 0.4, 0.65, 0.9)):
            time.sleep((phase - time.monotonic()) % 1)
            begin = time.monotonic()
            gui.key("ctrl+r")
            gui.wait_for_recording()
            time.sleep(1.2 + 0.3 * number)
            gui.key("ctrl+s")
            length = time.monotonic() - begin
            path = home.videos / f"{number}.mov"
            gui.save_as(path)
            gui.close_alert()
            movie = Movie(path, scene)
            self.assert_movie(movie, length, tolerance=0.35)
            (take,) = takes_of(movie)
            self.assert_follows_scene(take, tones=1)

    def test_cancelled_save_panel_discards(self):
        home = self.home().make_settings()
        gui = self.start(Gui(home))
        gui.wait_for_window(PREVIEW)
        gui.record()
        gui.wait_for_recording()
        time.sleep(1)
        gui.stop()
        gui.cancel_save_panel()
        wait_for("the removal", lambda: set(home.working_files()) <= {"finalvideo.mov"})
        self.assertEqual(list(home.videos.iterdir()), [])

        # The next recording removes what was left.
        gui.record()
        gui.wait_for_recording()
        self.assertNotIn("finalvideo.mov", home.working_files())
        time.sleep(1)
        gui.stop()
        gui.save_as(home.videos / "kept.mov")
        gui.close_alert()
        self.assertEqual(home.working_files(), [])
        self.assert_movie(Movie(home.videos / "kept.mov"), 1, tolerance=0.6)

    def test_without_sound_there_is_one_stream(self):
        home = self.home().make_settings()
        scene = self.start(Scene(sounding=False, place=(0, 672)))
        path = home.videos / "silent.mov"
        program = self.start(Lumavex(home, "--record", 2, "--output", path, "--sound", "no", "--ignore-load"))
        self.assertEqual(program.wait(WAIT_SECONDS), 0, program.stderr)
        movie = Movie(path, scene)
        self.assertEqual([each["codec_name"] for each in movie.streams()], ["mjpeg"])
        self.assert_rate(movie)
        self.assertAlmostEqual(movie.picture_seconds(), 2, delta=1e-4)
        (take,) = takes_of(movie)
        self.assertGreater(numpy.mean(abs(take.offsets - take.picture_offset) < FRAME), 0.9)
        self.assert_playable(path)


if __name__ == "__main__":
    unittest.main(verbosity=2)
