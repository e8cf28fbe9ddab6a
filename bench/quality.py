# SPDX-License-Identifier: GPL-3.0-or-later
"""Similarity of a recorder's picture of a still scene to the screen, and the number of bytes that the picture takes."""

import math
import os
import re
import subprocess
from dataclasses import dataclass

from recorders import output_of

SCALES = (2, 3, 4, 5, 6)  # values of ffmpeg's -q:v


@dataclass
class Quality:
    psnr: float  # dB
    ssim: float
    bytes: float  # size of one frame

    def __str__(self):
        return f"{self.psnr:.2f} dB, SSIM {self.ssim:.4f}, {self.bytes / 1000:.0f} kB"


def screenshot(bench):
    path = bench.path(".png")
    output_of("import", "-silent", "-window", "root", "-depth", "8", path)
    return path


def bytes_of_frame(movie):
    """Size of the last frame, when nothing changes any more."""
    sizes = output_of("ffprobe", "-v", "error", "-select_streams", "v:0", "-show_entries", "packet=size", "-of", "csv=p=0",
                      movie).split()  # fmt: skip
    return int(sizes[-1].strip(","))


def quality_of(movie, reference):
    """Compares a movie's last frame with a lossless picture, both as full-range 4:2:0."""
    figures = []
    for measure, pattern in (("psnr", r"average:([\d.inf]+)"), ("ssim", r"All:([\d.]+)")):
        graph = f"[0:v]scale=out_range=full,format=yuvj420p[a];[1:v]scale=out_range=full,format=yuvj420p[b];[a][b]{measure}"
        done = subprocess.run(["ffmpeg", "-nostdin", "-v", "info", "-sseof", "-0.5", "-i", movie, "-i", reference, "-lavfi", graph,
                               "-frames:v", "1", "-f", "null", "-"], capture_output=True, text=True, check=True,
                              timeout=60)  # fmt: skip
        figures.append(float(re.findall(pattern, done.stderr)[-1]))
    return Quality(*figures, bytes_of_frame(movie))


def still_by_ffmpeg(bench, scale):
    movie = bench.path(".mov")
    output_of("ffmpeg", "-nostdin", "-v", "error", "-f", "x11grab", "-draw_mouse", "0", "-framerate", "10", "-video_size",
              "%dx%d" % bench.screen, "-i", os.environ["DISPLAY"], "-t", "1", "-c:v", "mjpeg", "-q:v", str(scale), "-pix_fmt",
              "yuvj420p", movie)  # fmt: skip
    return movie


def bytes_at(value, points):
    """Bytes at which the measure reaches the value, interpolated linearly in the logarithms of (measure, bytes) and
    extrapolated beyond the points."""
    points = sorted(points)
    for (low, few), (high, many) in zip(points, points[1:]):
        if value <= high or (high, many) == points[-1]:
            share = (value - low) / (high - low)
            return math.exp(math.log(few) + share * (math.log(many) - math.log(few)))
    raise ValueError("too few points")


def bytes_for_equal_quality(ours, theirs):
    """Bytes per frame that ffmpeg needs so that neither PSNR nor SSIM is below ours."""
    return max(bytes_at(ours.psnr, [(each.psnr, each.bytes) for each in theirs]),
               bytes_at(-math.log(1 - ours.ssim), [(-math.log(1 - each.ssim), each.bytes) for each in theirs]))  # fmt: skip
