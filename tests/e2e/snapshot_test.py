#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Pictures, by the button and from the command line: where they go, what they show, and what is drawn over them."""

import re
import signal
import time
import unittest

import numpy
from lumavex_e2e import (PICTURE_PANEL, PREVIEW, SCENE_SIZE, SCENE_TICK, EndToEndTest, Gui, Lumavex, Movie, Scene, output_of,
                         place_of, read_codes, wait_for)  # fmt: skip

RED = (255, 0, 0)
STAMP = re.compile(r"^\d{4}-\d\d-\d\d-\d\d-\d\d-\d\d\.png$")


def pixels_of(path):
    """height x width x 3 values of a picture file."""
    data = output_of("convert", str(path), "-alpha", "off", "-depth", "8", "ppm:-", binary=True)
    header = re.match(rb"P6\s+(\d+)\s+(\d+)\s+255\s", data)
    return numpy.frombuffer(data, numpy.uint8, offset=header.end()).reshape(int(header.group(2)), int(header.group(1)), 3)


def extent_of(filled):
    """Left, top, width and height of what is filled."""
    rows, columns = numpy.flatnonzero(filled.any(1)), numpy.flatnonzero(filled.any(0))
    return columns[0], rows[0], columns[-1] + 1 - columns[0], rows[-1] + 1 - rows[0]


def signal_to_noise(picture, other):
    """In decibels."""
    error = ((picture.astype(float) - other) ** 2).mean()
    return 10 * numpy.log10(255**2 / error) if error else numpy.inf


