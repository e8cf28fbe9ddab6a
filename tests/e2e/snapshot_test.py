#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Pictures, by the button and from the command line: where they go, what they show, and what is drawn over them."""

import re
import unittest

from lumavex_e2e import PICTURE_PANEL, PREVIEW, EndToEndTest, Gui, Lumavex, output_of, picture_of, wait_for

STAMP = re.compile(r"^\d{4}-\d\d-\d\d-\d\d-\d\d-\d\d\.png$")


class SnapshotTest(EndToEndTest):
    def test_by_the_button_it_is_saved_and_viewed(self):
        home = self.home().make_settings()
        # A stand-in for what opens files, which notes what it is given.
        opened, opener = home.root / "opened", home.root / "bin" / "xdg-open"
        opener.parent.mkdir()
        opener.write_text(f'#!/bin/sh\necho "$@" >>"{opened}"\n')
        opener.chmod(0o700)
        gui = self.start(Gui(home, PATH=f"{opener.parent}:{home.environment['PATH']}"))
        gui.wait_for_window(PREVIEW)
        gui.take_picture()
        (taken,) = wait_for("the picture", lambda: list((home.documents / "LumavexPicture").glob("*.png")))
        self.assertRegex(taken.name, STAMP)
        saved = home.videos / "picture.png"
        gui.save_as(saved, PICTURE_PANEL)
        gui.close_alert("Return")  # View Image File
        self.assertFalse(taken.exists())
        self.assertEqual(picture_of(saved).shape, (768, 1024, 3))
        self.assertIn(str(saved), wait_for("the viewer", lambda: opened.exists() and opened.read_text()))

    def test_from_the_command_line_it_has_its_overlay_and_replaces_nothing(self):
        output_of("xsetroot", "-solid", "#285aa0")
        home = self.home().make_settings(i_Screen_Capture_FPS=1)
        overlay, path = home.root / "overlay.png", home.root / "picture.png"
        output_of("convert", "-size", "100x50", "xc:red", str(overlay))
        options = ["--snapshot", path, "--cursor", "no", "--overlay", overlay, "--overlay-position", 3, "--overlay-size", 20]
        program = self.start(Lumavex(home, *options))
        self.assertEqual((program.wait(), program.stdout, program.stderr), (0, f"{path}\n", ""))
        rows, columns = (picture_of(path) == (255, 0, 0)).all(2).nonzero()
        self.assertEqual((columns.min(), columns.max(), rows.min(), rows.max()), (17, 216, 334, 433))
        self.assertIn("i_Position_Overlay_02=8\n", home.settings_file.read_text())  # for that run only

        overlay.write_text("no picture")
        for text, new in (("exists already", path), (f"The overlay {overlay} cannot be read", home.root / "new.png")):
            program = self.start(Lumavex(home, *options, "--snapshot", new))
            self.assertEqual((program.wait(), program.stdout), (1, ""), program.stderr)
            self.assertIn(text, program.stderr)
        self.assertFalse((home.root / "new.png").exists())


if __name__ == "__main__":
    unittest.main(verbosity=2)
