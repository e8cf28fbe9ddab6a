// SPDX-License-Identifier: GPL-3.0-or-later
// Pictures put together of rows, against the same pictures encoded whole: to the byte.
#include "tests/unit/movie/MovieTools.h"

#include "movie/JpegEncoder.h"
#include "movie/JpegMovieWriter.h"
#include "movie/JpegRowCoder.h"
#include "movie/LibraryJpegEncoder.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <thread>

namespace lumavex {
namespace {

/// Pixels that change in some rows from one picture to the next.
class ChangingPicture {
public:
    ChangingPicture(int width, int height) : picture_(testPicture(width, height, 0)) {}

    /// Each of the rows becomes even, soft or noisy.
    void change(const std::vector<RowRange>& rows)
    {
        for (const RowRange& range : rows) {
            for (int y = range.first; y < range.first + range.count; ++y)
                changeRow(y);
        }
    }
    /// Runs of rows between which there may be gaps of any size.
    std::vector<RowRange> randomRows()
    {
        std::vector<RowRange> rows;
        const int longest = std::max(1, picture_.height() / below(1, 12));
        for (int y = below(0, picture_.height()); y < picture_.height(); y += below(0, 3 * longest)) {
            rows.push_back({y, std::min(below(1, longest + 1), picture_.height() - y)});
            y += rows.back().count;
        }
        return rows;
    }
    int below(int least, int limit) { return std::uniform_int_distribution(least, limit - 1)(random_); }
    CVPixelBufferRef pixels() const { return pixelBufferOf(picture_); }

private:
    void changeRow(int y)
    {
        auto* const pixels = reinterpret_cast<QRgb*>(picture_.scanLine(y));
        const int kind = below(0, 3);
        const int level = below(0, 256);
        for (int x = 0; x < picture_.width(); ++x) {
            const int value = kind == 0 ? level : kind == 1 ? (x + level) % 256 : below(0, 256);
            pixels[x] = qRgb(value, (value + level) % 256, 255 - value);
        }
    }

