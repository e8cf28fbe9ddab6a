#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Whatever the encoder does instead of joining picture and sound, both are kept."""

import os
import shutil
import signal
import time
import unittest

from lumavex_e2e import PREVIEW, EndToEndTest, Gui, click, output_of, place_of, press, wait_for

HANGS = "trap '' TERM INT; echo hanging >&2; while :; do sleep 1; done"


class EncoderFaultsTest(EndToEndTest):
    def assert_told_and_kept(self, script, text, seconds=1.5):
        home = self.home().make_settings()
        path = self.fake_encoder(home, script)
        program, output = self.start_recording(home, seconds, PATH=path)
        self.assertEqual((program.wait(90), program.stdout), (3, ""), program.stderr)
        self.assertEqual(program.stderr.count(text), 1, program.stderr)
        self.assertLess(len(program.stderr), 6000)
        self.assertTrue(program.stderr.isprintable() or all(each.isprintable() or each == "\n" for each in program.stderr))
        for file in self.assert_kept_in_two_files(home, seconds).values():
            self.assertIn(str(file), program.stderr)
        self.assertFalse(output.exists())

    def test_fails(self):
        self.assert_told_and_kept("echo 'broken on purpose' >&2; exit 1", "broken on purpose")

    def test_is_killed(self):
        self.assert_told_and_kept("kill -9 $$", "ended unexpectedly")

    def test_is_missing(self):
        home = self.home().make_settings()
        folder = home.root / "empty"
        folder.mkdir()
        program, _ = self.start_recording(home, 1.5, PATH=str(folder))
        self.assertEqual((program.wait(), program.stdout), (3, ""), program.stderr)
        self.assertIn("is not installed", program.stderr)
        self.assert_kept_in_two_files(home, 1.5)

    def test_speaks_nonsense(self):
        self.assert_told_and_kept("head -c 20000000 /dev/urandom >&2; head -c 20000000 /dev/zero | tr '\\0' x >&2;"
                                  " head -c 20000000 /dev/urandom; exit 7", "status 7")  # fmt: skip

    def test_says_that_all_is_well_but_leaves_something_out(self):
        self.assert_told_and_kept('echo no movie > "$JOINED"', "not complete")
        # Half of the picture is missing, without a word.
        self.assert_told_and_kept('"$REAL" -nostdin -v error -t 0.7 "$@"', "frames of")

    def test_hangs_and_the_program_is_told_to_end(self):
        home = self.home().make_settings()
        program, _ = self.start_recording(home, 60, PATH=self.fake_encoder(home, HANGS))
        time.sleep(2)
        program.send(signal.SIGTERM)
        wait_for("the joining", lambda: f"{home.video_folder}/finalvideo.mov" in output_of("ps", "ax", "-o", "args"))
        time.sleep(1)
        self.assertTrue(program.is_running())
        program.send(signal.SIGTERM)
        self.assertEqual((program.wait(10), program.stdout), (3, ""), program.stderr)
        self.assertIn("cancelled", program.stderr)
        self.assert_kept_in_two_files(home)
        self.assertNotIn(str(home.root / "bin"), output_of("ps", "ax", "-o", "args"))

    @unittest.skipUnless(os.environ.get("LUMAVEX_SOAK"), "takes more than a minute")
    def test_hangs_with_nobody_there(self):
        begin = time.monotonic()
        self.assert_told_and_kept(HANGS, "did not get any further for 60 seconds")
        self.assertLess(time.monotonic() - begin, 80)

    def test_hangs_and_is_cancelled_in_the_window(self):
        home = self.home().make_settings()
        gui = self.start(Gui(home, PATH=self.fake_encoder(home, HANGS)))
        gui.wait_for_window(PREVIEW)
        gui.record()
        gui.wait_for_recording()
        time.sleep(2)
        gui.stop()

        def sheet():
            others = [each for each in gui.windows() if each not in (gui.main, gui.titled(PREVIEW))]
            return next(iter(others), None)

        window = wait_for("the progress sheet", sheet)
        time.sleep(1)
        place = place_of(window)
        click(place.x + place.width - 60, place.y + place.height - 38)
        wait_for("the end of the progress sheet", lambda: window not in gui.windows(), 5)
        gui.wait_for_alert()
        self.assert_kept_in_two_files(home)
        gui.close_alert()
        # The next recording works as ever.
        shutil.rmtree(home.root / "bin")
        gui.record()
        gui.wait_for_recording()
        time.sleep(1)
        gui.key("ctrl+s")
        gui.wait_for_alert()  # the path of the encoder was found at the start
        press("Escape")


if __name__ == "__main__":
    unittest.main(verbosity=2)