class SnapshotTest(EndToEndTest):
    def setUp(self):
        output_of("xsetroot", "-solid", "#285aa0")

    def pictures(self, home):
        return sorted((home.documents / "LumavexPicture").glob("*.png"))

    def gui(self, home, *options):
        """The program, with a stand-in for what opens files, which notes what it is given."""
        tools = home.root / "bin"
        tools.mkdir()
        opener = tools / "xdg-open"
        opener.write_text(f'#!/bin/sh\necho "$@" >>"{home.root}/opened"\n')
        opener.chmod(0o700)
        gui = self.start(Gui(home, *options, PATH=f"{tools}:{home.environment['PATH']}"))
        gui.wait_for_window(PREVIEW)
        return gui

    def shoot(self, home, *options):
        path = home.root / "picture.png"
        program = self.start(Lumavex(home, "--snapshot", path, "--cursor", "no", "--overwrite", *options))
        self.assertEqual((program.wait(), program.stdout, program.stderr), (0, f"{path}\n", ""))
        return pixels_of(path)

    def assert_refused(self, status, text, home, *options):
        program = self.start(Lumavex(home, *options))
        self.assertEqual((program.wait(), program.stdout), (status, ""), program.stderr)
        self.assertIn(text, program.stderr)

    def test_by_the_button_it_is_saved_viewed_or_kept(self):
        home = self.home().make_settings()
        gui = self.gui(home)
        for number, (key, opens) in enumerate((("Return", True), ("Escape", False))):  # "View Image File", "Close"
            gui.take_picture()
            (taken,) = wait_for("the picture", lambda: self.pictures(home))
            self.assertRegex(taken.name, STAMP)
            gui.wait_for_save_panel(title=PICTURE_PANEL)
            saved = home.videos / f"{number}.png"
            gui.save_as(saved, PICTURE_PANEL)
            gui.close_alert(key)
            self.assertEqual(self.pictures(home), [])
            self.assertEqual(pixels_of(saved).shape, (768, 1024, 3))
            if opens:
                noted = wait_for("the viewer", lambda: (home.root / "opened").exists() and (home.root / "opened").read_text())
                self.assertIn(str(saved), noted)
        self.assertEqual((home.root / "opened").read_text().count("\n"), 1)

        # Cancelled, the picture stays until the next start.
        gui.key("ctrl+t")
        gui.cancel_save_panel(PICTURE_PANEL)
        time.sleep(1.5)
        self.assertIsNone(gui.titled(PICTURE_PANEL))
        self.assertIsNone(gui.alert())
        self.assertEqual(len(self.pictures(home)), 1)
        # The name proposed is the picture's: accepted as it is, it is saved in the folder shown.
        gui.kill()
        again = self.gui_again(home)
        self.assertEqual(self.pictures(home), [])
        again.take_picture()
        (taken,) = wait_for("the picture", lambda: self.pictures(home))
        panel = again.wait_for_save_panel(title=PICTURE_PANEL)
        output_of("xdotool", "key", "Return")
        wait_for("the end of the panel", lambda: panel not in again.windows())
        again.close_alert()
        self.assertTrue(list(home.root.rglob(taken.name)))
        self.assertFalse(taken.exists())

        # Ended while a picture is being written, the next start finds nothing in its way.
        again.key("ctrl+t", "ctrl+q")
        self.assertEqual(again.wait(10), 0)
        last = self.gui_again(home)
        self.assertEqual(self.pictures(home), [])
        self.assertTrue(last.is_running())

    def gui_again(self, home):
        gui = self.start(Gui(home))
        gui.wait_for_window(PREVIEW)
        return gui

    def test_it_is_the_frame_recorded_at_the_same_instant(self):
        home = self.home().make_settings()
        scene = self.start(Scene(sounding=False, place=(0, 672)))
        gui = self.gui(home)
        gui.record()
        gui.wait_for_recording()
        time.sleep(1)
        gui.take_picture()
        picture = home.videos / "picture.png"
        gui.save_as(picture, PICTURE_PANEL)
        gui.close_alert()
        gui.stop()
        gui.save_as(home.videos / "movie.mov")
        gui.close_alert()

        movie = Movie(home.videos / "movie.mov", scene)
        taken = pixels_of(picture)
        width, height = SCENE_SIZE
        place = scene.place
        grey = taken[None, place[1] : place[1] + height, place[0] : place[0] + width] @ numpy.array([0.299, 0.587, 0.114])
        (time_shown,) = read_codes(grey)
        times, _ = movie.scene_times()
        same = numpy.flatnonzero(abs(times - time_shown) < SCENE_TICK / 2)
        self.assertTrue(len(same), f"no frame shows {time_shown}")
        # Several frames may show the same time when the scene is slow; one of them is it.
        self.assertGreater(max(signal_to_noise(taken, movie.frame(number)) for number in same), 35)
        self.assertLess(signal_to_noise(taken, movie.frame(same[0] - 10)), 35)

    def test_overlay_stands_where_the_help_says(self):
        home = self.home().make_settings(i_Screen_Capture_FPS=1)
        overlay = home.root / "overlay.png"
        output_of("convert", "-size", "100x50", "xc:red", str(overlay))
        program = self.start(Lumavex(home, "--help"))
        program.wait()
        table = dict(re.findall(r"(\d) (top|middle|bottom|centre)", program.stdout.replace("4 centre", "4 middle centre")))
        columns = dict(re.findall(r"(\d) (?:top|middle|bottom)? ?(left|centre|right)", program.stdout))
        self.assertEqual(sorted(table), list("012345678"))
        self.assertEqual(sorted(columns), list("012345678"))
        margin = 1024 / 60
        for place in "012345678":
            with self.subTest(place=place):
                picture = self.shoot(home, "--overlay", overlay, "--overlay-position", place, "--overlay-size", 20)
                left, top, width, height = extent_of((picture == RED).all(2))
                self.assertEqual((width, height), (200, 100))
                across = {"left": margin, "centre": (1024 - 200) / 2, "right": 1024 - 200 - margin}[columns[place]]
                down = {"top": margin, "middle": (768 - 100) / 2, "bottom": 768 - 100 - margin}[table[place]]
                self.assertLessEqual(abs(left - across), 1)
                self.assertLessEqual(abs(top - down), 1)
        self.assertIn("i_Position_Overlay_02=8\n", home.settings_file.read_text())  # for that run only

        # Every kind of picture, in a recording too.
        for ending in ("bmp", "jpg", "gif", "png", "jpeg", "tif", "tiff"):
            with self.subTest(ending=ending):
                overlay = home.root / f"overlay.{ending}"
                output_of("convert", "-size", "100x50", "xc:red", str(overlay))
                picture = self.shoot(home, "--overlay", overlay)
                self.assertEqual(extent_of((abs(picture.astype(int) - RED) < 8).all(2))[2:], (300, 150))
        path = home.videos / "movie.mov"
        program = self.start(Lumavex(home, "--record", 1, "--output", path, "--fps", 10, "--ignore-load", "--overlay", overlay))
        self.assertEqual(program.wait(), 0, program.stderr)
        red = (abs(Movie(path).picture_at(0.5).astype(int) - RED) < 40).all(2)
        self.assertLessEqual(abs(numpy.array(extent_of(red)) - (1024 - 300 - 17, 768 - 150 - 17, 300, 150)).max(), 3)

    def test_what_cannot_be_done_is_told_and_nothing_is_touched(self):
        home = self.home().make_settings()
        path = home.root / "picture.png"
        path.write_text("precious")
        self.assert_refused(1, "exists already", home, "--snapshot", path)
        self.assertEqual(path.read_text(), "precious")
        nonsense = home.root / "nonsense.png"
        nonsense.write_text("no picture")
        for overlay in (nonsense, home.root / "absent.png"):
            movie = home.videos / "movie.mov"
            text = f"The overlay {overlay} cannot be read as a picture."
            self.assert_refused(1, text, home, "--record", 1, "--output", movie, "--ignore-load", "--overlay", overlay)
            self.assertFalse(movie.exists())
            self.assert_refused(1, text, home, "--snapshot", home.root / "new.png", "--overlay", overlay)
        self.assert_refused(1, "There is no camera", home, "--snapshot", home.root / "new.png", "--source", "camera")
        self.assertFalse((home.root / "new.png").exists())
        self.assertEqual(home.working_files(), [])
        for options in (["--snapshot", "x.jpg"], ["--snapshot", "x.png", "--record", "1", "--output", "x.mov"],
                        ["--overlay-size", "30"], ["--overlay", nonsense, "--overlay-position", "9"],
                        ["--secondary-size", "5"], ["--brightness", "11"]):  # fmt: skip
            with self.subTest(options=options):
                self.assert_refused(2, 'Try "lumavex --help".', home, *options)

        gui = self.gui(home)
        self.assert_refused(1, "Lumavex runs already.", home, "--snapshot", home.root / "new.png")
        # In the window an overlay that cannot be read is told, and the program works.
        height = place_of(gui.main).height
        gui.kill()
        gui = self.start(Gui(home, "--overlay", nonsense))
        gui.wait_for_window(PREVIEW)
        wait_for("the message in the window", lambda: place_of(gui.main).height > height + 10)
        gui.send(signal.SIGTERM)
        self.assertEqual(gui.wait(), 0)


if __name__ == "__main__":
    unittest.main(verbosity=2)
