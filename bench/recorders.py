# SPDX-License-Identifier: GPL-3.0-or-later
"""Lumavex and the recorders that it is compared with: each records the screen for a while, and its cost is measured.

The cost is the processor time, user + system, of the recorder with its children, and separately that of the X server, without
the time that the server needs for the scene alone.
"""

import contextlib
import json
import os
import resource
import shutil
import subprocess
import sys
import tempfile
import time
from dataclasses import dataclass
from pathlib import Path

CAMERA_SIZE = (640, 480)
TICKS = os.sysconf("SC_CLK_TCK")
ROOT = Path(__file__).resolve().parent.parent
OVERLAY = ROOT / "resources" / "images" / "SelectImage.png"


@dataclass
class Recording:
    own: float  # seconds of processor time
    server: float  # the X server's, without the scene's share
    seconds: float  # length of the movie
    frames: int  # frames with a new picture
    late: int  # frames repeated because the machine could not keep up
    movie: str
    lateness: tuple = ()  # largest delay of a picture in each second, in seconds; ours only

    def per_frame(self):
        return 1000 * self.own / max(1, self.frames)

    def per_frame_with_server(self):
        return 1000 * (self.own + max(0, self.server)) / max(1, self.frames)

    def load(self):
        """Load in processors."""
        return self.own / self.seconds


def spent(pid):
    """Processor time of a process, its threads and its ended children, in seconds."""
    fields = Path(f"/proc/{pid}/stat").read_text(encoding="ascii", errors="replace").rpartition(")")[2].split()
    return sum(map(int, fields[11:15])) / TICKS


class XServer:
    """The display's server, and its load from the scene alone."""

    def __init__(self):
        self.pid = int(os.environ["LUMAVEX_TEST_X_SERVER"])
        self.load_of_scene = 0.0

    def watch_scene(self, seconds):
        before = spent(self.pid)
        time.sleep(seconds)
        self.load_of_scene = (spent(self.pid) - before) / seconds


class Measurement:
    """Measures until stop(): the server's time, and that of a running process or of children that start and end."""

    def __init__(self, server, pid=None):
        self.server, self.pid = server, pid
        self.own_before, self.server_before, self.begun = self.own_time(), spent(server.pid), time.monotonic()

    def own_time(self):
        if self.pid:
            return spent(self.pid)
        used = resource.getrusage(resource.RUSAGE_CHILDREN)
        return used.ru_utime + used.ru_stime

    def stop(self):
        """Returns (own, server) in seconds."""
        passed = time.monotonic() - self.begun
        server = spent(self.server.pid) - self.server_before - self.server.load_of_scene * passed
        return self.own_time() - self.own_before, server


def output_of(*command):
    return subprocess.run(command, stdin=subprocess.DEVNULL, capture_output=True, text=True, check=True, timeout=120).stdout


def measured_run(server, command, seconds, **options):
    measurement = Measurement(server)
    done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, errors="replace",
                          timeout=seconds + 60, check=False, **options)  # fmt: skip
    if done.returncode != 0:
        raise RuntimeError(f"{command[0]} ended with status {done.returncode}:\n{done.stdout[-2000:]}")
    return measurement.stop()


def frames_and_seconds(movie):
    text = output_of("ffprobe", "-v", "error", "-select_streams", "v:0", "-count_packets", "-show_entries",
                     "stream=nb_read_packets,duration", "-of", "json", movie)  # fmt: skip
    stream = json.loads(text)["streams"][0]
    return int(stream["nb_read_packets"]), float(stream.get("duration", 0))


def of_other(usage, movie, seconds):
    frames, _ = frames_and_seconds(movie)
    return Recording(*usage, seconds, frames, 0, movie)


def on_display(size, script, options, arguments):
    """Runs the script again, with --inside, on a screen of this size with a sound server and cameras. Returns its status."""
    support = ROOT / "tests" / "support"
    command = [support / "with-display", "--size", f"{size}x24", support / "with-sound", support / "with-camera",
               sys.executable, script, "--inside", options.build, *arguments]  # fmt: skip
    if options.json:
        command += ["--json", Path(options.json).resolve()]
    environment = dict(os.environ, LUMAVEX=f"{options.build}/lumavex", LUMAVEX_SCENE="")
    return subprocess.run(list(map(str, command)), env=environment, check=False).returncode


