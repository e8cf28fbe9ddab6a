// SPDX-License-Identifier: GPL-3.0-or-later
// The file in every state in which a kill can leave it.
#include "tests/unit/movie/MovieTools.h"

#include "movie/HybridMp4File.h"
#include "movie/JpegEncoder.h"
#include "movie/JpegMovieWriter.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace lumavex {
namespace {

constexpr int kWidth = 320;
constexpr int kHeight = 240;
constexpr int kFragments = 3;
constexpr int kFramesPerFragment = 24; // with a moof of more than a page, thanks to the repetitions
constexpr int kRate = 29;
constexpr std::int64_t kStep = 3103; ///< a frame, at the timescale of that rate

/// The same movie, growing and finished.
class MovieFile : public testing::Test {
protected:
    void SetUp() override
    {
        const std::string path = path_.toStdString();
        ASSERT_FALSE(file_.create(path, {kWidth, kHeight, 0, movieTimescale(kRate)}));
        for (int fragment = 0; fragment < kFragments; ++fragment) {
            starts_.push_back(file_.bytesWritten());
            ASSERT_FALSE(appendFragment(fragment));
        }
        starts_.push_back(file_.bytesWritten());
        growing_ = contentOf(path_);
        ASSERT_FALSE(file_.finish(kFragments * kFramesPerFragment * kStep));
        finished_ = contentOf(path_);
    }

    /// Every third frame is new, the two after it repeat it.
    std::error_code appendFragment(int fragment)
    {
        JpegEncoder encoder;
        std::vector<JpegRows> pictures(kFramesPerFragment / 3);
        std::vector<std::span<const std::uint8_t>> parts;
        for (std::size_t i = 0; i < pictures.size(); ++i) {
            const auto pixels = pixelBufferOf(testPicture(kWidth, kHeight, fragment * 8 + static_cast<int>(i)));
            EXPECT_TRUE(encoder.encode(*pixels, allMacroblockRows(kHeight), pictures[i]));
            parts.push_back(pictures[i].bytes());
        }
        std::vector<FragmentSample> samples;
        const std::int64_t first = std::int64_t{fragment} * kFramesPerFragment;
        for (int frame = 0; frame < kFramesPerFragment; ++frame)
            samples.push_back({(first + frame) * kStep, static_cast<std::size_t>(frame / 3)});
        return file_.appendFragment(samples, (first + kFramesPerFragment) * kStep, parts);
    }

    /// The file as it is while the last of `fragments` fragments is written, of which `bytes` have arrived.
    QByteArray torn(int fragments, std::int64_t bytes) const
    {
        const auto start = starts_[static_cast<std::size_t>(fragments) - 1];
        QByteArray content = growing_.left(start + bytes);
        if (bytes > 4)
            content.replace(start + 4, std::min<std::int64_t>(4, bytes - 4),
                            QByteArray("free").left(std::min<std::int64_t>(4, bytes - 4)));
        return content;
    }

    static void expectFrames(const QString& path, int frames)
    {
        EXPECT_EQ(framesDecodedFrom(path), frames);
        const auto packets = packetsOf(path);
        ASSERT_EQ(packets.size(), static_cast<std::size_t>(frames));
        for (int i = 0; i < frames; ++i)
            EXPECT_EQ(packets[static_cast<std::size_t>(i)].time, i * kStep);
    }

    static void expectGStreamerFrames(const QString& path, int frames)
    {
        const auto times = gstreamerTimesOf(path);
        ASSERT_EQ(times.size(), static_cast<std::size_t>(frames));
        for (int i = 0; i < frames; ++i)
            EXPECT_NEAR(static_cast<double>(times[static_cast<std::size_t>(i)]), i * 1e9 / kRate, 2) << i;
    }

