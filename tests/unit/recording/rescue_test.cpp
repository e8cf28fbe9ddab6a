// SPDX-License-Identifier: GPL-3.0-or-later
#include "recording/RecordedFiles.h"
#include "recording/Rescue.h"
#include "recording/WorkingFolders.h"
#include "tests/fakes/FakeChildProcess.h"
#include "tests/support/EventRunLoop.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtEndian>

#include <gmock/gmock.h>

namespace lumavex {
namespace {

using testing::HasSubstr;

QByteArray box(const char* type, const QByteArray& content)
{
    QByteArray size(4, 0);
    qToBigEndian(static_cast<quint32>(content.size() + 8), size.data());
    return size + type + content;
}

QByteArray emptyMovie()
{
    return box("ftyp", "isom") + box("free", QByteArray(8, 0)) + box("moov", QByteArray(300, 0));
}

QByteArray killedMovie()
{
    return emptyMovie() + box("moof", QByteArray(100, 0)) + box("mdat", "jpeg") + box("free", "torn").chopped(2);
}

QByteArray littleEndian(quint32 value)
{
    QByteArray bytes(4, 0);
    qToLittleEndian(value, bytes.data());
    return bytes;
}

/// 44100 Hz, two channels, 16 bits; the header says `claimed` bytes of samples.
QByteArray wave(quint32 claimed, const QByteArray& samples)
{
    return "RIFF" + littleEndian(36 + claimed) + "WAVEfmt " + littleEndian(16)
           + QByteArray::fromHex("0100020044ac000010b1020004001000") + "data" + littleEndian(claimed) + samples;
}

class RescueTest : public testing::Test {
protected:
    RescueTest()
    {
        QDir(folder_.path()).mkdir("LumavexVideo");
        script.work = [](const QStringList& arguments) {
            QFile file(arguments.last());
            ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::NewOnly) && file.write("joined") == 6);
        };
        tools.sffmpegPath = "/usr/bin/ffmpeg";
        tools.readMovie = [this](const QString& path) {
            const bool joined = read(path) == "joined";
            MovieFacts facts;
            facts.picture = MovieFacts::Track{joined ? framesJoined : 30, 1};
            if (joined)
                facts.sound = MovieFacts::Track{1000, 0.02};
            else
                facts.error = "It grows.";
            return facts;
        };
        tools.repairMovie = [this](const QString& path) {
            repaired.append(QFileInfo(path).fileName());
            return repairError;
        };
    }

    QString video(const QString& name) const { return folder_.filePath("LumavexVideo/" + name); }
    QString recovered(const QString& name) const { return folder_.filePath("LumavexRecovered/" + name); }
    /// As a killed run leaves it.
    void leaveRecording() const
    {
        put(video("2026-07-09-10-00-00.mov"), killedMovie());
        put(video("audio.wav"), wave(4000, QByteArray(4000, 1)));
    }
    static void put(const QString& path, const QByteArray& content)
    {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
    }
    static QByteArray read(const QString& path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<missing>");
    }
    QStringList filesRecovered() const
    {
        return QDir(folder_.filePath("LumavexRecovered"))
            .entryList(QDir::Files | QDir::Hidden, QDir::Name)
            .filter(QRegularExpression("(?<!pending)$"));
    }
    std::vector<RescuedRecording> rescue() const
    {
        return rescueLeftRecordings(folder_.filePath("LumavexVideo"), folder_.filePath("LumavexRecovered"));
    }
    std::vector<RescueNote> complete(const std::vector<RescuedRecording>& recordings)
    {
        tools.createChildProcess = FakeChildProcess::factory(script, &launches);
        return completeRescued(recordings, tools, runLoop_);
    }

    /// A recording that cannot be completed stays and is named.
    void expectKeptInTwo(const std::vector<RescueNote>& notes, const char* why) const
    {
        ASSERT_EQ(notes.size(), 2U);
        EXPECT_EQ(notes[0].path, recovered("2026-07-09-10-00-00.mov"));
        EXPECT_THAT(notes[0].whatHappened.toStdString(), HasSubstr(why));
        EXPECT_EQ(notes[1].path, recovered("2026-07-09-10-00-00.wav"));
        EXPECT_EQ(filesRecovered(), (QStringList{"2026-07-09-10-00-00.mov", "2026-07-09-10-00-00.wav"}));
        EXPECT_EQ(read(notes[0].path), killedMovie());
    }

