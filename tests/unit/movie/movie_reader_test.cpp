// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/unit/movie/MovieTools.h"

#include "movie/JpegMovieWriter.h"
#include "movie/MovieReader.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace lumavex {
namespace {

constexpr int kFrames = 45;

class MovieReaderTest : public testing::Test {
protected:
    void SetUp() override
    {
        const auto writer = createJpegMovieWriter(path_, {320, 240});
        ASSERT_EQ(writer->startWriting(), QString());
        for (int i = 0; i < kFrames; ++i) {
            const CMTime time = CMTimeMake(i + 1, 30);
            if (i % 3 == 2)
                ASSERT_TRUE(repeatWhenReady(*writer, time));
            else
                ASSERT_TRUE(appendWhenReady(*writer, pixelBufferOf(testPicture(320, 240, i)), time));
        }
        growing_ = contentOf(path_);
        ASSERT_EQ(finishAndWait(*writer, CMTimeMake(kFrames + 1, 30)).error, QString());
    }

    /// The movie with a second and a half of sound, as the encoder joins them.
    QString joined() const
    {
        const QString path = folder_.filePath(QStringLiteral("joined.mov"));
        const auto result = runProgram(QStringLiteral("ffmpeg"),
                                       {QStringLiteral("-nostdin"), QStringLiteral("-y"), QStringLiteral("-i"), path_,
                                        QStringLiteral("-f"), QStringLiteral("lavfi"), QStringLiteral("-i"),
                                        QStringLiteral("sine=r=44100:d=1.5"), QStringLiteral("-c:v"),
                                        QStringLiteral("copy"), QStringLiteral("-c:a"), QStringLiteral("pcm_s16le"),
                                        QStringLiteral("-ac"), QStringLiteral("2"), path});
        EXPECT_EQ(result.exitCode, 0) << result.errors.constData();
        return path;
    }

    QTemporaryDir folder_;
    const QString path_ = folder_.filePath(QStringLiteral("movie.mov"));
    QByteArray growing_;
};

TEST_F(MovieReaderTest, TellsWhatOurMovieAndTheEncodersHold)
{
    for (const QString& path : {path_, joined()}) {
        const MovieFacts facts = readMovie(path);
        EXPECT_EQ(facts.error, QString());
        ASSERT_TRUE(facts.picture);
        EXPECT_EQ(facts.picture->samples, kFrames);
        EXPECT_NEAR(facts.picture->seconds, kFrames / 30.0, 0.001);
        EXPECT_EQ(facts.sound.has_value(), path != path_);
        if (facts.sound) {
            EXPECT_EQ(facts.sound->samples, 66150);
            EXPECT_NEAR(facts.sound->seconds, 1.5, 0.001);
        }
    }
}

TEST_F(MovieReaderTest, NoticesWhatIsNotThere)
{
    for (const QString& path : {path_, joined()}) {
        const QByteArray whole = contentOf(path);
        QByteArray zeroed = whole; // blocks that were never written
        const qsizetype media = zeroed.indexOf(QByteArray::fromHex("ffd8ff"));
        ASSERT_GT(media, 0);
        zeroed.replace(media, 20000, QByteArray(20000, 0));
        QByteArray noTables = whole;
        noTables.replace("stsz", "xxxx");
        for (const QByteArray& content : {zeroed, noTables, whole.chopped(1), whole.left(whole.size() / 2),
                                          QByteArray("not a movie"), QByteArray(), growing_}) {
            writeContent(path, content);
            EXPECT_NE(readMovie(path).error, QString()) << content.size();
        }
    }
    EXPECT_NE(readMovie(folder_.filePath(QStringLiteral("none.mov"))).error, QString());
}

TEST_F(MovieReaderTest, SurvivesDamagedTables)
{
    const QString path = joined();
    const QByteArray whole = contentOf(path);
    const qsizetype moov = whole.indexOf("moov");
    for (qsizetype at = moov; at + 4 < whole.size(); at += 7) {
        QByteArray damaged = whole;
        damaged.replace(at, 4, "\xff\xff\xff\xff");
        writeContent(path, damaged);
        readMovie(path); // whatever it says, in bounded time and memory
    }
}

} // namespace
} // namespace lumavex
