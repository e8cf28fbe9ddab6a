# SPDX-License-Identifier: GPL-3.0-or-later
"""A screen and windows that are dark but for one green rectangle, and where a movie's frames show it."""

import subprocess
import time

import numpy
from lumavex_e2e import EndToEndTest, Lumavex, output_of, screenshot, wait_for

SCREEN = (1024, 768)


def edges_of(filled):
    """First and last column, first and last row that are filled for the most part of what is filled at all."""
    columns, rows = filled.sum(0), filled.sum(1)
    across, down = numpy.flatnonzero(columns > columns.max() / 2), numpy.flatnonzero(rows > rows.max() / 2)
    return across[0], across[-1] + 1, down[0], down[-1] + 1


def frames_of(movie):
    """The movie's frames, one after the other."""
    video = movie.stream("video")
    size = video["width"] * video["height"] * 3
    decoder = subprocess.Popen(["ffmpeg", "-nostdin", "-v", "error", "-i", movie.path, "-map", "0:v", "-vsync", "passthrough",
                                "-pix_fmt", "rgb24", "-f", "rawvideo", "-"],
                               stdin=subprocess.DEVNULL, stdout=subprocess.PIPE)  # fmt: skip
    with decoder:
        while len(data := decoder.stdout.read(size)) == size:
            yield numpy.frombuffer(data, numpy.uint8).reshape(video["height"], video["width"], 3)


def stages_of(movie):
    """The edges of the green rectangle in each frame, rounded; none where there is none; repetitions left out."""
    stages = []
    for frame in frames_of(movie):
        green = frame[..., 1].astype(int) - frame[..., 0] > 128
        edges = tuple(map(int, edges_of(green))) if green.any() else ()
        if not stages or stages[-1] != edges:
            stages.append(edges)
    return stages


def show_rectangle(left, right, top, bottom):
    """A dark desktop with a green rectangle."""
    draw = ("convert", "-size", "%dx%d" % SCREEN, "xc:#102040", "-fill", "#00ff00", "-draw",
            f"rectangle {left},{top} {right - 1},{bottom - 1}", "miff:-")  # fmt: skip
    subprocess.run(["display", "-window", "root", "-"], input=output_of(*draw, binary=True), timeout=20, check=False)
    wait_for("the rectangle", lambda: screenshot()[top, left, 1] == 255)


class UnattendedTest(EndToEndTest):
    """Records without a user while the test moves things about."""

    hold = 1.0  # seconds that each state lasts, so that a busy machine too has frames that show it

    def begin_recording(self, *options):
        home = self.home().make_settings()
        path = home.videos / "movie.mov"
        program = self.start(Lumavex(home, "--record", 60, "--output", path, "--fps", 10, "--sound", "no", "--cursor", "no",
                                     "--ignore-load", *options))  # fmt: skip
        wait_for("a recording", home.growing_movie)
        time.sleep(self.hold)
        return program, path

    def end_recording(self, program):
        program.send(2)
        self.assertEqual(program.wait(), 0, program.stderr)

    def assert_stages(self, movie, expected):
        """The movie shows the rectangle's edges so, one after the other, to the pixel."""
        stages = stages_of(movie)
        self.assertEqual(len(stages), len(expected), f"{stages} for {expected}")
        for found, wanted in zip(stages, expected, strict=True):
            self.assertEqual(len(found), len(wanted), f"{stages} for {expected}")
            if wanted:
                self.assertLessEqual(abs(numpy.subtract(found, wanted)).max(), 2, f"{stages} for {expected}")