    std::mt19937 random_{7};
    QImage picture_;
};

QByteArray copyOf(std::span<const std::uint8_t> bytes)
{
    return {reinterpret_cast<const char*>(bytes.data()), static_cast<qsizetype>(bytes.size())};
}

QByteArray encodedWhole(const CVPixelBuffer& pixels)
{
    JpegEncoder encoder;
    JpegRows jpeg;
    EXPECT_TRUE(encoder.encode(pixels, allMacroblockRows(pixels.height), jpeg));
    return copyOf(jpeg.bytes());
}

template <typename Encoder>
void expectRunsToBeThoseOfTheWhole(Encoder&& encoder, const CVPixelBuffer& pixels)
{
    JpegRows whole;
    const int rows = allMacroblockRows(pixels.height).count;
    ASSERT_TRUE(encoder.encode(pixels, {0, rows}, whole));
    ASSERT_EQ(whole.count(), static_cast<std::size_t>(rows));
    ASSERT_EQ(whole.bytes().size(), whole.buffer.bytes().size());
    JpegRows run;
    for (int first = 0; first < rows; ++first) {
        for (int count = 1; first + count <= rows; ++count) {
            ASSERT_TRUE(encoder.encode(pixels, {first, count}, run));
            ASSERT_EQ(copyOf(run.bytes()),
                      copyOf(whole.rows(static_cast<std::size_t>(first), static_cast<std::size_t>(count))))
                << first << " + " << count;
        }
    }
}

// Heights with a last row of 1 to 16 pixel rows, fewer rows than there are numbers of markers, and more.
constexpr std::pair<int, int> kSizes[] = {{1, 1},   {16, 16},  {17, 15},  {33, 17}, {40, 31},
                                          {25, 24}, {64, 144}, {75, 161}, {9, 299}, {1921, 41}};

TEST(JpegRows, AnyRunEncodedAloneIsThatRunOfTheWhole)
{
    for (const auto& [width, height] : kSizes) {
        SCOPED_TRACE(testing::Message() << width << " x " << height);
        ChangingPicture picture(width, height);
        picture.change(picture.randomRows());
        expectRunsToBeThoseOfTheWhole(JpegEncoder(), *picture.pixels());
        for (const auto colours : {LibraryJpegEncoder::Colours::Fastest, LibraryJpegEncoder::Colours::Library})
            expectRunsToBeThoseOfTheWhole(LibraryJpegEncoder(colours), *picture.pixels());
    }
}

/// Grey blocks of 8 by 8, of each the frequencies of one row and column, clipped to what samples can be.
QImage frequencies(int strength, int noise, std::mt19937& random)
{
    QImage picture(64, 64, QImage::Format_RGB32);
    for (int y = 0; y < 64; ++y) {
        for (int x = 0; x < 64; ++x) {
            const double wave = std::cos((2 * (x % 8) + 1) * (x / 8) * M_PI / 16) // NOLINT: whole blocks
                                * std::cos((2 * (y % 8) + 1) * (y / 8) * M_PI / 16);
            const int extra = noise == 0 ? 0 : static_cast<int>(random() % (2 * noise + 1)) - noise;
            const int value = std::clamp(static_cast<int>(std::lround(127.5 + strength * wave)) + extra, 0, 255);
            picture.setPixel(x, y, qRgb(value, value, value));
        }
    }
    return picture;
}

TEST(JpegRows, OursAreTheLibrarysToTheByte)
{
    if (!JpegRowCoder::isUsable())
        GTEST_SKIP() << "on this processor they are the library's";
    JpegEncoder ours(Rounding::Nearest);
    LibraryJpegEncoder library;
    JpegRows jpeg;
    JpegRows expected;
    const auto compare = [&](const CVPixelBuffer& pixels) {
        const MacroblockRows all = allMacroblockRows(pixels.height);
        ASSERT_TRUE(ours.encode(pixels, all, jpeg));
        ASSERT_TRUE(library.encode(pixels, all, expected));
        ASSERT_EQ(jpeg.bounds, expected.bounds);
        ASSERT_EQ(copyOf(jpeg.bytes()), copyOf(expected.bytes()));
    };
    for (const auto& [width, height] : kSizes) {
        SCOPED_TRACE(testing::Message() << width << " x " << height);
        ChangingPicture picture(width, height);
        for (int i = 0; i < 20; ++i) {
            picture.change(picture.randomRows());
            compare(*picture.pixels());
        }
    }
    // The transform's largest results, every step of brightness and every run of zeros: each pure frequency, as strong
    // as samples can have it and weaker, alone and on top of noise.
    std::mt19937 random(5);
    for (const int strength : {400, 127, 31, 4}) {
        for (const int noise : {0, 3}) {
            SCOPED_TRACE(testing::Message() << strength << ", noise " << noise);
            compare(*pixelBufferOf(frequencies(strength, noise, random)));
        }
    }
}

TEST(JpegRows, AnyDecoderReadsTheCodes)
{
    // Noise of every strength, so that every symbol occurs that can.
    QImage picture(640, 512, QImage::Format_RGB32);
    std::mt19937 random(3);
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            const int strength = 1 + (y / 16) * 8;
            const int value = 128 + (static_cast<int>(random() % 65536) * strength >> 16) - strength / 2;
            picture.setPixel(x, y, x % 64 < 40 ? qRgb(value, value, value) : qRgb(value, 255 - value, value));
        }
    }
    const auto pixels = pixelBufferOf(picture);
    const QImage decoded = QImage::fromData(encodedWhole(*pixels), "jpeg").convertToFormat(QImage::Format_RGB32);
    ASSERT_EQ(decoded.size(), picture.size());
    EXPECT_GT(psnrOf(decoded, picture), 19) << "half of the colours are lost, but a code read wrongly spoils the rest";

    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("movie.mov"));
    const auto writer = createJpegMovieWriter(path, {640, 512});
    ASSERT_EQ(writer->startWriting(), QString());
    ASSERT_TRUE(appendWhenReady(*writer, pixels, CMTimeMake(1, 30)));
    ASSERT_EQ(finishAndWait(*writer, CMTimeMake(2, 30)).error, QString());
    const auto pictures = picturesOf(path, 640, 512);
    ASSERT_EQ(pictures.size(), 1U);
    EXPECT_GT(psnrOf(pictures[0], picture), 19);
    EXPECT_EQ(gstreamerTimesOf(path).size(), 1U);
}

TEST(JpegRows, ChangedPixelRowsBecomeRunsOfMacroblocks)
{
    const auto runsOf = [](const std::vector<RowRange>& changed) {
        std::vector<MacroblockRows> runs{{5, 5}};
        findChangedRuns(changed, 100, runs);
        return runs;
    };
    using Runs = std::vector<MacroblockRows>;
    EXPECT_EQ(runsOf({}), Runs{});
    EXPECT_EQ(runsOf({{20, 0}, {100, 9}, {120, 4}}), Runs{}) << "nothing of it is in the picture";
    EXPECT_EQ(runsOf({{0, 1}}), (Runs{{0, 1}}));
    EXPECT_EQ(runsOf({{15, 2}}), (Runs{{0, 2}}));
    EXPECT_EQ(runsOf({{16, 16}, {40, 1}, {99, 1000}}), (Runs{{1, 2}, {6, 1}})) << "what touches is one run";
    EXPECT_EQ(runsOf({{3, 2}, {8, 2}, {90, 2}}), (Runs{{0, 1}, {5, 1}}));
    EXPECT_EQ(runsOf({{0, 2147483647}}), (Runs{{0, 7}}));
    EXPECT_EQ(runsOf({{50, 2}, {8, 2}}), (Runs{{0, 7}})) << "out of order";
    EXPECT_EQ(runsOf({{-1, 5}}), (Runs{{0, 7}}));
}

