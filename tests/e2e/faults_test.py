#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Whatever breaks on the way, the recording is kept and the user is told."""

import os
import re
import signal
import subprocess
import time
import unittest
from pathlib import Path

from lumavex_e2e import PREVIEW, EndToEndTest, Gui, Lumavex, Movie, Process, Scene, output_of, place_of, wait_for


class SoundServer(Process):
    """A sound server beside that of the launcher."""

    def __init__(self, home, *modules):
        self.address = f"unix:{home.root}/pulse.sock"
        command = ["pulseaudio", "-n", "--daemonize=no", "--exit-idle-time=-1", "--use-pid-file=no"]
        for module in (f"module-native-protocol-unix auth-anonymous=1 socket={home.root}/pulse.sock", *modules):
            command += ["-L", module]
        super().__init__(command, home.environment)
        wait_for("the sound server", lambda: subprocess.run(["pactl", "-s", self.address, "info"], capture_output=True,
                                                            check=False).returncode == 0)  # fmt: skip


class FaultsTest(EndToEndTest):
    def start_recording(self, home, seconds, *options, output=None, **environment):
        path = output or home.videos / "movie.mov"
        program = self.start(Lumavex(home, "--record", seconds, "--output", path, "--ignore-load", *options, **environment))
        wait_for("a recording", home.growing_movie)
        return program, path

    def assert_silent_recording(self, text, **environment):
        """The user is told soon, and the recording goes on to its end with silence."""
        home = self.home().make_settings()
        program, path = self.start_recording(home, 3, **environment)
        begin = time.monotonic()
        wait_for("the message", lambda: text in program.stderr)
        self.assertLess(time.monotonic() - begin, 2.5)
        self.assertEqual(program.wait(), 0, program.stderr)
        self.assertEqual(program.stderr.count(text), 1)
        movie = Movie(path)
        self.assert_movie(movie, 3, tolerance=0.04)
        self.assertEqual(abs(movie.sound()).max(), 0)

    def test_no_sound_server(self):
        self.assert_silent_recording("There is no sound server", PULSE_SERVER="unix:/nonexistent/socket")

    def test_no_sound_input(self):
        server = self.start(SoundServer(self.home()))
        self.assert_silent_recording("There is no sound input", PULSE_SERVER=server.address)

    def test_no_sound_is_told_in_the_window(self):
        home = self.home().make_settings()
        gui = self.start(Gui(home, PULSE_SERVER="unix:/nonexistent/socket"))
        preview = gui.wait_for_window(PREVIEW)
        height = place_of(gui.main).height
        gui.record()
        gui.wait_for_recording()
        wait_for("the message strip", lambda: place_of(gui.main).height > height + 10, 3)

        def is_covered():
            main = place_of(gui.main)
            return place_of(preview).y < main.y + main.height

        wait_for("the preview to make room", lambda: not is_covered(), 3)

    def test_sound_server_ends_while_recording(self):
        home = self.home().make_settings()
        server = self.start(SoundServer(home, "module-null-sink sink_name=out rate=44100 channels=2 norewinds=1"))
        tone = Process(["ffmpeg", "-nostdin", "-v", "error", "-re", "-f", "lavfi", "-i", "sine=440:d=30", "-f", "pulse", "-server",
                        server.address, "tone"], home.environment)  # fmt: skip
        self.start(tone)
        time.sleep(1)
        program, path = self.start_recording(home, 5, PULSE_SERVER=server.address)
        time.sleep(2)
        server.kill()
        wait_for("the message", lambda: "The sound input was lost" in program.stderr, 2.5)
        self.assertEqual(program.wait(), 0, program.stderr)
        movie = Movie(path)
        self.assert_movie(movie, 5, tolerance=0.04)
        sound = abs(movie.sound())
        self.assertGreater(sound[int(0.5 * 44100) : int(1.5 * 44100)].max(), 1000)
        self.assertEqual(sound[int(3.5 * 44100) :].max(), 0)

    def assert_kept_in_two_files(self, home, program):
        self.assertEqual((program.wait(), program.stdout), (1, ""), program.stderr)
        kept = {file.suffix: file for file in home.recovered_folder.iterdir()}
        self.assertEqual(set(kept), {".mov", ".wav"})
        for file in kept.values():
            self.assertIn(str(file), program.stderr)
        self.assertEqual(Movie(kept[".mov"]).errors(), "")
        self.assertAlmostEqual(Movie(kept[".mov"]).picture_seconds(), 2, delta=0.04)
        self.assertAlmostEqual(Movie(kept[".wav"]).sound_seconds(), 2, delta=0.04)
        self.assertEqual(home.working_files(), [])

    def test_encoder_that_fails_or_is_missing(self):
        for fault in ("fails", "is killed", "is missing"):
            with self.subTest(fault=fault):
                home = self.home().make_settings()
                folder = home.root / "bin"
                folder.mkdir()
                if fault != "is missing":
                    encoder = folder / "ffmpeg"
                    encoder.write_text("#!/bin/sh\n" + ("echo 'broken on purpose' >&2; exit 1\n" if fault == "fails"
                                                        else "kill -9 $$\n"))  # fmt: skip
                    encoder.chmod(0o755)
                program, path = self.start_recording(home, 2, PATH=str(folder))
                self.assert_kept_in_two_files(home, program)
                self.assertFalse(path.exists())

    def test_saving_to_another_file_system(self):
        home = self.home().make_settings()
        path = Path(f"/dev/shm/lumavex-e2e-{os.getpid()}.mov")
        if not path.parent.is_dir() or path.parent.stat().st_dev == home.documents.stat().st_dev:
            self.skipTest("there is one file system only")
        self.addCleanup(path.unlink, missing_ok=True)
        program, _ = self.start_recording(home, 1, output=path)
        self.assertEqual((program.wait(), program.stdout), (0, f"{path}\n"), program.stderr)
        self.assert_movie(Movie(path), 1, tolerance=0.04)
        self.assertEqual(home.working_files(), [])

    def test_folder_that_vanishes_before_saving(self):
        home = self.home().make_settings()
        folder = home.root / "vanishing"
        folder.mkdir()
        program, _ = self.start_recording(home, 1.5, output=folder / "movie.mov")
        folder.rmdir()
        self.assertEqual((program.wait(), program.stdout), (1, ""))
        (kept,) = home.recovered_folder.iterdir()
        self.assertIn(str(kept), program.stderr)
        self.assert_movie(Movie(kept), 1.5, tolerance=0.04)

    def test_full_disk_ends_the_recording_and_keeps_it(self):
        home = self.home().make_settings()
        mounted = subprocess.run(["mount", "-t", "tmpfs", "-o", "size=160m,mode=700", "tmpfs", home.documents],
                                 capture_output=True, check=False)  # fmt: skip
        if mounted.returncode != 0:
            self.skipTest("no file system can be mounted here")
        self.addCleanup(output_of, "umount", home.documents)
        home.make_settings()
        program, path = self.start_recording(home, 60)
        time.sleep(2)
        ballast = home.documents / "ballast"
        with open(ballast, "wb") as file:
            os.posix_fallocate(file.fileno(), 0, 40 << 20)
        self.assertEqual(program.wait(20), 1)
        self.assertIn("no space left on the disk", program.stderr)
        self.assertEqual(program.stdout, f"{path}\n")
        movie = Movie(path)
        self.assert_movie(movie)
        self.assertGreater(movie.picture_seconds(), 2)

    def test_screen_that_vanishes_while_recording(self):
        home = self.home().make_settings()
        outer = subprocess.Popen(["Xvfb", "-displayfd", "1", "-screen", "0", "640x480x24", "-nolisten", "tcp"],
                                 stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)  # fmt: skip
        self.addCleanup(outer.wait)
        self.addCleanup(outer.kill)
        display = ":" + outer.stdout.readline().decode().strip()
        outer.stdout.close()
        self.start_recording(home, 60, DISPLAY=display)
        time.sleep(2.5)
        outer.send_signal(signal.SIGKILL)
        outer.wait()
        # What was recorded until then is completed by the next start.
        again = self.start(Gui(home))
        again.close_alert()
        (kept,) = home.recovered_folder.glob("*.mov")
        self.assertEqual(Movie(kept).errors(), "")
        self.assertGreater(Movie(kept).picture_seconds(), 1)
        self.assertTrue(re.fullmatch(r"[-\d]+\.mov", kept.name))


if __name__ == "__main__":
    unittest.main(verbosity=2)
