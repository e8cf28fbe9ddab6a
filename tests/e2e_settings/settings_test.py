#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""The settings dialog by real clicks: what is chosen is stored, found again after a restart, and seen in the movie."""

import os
import unittest

from lumavex_e2e import Cameras, EndToEndTest, Gui, Movie, click, output_of, place_of, press, screenshot, wait_for

PAGES = {"Screen": 0, "Camera": 1, "Overlay": 2, "Colour": 3, "Sound": 4, "General": 5}
MARGIN = 1 / 60  # of the frame's width


class Dialog:
    """The dialog of a running program. Its controls lie where a dialog of our own, made the same way, has them."""

    def __init__(self, gui):
        self.gui = gui
        self.places = {}
        for line in output_of(os.environ["LUMAVEX_CONTROL_PLACES"]).splitlines():
            page, name, x, y = line.split()
            self.places[int(page), name] = int(x), int(y)
        gui.key("ctrl+comma")
        self.window = gui.wait_for_window("Settings")
        self.page = 0
        wait_for("the dialog's contents", lambda: screenshot(self.window).std() > 5)

    def click(self, page, name):
        corner, (x, y) = place_of(self.window), self.places[page, name]
        click(corner.x + x, corner.y + y)

    def turn_to(self, page):
        self.page = PAGES[page]
        self.click(self.page, "tab")

    def click_control(self, name):
        self.click(self.page, name)

    def choose(self, combo, *keys):
        """Opens the list by a click and walks through it by keys."""
        before = set(self.gui.windows())
        self.click_control(combo)
        wait_for(f"the list of {combo}", lambda: set(self.gui.windows()) > before)
        press(*keys, "Return")
        wait_for(f"the end of the list of {combo}", lambda: set(self.gui.windows()) == before)

    def slide(self, slider, *keys):
        self.click_control(slider)
        press(*keys)

    def is_chosen(self, radio):
        """A chosen place is filled with the highlight colour, every other is as pale as the page."""
        x, y = self.places[self.page, radio]
        red, green, blue = screenshot(self.window)[y, x].astype(int)
        return blue - red > 60

    def picture_of(self, page):
        """How the page looks, without pointer and focus on a control."""
        self.turn_to(page)
        return screenshot(self.window)[:, : self.places[PAGES[page], "tab"][0] * 100]

    def end(self, button):
        self.click(-1, button)
        wait_for("the end of the dialog", lambda: self.window not in self.gui.windows())


