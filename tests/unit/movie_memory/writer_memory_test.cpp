// SPDX-License-Identifier: GPL-3.0-or-later
// Memory that a growing movie takes, and what happens when there is none.
#include "tests/support/CountingAllocator.h"

#include "movie/JpegMovieWriter.h"
#include "tests/unit/movie/MovieTools.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <limits>
#include <random>
#include <thread>

namespace lumavex {
namespace {

class WriterMemory : public testing::Test {
protected:
    void SetUp() override
    {
        if (!allocatorIsCounting())
            GTEST_SKIP() << "the sanitizer has an allocator of its own";
    }
    void TearDown() override { failReallocationsBeyond(std::numeric_limits<std::size_t>::max()); }

    void start(int width, int height)
    {
        writer_ = createJpegMovieWriter(path_, {double(width), double(height)});
        ASSERT_EQ(writer_->startWriting(), QString());
    }
    void waitUntilReady() const
    {
        while (!writer_->input().isReadyForMoreMediaData())
            std::this_thread::sleep_for(std::chrono::microseconds(50));
    }
    CMTime nextTime() { return CMTimeMake(++frame_, 60); }

    QTemporaryDir folder_;
    const QString path_ = folder_.filePath(QStringLiteral("movie.mov"));
    std::unique_ptr<MovieWriter> writer_;
    std::int64_t frame_ = 0;
};

QImage noise(int width, int height)
{
    QImage picture(width, height, QImage::Format_RGB32);
    std::mt19937 random(1);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x)
            picture.setPixel(x, y, random() | 0xFF000000U);
    }
    return picture;
}

TEST_F(WriterMemory, OnceItRunsAFrameTakesNone)
{
    start(320, 240);
    const std::array pixels = {pixelBufferOf(testPicture(320, 240, 0)), pixelBufferOf(testPicture(320, 240, 1))};
    const std::vector<RowRange> changed = {{0, 1}, {100, 50}, {239, 1}};
    auto& adaptor = writer_->adaptor();
    const auto appendFrames = [&](int count) {
        for (int i = 0; i < count; ++i) {
            waitUntilReady();
            const auto& picture = pixels[static_cast<std::size_t>(i / 3 % 2)];
            ASSERT_TRUE(i % 3 == 0   ? adaptor.appendPixelBuffer_withPresentationTime(picture, nextTime())
                        : i % 3 == 1 ? adaptor.appendChangedRows_withPresentationTime(picture, changed, nextTime())
                                     : adaptor.appendPrevious_withPresentationTime(nextTime()));
        }
    };
    // How far the threads run ahead of each other is chance, and with it when the last buffer comes to go round.
    std::int64_t fewest = std::numeric_limits<std::int64_t>::max();
    for (int second = 0; second < 60; ++second) {
        const std::int64_t before = memoryUse().requests;
        appendFrames(60);
        fewest = std::min(fewest, memoryUse().requests - before);
    }
    EXPECT_EQ(fewest, 0) << "in no second it ran without";
    ASSERT_EQ(finishAndWait(*writer_, nextTime()).error, QString());
}

TEST_F(WriterMemory, AnHourTakesSixteenBytesAFrame)
{
    constexpr int kFrames = 60 * 60 * 60;
    start(16, 16);
    ASSERT_TRUE(
        writer_->adaptor().appendPixelBuffer_withPresentationTime(pixelBufferOf(testPicture(16, 16, 0)), nextTime()));
    const std::int64_t before = memoryUse().bytes;
    while (frame_ < kFrames) {
        waitUntilReady();
        ASSERT_TRUE(writer_->adaptor().appendPrevious_withPresentationTime(nextTime()));
    }
    EXPECT_LT(memoryUse().bytes - before, std::int64_t{16} * kFrames + (1 << 20));
    RecordProperty("bytes", static_cast<int>(memoryUse().bytes - before));
    const auto result = finishAndWait(*writer_, nextTime());
    EXPECT_EQ(result.error, QString());
    EXPECT_EQ(result.frames, kFrames);
    const auto packets = packetsOf(path_);
    ASSERT_EQ(packets.size(), static_cast<std::size_t>(kFrames));
    EXPECT_EQ(packets.back().time, std::int64_t{kFrames - 1} * 1500);
}

TEST_F(WriterMemory, AFrameThereIsNoMemoryForEndsTheMovieBeforeIt)
{
    constexpr int kWidth = 800;
    constexpr int kHeight = 600;
    constexpr std::size_t kEnoughForAStrip = 300 * 1024;
    const auto plain = pixelBufferOf(testPicture(kWidth, kHeight, 0));
    const auto large = pixelBufferOf(noise(kWidth, kHeight));
    for (const bool inJoining : {false, true}) {
        SCOPED_TRACE(inJoining);
        frame_ = 0;
        start(kWidth, kHeight);
        auto& adaptor = writer_->adaptor();
        ASSERT_TRUE(adaptor.appendPixelBuffer_withPresentationTime(inJoining ? large : plain, nextTime()));
        ASSERT_TRUE(adaptor.appendPrevious_withPresentationTime(nextTime()));
        while (!writer_->bytesWritten() || framesDecodedFrom(path_) < 2) // until it is encoded
            std::this_thread::sleep_for(std::chrono::milliseconds(50));

        failReallocationsBeyond(kEnoughForAStrip);
        ASSERT_TRUE(inJoining ? adaptor.appendChangedRows_withPresentationTime(plain, {{40, 1}}, nextTime())
                              : adaptor.appendPixelBuffer_withPresentationTime(large, nextTime()));
        while (writer_->error().isEmpty())
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        failReallocationsBeyond(std::numeric_limits<std::size_t>::max());

        EXPECT_FALSE(adaptor.appendChangedRows_withPresentationTime(plain, {{0, kHeight}}, nextTime()));
        EXPECT_FALSE(adaptor.appendPixelBuffer_withPresentationTime(plain, nextTime()));
        const auto result = finishAndWait(*writer_, nextTime());
        EXPECT_TRUE(result.error.contains(QStringLiteral("memory"))) << result.error.toStdString();
        EXPECT_EQ(result.frames, 2);
        EXPECT_EQ(framesDecodedFrom(path_), 2);
    }
}

} // namespace
} // namespace lumavex
