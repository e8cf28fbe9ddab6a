// SPDX-License-Identifier: GPL-3.0-or-later
// Converts a camera frame to a picture: 1280x720 unscaled, and 1920x1080 scaled down to it.
#include "camera/FrameConverter.h"

#include "tests/fakes/FakeCameraFrame.h"

#include <benchmark/benchmark.h>

#include <cmath>

namespace lumavex {
namespace {

/// Soft shapes with some grain, like a camera picture.
QImage scene(QSize size)
{
    QImage picture(size, QImage::Format_RGB32);
    unsigned noise = 1;
    for (int y = 0; y < size.height(); ++y)
        for (int x = 0; x < size.width(); ++x) {
            noise = noise * 1664525U + 1013904223U;
            const int grain = int(noise >> 28);
            picture.setPixel(x, y,
                             qRgb(int(120 + 80 * std::sin(x / 90.0)) + grain,
                                  int(120 + 80 * std::sin(y / 70.0)) + grain,
                                  int(120 + 80 * std::sin((x + y) / 150.0)) + grain));
        }
    return picture;
}

void convert(benchmark::State& state, CameraPixels pixels, QSize size, const std::optional<ColorMatrix>& controls)
{
    const FakeCameraFrame packed(scene(size), pixels);
    CameraFrame frame = packed.frame();
    frame.picture = {1280, 720};
    FrameConverter converter;
    for (auto _ : state)
        benchmark::DoNotOptimize(converter.convert(frame, controls));
}

const std::optional<ColorMatrix> kOff;
const std::optional<ColorMatrix> kOn(std::in_place, 12.0F, 0.5F, 11.0F);
constexpr QSize kHd{1280, 720};
constexpr QSize kFullHd{1920, 1080};

BENCHMARK_CAPTURE(convert, yuy2, CameraPixels::Yuy2, kHd, kOff)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(convert, yuy2_controls, CameraPixels::Yuy2, kHd, kOn)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(convert, nv12, CameraPixels::Nv12, kHd, kOff)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(convert, nv12_controls, CameraPixels::Nv12, kHd, kOn)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(convert, mjpeg, CameraPixels::Mjpeg, kHd, kOff)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(convert, mjpeg_controls, CameraPixels::Mjpeg, kHd, kOn)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(convert, bgrx, CameraPixels::Bgrx, kHd, kOff)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(convert, nv12_scaled, CameraPixels::Nv12, kFullHd, kOff)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(convert, mjpeg_scaled, CameraPixels::Mjpeg, kFullHd, kOff)->Unit(benchmark::kMicrosecond);

} // namespace
} // namespace lumavex

BENCHMARK_MAIN();