class Bench:
    """Common data of all recorders."""

    def __init__(self, build, seconds, folder, sound):
        self.build, self.seconds, self.folder, self.sound = build, seconds, folder, sound
        self.server = XServer()
        self.screen = tuple(map(int, output_of("xdotool", "getdisplaygeometry").split()))
        self.camera_picture = None
        self.made = 0
        # GStreamer lists its plugins once for all users of this run, as it has already done on a machine in use.
        os.environ["GST_REGISTRY"] = f"{folder}/registry.bin"
        output_of("gst-inspect-1.0", "fakesink")

    def path(self, ending):
        self.made += 1
        return f"{self.folder}/{self.made}{ending}"

    @contextlib.contextmanager
    def scene(self, name, *arguments):
        with tempfile.TemporaryFile() as log:
            scene = subprocess.Popen([f"{self.build}/bench/{name}", *map(str, arguments)], stdout=log, stderr=log)
            try:
                time.sleep(2)
                if scene.poll() is not None:
                    raise RuntimeError(f"the scene {name} did not start")
                self.server.watch_scene(4)
                yield
            finally:
                scene.terminate()
                scene.wait()

    @contextlib.contextmanager
    def camera(self):
        """A camera of the PipeWire server."""
        camera = subprocess.Popen((ROOT / "tests" / "support" / "test-camera", "bench", "Bench"),
                                  stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL)
        try:
            time.sleep(1)
            yield
        finally:
            camera.kill()
            camera.wait()

    # --- Lumavex ---

    def common(self, rate, stats):
        return ["--fps", str(rate), "--sound", self.sound, "--stats", stats, "--ignore-load"]

    def composed(self):
        """Options for a camera in one corner and a picture in another."""
        options = ["--source", "both", "--camera", "Bench", "--camera-size", "5"]
        if self.knows_overlay():
            options += ["--overlay", str(OVERLAY), "--overlay-position", "0"]
        return options

    def knows_overlay(self):
        return "--overlay FILE" in output_of(f"{self.build}/lumavex", "--help")

    def unattended(self, rate, *options, seconds=None):
        """Runs the program without windows, from start to end."""
        seconds = seconds or self.seconds
        movie, stats = self.path(".mov"), self.path(".jsonl")
        usage = measured_run(self.server, [f"{self.build}/lumavex", "--record", str(seconds), "--output", movie, "--cursor",
                                           "no", *self.common(rate, stats), *options], seconds)  # fmt: skip
        return self.of_ours(usage, stats, movie)

    def with_window(self, rate, *options, seconds=None):
        """Runs the program with main window and preview on the screen, from the click on Record to the one on Stop and the
        finished movie."""
        from lumavex_e2e import PREVIEW, Gui, Home, wait_for

        seconds = seconds or self.seconds
        stats, movie = self.path(".jsonl"), self.path(".mov")
        home = Home().make_settings()
        gui = Gui(home, *self.common(rate, stats), *options, PIPEWIRE_RUNTIME_DIR=os.environ["XDG_RUNTIME_DIR"])
        try:
            gui.wait_for_window(PREVIEW)
            time.sleep(2)
            measurement = Measurement(self.server, gui.pid)
            gui.record()
            wait_for("the recording", home.growing_movie)
            time.sleep(seconds)
            gui.stop()
            gui.wait_for_save_panel()
            usage = measurement.stop()
            shutil.move(home.growing_movie(), movie)
        finally:
            gui.kill()
            shutil.rmtree(home.root)
        return self.of_ours(usage, stats, movie)

    def idle_with_window(self, rate):
        """Processor seconds per second of the program with its preview, and of the server."""
        from lumavex_e2e import PREVIEW, Gui, Home

        home = Home().make_settings()
        gui = Gui(home, "--fps", str(rate))
        try:
            gui.wait_for_window(PREVIEW)
            time.sleep(3)
            measurement = Measurement(self.server, gui.pid)
            time.sleep(self.seconds)
            own, server = measurement.stop()
        finally:
            gui.kill()
            shutil.rmtree(home.root)
        return own / self.seconds, server / self.seconds

    def of_ours(self, usage, stats, movie):
        lines = [json.loads(line) for line in Path(stats).read_text(encoding="ascii").splitlines()]
        frames, late = (sum(line[name] for line in lines) for name in ("composed", "late"))
        return Recording(*usage, lines[-1]["time"], frames, late, movie, tuple(line["lateness"] for line in lines))

    # --- The others ---

    def ffmpeg(self, rate, *output, seconds=None, inputs=(), threads=()):
        """Leaves out the repetitions with which ffmpeg fills the movie when it cannot keep up."""
        seconds, movie = seconds or self.seconds, self.path(".mov")
        grab = ["-f", "x11grab", "-draw_mouse", "0", "-framerate", str(rate), "-video_size", "%dx%d" % self.screen, "-i",
                os.environ["DISPLAY"]]  # fmt: skip
        usage = measured_run(self.server, ["ffmpeg", "-nostdin", "-v", "error", *grab, *inputs, "-t", str(seconds), *output,
                                           *threads, "-c:v", "mjpeg", "-q:v", "3", "-pix_fmt", "yuvj420p", "-fps_mode", "vfr",
                                           movie], seconds)  # fmt: skip
        return of_other(usage, movie, seconds)

    def ffmpeg_composed(self, rate):
        """Composes the same picture with ffmpeg's filters. The camera is a file of raw pictures, which costs almost nothing
        to read."""
        if not self.camera_picture:
            self.camera_picture = self.path(".yuv")
            output_of("ffmpeg", "-nostdin", "-v", "error", "-f", "lavfi", "-i", "testsrc2=%dx%d:r=30" % CAMERA_SIZE, "-t", "1",
                      "-pix_fmt", "yuyv422", "-f", "rawvideo", self.camera_picture)  # fmt: skip
        inputs = ["-stream_loop", "-1", "-re", "-f", "rawvideo", "-pix_fmt", "yuyv422", "-video_size", "%dx%d" % CAMERA_SIZE,
                  "-framerate", "30", "-i", self.camera_picture]  # fmt: skip
        graph = f"[1]scale={self.screen[0] // 4}:-2[camera];[0][camera]overlay=W-w-32:H-h-32[both]"
        if self.knows_overlay():
            inputs += ["-loop", "1", "-framerate", "1", "-i", str(OVERLAY)]
            graph += ";[2]scale=300:-2[picture];[both][picture]overlay=32:32"
        return self.ffmpeg(rate, "-filter_complex", graph.removesuffix("[both]"), inputs=inputs)

    def gstreamer(self, rate, jpeg_quality, seconds=None):
        """Uses 4:2:0 and the full range of values, like ours."""
        seconds, movie = seconds or self.seconds, self.path(".mkv")
        usage = measured_run(
            self.server, ["gst-launch-1.0", "-q", "ximagesrc", "use-damage=false", "show-pointer=false",
                          f"num-buffers={int(rate * seconds)}", "!", f"video/x-raw,framerate={rate}/1", "!", "videoconvert",
                          "!", "video/x-raw,format=I420,colorimetry=1:4:0:0", "!", "jpegenc", f"quality={jpeg_quality}", "!",
                          "matroskamux", "!", "filesink", f"location={movie}"],
            seconds, stdin=subprocess.DEVNULL)  # fmt: skip
        return of_other(usage, movie, seconds)

    def simplescreenrecorder(self, rate, seconds=None):
        """Returns None when it is not installed. Its quantiser scale is ffmpeg's -q:v in units of 1/118."""
        if not shutil.which("simplescreenrecorder"):
            return None
        seconds, movie, settings = seconds or self.seconds, self.path(".avi"), self.path(".conf")
        Path(settings).write_text(
            f"[welcome]\nskip_page=true\n[input]\nvideo_area=screen\nvideo_frame_rate={rate}\nvideo_record_cursor=false\n"
            f"audio_enabled=false\n[output]\nfile={movie}\nadd_timestamp=false\ncontainer=other\ncontainer_av=avi\n"
            'video_codec=other\nvideo_codec_av=mjpeg\nvideo_options="flags=+qscale,global_quality=354,strict=unofficial"\n'
            "[record]\nhotkey_enable=false\n", encoding="ascii")  # fmt: skip
        say = f"(sleep {seconds + 2}; echo record-save; sleep 1; echo quit) | exec simplescreenrecorder "
        usage = measured_run(self.server, ["bash", "-c", say + f"--settingsfile={settings} --no-systray --start-hidden "
                                                               "--start-recording"], seconds)  # fmt: skip
        return of_other(usage, movie, seconds)
