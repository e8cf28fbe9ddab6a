# SPDX-License-Identifier: GPL-3.0-or-later
"""The rows of bench/recorder-cost's table. Each one measures in turns within one run and yields ratios."""

import dataclasses
import json
import math
import statistics
import subprocess
import sys
from dataclasses import dataclass, field

import quality

RATE = 30
OFFERED_RATES = (15, 20, 25, 30, 36, 43, 50, 60, 72, 85, 100, 120, 144, 172, 206, 240)
FASTEST_STEPS = 250  # a second: more than the highest rate, so that every frame differs from the previous one


@dataclass
class Figure:
    row: str
    what: str
    limit: float
    value: float | None = None  # None: it could not be measured; see the notes
    notes: list = field(default_factory=list)

    @property
    def holds(self):
        return None if self.value is None else self.value <= self.limit


def show(figure, json_file):
    """Prints the figure, and appends it to the file if there is one."""
    value = "skipped" if figure.value is None else f"{figure.value:.3f}"
    verdict = {None: "", True: "holds", False: "DOES NOT HOLD"}[figure.holds]
    print(f"{figure.row:>3}  {figure.what:<82} {value:>8}  at most {figure.limit:.2f}  {verdict}")
    for note in figure.notes:
        print(f"       {note}")
    sys.stdout.flush()
    if json_file:
        with open(json_file, "a", encoding="ascii") as file:
            file.write(json.dumps({**dataclasses.asdict(figure), "holds": figure.holds}) + "\n")


def median(values):
    return statistics.median(values)


def told(name, recordings):
    own, both = (median([getattr(each, how)() for each in recordings]) for how in ("per_frame", "per_frame_with_server"))
    text = f"{name} {own:.2f} ms a frame, {both:.2f} with the X server's share"
    late = sum(each.late for each in recordings)
    return text + (f" ({late} frames came too late and were repeated)" if late else "")


def compare(figure, ours, theirs, name):
    """Stores the ratio of the costs per frame in the figure."""
    figure.value = median([each.per_frame() for each in ours]) / median([each.per_frame() for each in theirs])
    with_server = (median([each.per_frame_with_server() for each in ours])
                   / median([each.per_frame_with_server() for each in theirs]))  # fmt: skip
    figure.notes += [told("ours", ours), told(name, theirs), f"with the X server's share {with_server:.3f}"]
    return figure


def composed(bench, rounds, wanted):
    """Rows 1 and 2."""
    ours, bare, filtered = [], [], []
    with bench.camera(), bench.scene("full_screen_motion"):
        for _ in range(rounds):
            ours.append(bench.with_window(RATE, *bench.composed()))
            if 1 in wanted:
                bare.append(bench.ffmpeg(RATE))
            if 2 in wanted:
                filtered.append(bench.ffmpeg_composed(RATE))
    missing = [] if bench.knows_overlay() else ["without an overlay, which cannot be chosen on the command line"]
    if 1 in wanted:
        what = "composed at 30 fps (screen, camera, overlay, preview on) / ffmpeg, bare screen"
        yield compare(Figure("1", what, 0.30, notes=list(missing)), ours, bare, "ffmpeg")
    if 2 in wanted:
        yield compare(Figure("2", "the same / ffmpeg composing it with filters", 0.25, notes=list(missing)), ours, filtered,
                      "ffmpeg")  # fmt: skip


def peak_rate(record, seconds):
    """The most frames per second actually made while increasing rates are offered, and the rate offered then. A rate that is
    not reached is not the end: when a few of its frames come too late, a higher rate may still give more."""
    best, best_rate, no_better = 0.0, 0, 0
    for rate in OFFERED_RATES:
        frames = record(rate).frames / seconds
        no_better = 0 if frames > best else no_better + 1
        if frames > best:
            best, best_rate = frames, rate
        if no_better == 2:
            break
    return best, f" of {best_rate} offered" + (", and no more can be" if best_rate == OFFERED_RATES[-1] else "")


def highest_rate(bench, rounds, _wanted):
    """Row 3. The scene moves more often than the highest rate, so that no frame can be repeated."""
    seconds = min(bench.seconds, 6)
    ours, theirs, notes = [], [], []
    with bench.camera(), bench.scene("full_screen_motion", FASTEST_STEPS):
        for _ in range(rounds):
            rate, after = peak_rate(lambda r: bench.unattended(r, *bench.composed(), "--size", "screen", seconds=seconds), seconds)
            ours.append(rate)
            notes.append(f"ours {rate:.1f} a second{after}")
            rate, after = peak_rate(lambda r: bench.ffmpeg(r, seconds=seconds, threads=("-threads", "2")), seconds)
            theirs.append(rate)
            notes.append(f"ffmpeg {rate:.1f} a second{after}")
    what = "most frames a second of ffmpeg -threads 2, bare screen / ours, composed"
    yield Figure("3", what, 0.40, median(theirs) / median(ours), notes)


def share_of_full_cost(bench, figure, rounds, rate, options):
    """Cost of the caret desktop relative to that of a screen that changes with every frame."""
    still, full = [], []
    for _ in range(rounds):
        with bench.scene("caret_desktop"):
            still.append(bench.with_window(rate, *options))
        with bench.scene("full_screen_motion"):
            full.append(bench.with_window(rate, *options))
    # A machine that cannot keep up makes fewer frames, so the full cost is that of one frame, multiplied by the rate.
    figure.value = 1000 * median([each.load() for each in still]) / (rate * median([each.per_frame() for each in full]))
    for name, recordings in (("caret", still), ("every frame", full)):
        load = median([each.load() for each in recordings])
        made = median([each.frames / each.seconds for each in recordings])
        server = median([each.server / each.seconds for each in recordings])
        figure.notes.append(f"{name}: {100 * load:.1f} % of a core, X server {100 * server:.1f} %, {made:.1f} frames a second "
                            f"composed, {median([each.per_frame() for each in recordings]):.2f} ms each")  # fmt: skip
    return figure


