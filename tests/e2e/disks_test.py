#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Disks that are full, read-only, or gone: what was recorded is kept, and the user is told where and why."""

import contextlib
import os
import shutil
import time
import unittest

from lumavex_e2e import PREVIEW, EndToEndTest, Gui, Lumavex, Movie, output_of, press, wait_for

FILL = """avail=$(df --output=avail -B1 "$JOINED" 2>/dev/null || df --output=avail -B1 "$(dirname "$JOINED")")
fallocate -l "$(echo "$avail" | tail -1)" "$(dirname "$JOINED")/../ballast"
exec "$REAL" "$@"
"""


def fill(folder, keep=0):
    """Takes all space of the disk but so many bytes, and nothing that a recorder frees when the disk is full."""
    about = os.statvfs(folder)
    free = about.f_bavail * about.f_frsize
    with open(folder / "ballast", "wb", buffering=0) as file, contextlib.suppress(OSError):
        os.posix_fallocate(file.fileno(), 0, free - max(keep, 8 << 20))
        file.seek(0, os.SEEK_END)
        while keep == 0 and file.tell() < free:  # to the last byte, which moves while something records
            file.write(b"x" * 4096)


class DisksTest(EndToEndTest):
    def home_on_disk(self, size):
        home = self.home()
        self.mount_disk(home.documents, f"size={size}")
        return home.make_settings()

    def test_disk_that_fills_up_ends_the_recording_in_time(self):
        home = self.home_on_disk("250m")
        program, path = self.start_recording(home, 60)
        time.sleep(2)
        fill(home.documents, keep=120 << 20)
        self.assertEqual((program.wait(20), program.stdout), (3, f"{path}\n"), program.stderr)
        self.assertIn("no space left on the disk", program.stderr)
        movie = Movie(path)
        self.assert_movie(movie)
        self.assertGreater(movie.picture_seconds(), 1)

    def test_disk_that_another_program_fills_to_the_last_byte(self):
        home = self.home_on_disk("250m")
        # However late the disk is filled, the joined movie fits into what is held.
        program, path = self.start_recording(home, 60, "--size", "320x240")
        time.sleep(2)
        fill(home.documents)
        self.assertEqual((program.wait(20), program.stdout), (3, f"{path}\n"), program.stderr)
        self.assertIn("no space left on", program.stderr.lower())
        # What was held for this let the last frames and the tables be written, and a recording this small even be joined.
        movie = Movie(path)
        self.assertEqual(movie.errors(), "")
        self.assertGreater(movie.picture_seconds(), 1)
        self.assertAlmostEqual(movie.picture_seconds(), movie.sound_seconds(), delta=0.05)
        self.assertEqual(home.working_files(), [])

    def test_disk_that_is_full_when_picture_and_sound_are_joined(self):
        home = self.home_on_disk("250m")
        program, _ = self.start_recording(home, 2, PATH=self.fake_encoder(home, FILL))
        self.assertEqual((program.wait(20), program.stdout), (3, ""), program.stderr)
        self.assertIn("could not be joined", program.stderr)
        self.assert_kept_in_two_files(home, 2)

    def test_disk_without_room_to_begin(self):
        home = self.home_on_disk("100m")
        program = self.start(Lumavex(home, "--record", 60, "--output", home.videos / "movie.mov", "--ignore-load"))
        self.assertEqual((program.wait(20), program.stdout), (1, ""))
        self.assertEqual(program.stderr.count("too little space left"), 1, program.stderr)
        self.assertEqual(home.working_files(), [])

    def assert_kept_instead(self, text, output, home):
        program, path = self.start_recording(home, 1.5, output=output)
        self.assertEqual((program.wait(20), program.stdout), (3, ""), program.stderr)
        self.assertEqual(program.stderr.count(text), 1, program.stderr)
        (kept,) = home.recovered_folder.iterdir()
        self.assertIn(str(kept), program.stderr)
        self.assert_movie(Movie(kept), 1.5, tolerance=0.04)
        self.assertNotIn(path.name, os.listdir(path.parent))
        self.assertEqual(home.working_files(), [])

    def test_saving_to_a_full_disk(self):
        home = self.home().make_settings()
        self.mount_disk(home.videos, "size=64k")
        self.assert_kept_instead("is full", None, home)
        self.assertEqual(list(home.videos.iterdir()), [])

    def test_saving_under_a_name_that_is_too_long(self):
        home = self.home().make_settings()
        self.assert_kept_instead("too long", home.videos / f"{'long' * 80}.mov", home)

    def test_disk_that_becomes_read_only_before_saving(self):
        home = self.home().make_settings()
        self.mount_disk(home.videos)
        program, path = self.start_recording(home, 2)
        output_of("mount", "-o", "remount,ro", home.videos)
        self.assertEqual((program.wait(20), program.stdout), (3, ""), program.stderr)
        self.assertIn("read-only", program.stderr)
        (kept,) = home.recovered_folder.iterdir()
        self.assert_movie(Movie(kept), 2, tolerance=0.04)

    def test_folder_that_vanishes_while_the_panel_is_open(self):
        home = self.home().make_settings()
        folder = home.root / "network"
        folder.mkdir()
        gui = self.start(Gui(home))
        gui.wait_for_window(PREVIEW)
        gui.record()
        gui.wait_for_recording()
        time.sleep(1.5)
        gui.stop()
        gui.save_as(folder / "in time.mov")
        gui.close_alert()
        self.assert_movie(Movie(folder / "in time.mov"))

        gui.record()
        gui.wait_for_recording()
        time.sleep(1.5)
        gui.stop()
        gui.wait_for_save_panel()
        press("ctrl+a")
        output_of("xdotool", "type", "--delay", "5", str(folder / "too late.mov"))
        shutil.rmtree(folder)
        press("Return")

        asked = gui.wait_for_alert()
        output_of("xdotool", "windowactivate", "--sync", asked)
        press("Return")  # Save Elsewhere…
        wait_for("its end", lambda: asked not in gui.windows())
        gui.save_as(home.videos / "elsewhere.mov")
        gui.close_alert()
        self.assert_movie(Movie(home.videos / "elsewhere.mov"))
        self.assertEqual(home.working_files(), [])


if __name__ == "__main__":
    unittest.main(verbosity=2)
