// SPDX-License-Identifier: GPL-3.0-or-later
// Rules for every movie writer, checked on the fake and the real one.
#include "movie/JpegMovieWriter.h"
#include "tests/fakes/FakeMovieWriter.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cmath>
#include <future>
#include <semaphore>
#include <thread>

namespace lumavex {
namespace {

using namespace std::chrono_literals;

enum class Backend { Fake, Jpeg };

/// Empties a fake's queue as the real one empties itself.
class Emptier {
public:
    explicit Emptier(std::shared_ptr<FakeMovie> movie) : movie_(std::move(movie))
    {
        movie_->setAppendsUntilFull(4);
        movie_->setKeepsPictures(false);
    }

private:
    std::shared_ptr<FakeMovie> movie_;
    std::jthread thread_{[this](const std::stop_token& stop) {
        while (!stop.stop_requested()) {
            std::this_thread::sleep_for(5ms);
            movie_->makeReady();
        }
    }};
};

class MovieWriterContract : public testing::TestWithParam<Backend> {
protected:
    static constexpr int kWidth = 640;
    static constexpr int kHeight = 480;

    std::unique_ptr<MovieWriter> make(double width = kWidth, double height = kHeight)
    {
        const MovieWriterFactory factory =
            GetParam() == Backend::Fake ? fakeMovieWriters(fake_) : createJpegMovieWriter;
        return factory(folder_.filePath(QStringLiteral("movie.mov")), {width, height});
    }

    /// Grey pixels of any size; `released` is counted up when they are let go of.
    CVPixelBufferRef pixels(int width = kWidth, int height = kHeight, std::uint32_t format = kCVPixelFormatType_32ARGB)
    {
        return std::make_shared<CVPixelBuffer>(
            width, height, format, memory_.data(), width * 4,
            [](void* counter, const void*) { ++*static_cast<std::atomic<int>*>(counter); }, &released_);
    }

    MovieWriter::Result finish(MovieWriter& writer, CMTime end)
    {
        const auto result = std::make_shared<std::promise<MovieWriter::Result>>(); // outlives the handler's call
        auto future = result->get_future();
        writer.finishWritingWithCompletionHandler(end, [this, result](const auto& r) {
            handlerThread_ = std::this_thread::get_id();
            result->set_value(r);
        });
        return future.get();
    }