class SplicedMovie : public testing::Test {
protected:
    enum class How { Whole, Changed, Unchanged, Repeated };
    struct Append {
        How how;
        CVPixelBufferRef pixels;
        std::vector<RowRange> changed;
    };

    void start(int width, int height)
    {
        picture_ = std::make_unique<ChangingPicture>(width, height);
        appends_.clear();
        expected_.clear();
    }

    void plan(How how, const std::vector<RowRange>& changed)
    {
        picture_->change(changed);
        if (how == How::Changed || how == How::Whole || !shown_)
            shown_ = picture_->pixels();
        if (how == How::Changed || how == How::Whole)
            expectedPicture_ = encodedWhole(*shown_);
        expected_ += expectedPicture_;
        appends_.push_back({how, shown_, changed});
    }

    bool append(MovieWriter& writer, const Append& what, CMTime time)
    {
        while (!writer.input().isReadyForMoreMediaData())
            std::this_thread::sleep_for(std::chrono::microseconds(200));
        auto& adaptor = writer.adaptor();
        switch (what.how) {
        case How::Whole:
            return adaptor.appendPixelBuffer_withPresentationTime(what.pixels, time);
        case How::Repeated:
            return adaptor.appendPrevious_withPresentationTime(time);
        case How::Changed:
        case How::Unchanged:
            break;
        }
        return adaptor.appendChangedRows_withPresentationTime(what.pixels, what.changed, time);
    }

    /// Writes what was planned, as fast as the writer takes it, and compares every frame's bytes.
    void writeAndCompare(int width, int height)
    {
        auto writer = createJpegMovieWriter(path_, {double(width), double(height)});
        ASSERT_EQ(writer->startWriting(), QString());
        std::int64_t frame = 0;
        for (const Append& what : appends_)
            ASSERT_TRUE(append(*writer, what, CMTimeMake(++frame, 60))) << frame;
        const auto result = finishAndWait(*writer, CMTimeMake(frame + 1, 60));
        ASSERT_EQ(result.error, QString());
        ASSERT_EQ(result.frames, frame);
        const auto streams =
            runProgram(QStringLiteral("ffmpeg"),
                       {QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-i"), path_,
                        QStringLiteral("-c"), QStringLiteral("copy"), QStringLiteral("-f"), QStringLiteral("data"),
                        QStringLiteral("-map"), QStringLiteral("0:v"), QStringLiteral("-")});
        EXPECT_EQ(streams.errors, QByteArray());
        ASSERT_EQ(streams.output.size(), expected_.size());
        ASSERT_TRUE(streams.output == expected_);
    }

    QTemporaryDir folder_;
    const QString path_ = folder_.filePath(QStringLiteral("movie.mov"));
    std::unique_ptr<ChangingPicture> picture_;
    CVPixelBufferRef shown_;
    std::vector<Append> appends_;
    QByteArray expected_; ///< of all frames, one behind the other
    QByteArray expectedPicture_;
};

TEST_F(SplicedMovie, LongChainsEqualWholeFramesToTheByte)
{
    for (const auto& [width, height, frames] :
         {std::tuple{8, 3, 60}, {50, 16, 60}, {161, 177, 250}, {320, 240, 60}, {2600, 1701, 4}}) {
        SCOPED_TRACE(testing::Message() << width << " x " << height);
        start(width, height);
        // The first append may tell of changed rows too: there is nothing that the others could be like.
        plan(How::Changed, {{0, 1}});
        for (int frame = 1; frame < frames; ++frame) {
            const int chance = picture_->below(0, 20);
            if (chance == 0)
                plan(How::Whole, picture_->randomRows());
            else if (chance == 1)
                plan(How::Repeated, {});
            else if (chance == 2)
                plan(How::Unchanged, {});
            else if (auto rows = picture_->randomRows(); rows.empty())
                plan(How::Unchanged, {});
            else
                plan(How::Changed, rows);
        }
        writeAndCompare(width, height);
    }
}

TEST_F(SplicedMovie, BurstsAfterLongStillnessKeepTheirOrder)
{
    start(400, 300);
    plan(How::Whole, {{0, 300}});
    for (int round = 0; round < 6; ++round) {
        for (int still = 0; still < 61 + 7 * round; ++still)
            plan(How::Repeated, {});
        for (int moving = 0; moving < 6; ++moving)
            plan(moving % 2 ? How::Whole : How::Changed, picture_->randomRows());
    }
    writeAndCompare(400, 300);
}

} // namespace
} // namespace lumavex
