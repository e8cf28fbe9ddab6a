# SPDX-License-Identifier: GPL-3.0-or-later
"""Works the real program by its windows and reads the movies it makes.

Lumavex and Scene are started for one test and ended with it; Movie reads a file with ffprobe and ffmpeg. The display
and the sound server are those of the launchers around the test (tests/support).
"""

import ctypes
import json
import os
import re
import shutil
import signal
import subprocess
import tempfile
import time
import unittest
from pathlib import Path

import numpy

LUMAVEX = os.environ["LUMAVEX"]
SCENE = os.environ["LUMAVEX_SCENE"]
WAIT_SECONDS = 20
# By how much longer than usual a test waits for something, since a sanitizer slows the program down.
SLOWNESS = int(os.environ.get("LUMAVEX_TEST_SLOWNESS", 1))
FRAME = 1 / 30
BUSY = ("The machine does not keep up", "The machine did not keep up")
SANITIZER_REPORT = "Sanitizer: |runtime error: "

# The figures of scene.cpp.
SCENE_TICK = 0.01
SCENE_BITS = 16
SCENE_SQUARE = 16
SCENE_SIZE = (256, 96)
PREVIEW = "Preview"
PICTURE_PANEL = "Select a folder to save the captured image"
SAVE_PANEL = "Select a folder to save the video file recorded"
BEAT = 0.5
TONE = 0.1
DISTINCT_BEATS = 64

SETTINGS = {
    "i_Top_Other_Windows": 1, "b_Record_Include_Audio": 1, "i_Open_Preview_Window_On_Startup": 1,
    "i_Video_Source_Primary": 1, "i_Show_Secondary": 0, "index_size_Video_Output": 0, "i_Screen_Capture_FPS": 30,
    "i_Size_Screen_Secondary": 1, "i_Position_Screen_Secondary": 8, "index_size_Follow_Cursor": 3,
    "index_size_Region": 1, "b_Show_Select_Region_How_To": 1, "b_Show_FollowCursor_How_To": 1,
    "b_Show_WindowExclusive_How_To": 1, "b_Screen_Include_Mouse": 1, "i_Camera_Capture_FPS": 1,
    "s_Camera_Name": "Do not connect to Camera", "i_Camera_CRP": 0, "i_Size_Camera_Secondary": 1,
    "i_Position_Camera_Secondary": 8, "i_Size_Overlay": 30, "i_Position_Overlay": 8,
}  # fmt: skip
TEST_CAMERA = Path(__file__).resolve().parents[1] / "support" / "test-camera"


def output_of(*command, check=True, timeout=60, binary=False):
    result = subprocess.run(command, stdin=subprocess.DEVNULL, capture_output=True, timeout=timeout, check=False)
    if check and result.returncode != 0:
        raise AssertionError(f"{' '.join(map(str, command))}: {result.stderr.decode(errors='replace')}")
    return result.stdout if binary else result.stdout.decode(errors="replace")


def wait_for(what, condition, seconds=WAIT_SECONDS):
    """The first true answer of the condition."""
    seconds *= SLOWNESS
    deadline = time.monotonic() + seconds
    while True:
        answer = condition()
        if answer:
            return answer
        if time.monotonic() > deadline:
            raise AssertionError(f"{what} did not happen within {seconds} s")
        time.sleep(0.03)


def die_with_parent():
    ctypes.CDLL(None).prctl(1, signal.SIGKILL)