    QTemporaryDir folder_;
    std::vector<std::uint8_t> memory_ = std::vector<std::uint8_t>(4 * 1024 * 1024, 127);
    std::atomic<int> released_ = 0;
    std::thread::id handlerThread_;

private:
    std::shared_ptr<FakeMovie> fake_ = std::make_shared<FakeMovie>();
    Emptier emptier_{fake_};
};

TEST_P(MovieWriterContract, CountsTheFramesItWasGivenAndCallsTheHandlerOnAnotherThread)
{
    auto writer = make();
    ASSERT_EQ(writer->startWriting(), QString());
    auto& adaptor = writer->adaptor();
    EXPECT_FALSE(adaptor.appendPrevious_withPresentationTime(CMTimeMake(1, 30))) << "nothing to repeat yet";
    EXPECT_TRUE(adaptor.appendPixelBuffer_withPresentationTime(pixels(), CMTimeMake(1, 30)));
    EXPECT_TRUE(adaptor.appendPrevious_withPresentationTime(CMTimeMake(2, 30)));
    EXPECT_TRUE(adaptor.appendPixelBuffer_withPresentationTime(pixels(), CMTimeMake(3, 30)));

    const auto result = finish(*writer, CMTimeMake(4, 30));
    EXPECT_EQ(result.error, QString());
    EXPECT_EQ(result.frames, 3);
    EXPECT_NE(handlerThread_, std::this_thread::get_id());
    EXPECT_GT(writer->bytesWritten(), 0);
    const MovieWriterStatistics counts = writer->statistics();
    EXPECT_EQ(counts.encoded, 2);
    EXPECT_EQ(counts.repeated, 1);
    EXPECT_EQ(counts.spliced, 0);
    EXPECT_EQ(counts.queued, 0);
    EXPECT_EQ(counts.bytes, writer->bytesWritten());
    EXPECT_FALSE(adaptor.appendPixelBuffer_withPresentationTime(pixels(), CMTimeMake(5, 30))) << "finished";
    EXPECT_FALSE(adaptor.appendPrevious_withPresentationTime(CMTimeMake(5, 30)));
    writer.reset();
    EXPECT_EQ(released_, 3) << "the refused one too";
}

TEST_P(MovieWriterContract, RefusesWhatDoesNotFit)
{
    auto writer = make();
    EXPECT_FALSE(writer->adaptor().appendPixelBuffer_withPresentationTime(pixels(), CMTimeMake(0, 1))) << "not started";
    ASSERT_EQ(writer->startWriting(), QString());
    const auto append = [&](const CVPixelBufferRef& buffer, CMTime time) {
        return writer->adaptor().appendPixelBuffer_withPresentationTime(buffer, time);
    };
    EXPECT_FALSE(append(pixels(kWidth + 2, kHeight), CMTimeMake(1, 30)));
    EXPECT_FALSE(append(pixels(kWidth, kHeight - 1), CMTimeMake(1, 30)));
    EXPECT_FALSE(append(pixels(kWidth, kHeight, 24), CMTimeMake(1, 30)));
    EXPECT_FALSE(append(nullptr, CMTimeMake(1, 30)));
    EXPECT_FALSE(append(pixels(), CMTimeMake(1, 0))) << "not a valid time";
    EXPECT_FALSE(append(pixels(), CMTimeMake(-1, 30)));
    EXPECT_TRUE(append(pixels(), CMTimeMake(2, 30)));
    EXPECT_FALSE(append(pixels(), CMTimeMake(1, 15))) << "the same time";
    EXPECT_FALSE(writer->adaptor().appendPrevious_withPresentationTime(CMTimeMake(1, 30))) << "an earlier time";
    EXPECT_TRUE(writer->adaptor().appendPrevious_withPresentationTime(CMTimeMake(3, 30)));
    EXPECT_EQ(finish(*writer, CMTimeMake(4, 30)).frames, 2);
    EXPECT_EQ(writer->error(), QString()) << "a refusal is not a failure";
}

TEST_P(MovieWriterContract, TakesFramesAsTheRowsThatChanged)
{
    auto writer = make();
    auto& adaptor = writer->adaptor();
    EXPECT_FALSE(adaptor.appendChangedRows_withPresentationTime(pixels(), {{0, 1}}, CMTimeMake(0, 1))) << "not started";
    ASSERT_EQ(writer->startWriting(), QString());
    const std::vector<RowRange> someRows = {{0, 3}, {100, 1}, {kHeight - 1, 1}};
    EXPECT_TRUE(adaptor.appendChangedRows_withPresentationTime(pixels(), someRows, CMTimeMake(1, 30))) << "the first";
    EXPECT_TRUE(adaptor.appendChangedRows_withPresentationTime(pixels(), someRows, CMTimeMake(2, 30)));
    EXPECT_TRUE(adaptor.appendChangedRows_withPresentationTime(pixels(), {}, CMTimeMake(3, 30))) << "a repetition";
    EXPECT_TRUE(adaptor.appendChangedRows_withPresentationTime(pixels(), {{0, kHeight}}, CMTimeMake(4, 30)));
    EXPECT_FALSE(adaptor.appendChangedRows_withPresentationTime(pixels(kWidth, 8), {{0, 1}}, CMTimeMake(5, 30)));
    EXPECT_FALSE(adaptor.appendChangedRows_withPresentationTime(nullptr, {}, CMTimeMake(5, 30)));
    EXPECT_FALSE(adaptor.appendChangedRows_withPresentationTime(pixels(), {}, CMTimeMake(4, 30))) << "the same time";
    const auto result = finish(*writer, CMTimeMake(5, 30));
    EXPECT_EQ(result.error, QString());
    EXPECT_EQ(result.frames, 4);
    const MovieWriterStatistics counts = writer->statistics();
    EXPECT_EQ(counts.encoded, 2) << "the first, and the one that changed everywhere";
    EXPECT_EQ(counts.spliced, 1);
    EXPECT_EQ(counts.repeated, 1);
    writer.reset();
    EXPECT_EQ(released_, 7) << "those of repetitions and refusals too";
}

TEST_P(MovieWriterContract, TellsWhyItCannotStartButFinishesWithoutFrames)
{
    for (const double width : {0.0, -4.0, std::nan("")})
        EXPECT_NE(make(width, kHeight)->startWriting(), QString()) << width;
    auto writer = make(0, kHeight);
    EXPECT_NE(writer->startWriting(), QString());
    EXPECT_FALSE(writer->adaptor().appendPixelBuffer_withPresentationTime(pixels(), CMTimeMake(0, 1)));
    EXPECT_NE(finish(*writer, CMTimeMake(1, 1)).error, QString()) << "and the handler is called all the same";

    writer = make();
    ASSERT_EQ(writer->startWriting(), QString());
    const auto result = finish(*writer, CMTimeMake(1, 30));
    EXPECT_EQ(result.error, QString());
    EXPECT_EQ(result.frames, 0);
}

TEST_P(MovieWriterContract, ABoundedQueueFillsRefusesAndTellsWhenItIsReadyAgain)
{
    auto writer = make(1024, 1024);
    std::counting_semaphore<> becameReady(0);
    writer->input().observeReadiness([&] { becameReady.release(); });
    ASSERT_EQ(writer->startWriting(), QString());
    std::int64_t appended = 0;
    for (int full = 0; full < 3;) {
        if (writer->adaptor().appendPixelBuffer_withPresentationTime(pixels(1024, 1024), CMTimeMake(appended, 1000))) {
            ASSERT_LT(++appended, 100000) << "the queue has no bound";
            continue;
        }
        ++full;
        ASSERT_TRUE(becameReady.try_acquire_for(20s)) << "full, but nobody says when that is over";
    }
    writer->input().observeReadiness({});
    while (becameReady.try_acquire())
        continue;
    EXPECT_EQ(finish(*writer, CMTimeMake(appended, 1000)).frames, appended);
    EXPECT_FALSE(becameReady.try_acquire()) << "called after observing had ended";
}

TEST_P(MovieWriterContract, LetsGoOfTheFramesWhenLeftUnfinished)
{
    auto writer = make();
    ASSERT_EQ(writer->startWriting(), QString());
    int accepted = 0;
    for (; accepted < 4; ++accepted)
        ASSERT_TRUE(writer->adaptor().appendPixelBuffer_withPresentationTime(pixels(), CMTimeMake(accepted, 30)));
    writer.reset();
    EXPECT_EQ(released_, accepted);
}

INSTANTIATE_TEST_SUITE_P(Backends, MovieWriterContract, testing::Values(Backend::Fake, Backend::Jpeg),
                         [](const auto& instance) { return instance.param == Backend::Fake ? "Fake" : "Jpeg"; });

} // namespace
} // namespace lumavex
