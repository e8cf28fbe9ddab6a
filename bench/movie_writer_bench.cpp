// SPDX-License-Identifier: GPL-3.0-or-later
// Cost of a frame: encoding alone, and encoding and writing; complete, only the changed rows, and repeated. The
// processor time is that of all threads, and "of_whole" is its ratio to a complete frame's in the same run; the real
// time of writing is the waiting time of the appending thread.
#include "movie/JpegEncoder.h"
#include "movie/JpegMovieWriter.h"
#include "movie/LibraryJpegEncoder.h"

#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <ctime>
#include <future>
#include <semaphore>
#include <vector>

namespace {

using namespace lumavex;

constexpr int kWidth = 1920;
constexpr int kHeight = 1080;

enum class Content { Screen, Noise };

/// Similar to a screen: even areas, text-like lines, and gradients and noise as in a photograph. Or only noise, the
/// highest encoding cost.
std::vector<std::uint8_t> pixelsOf(Content content)
{
    std::vector<std::uint8_t> bytes;
    std::uint32_t noise = 1;
    for (int y = 0; y < kHeight; ++y) {
        for (int x = 0; x < kWidth; ++x) {
            noise = noise * 1664525 + 1013904223;
            const bool photograph = x > 1200 && y > 500;
            const bool ink = !photograph && y % 20 < 12 && x % 700 < 500 && noise >> 30 == 0;
            const int grey = photograph ? (x + y) / 12 + static_cast<int>(noise >> 29) : ink ? 40 : 245;
            const int level = content == Content::Noise ? static_cast<int>(noise >> 24) : grey;
            for (const int value : {255, level, photograph ? level / 2 + 30 : level, level})
                bytes.push_back(static_cast<std::uint8_t>(value));
        }
    }
    return bytes;
}

CVPixelBufferRef bufferOf(Content content)
{
    static const std::vector<std::uint8_t> screen = pixelsOf(Content::Screen);
    static const std::vector<std::uint8_t> noise = pixelsOf(Content::Noise);
    const auto& pixels = content == Content::Screen ? screen : noise;
    return std::make_shared<CVPixelBuffer>(kWidth, kHeight, kCVPixelFormatType_32ARGB, pixels.data(), 4 * kWidth,
                                           nullptr, nullptr);
}

/// Processor time of encoding a complete picture of screen content.
double wholeEncoding = 0;

double processorSeconds()
{
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9;
}

/// The processor time of an iteration, relative to a complete frame of screen content, which must be measured first.
class Ratio {
public:
    explicit Ratio(double& whole) : whole_(whole) {}
    void report(benchmark::State& state, bool isWhole)
    {
        const double each = (processorSeconds() - start_) / static_cast<double>(state.iterations());
        if (isWhole)
            whole_ = each;
        if (whole_ > 0)
            state.counters["of_whole"] = each / whole_;
    }

private:
    double& whole_;
    const double start_ = processorSeconds();
};

/// JpegEncoder, or the library alone, whose cost is also reported relative to ours.
template <typename Encoder>
void encodeRows(benchmark::State& state, Content content, std::unique_ptr<Encoder> (*makeEncoder)())
{
    const auto encoder = makeEncoder();
    const CVPixelBufferRef pixels = bufferOf(content);
    const int rows = static_cast<int>(state.range(0));
    const int all = allMacroblockRows(kHeight).count;
    JpegRows jpeg;
    Ratio ratio(wholeEncoding);
    for (auto _ : state)
        benchmark::DoNotOptimize(encoder->encode(*pixels, {(all - rows) / 2, rows}, jpeg));
    ratio.report(state, std::is_same_v<Encoder, JpegEncoder> && content == Content::Screen && rows == all);
    state.counters["bytes"] = static_cast<double>(jpeg.bytes().size());
}

std::unique_ptr<JpegEncoder> ours()
{
    return std::make_unique<JpegEncoder>();
}
std::unique_ptr<LibraryJpegEncoder> byLibraryCodes()
{
    return std::make_unique<LibraryJpegEncoder>();
}
std::unique_ptr<LibraryJpegEncoder> byLibrary()
{
    return std::make_unique<LibraryJpegEncoder>(LibraryJpegEncoder::Colours::Library);
}

/// Joins the rows in the middle with an existing picture.
void joinChangedRows(benchmark::State& state)
{
    const CVPixelBufferRef pixels = bufferOf(Content::Screen);
    const int rows = static_cast<int>(state.range(0));
    const MacroblockRows all = allMacroblockRows(kHeight);
    JpegEncoder encoder;
    JpegRows previous;
    std::vector<JpegStrip> strips(1);
    strips[0] = {{(all.count - rows) / 2, rows}, std::make_unique<JpegRows>()};
    if (!encoder.encode(*pixels, all, previous) || !encoder.encode(*pixels, strips[0].rows, *strips[0].jpeg))
        state.SkipWithError("cannot encode");
    JpegRows picture;
    for (auto _ : state)
        benchmark::DoNotOptimize(joinRows(&previous, strips, picture));
}

/// Writes a movie of some length, appended as fast as the writer accepts it.
void writeFrames(benchmark::State& state, Content content,
                 const std::function<bool(PixelBufferAdaptor&, CVPixelBufferRef, CMTime)>& append, bool isWhole = false)
{
    static double whole = 0;
    const QTemporaryDir folder;
    const auto writer = createJpegMovieWriter(folder.filePath(QStringLiteral("movie.mov")), {kWidth, kHeight});
    std::counting_semaphore<> ready(0);
    writer->input().observeReadiness([&] { ready.release(); });
    if (!writer->startWriting().isEmpty()) {
        state.SkipWithError("cannot write");
        return;
    }
    const CVPixelBufferRef pixels = bufferOf(content);
    auto& adaptor = writer->adaptor();
    std::int64_t frame = 1;
    adaptor.appendPixelBuffer_withPresentationTime(pixels, CMTimeMake(frame++, 30));
    Ratio ratio(whole);
    for (auto _ : state) {
        while (!writer->input().isReadyForMoreMediaData())
            ready.acquire();
        if (!append(adaptor, pixels, CMTimeMake(frame++, 30)))
            state.SkipWithError("refused");
    }
    writer->input().observeReadiness({});
    const auto finished = std::make_shared<std::promise<void>>();
    auto future = finished->get_future();
    writer->finishWritingWithCompletionHandler(CMTimeMake(frame, 30),
                                               [finished](const auto&) { finished->set_value(); });
    future.get();
    ratio.report(state, isWhole);
    state.counters["bytes_per_frame"] = static_cast<double>(writer->bytesWritten()) / static_cast<double>(frame);
}

void writeWhole(benchmark::State& state, Content content)
{
    const auto append = [](PixelBufferAdaptor& adaptor, CVPixelBufferRef pixels, CMTime time) {
        return adaptor.appendPixelBuffer_withPresentationTime(std::move(pixels), time);
    };
    writeFrames(state, content, append, content == Content::Screen);
}

void writeChangedRows(benchmark::State& state)
{
    const int rows = static_cast<int>(state.range(0));
    const int first = (allMacroblockRows(kHeight).count - rows) / 2;
    const std::vector<RowRange> changed = {{first * kMacroblockHeight, rows * kMacroblockHeight}};
    writeFrames(state, Content::Screen, [&](PixelBufferAdaptor& adaptor, CVPixelBufferRef pixels, CMTime time) {
        return adaptor.appendChangedRows_withPresentationTime(std::move(pixels), changed, time);
    });
}

void writeRepeated(benchmark::State& state)
{
    writeFrames(state, Content::Screen, [](PixelBufferAdaptor& adaptor, const CVPixelBufferRef&, CMTime time) {
        return adaptor.appendPrevious_withPresentationTime(time);
    });
}

BENCHMARK_CAPTURE(encodeRows, screen, Content::Screen, ours)
    ->Unit(benchmark::kMicrosecond)
    ->ArgName("rows")
    ->Arg(68)
    ->Arg(34)
    ->Arg(10)
    ->Arg(3)
    ->Arg(1);
BENCHMARK_CAPTURE(encodeRows, noise, Content::Noise, ours)->Unit(benchmark::kMicrosecond)->ArgName("rows")->Arg(68);
BENCHMARK_CAPTURE(encodeRows, libraryCodes, Content::Screen, byLibraryCodes)
    ->Unit(benchmark::kMicrosecond)
    ->ArgName("rows")
    ->Arg(68);
BENCHMARK_CAPTURE(encodeRows, library, Content::Screen, byLibrary)
    ->Unit(benchmark::kMicrosecond)
    ->ArgName("rows")
    ->Arg(68);
BENCHMARK(joinChangedRows)->Unit(benchmark::kMicrosecond)->ArgName("rows")->Arg(1)->Arg(34);
BENCHMARK_CAPTURE(writeWhole, screen, Content::Screen)
    ->Unit(benchmark::kMicrosecond)
    ->MeasureProcessCPUTime()
    ->UseRealTime()
    ->Iterations(300);
BENCHMARK_CAPTURE(writeWhole, noise, Content::Noise)
    ->Unit(benchmark::kMicrosecond)
    ->MeasureProcessCPUTime()
    ->UseRealTime()
    ->Iterations(100);
BENCHMARK(writeChangedRows)
    ->Unit(benchmark::kMicrosecond)
    ->MeasureProcessCPUTime()
    ->UseRealTime()
    ->Iterations(600)
    ->ArgName("rows")
    ->Arg(34)
    ->Arg(10)
    ->Arg(3)
    ->Arg(1);
BENCHMARK(writeRepeated)->Unit(benchmark::kMicrosecond)->MeasureProcessCPUTime()->UseRealTime()->Iterations(10000);

} // namespace

BENCHMARK_MAIN();
