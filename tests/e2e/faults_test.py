#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Whatever breaks on the way, the recording is kept and the user is told."""

import json
import os
import subprocess
import time
import unittest
from pathlib import Path

from lumavex_e2e import BUSY, PREVIEW, EndToEndTest, Gui, Movie, Process, Scene, place_of, wait_for


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
    def assert_silent_recording(self, text, **environment):
        """The user is told soon, and the recording goes on to its end with silence."""
        home = self.home().make_settings()
        program, path = self.start_recording(home, 3, **environment)
        wait_for("the message", lambda: text in program.stderr, 2.5)
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

    def test_screen_that_is_read_slowly(self):
        home = self.home().make_settings(b_Record_Include_Audio=0)
        scene = self.start(Scene(sounding=False))
        program, path = self.start_recording(home, 4, "--stats", home.root / "stats", LUMAVEX_SLOW_MILLISECONDS="80",
                                             LD_PRELOAD=os.environ["LUMAVEX_SLOW_SCREEN"])  # fmt: skip
        self.assertEqual(program.wait(), 0, program.stderr)
        composed = sum(json.loads(line)["composed"] for line in (home.root / "stats").read_text().splitlines())
        self.assertGreater(composed, 5)
        self.assertGreater(len(set(Movie(path, scene).scene_times()[0])), composed / 2)
        for told in BUSY:
            self.assertEqual(program.stderr_file.read_text().count(told), 1)

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


if __name__ == "__main__":
    unittest.main(verbosity=2)