class SettingsTest(EndToEndTest):
    def settings(self, **changes):
        """Without a preview, which would open over the dialog on a slow machine."""
        return self.home().make_settings(i_Open_Preview_Window_On_Startup=0, **changes)

    def gui(self, home):
        return self.start(Gui(home, PIPEWIRE_RUNTIME_DIR=os.environ["XDG_RUNTIME_DIR"]))

    def stored(self, home):
        lines = home.settings_file.read_text().splitlines()
        return dict(line.removeprefix("Orbelkin_").split("=", 1) for line in lines if line.startswith("Orbelkin_"))

    def test_every_setting_is_stored_and_found_again(self):
        home = self.settings(i_Screen_Capture_FPS=10)
        camera = "Desk Camera"
        Cameras().plug_in(camera)
        gui = self.gui(home)
        dialog = Dialog(gui)
        dialog.choose("comboScreenFPS", "End", "Up", "Up", "Up", "Up", "Up")
        dialog.click_control("checkScreenIncludeMouse")
        dialog.click_control("radioScreen2")
        dialog.slide("sliderScreenSize", "End", "Left")
        dialog.turn_to("Camera")
        dialog.choose("comboCameraListOfCameras", "Down")
        dialog.choose("comboCameraResolution", "Home", "Down", "Down", "Down")
        dialog.choose("comboCameraFPS", "Home", *["Down"] * 23)
        dialog.click_control("radioCamera3")
        dialog.slide("sliderCameraSize", "Home", "Right", "Right")
        dialog.turn_to("Overlay")
        dialog.click_control("checkOverlay")
        dialog.click_control("radioOverlay1")
        dialog.turn_to("Sound")
        dialog.click_control("checkIncludeAudio")
        dialog.turn_to("General")
        dialog.click_control("checkOnTopOtherWindows")
        dialog.click_control("check_Invisible")
        dialog.end("OK")
        expected = {
            "i_Screen_Capture_FPS": "25", "b_Screen_Include_Mouse": "0", "i_Position_Screen_Secondary": "2",
            "i_Size_Screen_Secondary": "3", "s_Camera_Name": camera, "i_Camera_CRP": "3", "i_Camera_Capture_FPS": "24",
            "i_Position_Camera_Secondary": "3", "i_Size_Camera_Secondary": "2", "b_Record_Include_Audio": "0",
            "i_Top_Other_Windows": "0", "i_Size_Overlay": "30", "i_Position_Overlay": "8",
        }  # fmt: skip
        wait_for("what was stored", lambda: self.stored(home).get("b_Record_Include_Audio_02") == "0")
        stored = self.stored(home)
        self.assertEqual({name: stored.get(name + "_02", "").strip('"') for name in expected}, expected)
        gui.kill()

        dialog = Dialog(self.gui(home))
        for page, places in (("Screen", "radioScreen"), ("Camera", "radioCamera"), ("Overlay", "radioOverlay")):
            dialog.turn_to(page)
            chosen = [code for code in range(9) if dialog.is_chosen(f"{places}{code}")]
            self.assertEqual(chosen, {"Screen": [2], "Camera": [3], "Overlay": [8]}[page])
        dialog.end("OK")
        self.assertEqual(self.stored(home), stored, "nothing was touched, so nothing changes")

    def test_cancel_keeps_the_colours_alone(self):
        home = self.settings()
        stored = self.stored(home)
        gui = self.gui(home)
        dialog = Dialog(gui)
        before = {page: dialog.picture_of(page) for page in ("Screen", "Colour")}
        dialog.turn_to("Screen")
        dialog.click_control("radioScreen4")
        dialog.turn_to("Colour")
        dialog.slide("sliderContrast", "End")
        dialog.end("Cancel")
        self.assertEqual(self.stored(home), stored)
        dialog = Dialog(gui)
        dialog.turn_to("Screen")
        self.assertFalse(dialog.is_chosen("radioScreen4"))
        x, y = dialog.places[PAGES["Colour"], "labelContrastValue"]
        value = lambda picture: picture[y - 8 : y + 8, x - 16 : x + 16].astype(int)
        shown = dialog.picture_of("Colour")
        self.assertGreater(abs(value(shown) - value(before["Colour"])).max(), 100, "the contrast shown is another")
        press("Escape")
        wait_for("the end of the dialog", lambda: dialog.window not in gui.windows())

    def test_overlay_and_rate_are_in_the_movie(self):
        home = self.settings(i_Screen_Capture_FPS=1, b_Record_Include_Audio=0, b_Screen_Include_Mouse=0)
        logo = home.root / "logo.png"
        output_of("convert", "-size", "40x20", "xc:#ff00ff", str(logo))
        output_of("xsetroot", "-solid", "#205020")
        gui = self.gui(home)
        dialog = Dialog(gui)
        dialog.choose("comboScreenFPS", "End")
        dialog.turn_to("Overlay")
        dialog.click_control("checkOverlay")
        dialog.click_control("buttonBrowse")
        panel = gui.wait_for_window("Choose the overlay picture")
        output_of("xdotool", "windowactivate", "--sync", panel)
        output_of("xdotool", "type", "--delay", "5", str(logo))
        press("Return")
        wait_for("the end of the panel", lambda: panel not in gui.windows())
        dialog.click_control("radioOverlay0")
        dialog.slide("sliderOverlaySize", "Home", "Prior", "Prior")  # 1, 11, 21
        dialog.end("OK")
        gui.record()
        gui.wait_for_recording()
        wait_for("two seconds of it", lambda: gui.home.growing_movie().stat().st_size > 0)
        output_of("sleep", "2")
        gui.stop()
        path = home.videos / "movie.mov"
        gui.save_as(path)
        gui.close_alert()
        movie = Movie(path)
        self.assert_rate(movie)
        picture = movie.picture_at(1).astype(int)
        overlay = (abs(picture - (255, 0, 255)) < 40).all(axis=2)
        rows, columns = overlay.any(axis=1).nonzero()[0], overlay.any(axis=0).nonzero()[0]
        margin = picture.shape[1] * MARGIN
        for found, wanted in ((columns[0], margin), (columns[-1] + 1, margin + 210), (rows[0], margin), (rows[-1] + 1, margin + 105)):
            self.assertAlmostEqual(found, wanted, delta=2)


if __name__ == "__main__":
    unittest.main()