class Home:
    """Folders of a user of its own, so that runs know nothing of each other."""

    def __init__(self):
        self.root = Path(tempfile.mkdtemp(prefix="home.", dir=os.environ["LUMAVEX_TEST_RUNTIME"]))
        self.documents = self.root / "Documents"
        self.videos = self.root / "Videos"
        self.config = self.root / ".config"
        self.settings_file = self.config / "lumavex" / "lumavex.ini"
        for folder in (self.documents, self.videos, self.config, self.root / "run"):
            folder.mkdir(mode=0o700)
        (self.config / "user-dirs.dirs").write_text(
            f'XDG_DOCUMENTS_DIR="{self.documents}"\nXDG_VIDEOS_DIR="{self.videos}"\n'
        )
        self.environment = dict(
            os.environ, HOME=str(self.root), XDG_CONFIG_HOME=str(self.config), XDG_RUNTIME_DIR=str(self.root / "run"),
            XDG_DATA_HOME=str(self.root / ".local"), XDG_CACHE_HOME=str(self.root / ".cache"), LC_ALL="C.UTF-8",
        )  # fmt: skip
        self.environment.pop("QT_QPA_PLATFORM", None)

    def make_settings(self, **changes):
        """As after an earlier run; with 30 frames a second."""
        (self.documents / "Lumavex").mkdir(exist_ok=True)
        self.settings_file.parent.mkdir(exist_ok=True)
        lines = [f"Orbelkin_{name}_02={value}" for name, value in {**SETTINGS, **changes}.items()]
        self.settings_file.write_text("[General]\n" + "\n".join(lines) + "\n")
        return self

    @property
    def video_folder(self):
        return self.documents / "LumavexVideo"

    @property
    def recovered_folder(self):
        return self.documents / "LumavexRecovered"

    def working_files(self):
        """What lies in the working folders."""
        folders = ("Lumavex", "LumavexVideo", "LumavexPicture")
        return sorted(file.name for folder in folders for file in (self.documents / folder).glob("*"))

    def growing_movie(self):
        return next(self.video_folder.glob("????-??-??-??-??-??.mov"), None)


class Process:
    """A program that does not outlive the test."""

    def __init__(self, command, environment, stderr=None):
        folder = Path(tempfile.mkdtemp(prefix="out.", dir=os.environ["LUMAVEX_TEST_RUNTIME"]))
        self.stdout_file, self.stderr_file = folder / "stdout", folder / "stderr"
        with open(self.stdout_file, "wb") as out, open(self.stderr_file, "wb") as err:
            self.process = subprocess.Popen(
                command, env=environment, stdin=subprocess.DEVNULL, stdout=out, stderr=stderr or err,
                preexec_fn=die_with_parent,
            )  # fmt: skip
        self.pid = self.process.pid

    @property
    def stdout(self):
        return self.stdout_file.read_text(errors="replace")

    @property
    def stderr(self):
        """Without what a busy machine makes it tell."""
        text = self.stderr_file.read_text(errors="replace")
        return "".join(line for line in text.splitlines(True) if not line.startswith(BUSY))

    def wait(self, seconds=60):
        seconds *= SLOWNESS
        try:
            return self.process.wait(timeout=seconds)
        except subprocess.TimeoutExpired:
            raise AssertionError(f"still running after {seconds} s: {self.stderr}") from None

    def is_running(self):
        return self.process.poll() is None

    def send(self, number):
        self.process.send_signal(number)

    def kill(self):
        if self.is_running():
            self.process.kill()
        self.process.wait()


class Scene(Process):
    """The window of scene.cpp in a corner of the screen. Shows what time it is, and flashes and sounds on the beat."""

    def __init__(self, sounding=True, place=(0, 0), seconds=180):
        self.place = place
        super().__init__([SCENE, *map(str, place), "sounding" if sounding else "silent", str(seconds)], os.environ)
        wait_for("the scene", lambda: "ready" in self.stdout)


class Rectangle:
    def __init__(self, x, y, width, height):
        self.x, self.y, self.width, self.height = x, y, width, height

    @property
    def centre(self):
        return self.x + self.width // 2, self.y + self.height // 2


def screenshot(window="root"):
    """height x width x 3 values of a window, or of the whole screen."""
    data = output_of("import", "-silent", "-window", str(window), "-depth", "8", "ppm:-", binary=True)
    header = re.match(rb"P6\s+(\d+)\s+(\d+)\s+255\s", data)
    width, height = int(header.group(1)), int(header.group(2))
    return numpy.frombuffer(data, numpy.uint8, offset=header.end()).reshape(height, width, 3)