def caret(bench, rounds, _wanted):
    yield share_of_full_cost(bench, Figure("4", "only a caret blinks / every frame changes", 0.10), rounds, RATE, ())


def caret_with_camera(bench, rounds, _wanted):
    figure = Figure("5", "caret and a 30 fps camera, recorded at 60 / every frame changes", 0.35)
    with bench.camera():
        yield share_of_full_cost(bench, figure, rounds, 2 * RATE, bench.composed())


def bytes_at_equal_quality(bench, _rounds, _wanted):
    """Row 6: the largest ratio of two still scenes."""
    figure = Figure("6", "bytes a frame at equal PSNR and SSIM / ffmpeg", 1.15)
    ratios = []
    for scene in ("full_screen_motion", "caret_desktop"):
        with bench.scene(scene, 0):
            reference = quality.screenshot(bench)
            ours = quality.quality_of(bench.unattended(10, "--size", "screen", seconds=2).movie, reference)
            theirs = [quality.quality_of(quality.still_by_ffmpeg(bench, scale), reference) for scale in quality.SCALES]
        ratios.append(ours.bytes / quality.bytes_for_equal_quality(ours, theirs))
        at_3 = theirs[quality.SCALES.index(3)]
        better = ours.psnr >= at_3.psnr and ours.ssim >= at_3.ssim
        figure.notes += [f"{scene}: {ratios[-1]:.3f}; ours {ours}; ffmpeg -q:v 3 {at_3}",
                         f"ours is {'not below' if better else 'BELOW'} what ffmpeg makes in the other rows"]  # fmt: skip
    figure.value = max(ratios)
    yield figure


def other_recorders(bench, rounds, _wanted):
    """Row 7."""
    jpeg_quality, notes = equally_good(bench)
    ours, gstreamer, simple = [], [], []
    with bench.scene("full_screen_motion"):
        for _ in range(rounds):
            ours.append(bench.unattended(RATE, "--size", "screen"))
            gstreamer.append(bench.gstreamer(RATE, jpeg_quality))
            simple.append(bench.simplescreenrecorder(RATE))
    figure = Figure("7a", "bare screen / GStreamer ximagesrc ! videoconvert ! jpegenc", 0.75, notes=notes[:1])
    yield compare(figure, ours, gstreamer, "GStreamer")
    figure = Figure("7b", "bare screen / SimpleScreenRecorder, mjpeg", 0.55, notes=notes[1:])
    if None in simple:
        figure.notes.append("skipped: simplescreenrecorder is not installed")
        yield figure
    else:
        yield compare(figure, ours, simple, "SimpleScreenRecorder")


def equally_good(bench):
    """The lowest quality of GStreamer's encoder that is not below ours, and the quality of the recorders' pictures."""
    with bench.scene("full_screen_motion", 0):
        reference = quality.screenshot(bench)
        ours = quality.quality_of(bench.unattended(10, "--size", "screen", seconds=2).movie, reference)
        low, jpeg_quality, good = 50, 100, "not measured"
        while jpeg_quality - low > 1:
            tried = (low + jpeg_quality) // 2
            theirs = quality.quality_of(bench.gstreamer(10, tried, seconds=1).movie, reference)
            if theirs.psnr >= ours.psnr and theirs.ssim >= ours.ssim:
                jpeg_quality, good = tried, theirs
            else:
                low = tried
        notes = [f"quality: ours {ours}; GStreamer at {jpeg_quality} {good}"]
        simple = bench.simplescreenrecorder(10, seconds=2)
        if simple:
            notes.append(f"quality: ours {ours}; SimpleScreenRecorder {quality.quality_of(simple.movie, reference)}")
        return jpeg_quality, notes


def large_screen(bench, rounds, _wanted):
    """Row 8, on a screen of 3840x2160."""
    ours, theirs = [], []
    with bench.scene("full_screen_motion"):
        for _ in range(rounds):
            ours.append(bench.unattended(RATE, "--size", "1920x1080"))
            theirs.append(bench.ffmpeg(RATE, "-vf", "scale=1920:1080"))
    yield compare(Figure("8", "3840x2160 recorded as 1080p / ffmpeg doing so", 0.35), ours, theirs, "ffmpeg")


def idle(bench, rounds, _wanted):
    with bench.scene("caret_desktop", 0):
        loads = [bench.idle_with_window(RATE) for _ in range(rounds)]
    own, server = (median(each) for each in zip(*loads))
    yield Figure("9", "idle, preview at 30 fps, nothing changing / one core", 0.02, own,
                 [f"X server's share {max(0, server):.4f} of a core"])  # fmt: skip


LARGE_SCREEN_ROW = 8
ROWS = {1: composed, 2: composed, 3: highest_rate, 4: caret, 5: caret_with_camera, 6: bytes_at_equal_quality,
        7: other_recorders, LARGE_SCREEN_ROW: large_screen, 9: idle}  # fmt: skip


def measure(bench, wanted, rounds):
    """Yields the figures of the wanted rows. A row that fails reports the reason, and the other rows are still measured."""
    done = []
    for row in wanted:
        if ROWS[row] in done:
            continue
        done.append(ROWS[row])
        try:
            yield from ROWS[row](bench, rounds, wanted)
        except (RuntimeError, AssertionError, subprocess.SubprocessError) as error:
            yield Figure(str(row), "could not be measured", math.nan, notes=str(error).splitlines())
