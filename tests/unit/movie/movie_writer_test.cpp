// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/unit/movie/MovieTools.h"

#include "movie/JpegMovieWriter.h"

#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstring>
#include <sys/resource.h>
#include <thread>

namespace lumavex {
namespace {

class JpegMovie : public testing::Test {
protected:
    void start(int width, int height, int rate = 30)
    {
        writer_ = createJpegMovieWriter(path_, {double(width), double(height), rate});
        ASSERT_EQ(writer_->startWriting(), QString());
    }
    bool append(const QImage& picture, CMTime time) { return appendWhenReady(*writer_, pixelBufferOf(picture), time); }
    bool repeat(CMTime time) { return repeatWhenReady(*writer_, time); }
    /// The movie joined with two seconds of sound, as the program does it.
    QString joinedWithSound() const
    {
        const auto ffmpeg = [](const QStringList& arguments) {
            const auto result = runProgram(
                QStringLiteral("ffmpeg"),
                QStringList{QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-y")} + arguments);
            EXPECT_EQ(result.exitCode, 0);
            EXPECT_EQ(result.errors.toStdString(), "");
        };
        const QString sound = folder_.filePath(QStringLiteral("audio.wav"));
        const QString joined = folder_.filePath(QStringLiteral("finalvideo.mov"));
        ffmpeg({QStringLiteral("-f"), QStringLiteral("lavfi"), QStringLiteral("-i"),
                QStringLiteral("sine=duration=2:sample_rate=44100"), QStringLiteral("-ac"), QStringLiteral("2"),
                sound});
        ffmpeg({QStringLiteral("-i"), path_, QStringLiteral("-i"), sound, QStringLiteral("-c"), QStringLiteral("copy"),
                joined});
        return joined;
    }

    QTemporaryDir folder_;
    const QString path_ = folder_.filePath(QStringLiteral("movie.mov"));
    std::unique_ptr<MovieWriter> writer_;
};

TEST_F(JpegMovie, KeepsTimesToTheTickAndRepeatsWithoutBytes)
{
    start(64, 48);
    // The clock's own steps, at a rate that wavers: 29 and 31 do not divide the timescale.
    CMTime time = CMTimeMake(1, 30);
    std::vector<std::int64_t> expected;
    for (int second = 0; second < 4; ++second) {
        const int rate = second % 2 == 0 ? 29 : 31;
        for (int frame = 0; frame < rate; ++frame) {
            expected.push_back(std::llround(CMTimeGetSeconds(time) * 90000) - 3000);
            ASSERT_TRUE(frame % 5 == 0 ? append(testPicture(64, 48, frame), time) : repeat(time));
            time = CMTimeAdd(time, CMTimeMake(1, rate));
        }
    }
    const auto result = finishAndWait(*writer_, time);
    ASSERT_EQ(result.error, QString());
    EXPECT_EQ(result.frames, 120);
    EXPECT_EQ(writer_->bytesWritten(), QFileInfo(path_).size());

    const auto packets = packetsOf(path_);
    ASSERT_EQ(packets.size(), expected.size());
    std::int64_t bytes = 0;
    for (std::size_t i = 0; i < packets.size(); ++i) {
        EXPECT_EQ(packets[i].time, expected[i]) << i;
        const std::int64_t next = i + 1 < packets.size() ? expected[i + 1] : 90000 * 4;
        EXPECT_EQ(packets[i].duration, next - expected[i]) << i;
        bytes += packets[i].size;
    }
    EXPECT_EQ(framesDecodedFrom(path_), 120);
    EXPECT_EQ(gstreamerTimesOf(path_).size(), 120U);
    EXPECT_LT(QFileInfo(path_).size(), bytes / 2) << "repetitions take no room";
    EXPECT_EQ(QFileInfo(path_).permissions() & (QFile::ReadGroup | QFile::ReadOther), QFile::Permissions());
}

TEST_F(JpegMovie, IsOfTheRateItWasMadeForFinishedJoinedAndRescued)
{
    for (const int rate : {1, 7, 24, 29, 30, 60, 240}) {
        start(64, 48, rate);
        const std::int64_t empty = writer_->bytesWritten();
        const QString expected = QStringLiteral("%1/1 %1/1").arg(rate);
        const auto recordTwoSeconds = [&] {
            CMTime time = CMTimeMake(1, std::max(rate, 30));
            for (int frame = 0; frame <= 2 * rate; ++frame, time = CMTimeAdd(time, CMTimeMake(1, rate)))
                EXPECT_TRUE(frame % 3 == 0 ? append(testPicture(64, 48, frame), time) : repeat(time));
            return time;
        };
        recordTwoSeconds();
        const auto patience = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        while (writer_->bytesWritten() == empty && std::chrono::steady_clock::now() < patience)
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        writer_.reset(); // like a killed program
        EXPECT_EQ(repairMovie(path_), QString());
        EXPECT_EQ(ratesOf(path_), expected) << "rescued";

        start(64, 48, rate);
        ASSERT_EQ(finishAndWait(*writer_, recordTwoSeconds()).error, QString());
        EXPECT_EQ(ratesOf(path_), expected) << "finished";
        EXPECT_EQ(ratesOf(joinedWithSound()), expected) << "joined";
    }
}

TEST_F(JpegMovie, RepeatsTheRightPictureAcrossFragments)
{
    start(64, 48);
    // One new picture each 1.4 s, at ten frames a second: the repetitions pass the ends of fragments.
    std::vector<QImage> originals;
    for (int frame = 0; frame < 42; ++frame) {
        if (frame % 14 == 0) {
            originals.push_back(testPicture(64, 48, frame));
            ASSERT_TRUE(append(originals.back(), CMTimeMake(frame + 1, 10)));
        } else {
            ASSERT_TRUE(repeat(CMTimeMake(frame + 1, 10)));
        }
    }
    ASSERT_EQ(finishAndWait(*writer_, CMTimeMake(43, 10)).error, QString());
    const auto pictures = picturesOf(path_, 64, 48);
    ASSERT_EQ(pictures.size(), 42U);
    for (std::size_t i = 0; i < pictures.size(); ++i)
        EXPECT_GT(psnrOf(pictures[i], originals[i / 14]), 25) << i;
}

TEST_F(JpegMovie, SurvivesAJoinByStreamCopyWithThePictureWhereItWas)
{
    start(64, 48);
    for (int frame = 1; frame <= 60; ++frame)
        ASSERT_TRUE(frame % 4 ? append(testPicture(64, 48, frame), CMTimeMake(frame, 30))
                              : repeat(CMTimeMake(frame, 30)));
    ASSERT_EQ(finishAndWait(*writer_, CMTimeMake(61, 30)).error, QString());
    const QString joined = joinedWithSound();
    EXPECT_EQ(packetsOf(joined), packetsOf(path_)) << "the same ticks, or the picture has moved";
    EXPECT_EQ(gstreamerTimesOf(joined), gstreamerTimesOf(path_));
    EXPECT_EQ(framesDecodedFrom(joined), 60);
}

TEST_F(JpegMovie, PicturesOfAnySizeComeBackAsTheyWere)
{
    for (const auto& [width, height, least] :
         {std::tuple{1, 1, 30.0}, {3, 5, 24.0}, {17, 16, 24.0}, {1366, 768, 36.0}, {1920, 1080, 36.0}}) {
        SCOPED_TRACE(width);
        start(width, height);
        const QImage picture = testPicture(width, height, 1);
        ASSERT_TRUE(append(picture, CMTimeMake(1, 30)));
        ASSERT_EQ(finishAndWait(*writer_, CMTimeMake(1, 1)).error, QString());
        const auto pictures = picturesOf(path_, width, height);
        ASSERT_EQ(pictures.size(), 1U);
        EXPECT_GT(psnrOf(pictures[0], picture), least);
        EXPECT_EQ(packetsOf(path_)[0].duration, 87000) << "one frame lasts to the end";
    }
}

TEST_F(JpegMovie, BlackWhiteAndGreyKeepTheirFullRange)
{
    start(64, 64);
    for (const int grey : {0, 1, 128, 254, 255}) {
        QImage picture(64, 64, QImage::Format_RGB32);
        picture.fill(qRgb(grey, grey, grey));
        ASSERT_TRUE(append(picture, CMTimeMake(grey + 1, 30)));
    }
    ASSERT_EQ(finishAndWait(*writer_, CMTimeMake(10, 1)).error, QString());
    const auto pictures = picturesOf(path_, 64, 64);
    ASSERT_EQ(pictures.size(), 5U);
    int at = 0;
    for (const int grey : {0, 1, 128, 254, 255})
        EXPECT_EQ(pictures[static_cast<std::size_t>(at++)].pixel(31, 31), qRgb(grey, grey, grey));
}

TEST_F(JpegMovie, RefusesSizesAndPlacesItCannotWrite)
{
    for (const double side : {65501.0, 0.5, 1e300}) {
        EXPECT_TRUE(createJpegMovieWriter(path_, {side, 10})->startWriting().contains(QStringLiteral("65500")));
        EXPECT_FALSE(QFile::exists(path_));
    }
    const QString nowhere = folder_.filePath(QStringLiteral("none/movie.mov"));
    EXPECT_NE(createJpegMovieWriter(nowhere, {10, 10})->startWriting(), QString());
    EXPECT_NE(createJpegMovieWriter(folder_.path(), {10, 10})->startWriting(), QString());
}

TEST_F(JpegMovie, AFileInTheWayIsReplacedNotFollowed)
{
    const QString precious = folder_.filePath(QStringLiteral("precious"));
    writeContent(precious, "kept");
    ASSERT_TRUE(QFile::link(precious, path_));
    start(16, 16);
    ASSERT_TRUE(append(testPicture(16, 16, 0), CMTimeMake(1, 30)));
    ASSERT_EQ(finishAndWait(*writer_, CMTimeMake(2, 30)).error, QString());
    EXPECT_EQ(contentOf(precious), QByteArray("kept"));
    EXPECT_FALSE(QFileInfo(path_).isSymLink());
}

TEST_F(JpegMovie, AFrameThatNoneFollowsReachesTheFile)
{
    start(64, 48);
    ASSERT_TRUE(append(testPicture(64, 48, 0), CMTimeMake(1, 30)));
    const std::int64_t before = writer_->bytesWritten();
    const auto patience = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (writer_->bytesWritten() == before && std::chrono::steady_clock::now() < patience)
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_EQ(framesDecodedFrom(path_), 1) << "before anything else happens";
    // A guessed length must not move what comes later, be it sooner or later than guessed.
    ASSERT_TRUE(repeat(CMTimeMake(2, 30)));
    ASSERT_TRUE(append(testPicture(64, 48, 1), CMTimeMake(5, 1)));
    ASSERT_EQ(finishAndWait(*writer_, CMTimeMake(6, 1)).error, QString());
    const auto packets = packetsOf(path_);
    ASSERT_EQ(packets.size(), 3U);
    EXPECT_EQ(packets[1].time, 3000);
    EXPECT_EQ(packets[2].time, 447000);
    EXPECT_EQ(packets[2].duration, 90000);
}

/// The largest size a file may have, for as long as this lives: writes beyond it fail as on a full disk.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes)
    {
        getrlimit(RLIMIT_FSIZE, &before_);
        rlimit limit = before_;
        limit.rlim_cur = bytes;
        setrlimit(RLIMIT_FSIZE, &limit);
        handler_ = std::signal(SIGXFSZ, SIG_IGN);
    }
    ~FileSizeLimit()
    {
        setrlimit(RLIMIT_FSIZE, &before_);
        std::signal(SIGXFSZ, handler_);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

private:
    rlimit before_{};
    void (*handler_)(int) = nullptr;
};

TEST_F(JpegMovie, AFullDiskKeepsWhatWasRecorded)
{
    MovieWriter::Result result;
    std::int64_t accepted = 0;
    {
        const FileSizeLimit limit(600 * 1000);
        start(640, 480);
        while (accepted < 10000 && append(testPicture(640, 480, int(accepted % 7)), CMTimeMake(accepted + 1, 30)))
            ++accepted;
        ASSERT_LT(accepted, 10000);
        EXPECT_NE(writer_->error(), QString());
        EXPECT_FALSE(repeat(CMTimeMake(accepted + 2, 30)));
        result = finishAndWait(*writer_, CMTimeMake(accepted + 1, 30));
    }
    EXPECT_EQ(result.error, writer_->error());
    EXPECT_GT(result.frames, 20);
    EXPECT_LT(result.frames, accepted);
    EXPECT_EQ(framesDecodedFrom(path_), result.frames);
    EXPECT_EQ(contentOf(path_).mid(4, 8), QByteArray("ftypmp42")) << "the room the torn fragment left took the moov";
    EXPECT_EQ(gstreamerTimesOf(path_).size(), static_cast<std::size_t>(result.frames));
}

TEST_F(JpegMovie, AChangeAfterALongStandstillIsEncodedOnce)
{
    // Large enough that one frame is still being encoded when finishing wakes the other encoders.
    start(1920, 1080);
    const CVPixelBufferRef frames[] = {pixelBufferOf(testPicture(1920, 1080, 0)),
                                       pixelBufferOf(testPicture(1920, 1080, 1))};
    int frame = 0;
    ASSERT_TRUE(appendWhenReady(*writer_, frames[0], CMTimeMake(++frame, 30)));
    for (int i = 0; i < 300; ++i)
        ASSERT_TRUE(repeat(CMTimeMake(++frame, 30)));
    std::this_thread::sleep_for(std::chrono::milliseconds(50)); // all of it is written
    ASSERT_TRUE(appendWhenReady(*writer_, frames[1], CMTimeMake(++frame, 30)));
    const auto result = finishAndWait(*writer_, CMTimeMake(++frame, 30));
    EXPECT_EQ(result.error, QString());
    EXPECT_EQ(result.frames, 302);
    EXPECT_EQ(framesDecodedFrom(path_), 302);
}

} // namespace
} // namespace lumavex
