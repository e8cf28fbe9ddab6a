#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Cameras: their picture stands in the movie where the layout puts it, and one that goes and comes back does no harm."""

import os
import re
import time
import unittest

import numpy
from lumavex_e2e import Cameras, EndToEndTest, Lumavex, Movie, output_of, picture_of, wait_for
from pictures import SCREEN, edges_of, frames_of

ORANGE = (235, 120, 20)  # no colour of the camera's
BARS = [(191, 191, 191), (191, 191, 0), (0, 191, 191), (0, 191, 0), (191, 0, 191), (191, 0, 0), (0, 0, 191)]
NEARLY = 40


def is_colour(picture, colour):
    return (abs(picture.astype(int) - colour) < NEARLY).all(-1)


def bottom_right(frame, size):
    """Edges of a picture of this size in the lower right corner of a frame: left, right, top, bottom."""
    margin = frame[0] / 60
    right, bottom = frame[0] - margin, frame[1] - margin
    return right - size[0], right, bottom - size[1], bottom


class CameraTest(EndToEndTest):
    def setUp(self):
        self.cameras = Cameras()
        self.nodes = []

    def tearDown(self):
        for node in self.nodes:
            if self.cameras.number(node):
                self.cameras.unplug(node)

    def plug_in(self, name):
        self.nodes.append(self.cameras.plug_in(name))
        return self.nodes[-1]

    def lumavex(self, home, *options):
        return self.start(Lumavex(home, *options, PIPEWIRE_RUNTIME_DIR=os.environ["XDG_RUNTIME_DIR"]))

    def record(self, seconds, *options):
        home = self.home().make_settings()
        path = home.videos / "movie.mov"
        program = self.lumavex(home, "--record", seconds, "--output", path, "--fps", 15, "--cursor", "no", "--sound", "no",
                               "--ignore-load", *options)  # fmt: skip
        return home, program, path

    def recorded(self, *options):
        home, program, path = self.record(1.5, *options)
        self.assertEqual(program.wait(), 0, program.stderr)
        self.assertEqual(program.stderr, "")
        return Movie(path).picture_at(1)

    def assert_bars(self, picture):
        """The picture, or part of a picture, shows the camera's bars."""
        height, width = picture.shape[:2]
        for bar, colour in enumerate(BARS):
            place = picture[height // 4, int((bar + 0.5) * width / len(BARS))]
            self.assertLess(abs(place.astype(int) - colour).max(), NEARLY, f"bar {bar}")

    def assert_edges(self, found, layout):
        self.assertLessEqual(numpy.abs(numpy.array(found) - numpy.rint(layout)).max(), 1, f"{found} for {layout}")

    def snapshot(self, *options):
        home = self.home().make_settings(i_Screen_Capture_FPS=1)
        path = home.root / "picture.png"
        program = self.lumavex(home, "--snapshot", path, "--cursor", "no", *options)
        self.assertEqual((program.wait(), program.stdout, program.stderr), (0, f"{path}\n", ""))
        self.assertIn("i_Size_Camera_Secondary_02=1\n", home.settings_file.read_text())  # nothing is stored
        return picture_of(path)

    def test_colours_are_the_cameras_alone(self):
        self.plug_in("Bars")
        self.assert_bars(self.snapshot("--source", "camera", "--camera-size", 5))
        grey = self.snapshot("--source", "camera", "--camera-size", 5, "--saturation", 0).astype(int)
        self.assertEqual(grey.shape, (480, 640, 3))
        self.assertEqual((grey.max(2) - grey.min(2)).max(), 0)
        self.assertGreater(grey.max() - grey.min(), 100)

    def test_every_source_stands_where_the_layout_puts_it(self):
        output_of("xsetroot", "-solid", "#%02x%02x%02x" % ORANGE)
        self.plug_in("Bars")
        listed = self.lumavex(self.home(), "--list-cameras")
        self.assertEqual((listed.wait(), listed.stdout), (0, "Bars\n"), listed.stderr)

        options = ("--camera", "Bars", "--camera-size", 5, "--source")
        both = self.recorded(*options, "both")
        self.assertEqual(both.shape, (SCREEN[1], SCREEN[0], 3))
        found = edges_of(~is_colour(both, ORANGE))
        self.assert_edges(found, bottom_right(SCREEN, (SCREEN[0] / 4, SCREEN[0] / 4 * 3 / 4)))
        left, right, top, bottom = found
        self.assert_bars(both[top:bottom, left:right])

        camera_large = self.recorded(*options, "both-camera")
        self.assertEqual(camera_large.shape, (480, 640, 3))
        self.assert_bars(camera_large[:240])
        layout = bottom_right((640, 480), (640 / 4, 640 / 4 * SCREEN[1] / SCREEN[0]))
        self.assert_edges(edges_of(is_colour(camera_large, ORANGE)), layout)

    def test_camera_that_comes_back_is_taken_up_again(self):
        self.plug_in("Other")
        node = self.plug_in("Chosen")
        home, program, path = self.record(60, "--camera", "Chosen", "--camera-size", 3, "--source", "camera")
        wait_for("a recording", home.growing_movie)
        time.sleep(1.5)
        self.cameras.unplug(node)
        wait_for("the note", lambda: "The camera Chosen is gone." in program.stderr)
        time.sleep(2)
        self.plug_in("Chosen")
        wait_for("the second note", lambda: "The camera Chosen is back." in program.stderr)
        time.sleep(2)
        program.send(2)
        self.assertEqual(program.wait(), 0, program.stderr)
        self.assertEqual(len(program.stderr.splitlines()), 2, program.stderr)

        frames = list(frames_of(Movie(path)))
        self.assertGreater(len(frames), 5 * 15)
        for frame in frames:
            self.assert_bars(frame)
        # The snow changes with every picture of the camera's: it moves, stands still, and moves again.
        moving = [bool((one != other).any()) for one, other in zip(frames, frames[1:], strict=False)]
        still = max(re.finditer("0+", "".join("01"[each] for each in moving)), key=lambda run: len(run.group()))
        self.assertGreater(len(still.group()), 20)
        self.assertGreater(sum(moving[: still.start()]), 5)
        self.assertGreater(sum(moving[still.end() :]), 5)


if __name__ == "__main__":
    unittest.main(verbosity=2)
