#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Recording from the command line: options, exit statuses, what is printed, signals."""

import contextlib
import json
import os
import pty
import re
import signal
import stat
import time
import unittest
from pathlib import Path

from lumavex_e2e import (
    FRAME, LUMAVEX, PREVIEW, EndToEndTest, Gui, Lumavex, Movie, Process, Scene, output_of, place_of, takes_of, wait_for,
)  # fmt: skip

OPTIONS = ("record", "output", "snapshot", "overlay", "saturation", "fps", "size", "sound", "cursor", "hide-own-windows", "overwrite", "ignore-load")


class CommandLineTest(EndToEndTest):
    def run_lumavex(self, home, *options, **environment):
        program = self.start(Lumavex(home, *options, **environment))
        return program.wait(), program

    def assert_refused(self, status, text, home, *options, **environment):
        ended, program = self.run_lumavex(home, *options, **environment)
        self.assertEqual((ended, program.stdout), (status, ""), program.stderr)
        self.assertIn(text, program.stderr)

    def recording(self, home, seconds, *options, **environment):
        """(program, path) of a recording under way."""
        path = home.videos / "movie.mov"
        program = self.start(Lumavex(home, "--record", seconds, "--output", path, "--ignore-load", *options, **environment))
        wait_for("a recording", home.growing_movie)
        return program, path

    def test_help_names_every_option_and_mistakes_are_told(self):
        home = self.home()
        status, program = self.run_lumavex(home, "--help")
        self.assertEqual((status, program.stderr), (0, ""))
        for option in OPTIONS:
            self.assertIn(f"--{option} ", program.stdout)
        status, program = self.run_lumavex(home, "--version")
        self.assertEqual(status, 0)
        self.assertRegex(program.stdout, r"^Lumavex \d+\.\d+\.\d+\n$")
        for options in (["--nonsense"], ["--record", "5"], ["--output", "x.mov"], ["--record"], ["--sound", "maybe"],
                        ["--record", "nan", "--output", "x.mov"], ["--fps", "0"], ["--size", "0x0"], ["--overwrite=1"],
                        ["stray"]):  # fmt: skip
            with self.subTest(options=options):
                self.assert_refused(2, 'Try "lumavex --help".', home, *options)

    def test_every_option_is_obeyed(self):
        home = self.home()  # a first run, whose rate would be one frame a second
        path = home.videos / "all options.mov"
        path.write_text("an older file")
        status, program = self.run_lumavex(
            home, "--record", "2.5", "--output", path, "--fps", "20", "--size", "640x360", "--sound", "yes", "--cursor",
            "no", "--hide-own-windows", "--overwrite", "--ignore-load")  # fmt: skip
        self.assertEqual((status, program.stdout, program.stderr), (0, f"{path}\n", ""))
        movie = Movie(path)
        self.assert_movie(movie, 2.5, tolerance=0.001, rate=20)
        video = movie.stream("video")
        self.assertEqual((video["width"], video["height"]), (640, 360))
        self.assertEqual(home.working_files(), [])
        # The options held for that run only.
        self.assertIn("i_Screen_Capture_FPS_02=1\n", home.settings_file.read_text())

        relative = self.start(Lumavex(home, "--record=1", "--output=relative", "--ignore-load"))
        relative.wait()
        self.addCleanup(Path("relative.mov").unlink, missing_ok=True)
        self.assertEqual(relative.stdout, f"{Path('relative.mov').absolute()}\n")
        self.assertIn("the movie is saved as relative.mov", relative.stderr)

    def test_the_ending_tells_what_the_file_is(self):
        home = self.home().make_settings(b_Record_Include_Audio=0)
        for ending, kind, sound in (("mkv", "matroska", "yes"), ("AVI", "avi", "yes"), ("mkv", "matroska", "no")):
            with self.subTest(ending=ending, sound=sound):
                path = home.videos / f"{sound}.{ending}"
                status, program = self.run_lumavex(home, "--record", 1, "--output", path, "--sound", sound, "--ignore-load")
                self.assertEqual((status, program.stdout, program.stderr), (0, f"{path}\n", ""))
                form = output_of("ffprobe", "-v", "error", "-show_entries", "format=format_name", "-of", "csv=p=0", path)
                self.assertIn(kind, form)
                movie = Movie(path)
                times = movie.frame_times()
                self.assertAlmostEqual(len(times), 30, delta=1)
                self.assertAlmostEqual(times[-1], 29 * FRAME, delta=FRAME + 0.001)
                if kind == "avi":  # the others' times tell the rate
                    self.assertEqual(movie.stream("video")["r_frame_rate"], "30/1")
                    self.assertEqual(movie.errors(), "")
                self.assertEqual(movie.frame(15).shape, (768, 1024, 3))
                self.assertEqual(movie.has_sound(), sound == "yes")
                self.assertEqual(home.working_files(), [])

    def test_statistics_tell_of_every_frame(self):
        home = self.home().make_settings()
        movie, stats = home.videos / "movie.mov", home.videos / "stats.jsonl"
        self.start(Scene(place=(0, 672)))
        status, program = self.run_lumavex(home, "--record", 2.5, "--output", movie, "--stats", stats, "--ignore-load")
        self.assertEqual((status, program.stderr), (0, ""))
        lines = [json.loads(line) for line in stats.read_text().splitlines()]
        self.assertEqual(len(lines), 3)
        total = {name: sum(line[name] for line in lines) for name in lines[0] if name not in ("time", "skew")}
        self.assertEqual(total["encoded"] + total["spliced"] + total["repeated"], len(Movie(movie).frame_times()))
        self.assertGreaterEqual(total["composed"], total["encoded"] + total["spliced"])
        self.assertLessEqual(total["late"], total["repeated"])
        self.assertGreater(total["user"] + total["system"], 0)
        self.assertGreater(total["bytes"], 0)
        self.assertEqual([line["queue"] for line in lines[-1:]], [0])
        for line in lines[:-1]:
            self.assertLess(abs(line["skew"]), FRAME)
        manual = (Path(__file__).parents[2] / "packaging" / "lumavex.1").read_text()
        entries = re.search(r"^\.SH STATISTICS$(.*?)^\.SH ", manual, re.MULTILINE | re.DOTALL).group(1)
        told = " ".join(re.findall(r"^\.TP\n\.IR? (.*)$", entries, re.MULTILINE)).replace('", "', " ").split()
        self.assertEqual(sorted(told), sorted(lines[0]))

        self.assert_refused(1, "The statistics cannot be written", home, "--record", 1, "--output", home.videos / "no.mov",
                            "--stats", home.root / "nowhere" / "stats.jsonl")  # fmt: skip
        self.assertFalse((home.videos / "no.mov").exists())

    def test_recording_is_as_long_as_asked(self):
        home = self.home().make_settings()
        scene = self.start(Scene(place=(0, 672)))
        for seconds, rate, frames in ((0.02, 1, 1), (1, 7, 7), (2, 24, 48), (0.2, 60, 12), (3.21, 30, 97)):
            path = home.videos / f"{rate}.mov"
            status, program = self.run_lumavex(home, "--record", seconds, "--output", path, "--fps", rate, "--ignore-load")
            self.assertEqual((status, program.stderr), (0, ""))
            self.assert_movie(Movie(path), frames / rate, tolerance=1e-4, rate=rate)
            self.assertAlmostEqual(Movie(path).sound_seconds(), seconds, delta=1e-4)
        (take,) = takes_of(Movie(path, scene))
        self.assertLess(abs(take.asynchrony()).max(), FRAME + 0.020)

    def test_signals_end_early_and_save(self):
        for number in (signal.SIGINT, signal.SIGTERM):
            home = self.home().make_settings()
            program, path = self.recording(home, 60)
            time.sleep(2)
            program.send(number)
            self.assertEqual((program.wait(20), program.stdout), (0, f"{path}\n"), program.stderr)
            self.assert_movie(Movie(path), 2.1, tolerance=0.4)
            self.assertEqual(home.working_files(), [])

    def test_progress_is_shown_on_a_terminal(self):
        home = self.home().make_settings()
        outer, inner = pty.openpty()
        self.addCleanup(os.close, outer)
        path = home.videos / "movie.mov"
        command = ["--record", 2, "--output", path, "--ignore-load"]
        program = self.start(Lumavex(home, *command, terminal=inner))
        self.assertEqual(program.wait(), 0)
        os.close(inner)
        text = b""
        try:
            while piece := os.read(outer, 65536):
                text += piece
        except OSError:
            pass  # the other end is closed
        told = [float(each) for each in re.findall(rb"\r\x1b\[KRecording (\d\.\d) s of 2\.0 s, ends early with Ctrl\+C", text)]
        self.assertGreaterEqual(len(told), 5)
        self.assertEqual(told, sorted(told))
        self.assertTrue(text.endswith(b"\r\x1b[K"), text[-80:])
        self.assertEqual(program.stdout, f"{path}\n")

    def test_nobody_has_to_read_what_is_told(self):
        home = self.home().make_settings()
        outer, inner = pty.openpty()
        self.addCleanup(os.close, outer)
        self.addCleanup(os.close, inner)
        os.set_blocking(inner, False)
        for _ in range(10):  # until the terminal is full, which passes some on with a delay
            with contextlib.suppress(BlockingIOError):
                while os.write(inner, b"x" * 100):
                    pass
            time.sleep(0.05)
        os.set_blocking(inner, True)
        fifo, path = home.root / "fifo", home.videos / "movie.mov"
        os.mkfifo(fifo)
        program = self.start(Lumavex(home, "--record", 2, "--output", path, "--stats", fifo, "--ignore-load", terminal=inner))
        self.assertEqual((program.wait(), program.stdout), (0, f"{path}\n"))
        self.assert_movie(Movie(path), 2, tolerance=FRAME)

        closed = ["sh", "-c", 'exec "$0" "$@" 2>&- >&- <&-', LUMAVEX, "--record", 1, "--output", path, "--overwrite"]
        program = self.start(Process([*map(str, closed), "--ignore-load"], home.environment))
        self.assertEqual(program.wait(), 0)
        self.assert_movie(Movie(path), 1, tolerance=FRAME)

    def test_what_cannot_work_is_refused_at_once(self):
        home = self.home().make_settings()
        path = home.videos / "movie.mov"
        record = ("--record", 1, "--ignore-load", "--output")
        self.assert_refused(1, "There is no graphical display", home, *record, path, DISPLAY="")
        self.assert_refused(1, "There is no graphical display", home, *record, path, DISPLAY=":9999")
        self.assert_refused(1, f"There is no folder {home.root}/nowhere", home, *record, home.root / "nowhere" / "x.mov")
        self.assert_refused(1, "is a folder", home, *record, home.videos)
        path.write_text("precious")
        self.assert_refused(1, "exists already", home, *record, path)
        self.assertEqual(path.read_text(), "precious")

    def test_folders_that_cannot_be_made_are_told(self):
        folders = {"Lumavex": "Error #0008. Application will exit.", "LumavexVideo": "Error #0009. Application will exit.",
                   "LumavexPicture": "Error #000A. Application will exit."}  # fmt: skip
        for folder, text in folders.items():
            home = self.home()
            (home.documents / folder).symlink_to(home.root / "nowhere" / "either")  # there, but no folder
            self.assert_refused(1, text, home, "--record", 1, "--output", home.videos / "movie.mov", "--ignore-load")

        home = self.home()
        home.documents.rmdir()
        home.documents.write_text("no folder")
        self.assert_refused(1, "Error #0008. Application will exit.", home, "--record", 1, "--output",
                            home.videos / "movie.mov", "--ignore-load")  # fmt: skip

    def test_second_program_leaves_the_first_alone(self):
        home = self.home().make_settings()
        gui = self.start(Gui(home))
        gui.wait_for_window(PREVIEW)
        gui.record()
        gui.wait_for_recording()
        time.sleep(1)
        output_of("xdotool", "windowminimize", gui.main)
        wait_for("the minimising", lambda: gui.main not in gui.windows())

        output = home.videos / "second.mov"
        self.assert_refused(1, "Lumavex runs already.", home, "--record", 1, "--output", output, "--ignore-load")
        self.assertNotIn(gui.main, gui.windows())  # it would have come into its own movie
        self.assert_refused(1, "the options were ignored", home, "--fps", 20)
        wait_for("the return of the first window", lambda: gui.main in gui.windows())
        output_of("xdotool", "windowminimize", gui.main)
        wait_for("the minimising", lambda: gui.main not in gui.windows())
        status, _ = self.run_lumavex(home)
        self.assertEqual(status, 0)
        wait_for("the return of the first window", lambda: gui.main in gui.windows())
        wait_for("its activation", lambda: output_of("xdotool", "getactivewindow", check=False).strip() == gui.main)
        time.sleep(0.5)  # a window that has just come back takes no clicks yet

        gui.stop()
        gui.save_as(home.videos / "first")
        gui.close_alert()
        self.assert_movie(Movie(home.videos / "first.mov"))
        self.assertFalse(output.exists())

    def test_working_files_are_private(self):
        home = self.home().make_settings()
        program, _ = self.recording(home, 30)
        wait_for("the sound", lambda: (home.video_folder / "audio.wav").exists())
        for file in home.video_folder.iterdir():
            self.assertEqual(stat.S_IMODE(file.stat().st_mode), 0o600, file)
        self.assertEqual(stat.S_IMODE(home.video_folder.stat().st_mode), 0o700)
        program.kill()

    def test_damaged_preferences_are_kept_and_told(self):
        home = self.home().make_settings()
        intact = self.start(Gui(home))
        height = place_of(intact.main).height
        intact.kill()
        home.settings_file.write_bytes(b"\x00\xff{{{ no settings \x01" * 40)
        damaged = self.start(Gui(home))
        self.assertTrue(list(home.settings_file.parent.glob("*.damaged")))
        wait_for("the message in the window", lambda: place_of(damaged.main).height > height + 10)


if __name__ == "__main__":
    unittest.main(verbosity=2)