    QTemporaryDir folder_;
    const QString path_ = folder_.filePath(QStringLiteral("movie.mov"));
    HybridMp4File file_;
    std::vector<std::int64_t> starts_; ///< of the fragments, and where the last one ends
    QByteArray growing_;
    QByteArray finished_;
};

TEST_F(MovieFile, PlaysWhileItGrowsAndWhenFinished)
{
    expectFrames(path_, kFragments * kFramesPerFragment);
    expectGStreamerFrames(path_, kFragments * kFramesPerFragment);
    writeContent(path_, growing_);
    expectFrames(path_, kFragments * kFramesPerFragment);
    expectGStreamerFrames(path_, kFragments * kFramesPerFragment);
}

TEST_F(MovieFile, FinishingChangesNoFrameInPlace)
{
    const qsizetype head = growing_.indexOf("moov") - 4;
    ASSERT_LE(head, 4096 - 16) << "one page: the kernel copies it at a stroke";
    EXPECT_EQ(finished_.mid(head, growing_.size() - head), growing_.mid(head));
    EXPECT_FALSE(finished_.left(head) == growing_.left(head));
    EXPECT_EQ(finished_.mid(growing_.size() + 4, 4), QByteArray("moov"));
}

TEST_F(MovieFile, AFragmentTornAnywhereCostsNoneBefore)
{
    const std::int64_t start = starts_[2];
    const std::int64_t length = starts_[3] - start;
    std::vector<std::int64_t> cuts = {1, 4, 5, 7, 8, 9, 40, 100, length - 1, length};
    for (std::int64_t page = (start / 4096 + 1) * 4096; page < starts_[3]; page += 4096)
        cuts.push_back(page - start);
    for (const std::int64_t cut : cuts) {
        SCOPED_TRACE(cut);
        const QByteArray content = torn(3, cut);
        writeContent(path_, content);
        const int frames = 2 * kFramesPerFragment;
        EXPECT_EQ(framesDecodedFrom(path_), frames);
        EXPECT_EQ(repairMovie(path_), QString());
        EXPECT_EQ(framesDecodedFrom(path_), frames);
        EXPECT_EQ(contentOf(path_).mid(4, 8), finished_.mid(4, 8)) << "an ordinary file now";
    }
    for (const std::int64_t cut : {std::int64_t{6}, length / 2, length}) {
        writeContent(path_, torn(3, cut));
        expectGStreamerFrames(path_, 2 * kFramesPerFragment);
    }
}

TEST_F(MovieFile, AKillWhileFinishingCostsNothing)
{
    const qsizetype head = growing_.indexOf("moov") - 4;
    const qsizetype moovSize = finished_.size() - growing_.size();
    const int frames = kFragments * kFramesPerFragment;
    // All of the new moov is there and has its name, but the head is still the growing file's.
    writeContent(path_, growing_.left(head) + finished_.mid(head));
    expectFrames(path_, frames);
    expectGStreamerFrames(path_, frames);
    EXPECT_EQ(repairMovie(path_), QString());
    EXPECT_EQ(contentOf(path_), finished_);
    // Parts of it are there, under the name free.
    for (const qsizetype cut : {qsizetype{3}, qsizetype{8}, moovSize / 2, moovSize}) {
        SCOPED_TRACE(cut);
        QByteArray tail = finished_.mid(growing_.size(), cut);
        if (cut > 4)
            tail.replace(4, 4, "free");
        writeContent(path_, growing_ + tail);
        expectFrames(path_, frames);
        expectGStreamerFrames(path_, frames);
        EXPECT_EQ(repairMovie(path_), QString());
        EXPECT_EQ(contentOf(path_), finished_);
    }
}

TEST_F(MovieFile, RepairLeavesOtherFilesAlone)
{
    writeContent(path_, finished_);
    EXPECT_EQ(repairMovie(path_), QString()) << "is as it should be";
    EXPECT_EQ(contentOf(path_), finished_);

    QByteArray otherHead = growing_;
    otherHead[otherHead.indexOf("mvhd") + 30] = 'x';
    const qsizetype firstFragment = starts_[0];
    for (const QByteArray& content :
         {QByteArray(), QByteArray("not a movie at all"), growing_.left(firstFragment - 1),
          growing_.left(firstFragment), torn(1, 100), otherHead, finished_.left(finished_.size() / 2)}) {
        SCOPED_TRACE(content.size());
        writeContent(path_, content);
        EXPECT_NE(repairMovie(path_), QString());
        EXPECT_EQ(contentOf(path_), content);
    }
    EXPECT_NE(repairMovie(folder_.filePath(QStringLiteral("none.mov"))), QString());
}

TEST_F(MovieFile, ADamagedFragmentEndsTheRepairedMovie)
{
    for (const qsizetype at : {qsizetype{44}, qsizetype{60}, qsizetype{68}, qsizetype{72}}) { // tfdt, runs, counts
        QByteArray content = growing_;
        content.replace(starts_[1] + at, 4, "\xff\xff\xff\xff");
        writeContent(path_, content);
        EXPECT_EQ(repairMovie(path_), QString());
        const int frames = framesDecodedFrom(path_);
        EXPECT_GE(frames, kFramesPerFragment) << at;
    }
}

} // namespace
} // namespace lumavex