def place_of(window):
    text = output_of("xwininfo", "-id", str(window))
    return Rectangle(*(int(re.search(rf"{what}:\s+(-?\d+)", text).group(1))
                       for what in ("Absolute upper-left X", "Absolute upper-left Y", "Width", "Height")))  # fmt: skip


def title_of(window):
    return output_of("xdotool", "getwindowname", str(window), check=False).strip()


def click(x, y):
    output_of("xdotool", "mousemove", str(x), str(y), "click", "1")


def press(*keys):
    output_of("xdotool", "key", *keys)


def runs(filled, gap):
    """First and last places of the runs of true values that are at least `gap` apart."""
    places = numpy.flatnonzero(filled)
    if not len(places):
        return []
    cuts = numpy.flatnonzero(numpy.diff(places) > gap)
    return list(zip(places[numpy.r_[0, cuts + 1]], places[numpy.r_[cuts, len(places) - 1]], strict=True))


class Lumavex(Process):
    """The program. Without --record it has windows, which are found by their process and title."""

    def __init__(self, home, *options, terminal=None, **environment):
        self.home = home
        super().__init__([LUMAVEX, *map(str, options)], {**home.environment, **environment}, terminal)

    def windows(self):
        """Ids of the windows on screen, menus among them."""
        return output_of("xdotool", "search", "--onlyvisible", "--pid", str(self.pid), check=False).split()

    def titled(self, title):
        return next((window for window in self.windows() if title_of(window) == title), None)

    def wait_for_window(self, title, seconds=WAIT_SECONDS):
        return wait_for(f'a window "{title}" ({self.stderr})', lambda: self.titled(title), seconds)


