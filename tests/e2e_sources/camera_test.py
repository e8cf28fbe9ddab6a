#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Cameras: their picture stands in the movie where the layout puts it, and one that goes and comes back does no harm."""

import os
import re
import time
import unittest

import numpy
from lumavex_e2e import Cameras, EndToEndTest, Lumavex, Movie, output_of, wait_for
from pictures import SCREEN, PictureWindow, frames_of, plain

ORANGE = (235, 120, 20)  # no colour of the camera's
BARS = [(191, 191, 191), (191, 191, 0), (0, 191, 191), (0, 191, 0), (191, 0, 191), (191, 0, 0), (0, 0, 191)]
NEARLY = 40
CAMERA_SIZES = {3: (320, 240), 5: (640, 480), 7: (1280, 720)}


def is_colour(picture, colour):
    return (abs(picture.astype(int) - colour) < NEARLY).all(-1)


def picture_of(path):
    data = output_of("convert", str(path), "-depth", "8", "ppm:-", binary=True)
    header = re.match(rb"P6\s+(\d+)\s+(\d+)\s+255\s", data)
    return numpy.frombuffer(data, numpy.uint8, offset=header.end()).reshape(int(header.group(2)), int(header.group(1)), 3)


def edges_of(filled):
    """First and last column, first and last row that are filled for the most part of what is filled at all."""
    columns, rows = filled.sum(0), filled.sum(1)
    across, down = numpy.flatnonzero(columns > columns.max() / 2), numpy.flatnonzero(rows > rows.max() / 2)
    return across[0], across[-1] + 1, down[0], down[-1] + 1


def bottom_right(frame, size):
    """Edges of a picture of this size in the lower right corner of a frame: left, right, top, bottom."""
    margin = frame[0] / 60
    right, bottom = frame[0] - margin, frame[1] - margin
    return right - size[0], right, bottom - size[1], bottom


class CameraTest(EndToEndTest):
    def setUp(self):
        self.cameras = Cameras()
        self.addCleanup(self.cameras.unplug_all)

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

    def test_options_place_the_small_picture_and_colour_the_camera(self):
        self.start(PictureWindow(plain(ORANGE), "backdrop", background=True))
        self.cameras.plug_in("Bars")
        width, height = SCREEN
        margin = width / 60
        # Whichever source is the small picture: middle left, a half; top centre, an eighth.
        for source, is_small in (("both", lambda each: ~is_colour(each, ORANGE)),
                                 ("both-camera", lambda each: is_colour(each, ORANGE))):  # fmt: skip
            for place, size, divisor in ((3, 3, 2), (1, 0, 8)):
                with self.subTest(source=source, place=place):
                    picture = self.snapshot("--source", source, "--size", "screen", "--camera-size", 5,
                                            "--secondary-position", place, "--secondary-size", size)  # fmt: skip
                    self.assertEqual(picture.shape[:2], (height, width))
                    w = width / divisor
                    h = w * 3 / 4  # the screen's shape and the camera's
                    left = margin if place == 3 else (width - w) / 2
                    top = (height - h) / 2 if place == 3 else margin
                    self.assert_edges(edges_of(is_small(picture)), (left, left + w, top, top + h))

        self.assert_bars(self.snapshot("--source", "camera", "--camera-size", 5))
        grey = self.snapshot("--source", "camera", "--camera-size", 5, "--saturation", 0).astype(int)
        self.assertEqual(grey.shape, (480, 640, 3))
        self.assertEqual((grey.max(2) - grey.min(2)).max(), 0)
        self.assertGreater(grey.max() - grey.min(), 100)
        flat = self.snapshot("--source", "camera", "--camera-size", 5, "--contrast", 0, "--brightness", 5)
        self.assertEqual(len(numpy.unique(flat.reshape(-1, 3), axis=0)), 1)
        bright = self.snapshot("--source", "camera", "--camera-size", 5, "--brightness", 10)
        self.assertTrue((bright == 255).all())

    def test_every_source_stands_where_the_layout_puts_it(self):
        self.start(PictureWindow(plain(ORANGE), "backdrop", background=True))
        self.cameras.plug_in("Bars")
        listed = self.lumavex(self.home(), "--list-cameras")
        self.assertEqual((listed.wait(), listed.stdout), (0, "Bars\n"), listed.stderr)

        for code, size in CAMERA_SIZES.items():
            with self.subTest(camera_size=size):
                options = ("--camera", "Bars", "--camera-size", code, "--source")
                alone = self.recorded(*options, "camera")
                self.assertEqual(alone.shape, (size[1], size[0], 3))
                self.assert_bars(alone)
                self.assertFalse(is_colour(alone, ORANGE).any())

                both = self.recorded(*options, "both")
                self.assertEqual(both.shape, (SCREEN[1], SCREEN[0], 3))
                width = SCREEN[0] / 4
                layout = bottom_right(SCREEN, (width, width * size[1] / size[0]))
                found = edges_of(~is_colour(both, ORANGE))
                self.assert_edges(found, layout)
                left, right, top, bottom = found
                self.assert_bars(both[top:bottom, left:right])
                beside = both.copy()
                beside[top - 8 : bottom + 8, left - 8 : right + 8] = ORANGE
                self.assertTrue(is_colour(beside, ORANGE).all())

                camera_large = self.recorded(*options, "both-camera")
                self.assertEqual(camera_large.shape, (size[1], size[0], 3))
                self.assert_bars(camera_large[: size[1] // 2])
                layout = bottom_right(size, (size[0] / 4, size[0] / 4 * SCREEN[1] / SCREEN[0]))
                self.assert_edges(edges_of(is_colour(camera_large, ORANGE)), layout)

    def test_camera_that_comes_back_is_taken_up_again(self):
        self.cameras.plug_in("Other")
        node = self.cameras.plug_in("Chosen")
        home, program, path = self.record(60, "--camera", "Chosen", "--camera-size", 3, "--source", "camera")
        wait_for("a recording", home.growing_movie)
        time.sleep(1.5)
        self.cameras.unplug(node)
        wait_for("the note", lambda: "The camera Chosen is gone." in program.stderr)
        time.sleep(2)
        self.cameras.plug_in("Chosen")
        wait_for("the second note", lambda: "The camera Chosen is back." in program.stderr)
        time.sleep(2)
        program.send(2)
        self.assertEqual(program.wait(), 0, program.stderr)
        self.assertEqual(len(program.stderr.splitlines()), 3, program.stderr)
        self.assertRegex(program.stderr.splitlines()[2], r"^Camera gone for \d s from 0:0\d on\.$")

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