    RescueTools tools;
    FakeChildProcess::Script script;
    std::vector<FakeChildProcess::Launch> launches;
    QStringList repaired;
    QString repairError;
    std::int64_t framesJoined = 30;

private:
    QTemporaryDir folder_;
    EventRunLoop runLoop_;
};

TEST_F(RescueTest, PutsAsideWhatIsWorthKeeping)
{
    put(video("2026-07-08-10-00-00.mov"), killedMovie());
    put(video("2026-07-09-10-00-00.mov"), killedMovie());
    put(video("2026-07-09-11-00-00.mov"), emptyMovie());
    put(video("2026-07-09-12-00-00.mov"), "");
    put(video("audio.wav"), wave(0, QByteArray(4000, 1)));
    put(video("finalvideo.mov"), killedMovie());
    put(video("holiday.mov"), killedMovie());

    const std::vector<RescuedRecording> recordings = rescue();
    ASSERT_EQ(recordings.size(), 2U);
    EXPECT_TRUE(allPutAside(recordings));
    EXPECT_EQ(recordings[0].sound, ""); // the sound belongs to the latest
    EXPECT_EQ(recordings[1].movie, recovered("2026-07-09-10-00-00.mov"));
    EXPECT_EQ(recordings[1].sound, recovered("2026-07-09-10-00-00.wav"));
    EXPECT_EQ(filesRecovered(),
              (QStringList{"2026-07-08-10-00-00.mov", "2026-07-09-10-00-00.mov", "2026-07-09-10-00-00.wav"}));
    EXPECT_EQ(read(recovered("2026-07-09-10-00-00.mov")), killedMovie());
}

TEST_F(RescueTest, NothingLeftMakesNoFolder)
{
    EXPECT_TRUE(rescue().empty());
    EXPECT_FALSE(QFileInfo::exists(recovered("")));
    EXPECT_TRUE(rescueMessage(complete({})).isEmpty());
}

TEST_F(RescueTest, TakenNamesGetANumberForBothFiles)
{
    put(video("2026-07-09-10-00-00.mov"), killedMovie());
    put(video("audio.wav"), wave(0, QByteArray(4000, 1)));
    QDir().mkpath(recovered(""));
    put(recovered("2026-07-09-10-00-00.wav"), "older");
    rescue();
    EXPECT_EQ(filesRecovered(),
              (QStringList{"2026-07-09-10-00-00-2.mov", "2026-07-09-10-00-00-2.wav", "2026-07-09-10-00-00.wav"}));
    EXPECT_EQ(read(recovered("2026-07-09-10-00-00.wav")), "older");
}

TEST_F(RescueTest, WhatCannotBePutAsideKeepsTheVideoFolderFromBeingEmptied)
{
    put(video("2026-07-09-10-00-00.mov"), killedMovie());
    put(recovered("").chopped(1), "a file where the folder should be");
    const std::vector<RescuedRecording> recordings = rescue();
    ASSERT_EQ(recordings.size(), 1U);
    EXPECT_FALSE(allPutAside(recordings));
    const std::vector<RescueNote> notes = complete(recordings);
    ASSERT_EQ(notes.size(), 1U);
    EXPECT_EQ(notes[0].path, video("2026-07-09-10-00-00.mov"));
    EXPECT_THAT(notes[0].whatHappened.toStdString(), HasSubstr("is not a folder"));
    EXPECT_TRUE(repaired.isEmpty());
}

TEST_F(RescueTest, WhatCannotBePutAsideStaysOutOfTheWayOfTheNextRecordingAndIsFoundLater)
{
    leaveRecording();
    put(recovered("").chopped(1), "a file where the folder should be");
    rescue();
    // The next recording, which is killed as well.
    EXPECT_FALSE(QFile::exists(video("audio.wav")));
    put(video("2026-07-09-11-00-00.mov"), killedMovie());
    put(video("audio.wav"), wave(8000, QByteArray(8000, 2)));
    QFile::remove(recovered("").chopped(1));
    const std::vector<RescuedRecording> recordings = rescue();
    EXPECT_TRUE(allPutAside(recordings));
    ASSERT_EQ(recordings.size(), 2U);
    EXPECT_EQ(read(recordings[0].sound), wave(4000, QByteArray(4000, 1)));
    EXPECT_EQ(read(recordings[1].sound), wave(8000, QByteArray(8000, 2)));
}

