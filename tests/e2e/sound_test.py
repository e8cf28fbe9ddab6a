#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Sound and picture stay together when the sound server, the process or the clock does not."""

import os
import signal
import time
import unittest

import numpy
from faults_test import SoundServer
from lumavex_e2e import FRAME, EndToEndTest, Lumavex, Movie, Process, Scene, takes_of, wait_for

SYNC_TOLERANCE = FRAME + 0.020
NULL_SINK = "module-null-sink sink_name=out rate=44100 channels=2 norewinds=1"


class SoundTest(EndToEndTest):
    def start_recording(self, home, seconds, **environment):
        path = home.videos / "movie.mov"
        program = self.start(Lumavex(home, "--record", seconds, "--output", path, "--ignore-load", **environment))
        wait_for("a recording", home.growing_movie)
        return program, path

    def play_tone(self, home, server):
        self.start(Process(["ffmpeg", "-nostdin", "-v", "error", "-re", "-f", "lavfi", "-i", "sine=440:d=30", "-f", "pulse",
                            "-server", server.address, "tone"], home.environment))  # fmt: skip

    def assert_times_go_on(self, movie):
        """Every frame has a time of its own, later than the one before it by exactly a frame."""
        self.assertLess(abs(numpy.diff(movie.frame_times()) - FRAME).max(), 0.001)

    def test_server_dies_and_restarts(self):
        home = self.home().make_settings()
        server = self.start(SoundServer(home, NULL_SINK))
        self.play_tone(home, server)
        time.sleep(1)
        program, path = self.start_recording(home, 12, PULSE_SERVER=server.address)
        begun = time.monotonic()
        time.sleep(2)
        killed = time.monotonic() - begun
        server.kill()
        wait_for("the message", lambda: "The recording goes on without sound." in program.stderr, 2.5)
        time.sleep(1)
        back = time.monotonic() - begun
        server = self.start(SoundServer(home, NULL_SINK))
        self.play_tone(home, server)
        wait_for("the message", lambda: "The sound is back." in program.stderr, 5)
        self.assertEqual(program.wait(), 0, program.stderr)
        self.assertEqual([program.stderr.count(text) for text in ("goes on without sound", "sound is back")], [1, 1])
        movie = Movie(path)
        self.assert_movie(movie, 12, tolerance=0.04)
        self.assert_times_go_on(movie)
        # The recording began up to a few tenths of a second before its file was seen.
        sound = abs(movie.sound())
        heard = [bool(sound[int(at * 44100) : int((at + 0.1) * 44100)].max() > 500) for at in numpy.arange(0, 11.9, 0.1)]
        loss = heard.index(False, heard.index(True)) / 10
        self.assertAlmostEqual(loss, killed, delta=0.6)
        self.assertFalse(any(heard[int(loss * 10) : int(back * 10)]), heard)
        self.assertTrue(all(heard[-10:]), heard)  # the player needs some time to come back, too

    def assert_in_step(self, takes, limit=SYNC_TOLERANCE):
        for take in takes:
            self.assertGreaterEqual(len(take.sound_offsets), 2)
            asynchrony = take.asynchrony()
            print(f"tones after flashes: {asynchrony.min() * 1000:.1f} to {asynchrony.max() * 1000:.1f} ms")
            self.assertLess(abs(asynchrony).max(), limit, asynchrony.round(3).tolist())

    def test_stopped_and_continued_process(self):
        home = self.home().make_settings()
        scene = self.start(Scene(place=(0, 672)))
        program, path = self.start_recording(home, 10)
        time.sleep(2.5)
        program.send(signal.SIGSTOP)
        time.sleep(2)
        program.send(signal.SIGCONT)
        self.assertEqual(program.wait(), 0, program.stderr)
        movie = Movie(path, scene)
        self.assert_movie(movie, 10, tolerance=0.04)
        self.assert_times_go_on(movie)
        takes = takes_of(movie)
        self.assertEqual(len(takes), 2, "the picture stands still for as long, and then shows its own moment again")
        self.assertLess(abs(takes[0].picture_offset - takes[1].picture_offset), FRAME)
        self.assert_in_step(takes)
        self.assertGreaterEqual(len(movie.tones()), 18, "nothing of what was heard meanwhile is lost")

    def test_wall_clock_set_back(self):
        home = self.home().make_settings()
        scene = self.start(Scene(place=(0, 672)))
        program, path = self.start_recording(home, 6, LD_PRELOAD=os.environ["LUMAVEX_WALL_CLOCK"])
        self.assertEqual(program.wait(), 0, program.stderr)
        movie = Movie(path, scene)
        self.assert_movie(movie, 6, tolerance=0.04)
        self.assert_times_go_on(movie)
        self.assert_in_step(takes_of(movie))


if __name__ == "__main__":
    unittest.main(verbosity=2)
