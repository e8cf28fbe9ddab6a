// SPDX-License-Identifier: GPL-3.0-or-later
// What a frame costs: encoding alone, encoding and writing, and writing a repetition of the previous one.
#include "platform/movie/JpegEncoder.h"
#include "platform/movie/JpegMovieWriter.h"

#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <future>
#include <semaphore>
#include <vector>

namespace {

using namespace lumavex;

constexpr int kWidth = 1920;
constexpr int kHeight = 1080;

/// Something like a screen: even areas, lines as of text, and a photograph's worth of gradients and noise.
std::vector<std::uint8_t> screenLikePixels()
{
    std::vector<std::uint8_t> bytes;
    std::uint32_t noise = 1;
    for (int y = 0; y < kHeight; ++y) {
        for (int x = 0; x < kWidth; ++x) {
            noise = noise * 1664525 + 1013904223;
            const bool photograph = x > 1200 && y > 500;
            const bool ink = !photograph && y % 20 < 12 && x % 700 < 500 && noise >> 30 == 0;
            const int level = photograph ? (x + y) / 12 + static_cast<int>(noise >> 29) : ink ? 40 : 245;
            for (const int value : {255, level, photograph ? level / 2 + 30 : level, level})
                bytes.push_back(static_cast<std::uint8_t>(value));
        }
    }
    return bytes;
}

CVPixelBufferRef screenLikeBuffer()
{
    static const std::vector<std::uint8_t> pixels = screenLikePixels();
    return std::make_shared<CVPixelBuffer>(kWidth, kHeight, kCVPixelFormatType_32ARGB, pixels.data(), 4 * kWidth,
                                           nullptr, nullptr);
}

void encodeFrame(benchmark::State& state)
{
    const CVPixelBufferRef pixels = screenLikeBuffer();
    JpegEncoder encoder;
    JpegRows jpeg;
    for (auto _ : state)
        benchmark::DoNotOptimize(encoder.encode(*pixels, allMacroblockRows(kHeight), jpeg));
    state.counters["bytes"] = static_cast<double>(jpeg.bytes().size());
}

enum class Frames { Encoded, Repeated };

// The processor time is that of all threads; the real time is what the appending thread waits.
void writeFrames(benchmark::State& state, Frames frames)
{
    const QTemporaryDir folder;
    const auto writer = createJpegMovieWriter(folder.filePath(QStringLiteral("movie.mov")), {kWidth, kHeight});
    std::counting_semaphore<> ready(0);
    writer->input().observeReadiness([&] { ready.release(); });
    if (!writer->startWriting().isEmpty()) {
        state.SkipWithError("cannot write");
        return;
    }
    const CVPixelBufferRef pixels = screenLikeBuffer();
    auto& adaptor = writer->adaptor();
    std::int64_t frame = 1;
    adaptor.appendPixelBuffer_withPresentationTime(pixels, CMTimeMake(frame++, 30));
    for (auto _ : state) {
        while (!writer->input().isReadyForMoreMediaData())
            ready.acquire();
        const CMTime time = CMTimeMake(frame++, 30);
        if (!(frames == Frames::Encoded ? adaptor.appendPixelBuffer_withPresentationTime(pixels, time)
                                        : adaptor.appendPrevious_withPresentationTime(time)))
            state.SkipWithError("refused");
    }
    writer->input().observeReadiness({});
    const auto finished = std::make_shared<std::promise<void>>();
    auto future = finished->get_future();
    writer->finishWritingWithCompletionHandler(CMTimeMake(frame, 30),
                                               [finished](const auto&) { finished->set_value(); });
    future.get();
    state.counters["bytes_per_frame"] = static_cast<double>(writer->bytesWritten()) / static_cast<double>(frame);
}

BENCHMARK(encodeFrame)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(writeFrames, encoded, Frames::Encoded)
    ->Unit(benchmark::kMillisecond)
    ->MeasureProcessCPUTime()
    ->UseRealTime()
    ->Iterations(600);
BENCHMARK_CAPTURE(writeFrames, repeated, Frames::Repeated)
    ->Unit(benchmark::kMicrosecond)
    ->MeasureProcessCPUTime()
    ->UseRealTime()
    ->Iterations(30000);

} // namespace

BENCHMARK_MAIN();