TEST_F(RescueTest, JoinsPictureAndSoundUnderTheMoviesName)
{
    put(video("2026-07-09-10-00-00.mov"), killedMovie());
    put(video("audio.wav"), wave(2000, QByteArray(4001, 1)));
    const std::vector<RescuedRecording> recordings = rescue();
    put(recovered(".2026-07-09-10-00-00.joining.mov"), "of a run killed while joining");
    script.work = [&, join = script.work](const QStringList& arguments) {
        EXPECT_EQ(read(recordings[0].movie), killedMovie()) << "gone before its replacement was complete";
        EXPECT_EQ(read(recordings[0].sound), wave(4000, QByteArray(4001, 1))) << "the header is still short";
        join(arguments);
    };
    const std::vector<RescueNote> notes = complete(recordings);
    EXPECT_EQ(repaired, QStringList{"2026-07-09-10-00-00.mov"});
    EXPECT_EQ(filesRecovered(), QStringList{"2026-07-09-10-00-00.mov"});
    EXPECT_EQ(read(recordings[0].movie), "joined");
    ASSERT_EQ(notes.size(), 1U);
    EXPECT_THAT(rescueMessage(notes).toStdString(), HasSubstr(recordings[0].movie.toStdString()));
}

TEST_F(RescueTest, WhatCannotBeJoinedIsTriedTwiceAndThenGivenUp)
{
    leaveRecording();
    script.failure = "The program failed.";
    for (const char* why : {"The program failed.", "The program failed.", "as it was left"})
        expectKeptInTwo(complete(rescue()), why);
    EXPECT_EQ(launches.size(), 2U);
}

TEST_F(RescueTest, AJoinedFileThatLacksFramesReplacesNothing)
{
    leaveRecording();
    framesJoined = 29;
    expectKeptInTwo(complete(rescue()), "29 frames of 30");
}

TEST_F(RescueTest, WhatTheUserWasNotToldOfComesAgainUntilTwoAttemptsHaveFailed)
{
    leaveRecording();
    rescue(); // and killed
    std::vector<RescuedRecording> again = rescue();
    ASSERT_EQ(again.size(), 1U);
    EXPECT_EQ(again[0].sound, recovered("2026-07-09-10-00-00.wav"));
    script.work = [](const QStringList&) {}; // killed while joining
    complete(again);
    script.work = [](const QStringList& arguments) { put(arguments.last(), "joined"); };
    const auto told = complete(again = rescue());
    EXPECT_THAT(told.at(0).whatHappened.toStdString(), HasSubstr("with its sound"));
    EXPECT_EQ(filesRecovered(), QStringList{"2026-07-09-10-00-00.mov"});
    // Killed again before it was told: the third run does not touch it.
    again = rescue();
    ASSERT_EQ(again.size(), 1U);
    const std::size_t joins = launches.size();
    EXPECT_EQ(complete(again).size(), 1U);
    EXPECT_EQ(launches.size(), joins);
    forgetRescued(again);
    EXPECT_TRUE(rescue().empty());
    EXPECT_EQ(read(recovered("2026-07-09-10-00-00.mov")), "joined");
}

TEST_F(RescueTest, AKillBetweenTheJoinedMovieAndTheRemovalOfItsSoundIsNoFault)
{
    leaveRecording();
    const auto recordings = rescue();
    put(recordings[0].movie, "joined");
    EXPECT_EQ(complete(rescue()).at(0).whatHappened, "The recording was completed.");
    EXPECT_EQ(filesRecovered(), QStringList{"2026-07-09-10-00-00.mov"});
    EXPECT_TRUE(launches.empty());
}

TEST_F(RescueTest, ARescueThatEndedBetweenTheSoundAndItsMovieIsTakenUpAgain)
{
    leaveRecording();
    QDir().mkpath(recovered(""));
    ASSERT_TRUE(QFile::link(recovered("nothing"), recovered("2026-07-09-10-00-00.mov"))); // no movie goes there
    EXPECT_FALSE(allPutAside(rescue()));
    EXPECT_TRUE(QFile::exists(recovered("2026-07-09-10-00-00.wav")));
    QFile::remove(recovered("2026-07-09-10-00-00.mov"));
    for (const char* start : {"the next", "one more, since nobody was told"}) {
        const auto recordings = rescue();
        ASSERT_EQ(recordings.size(), 1U) << start;
        EXPECT_EQ(recordings[0].movie, recovered("2026-07-09-10-00-00.mov"));
        EXPECT_EQ(recordings[0].sound, recovered("2026-07-09-10-00-00.wav"));
    }
    EXPECT_EQ(filesRecovered(), (QStringList{"2026-07-09-10-00-00.mov", "2026-07-09-10-00-00.wav"}));
}