class Gui(Lumavex):
    """The program with its main window; its buttons are clicked where they are seen."""

    def __init__(self, home, *options, ignore_load=True, **environment):
        output_of("xdotool", "mousemove", "0", "0")  # a button under the pointer would look different
        super().__init__(home, *(["--ignore-load"] if ignore_load else []), *options, **environment)
        self.main = self.wait_for_window("Lumavex")
        # Where the whole of it is seen, whatever the window manager thinks of a full screen.
        output_of("xdotool", "windowmove", self.main, "250", "300")
        wait_for("the toolbar", lambda: len(self.find_buttons()) >= 12)
        self.buttons = self.find_buttons()

    def find_buttons(self):
        """Middles of the toolbar's icons from left to right, relative to the window. The menu bar is the first band of
        writing in the window and the toolbar the second; icons are farther apart than the strokes of one."""
        pixels = screenshot(self.main).astype(int)[:, 2:-2]
        # Pixels that differ from their row's usual colour are writing, disabled or not; a line or a shade across is none.
        ink = abs(pixels - numpy.median(pixels, axis=1, keepdims=True)).max(axis=2) > 10
        bands = [band for band in runs(ink.any(axis=1), 3) if band[1] - band[0] > 8]
        if len(bands) < 2:
            return []
        top, bottom = bands[1]
        icons = [run for run in runs(ink[top : bottom + 1].any(axis=0), 4) if run[1] - run[0] > 8]
        return [(int(left + right) // 2 + 2, int(top + bottom) // 2) for left, right in icons]

    def click_button(self, index):
        place, button = place_of(self.main), self.buttons[index]
        click(place.x + button[0], place.y + button[1])

    def record(self):
        self.click_button(0)

    def pause(self):
        self.click_button(1)

    def stop(self):
        self.click_button(2)

    def key(self, *keys):
        """Presses keys in the main window."""
        output_of("xdotool", "windowactivate", "--sync", self.main)
        press(*keys)

    def take_picture(self):
        self.click_button(10)

    def wait_for_recording(self):
        return wait_for("a recording", self.home.growing_movie)

    def wait_for_save_panel(self, seconds=WAIT_SECONDS, title=SAVE_PANEL):
        panel = self.wait_for_window(title, seconds)
        output_of("xdotool", "windowactivate", "--sync", panel)
        return panel

    def save_as(self, path, title=SAVE_PANEL):
        self.wait_for_save_panel(title=title)
        press("ctrl+a")
        output_of("xdotool", "type", "--delay", "5", str(path))
        press("Return")

    def cancel_save_panel(self, title=SAVE_PANEL):
        panel = self.wait_for_save_panel(title=title)
        press("Escape")
        wait_for("the end of the save panel", lambda: panel not in self.windows())

    def alert(self):
        """An alert bears the program's name, as the main window does."""
        return next((each for each in self.windows() if each != self.main and title_of(each) == "Lumavex"), None)

    def wait_for_alert(self, seconds=WAIT_SECONDS):
        return wait_for(f"an alert ({self.stderr})", self.alert, seconds)

    def close_alert(self, key="Escape"):
        alert = self.wait_for_alert()
        output_of("xdotool", "windowactivate", "--sync", alert)
        press(key)
        wait_for("the end of the alert", lambda: alert not in self.windows())


class Cameras:
    """Camera nodes of the PipeWire server, which show colour bars and, in a corner, snow."""

    def __init__(self):
        self.made = 0
        self.processes = {}

    def plug_in(self, name):
        self.made += 1
        node = f"test-camera-{self.made}"
        self.processes[node] = subprocess.Popen((TEST_CAMERA, node, name), stdin=subprocess.DEVNULL,
                                                stdout=subprocess.DEVNULL, preexec_fn=die_with_parent)  # fmt: skip
        wait_for(f"the camera {name}", lambda: f'node.name = "{node}"' in output_of("pw-cli", "ls", "Node"))
        return node

    def unplug(self, node):
        process = self.processes.pop(node)
        process.kill()
        process.wait()

    def unplug_all(self):
        for node in list(self.processes):
            self.unplug(node)


class Movie:
    """A movie file and what it shows of a scene."""

    def __init__(self, path, scene=None):
        self.path = str(path)
        self.scene = scene

    def streams(self):
        text = output_of("ffprobe", "-v", "error", "-show_streams", "-show_format", "-of", "json", self.path)
        return json.loads(text)["streams"]

    def stream(self, kind):
        found = [each for each in self.streams() if each["codec_type"] == kind]
        assert len(found) == 1, f"{len(found)} {kind} streams in {self.path}"
        return found[0]

    def has_sound(self):
        return any(each["codec_type"] == "audio" for each in self.streams())

    def errors(self):
        """What ffmpeg finds wrong when it decodes everything."""
        result = subprocess.run(["ffmpeg", "-nostdin", "-v", "error", "-i", self.path, "-f", "null", "-"],
                                stdin=subprocess.DEVNULL, capture_output=True, text=True, timeout=60, check=False)  # fmt: skip
        return result.stderr if result.returncode == 0 else result.stderr or "ffmpeg failed"

    def frame_times(self):
        text = output_of("ffprobe", "-v", "error", "-select_streams", "v", "-show_entries", "packet=pts_time",
                         "-of", "csv=p=0", self.path)  # fmt: skip
        return numpy.array([float(line.strip(",")) for line in text.split() if line.strip(",") != "N/A"])

    def picture_seconds(self):
        return float(self.stream("video")["duration"])

    def sound(self):
        """The left channel."""
        data = output_of("ffmpeg", "-nostdin", "-v", "error", "-i", self.path, "-map", "0:a", "-f", "s16le", "-c:a",
                         "pcm_s16le", "-", binary=True)  # fmt: skip
        return numpy.frombuffer(data, numpy.int16)[::2].astype(int)

    def sound_seconds(self):
        return len(self.sound()) / 44100

    def picture_at(self, seconds):
        """height x width x 3 values of the frame at that time, found by seeking."""
        video = self.stream("video")
        data = output_of("ffmpeg", "-nostdin", "-v", "error", "-ss", str(seconds), "-i", self.path, "-frames:v", "1",
                         "-pix_fmt", "rgb24", "-f", "rawvideo", "-", binary=True)  # fmt: skip
        return numpy.frombuffer(data, numpy.uint8).reshape(video["height"], video["width"], 3)

    def frame(self, number):
        """height x width x 3 values of the frame of that number, found by counting."""
        video = self.stream("video")
        data = output_of("ffmpeg", "-nostdin", "-v", "error", "-i", self.path, "-map", "0:v", "-vf", rf"select=eq(n\,{number})",
                         "-frames:v", "1", "-pix_fmt", "rgb24", "-f", "rawvideo", "-", binary=True)  # fmt: skip
        return numpy.frombuffer(data, numpy.uint8).reshape(video["height"], video["width"], 3)

    def scene_times(self):
        """What time the scene shows in each frame (NaN where it is not to be read), and whether it flashes."""
        width, height = SCENE_SIZE
        data = output_of("ffmpeg", "-nostdin", "-v", "error", "-i", self.path, "-map", "0:v", "-vsync", "passthrough",
                         "-vf", f"format=gray,crop={width}:{height}:{self.scene.place[0]}:{self.scene.place[1]}",
                         "-pix_fmt", "gray", "-f", "rawvideo", "-", binary=True)  # fmt: skip
        frames = numpy.frombuffer(data, numpy.uint8).reshape(-1, height, width).astype(int)
        return read_codes(frames), frames[:, 2 * SCENE_SQUARE + 8 : -8].mean(axis=(1, 2)) > 128

    def tones(self):
        """(where it begins in the movie, its beat modulo DISTINCT_BEATS) of every whole tone."""
        sound = self.sound()
        found = []
        for first, last in runs(abs(sound) > 500, 441):
            if abs((last - first) / 44100 - TONE) > 0.003:
                continue  # cut by a pause, or by the recording's beginning or end
            piece = sound[first + 220 : first + 4000] * numpy.hanning(3780)
            hertz = numpy.fft.rfft(piece, 44100).__abs__().argmax()
            found.append((first / 44100, round((hertz - 500) / 25) % DISTINCT_BEATS))
        return found


def read_codes(frames):
    """Seconds that the scene's code tells in each grey picture; NaN where the squares and their contraries disagree."""
    codes = numpy.zeros(len(frames))
    legible = numpy.ones(len(frames), bool)
    for bit in range(SCENE_BITS):
        columns = slice(bit * SCENE_SQUARE + 4, (bit + 1) * SCENE_SQUARE - 4)
        upper = frames[:, 4 : SCENE_SQUARE - 4, columns].mean(axis=(1, 2))
        lower = frames[:, SCENE_SQUARE + 4 : 2 * SCENE_SQUARE - 4, columns].mean(axis=(1, 2))
        legible &= abs(upper - lower) > 128
        codes = codes * 2 + (upper > lower)
    return numpy.where(legible, codes * SCENE_TICK, numpy.nan)


class Take:
    """A stretch of a movie between two pauses: when the scene's time 0 would stand in the movie, by picture and by
    sound; in seconds."""

    def __init__(self, frame_times, scene_times):
        self.frame_times, self.scene_times = frame_times, scene_times
        # The contents of a frame are up to a tick older than the frame.
        self.offsets = frame_times - scene_times - SCENE_TICK / 2
        self.picture_offset = float(numpy.median(self.offsets))
        self.sound_offsets = []

    def asynchrony(self):
        """By how much each tone comes after the flash it belongs to."""
        return numpy.array(self.sound_offsets) - self.picture_offset


def takes_of(movie):
    """The movie cut at its pauses, which are longer than the second that a busy machine may need for a frame."""
    times = movie.frame_times()
    codes, _ = movie.scene_times()
    assert len(times) == len(codes), f"{len(times)} packets, {len(codes)} frames"
    assert not numpy.isnan(codes[1:]).any(), f"frames {numpy.flatnonzero(numpy.isnan(codes))} are illegible"
    times, codes = times[1:], codes[1:]  # the first frame is taken while everything starts, and may be late
    cuts = numpy.flatnonzero(numpy.diff(codes) - numpy.diff(times) > 1) + 1
    takes = [Take(*both) for both in zip(numpy.split(times, cuts), numpy.split(codes, cuts), strict=True)]
    cycle = DISTINCT_BEATS * BEAT
    for place, beat in movie.tones() if movie.has_sound() else ():
        take = max((each for each in takes if each.frame_times[0] <= place + FRAME), key=lambda each: each.frame_times[0],
                   default=takes[0])  # fmt: skip
        offset = place - beat * BEAT
        take.sound_offsets.append(offset - cycle * round((offset - take.picture_offset) / cycle))
    return takes


class EndToEndTest(unittest.TestCase):
    """Ends what a test has started."""

    def start(self, process):
        self.addCleanup(self.end, process)
        return process

    def end(self, process):
        process.kill()
        if isinstance(process, Process):
            self.assertNotRegex(process.stderr_file.read_text(errors="replace"), SANITIZER_REPORT)

    def home(self):
        home = Home()
        self.addCleanup(shutil.rmtree, home.root, ignore_errors=True)
        return home

    def start_recording(self, home, seconds, *options, output=None, **environment):
        """(program, path) of a recording under way, without a user."""
        path = output or home.videos / "movie.mov"
        program = self.start(Lumavex(home, "--record", seconds, "--output", path, "--ignore-load", *options, **environment))
        wait_for(f"a recording ({program.stderr})", home.growing_movie)
        return program, path

    def mount_disk(self, folder, *options):
        """A file system of its own at the folder, where that can be had."""
        mounted = subprocess.run(["mount", "-t", "tmpfs", "-o", ",".join(("mode=700", *options)), "tmpfs", folder],
                                 capture_output=True, check=False)  # fmt: skip
        if mounted.returncode != 0:
            self.skipTest("no file system can be mounted here")
        self.addCleanup(output_of, "umount", "--lazy", folder)

    def fake_encoder(self, home, script):
        """The PATH on which a program in the encoder's place is found first; "$REAL" is the encoder."""
        folder = home.root / "bin"
        folder.mkdir()
        encoder = folder / "ffmpeg"
        encoder.write_text(f"#!/bin/bash\nREAL={shutil.which('ffmpeg')}\nJOINED=${{!#}}\n{script}\n")
        encoder.chmod(0o755)
        return f"{folder}:{os.environ['PATH']}"

    def assert_kept_in_two_files(self, home, seconds=None):
        """Picture and sound, in the folder of recovered recordings and nowhere else; what was told must name both."""
        kept = {file.suffix: file for file in home.recovered_folder.iterdir()}
        self.assertEqual(set(kept), {".mov", ".wav"})
        self.assertEqual(Movie(kept[".mov"]).errors(), "")
        picture, sound = Movie(kept[".mov"]).picture_seconds(), Movie(kept[".wav"]).sound_seconds()
        self.assertAlmostEqual(picture, sound, delta=0.5 if seconds is None else 0.04)
        if seconds is not None:
            self.assertAlmostEqual(picture, seconds, delta=0.04)
        self.assertEqual(home.working_files(), [])
        return kept

    def assert_rate(self, movie, rate=30):
        """The picture starts at once and is of exactly the rate asked for, since editors make projects of that rate."""
        video = movie.stream("video")
        self.assertEqual([video["avg_frame_rate"], video["r_frame_rate"]], [f"{rate}/1"] * 2)
        self.assertEqual(float(video["start_time"]), 0)
        self.assertAlmostEqual(float(video["duration"]), int(video["nb_frames"]) / rate, delta=2e-6)

    def assert_movie(self, movie, seconds=None, tolerance=0.25, rate=30):
        """One picture and one sound stream that decode without a complaint and agree in length within a frame."""
        self.assertEqual(sorted(each["codec_name"] for each in movie.streams()), ["mjpeg", "pcm_s16le"])
        audio = movie.stream("audio")
        self.assertEqual((audio["sample_rate"], audio["channels"]), ("44100", 2))
        self.assertEqual(movie.errors(), "")
        self.assert_rate(movie, rate)
        self.assertLess(abs(movie.picture_seconds() - movie.sound_seconds()), 1 / rate)
        if seconds is not None:
            self.assertAlmostEqual(movie.picture_seconds(), seconds, delta=tolerance)
