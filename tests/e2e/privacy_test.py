#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""A recording is its user's alone: on the disk, and off the network."""

import re
import shutil
import stat
import subprocess
import time
import unittest

from lumavex_e2e import LUMAVEX, EndToEndTest, Movie, Process, wait_for

NO_NETWORK = {"AF_UNIX", "AF_LOCAL", "AF_NETLINK"}  # the last speaks with the kernel alone


def mode_of(path):
    return stat.S_IMODE(path.stat().st_mode)


class PrivacyTest(EndToEndTest):
    def test_every_file_is_the_users_alone_until_it_is_saved(self):
        home = self.home().make_settings()
        (home.documents / "LumavexVideo").mkdir(mode=0o755)  # of an earlier version, say
        modes = home.root / "modes"
        path = self.fake_encoder(home, f'umask > {modes}; "$REAL" "$@"; stat -c %a "$JOINED" >> {modes}')
        program, output = self.start_recording(home, 2, PATH=path)
        wait_for("the sound", lambda: (home.video_folder / "audio.wav").exists())
        for file in home.video_folder.iterdir():
            self.assertEqual(mode_of(file), 0o600, file)
        for folder in ("Lumavex", "LumavexVideo", "LumavexPicture"):
            self.assertEqual(mode_of(home.documents / folder), 0o700, folder)
        self.assertEqual(program.wait(), 0, program.stderr)
        self.assertEqual(modes.read_text().split(), ["0077", "600"])
        self.assertEqual(mode_of(output), 0o644)  # a file like others of the user's

    def test_links_in_the_working_folders_are_not_followed(self):
        home = self.home().make_settings()
        outside = home.root / "outside"
        outside.mkdir()
        precious = outside / "precious"
        precious.write_text("precious")
        folder = home.documents / "LumavexVideo"
        disk = home.root / "large disk"
        disk.mkdir()
        folder.symlink_to(disk)  # the folder itself may be one
        (folder / "audio.wav").symlink_to(precious)
        (folder / "finalvideo.mov").symlink_to(outside / "new")
        (folder / "2026-01-01-00-00-00.mov").symlink_to(precious)
        (folder / "sub").symlink_to(outside)
        program, path = self.start_recording(home, 2)
        for name in ("audio.wav", "finalvideo.mov"):  # and again while it records
            (folder / "x").symlink_to(precious if name == "audio.wav" else outside / "new")
            if name == "finalvideo.mov":
                (folder / "x").rename(folder / name)
            else:
                (folder / "x").unlink()
        self.assertEqual(program.wait(), 0, program.stderr)
        self.assert_movie(Movie(path), 2, tolerance=0.04)
        self.assertEqual([file.name for file in outside.iterdir()], ["precious"])
        self.assertEqual(precious.read_text(), "precious")
        self.assertTrue(folder.is_symlink())
        self.assertFalse(home.recovered_folder.exists())

    def test_no_network_socket_is_ever_opened(self):
        home = self.home().make_settings()
        log = home.root / "sockets"
        trace = ["strace", "-f", "-qq", "-e", "trace=socket", "-o", str(log)]
        if not shutil.which("strace") or subprocess.run([*trace, "true"], capture_output=True, check=False).returncode != 0:
            self.skipTest("no program can be watched here")
        output = home.videos / "movie.mov"
        # A sanitizer looks for leaks by watching the program itself, which is watched here already.
        program = self.start(Process([*trace, LUMAVEX, "--record", "2", "--output", str(output), "--ignore-load"],
                                     {**home.environment, "LSAN_OPTIONS": "detect_leaks=0"}))  # fmt: skip
        time.sleep(1)
        self.assertEqual(program.wait(60), 0, program.stderr)
        self.assertTrue(output.exists())
        families = set(re.findall(r"socket\((\w+)", log.read_text()))
        self.assertIn("AF_UNIX", families)
        self.assertEqual(families - NO_NETWORK, set())


if __name__ == "__main__":
    unittest.main(verbosity=2)
