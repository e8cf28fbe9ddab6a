// SPDX-License-Identifier: GPL-3.0-or-later
#include "compose/Compositor.h"

#include <QPainter>

#include <benchmark/benchmark.h>

namespace {

using namespace lumavex;

QImage texture(int width, int height, unsigned seed)
{
    QImage image(width, height, QImage::Format_RGB32);
    for (int y = 0; y < height; ++y) {
        auto* row = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < width; ++x) {
            seed = seed * 1664525U + 1013904223U;
            row[x] = 0xFF000000U | (seed >> 8U);
        }
    }
    return image;
}

enum class Pictures { ScreenOnly, All };

FrameInputs inputs(Pictures pictures)
{
    FrameInputs result;
    result.screen.imgScreenCapture = {texture(1920, 1080, 1), 1};
    result.screen.size_Screen = {1920, 1080};
    if (pictures == Pictures::ScreenOnly)
        return result;
    QImage cursor(16, 16, QImage::Format_ARGB32_Premultiplied);
    cursor.fill(QColor(255, 0, 0, 128));
    result.screen.imgMouseCursor = cursor;
    result.screen.cursor = CGPoint{500, 500};
    result.i_Show_Secondary = 1;
    result.camera = {texture(1280, 720, 2), 1};
    result.bOverlay = true;
    result.imgOverlay = {QImage(200, 100, QImage::Format_ARGB32), 1};
    result.imgOverlay.image.fill(QColor(0, 255, 0, 128));
    return result;
}

void output(benchmark::State& state, Pictures pictures, CGSize size)
{
    const FrameInputs frame = inputs(pictures);
    Compositor compositor(Compositor::Painting::Whole);
    for (auto _ : state)
        benchmark::DoNotOptimize(compositor.outputPass(frame, size));
}

/// An area of a caret's size changes with every frame.
void outputOfCaret(benchmark::State& state, Compositor::Painting painting, CGSize size)
{
    FrameInputs frame = inputs(Pictures::All);
    Compositor compositor(painting);
    for (auto _ : state) {
        const std::uint64_t serial = ++frame.screen.imgScreenCapture.serial;
        frame.screen.changes.add(serial, ChangedArea(QRect(640, 400, 2, 18)));
        benchmark::DoNotOptimize(compositor.outputPass(frame, size));
    }
}

/// A camera runs in front of a still screen.
void outputOfCamera(benchmark::State& state, Compositor::Painting painting, CGSize size)
{
    FrameInputs frame = inputs(Pictures::All);
    Compositor compositor(painting);
    for (auto _ : state) {
        ++frame.camera.serial;
        benchmark::DoNotOptimize(compositor.outputPass(frame, size));
    }
}

void preview(benchmark::State& state, Pictures pictures)
{
    const FrameInputs frame = inputs(pictures);
    Compositor compositor(Compositor::Painting::Whole);
    for (auto _ : state)
        benchmark::DoNotOptimize(compositor.previewPass(frame, {200, 112}, {200, 112}));
}

/// Time of the toolkit's own painter for the scaling alone, into reused memory.
void painter(benchmark::State& state, QSize size)
{
    const FrameInputs frame = inputs(Pictures::ScreenOnly);
    QImage canvas(size, QImage::Format_RGB32);
    for (auto _ : state) {
        QPainter p(&canvas);
        p.setRenderHint(QPainter::SmoothPixmapTransform);
        p.drawImage(canvas.rect(), frame.screen.imgScreenCapture.image);
        benchmark::DoNotOptimize(canvas.constBits());
    }
}

/// The same with a filter that reads every pixel of the picture.
void smoothScaled(benchmark::State& state, QSize size)
{
    const FrameInputs frame = inputs(Pictures::ScreenOnly);
    for (auto _ : state)
        benchmark::DoNotOptimize(
            frame.screen.imgScreenCapture.image.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation));
}

BENCHMARK_CAPTURE(output, Screen1080To1080, Pictures::ScreenOnly, CGSize{1920, 1080})->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(output, All1080To1080, Pictures::All, CGSize{1920, 1080})->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(output, Screen1080To720, Pictures::ScreenOnly, CGSize{1280, 720})->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(output, All1080To720, Pictures::All, CGSize{1280, 720})->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(output, Screen1080To360, Pictures::ScreenOnly, CGSize{640, 360})->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(outputOfCaret, Whole1080To720, Compositor::Painting::Whole, CGSize{1280, 720})
    ->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(outputOfCaret, Changes1080To720, Compositor::Painting::Changes, CGSize{1280, 720})
    ->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(outputOfCamera, Whole1080To1080, Compositor::Painting::Whole, CGSize{1920, 1080})
    ->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(outputOfCamera, Changes1080To1080, Compositor::Painting::Changes, CGSize{1920, 1080})
    ->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(preview, Screen, Pictures::ScreenOnly)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(preview, All, Pictures::All)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(painter, To1080, QSize(1920, 1080))->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(painter, To720, QSize(1280, 720))->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(painter, ToPreview, QSize(200, 112))->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(smoothScaled, To720, QSize(1280, 720))->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(smoothScaled, ToPreview, QSize(200, 112))->Unit(benchmark::kMicrosecond);

} // namespace

BENCHMARK_MAIN();