TEST_F(RescueTest, PlantedLinksAreNotFollowed)
{
    const QString outside = video("../outside.wav");
    put(outside, wave(4, QByteArray(4000, 1)));
    put(video("2026-07-09-10-00-00.mov"), killedMovie());
    ASSERT_TRUE(QFile::link(outside, video("audio.wav")));
    ASSERT_TRUE(QFile::link(video("2026-07-09-10-00-00.mov"), video("2026-07-09-11-00-00.mov")));
    const auto recordings = rescue();
    ASSERT_EQ(recordings.size(), 1U);
    EXPECT_TRUE(allPutAside(recordings));
    EXPECT_EQ(recordings[0].sound, "");
    complete(recordings);
    EXPECT_EQ(read(outside), wave(4, QByteArray(4000, 1)));
}

TEST_F(RescueTest, AMovieThatCannotBeCompletedIsNotJoined)
{
    leaveRecording();
    repairError = "no fragments";
    expectKeptInTwo(complete(rescue()), "no fragments");
    EXPECT_TRUE(launches.empty());
}

TEST_F(RescueTest, MoviesWithoutFramesAreTold)
{
    const QString path = video("m.mov");
    const auto worthKeeping = [&path](const QByteArray& content) {
        put(path, content);
        return movieHoldsFrames(path);
    };
    EXPECT_FALSE(worthKeeping(""));
    EXPECT_FALSE(worthKeeping(emptyMovie()));
    EXPECT_FALSE(worthKeeping(emptyMovie().chopped(100)));                     // killed while starting
    EXPECT_FALSE(worthKeeping(emptyMovie() + box("free", QByteArray(50, 0)))); // only a torn fragment
    EXPECT_FALSE(worthKeeping(emptyMovie() + box("mdat", "")));
    EXPECT_TRUE(worthKeeping(killedMovie()));
    const QByteArray largeSize = QByteArray::fromHex("000000016d6461740000000000000014") + "jpeg";
    EXPECT_TRUE(worthKeeping(box("ftyp", "isom") + largeSize + box("moov", ""))); // finished
    EXPECT_TRUE(worthKeeping(QByteArray(4096, 0)));                               // damaged, so not ours to judge
    EXPECT_TRUE(worthKeeping(box("ftyp", "isom") + QByteArray(4096, 0)));
    EXPECT_FALSE(movieHoldsFrames(video("missing.mov")));
}

TEST_F(RescueTest, ShortSoundHeadersAreRepaired)
{
    const QString path = video("audio.wav");
    const auto afterRepair = [&path](const QByteArray& content) {
        put(path, content);
        const QString error = repairSoundHeader(path);
        return error.isEmpty() ? read(path) : error.toUtf8();
    };
    const QByteArray samples(4000, 1);
    EXPECT_EQ(afterRepair(wave(0, samples)), wave(4000, samples));
    EXPECT_EQ(afterRepair(wave(3600, samples)), wave(4000, samples));
    EXPECT_EQ(afterRepair(wave(0xFFFFFFFF - 36, samples)), wave(4000, samples));
    EXPECT_EQ(afterRepair(wave(4000, samples)), wave(4000, samples));

    // Other chunks behind the samples belong to a complete file.
    QByteArray tagged = wave(4000, samples) + "LIST" + littleEndian(4) + "INFO";
    tagged.replace(4, 4, littleEndian(static_cast<quint32>(tagged.size() - 8)));
    EXPECT_EQ(afterRepair(tagged), tagged);

    EXPECT_THAT(afterRepair("RIFF").toStdString(), HasSubstr("no readable header"));
    EXPECT_FALSE(soundHoldsSamples(path));
    put(path, wave(0, {}));
    EXPECT_FALSE(soundHoldsSamples(path));
    put(path, wave(0, samples));
    EXPECT_TRUE(soundHoldsSamples(path));
}

} // namespace
} // namespace lumavex
