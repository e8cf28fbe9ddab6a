# SPDX-License-Identifier: GPL-3.0-or-later
"""Pictures whose every pixel tells where it belongs, and how they are found again in a movie.

A Coded picture's red tells the column and its blue the row; blocks of green, no two neighbourhoods alike, give the edges
to measure by. `Coded.measure` finds which part of the picture a frame shows, to a fraction of a pixel.
"""

import os
import subprocess
import tempfile
from pathlib import Path

import numpy
from lumavex_e2e import Process, output_of, wait_for

PICTURE_WINDOW = os.environ["LUMAVEX_PICTURE_WINDOW"]
SCREEN = (1024, 768)
BLOCK = 16


def luma(picture):
    return picture @ numpy.array([0.299, 0.587, 0.114], numpy.float32)


def smoothed(values, width, axis):
    """The mean over `width` neighbours, twice."""
    width = max(1, int(round(width))) | 1
    for _ in range(2):
        padded = numpy.concatenate([numpy.repeat(values.take([0], axis), width // 2 + 1, axis), values,
                                    numpy.repeat(values.take([-1], axis), width // 2, axis)], axis)  # fmt: skip
        sums = padded.cumsum(axis, dtype=numpy.float64)
        count = values.shape[axis]
        values = (sums.take(range(width, width + count), axis) - sums.take(range(count), axis)) / width
    return values


def line_through(places, values):
    """Slope and value at 0 of the line that most of the points lie on."""
    kept = numpy.ones(len(places), bool)
    for _ in range(6):
        line = numpy.polyfit(places[kept], values[kept], 1)
        error = abs(numpy.polyval(line, places) - values)
        kept = error <= max(4, 2.5 * numpy.median(error))
    return line


class Shown:
    """What a frame shows: its pixel (u, v) the picture's place (left + u across, top + v down), in pixels."""

    def __init__(self, left, across, top, down, width, height):
        self.left, self.across, self.top, self.down = left, across, top, down
        self.width, self.height = width, height

    def edges(self):
        """Of the frame, in the picture: left, top, right, bottom."""
        return numpy.array([self.left, self.top, self.left + self.width * self.across, self.top + self.height * self.down])

    def distance(self, other):
        return float(abs(self.edges() - other.edges()).max())

    def __repr__(self):
        return "(" + ", ".join(f"{each:.2f}" for each in self.edges()) + ")"


class Coded:
    def __init__(self, seed, width=SCREEN[0], height=SCREEN[1]):
        self.width, self.height = width, height
        blocks = numpy.random.default_rng(seed).choice([40, 215], (-(-height // BLOCK), -(-width // BLOCK)))
        self.pixels = numpy.empty((height, width, 3), numpy.uint8)
        self.pixels[..., 0] = numpy.rint(numpy.arange(width) * 255 / (width - 1))
        self.pixels[..., 1] = blocks.repeat(BLOCK, 0).repeat(BLOCK, 1)[:height, :width]
        self.pixels[..., 2] = numpy.rint(numpy.arange(height) * 255 / (height - 1))[:, None]
        self.smooth = smoothed(smoothed(luma(self.pixels.astype(numpy.float32)), 5, 0), 5, 1)

    def sample(self, x, y):
        """Values between pixels, at places counted from the upper left corner (a pixel's middle is at .5)."""
        x, y = numpy.clip(x - 0.5, 0, self.width - 1.001), numpy.clip(y - 0.5, 0, self.height - 1.001)
        column, row = x.astype(int), y.astype(int)
        x, y = x - column, y - row
        upper = self.smooth[row, column] * (1 - x) + self.smooth[row, column + 1] * x
        lower = self.smooth[row + 1, column] * (1 - x) + self.smooth[row + 1, column + 1] * x
        return upper * (1 - y) + lower * y

    def measure(self, frame):
        """What the frame shows, or None when it shows something else. Black parts and what covers less than a third of the
        picture do no harm."""
        height, width = frame.shape[:2]
        frame = frame.astype(numpy.float32)
        visible = frame[..., 1] > 20
        columns, rows = visible.mean(0) > 0.5, visible.mean(1) > 0.5
        if columns.sum() < 64 or rows.sum() < 64:
            return None
        u, v = numpy.arange(width) + 0.5, numpy.arange(height) + 0.5
        red = numpy.median(frame[rows][:, columns, 0], 0) * (self.width - 1) / 255 + 0.5
        blue = numpy.median(frame[rows][:, columns, 2], 1) * (self.height - 1) / 255 + 0.5
        across, left = line_through(u[columns], red)
        down, top = line_through(v[rows], blue)
        if not (0.05 < across < 20 and 0.05 < down < 20):
            return None
        grey = smoothed(smoothed(luma(frame), 5 / down, 0), 5 / across, 1)
        margin = 12
        inner_u = numpy.flatnonzero(columns)[margin:-margin:3]
        inner_v = numpy.flatnonzero(rows)[margin:-margin:3]
        seen = grey[numpy.ix_(inner_v, inner_u)]
        gu, gv = numpy.meshgrid(inner_u + 0.5, inner_v + 0.5)
        for step in range(12):
            x, y = left + across * gu, top + down * gv
            error = seen - self.sample(x, y)
            slope_x = self.sample(x + 0.5, y) - self.sample(x - 0.5, y)
            slope_y = self.sample(x, y + 0.5) - self.sample(x, y - 0.5)
            trusted = abs(error) < (255 if step < 4 else 40)
            trusted &= (x > 4) & (y > 4) & (x < self.width - 4) & (y < self.height - 4)
            if trusted.mean() < 0.6:
                return None
            slopes = numpy.stack([slope_x, slope_x * gu, slope_y, slope_y * gv], -1)[trusted]
            change, *_ = numpy.linalg.lstsq(slopes, error[trusted], rcond=None)
            left, across, top, down = numpy.array([left, across, top, down]) + change
        return Shown(left, across, top, down, width, height)


def fitted(picture, target):
    """(x, y, width, height) where a picture is drawn that is fitted in steps of a tenth of the target; y upward."""
    f = numpy.float32
    w, h, tw, th = f(picture[0]), f(picture[1]), f(target[0]), f(target[1])
    upright = h > w
    ratio, step = (h / w, th / f(10)) if upright else (w / h, tw / f(10))

    def next_size(sign):
        return ((h + sign * step) / ratio, h + sign * step) if upright else (w + sign * step, (w + sign * step) / ratio)

    if picture[0] < target[0] and picture[1] < target[1]:
        while tw > w and th > h:
            w, h = next_size(f(1))
    else:
        while w > tw or h > th:
            w, h = next_size(f(-1))
    return float((tw - w) * f(0.5)), float((th - h) * f(0.5)), float(w), float(h)


def cut_out(x, y, width, height):
    """What a frame of the screen's size shows of a screen of which this rectangle (origin lower left, y upward) is cut."""
    fit_x, fit_y, fit_width, fit_height = fitted((width, height), SCREEN)
    across, down = width / fit_width, height / fit_height
    top = SCREEN[1] - y - height
    above = SCREEN[1] - fit_y - fit_height
    return Shown(x - fit_x * across, across, top - above * down, down, *SCREEN)


def stretched(width, height, left=0, right=0, top=0, bottom=0):
    """What a frame of the screen's size shows of a picture of that size that is stretched over it, with what a window
    manager has put around it."""
    return Shown(-left, (width + left + right) / SCREEN[0], -top, (height + top + bottom) / SCREEN[1], *SCREEN)


def follow_cursor(mouse_x, mouse_y, width, height):
    """The rectangle that follows the pointer, which is given from the upper left corner as xdotool counts."""
    x, y = mouse_x, SCREEN[1] - 1 - mouse_y
    x = min(max(x, width * 0.5), SCREEN[0] - width * 0.5)
    y = min(max(y, height / 2.2), SCREEN[1] - height / 2.2)
    return x - 0.5 * width, y - 0.5 * height, width, height


class PictureWindow(Process):
    """A window that shows a picture (height x width x 3 values), or as much of it as it is large."""

    def __init__(self, pixels, name, x=0, y=0, width=None, height=None, background=False):
        folder = Path(tempfile.mkdtemp(prefix="picture.", dir=os.environ["LUMAVEX_TEST_RUNTIME"]))
        rows, columns = pixels.shape[:2]
        file = folder / "picture.bgrx"
        file.write_bytes(numpy.dstack([pixels[..., ::-1], numpy.zeros((rows, columns, 1), numpy.uint8)]).tobytes())
        command = [PICTURE_WINDOW, file, columns, rows, x, y, width or columns, height or rows, name]
        super().__init__([*map(str, command), *(["background"] if background else [])], os.environ)
        self.window = wait_for(f"the window {name}", lambda: self.stdout.split("\n")[0])


    def frame(self):
        """Widths of the window manager's frame: left, right, top, bottom."""
        text = output_of("xprop", "-id", self.window, "_NET_FRAME_EXTENTS")
        return [int(each) for each in text.split("=")[1].split(",")]


def plain(colour, width=SCREEN[0], height=SCREEN[1]):
    return numpy.full((height, width, 3), colour, numpy.uint8)


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


def point(x, y):
    output_of("xdotool", "mousemove", str(x), str(y))


def stages_of(movie, stages, nearly):
    """The numbers of the stages, in the order in which the movie shows them, repetitions left out. A stage is a picture and
    what a frame shows of it. What fits no stage is given as it was measured."""
    found, previous, number = [], None, None
    for frame in frames_of(movie):
        if previous is None or abs(frame.astype(int) - previous).max() > 12:
            measured = {picture: picture.measure(frame) for picture in {stage[0] for stage in stages}}
            fits = [i for i, (picture, shown) in enumerate(stages)
                    if measured[picture] and measured[picture].distance(shown) <= nearly]  # fmt: skip
            # A stage may return later; the one that comes next is meant.
            last = max((each for each in found if isinstance(each, int)), default=0)
            number = next((i for i in fits if i >= last), fits[-1] if fits else list(measured.values()))
            previous = frame.astype(int)
        if not found or found[-1] != number:
            found.append(number)
    return found
