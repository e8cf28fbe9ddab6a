// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/Unattended.h"
#include "tests/unit/app/Program.h"

#include <QAction>
#include <QApplication>
#include <QDir>
#include <QFile>
#include <QSemaphore>
#include <QSignalSpy>

#include <utility>

using namespace lumavex;
using namespace std::chrono_literals;

namespace {

struct Finishing : Program {
    const QString saved = home.filePath(QStringLiteral("saved.mov"));

    /// Two seconds, with the files that the fakes do not write.
    void record()
    {
        window->btnRecord->trigger();
        loop->advance(2s);
        write(app->recording.s_Video_File_Source, "recorded");
        if (app->recording.soundRecorder)
            write(app->recording.s_Sound_File_Source, "recorded");
    }
    static void write(const QString& path, const QByteArray& content)
    {
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(content) == content.size()) << qPrintable(path);
    }
    static QByteArray read(const QString& path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<missing>");
    }
    /// How long the threads before it take on this clock is chance.
    void whenEncoderStarts(const std::function<void()>& then)
    {
        platform.createChildProcess = [then, make = platform.createChildProcess] {
            then();
            return make();
        };
    }
    QStringList recovered() const { return QDir(app->application.s_Recovered_Folder).entryList(QDir::Files); }
};

TEST_F(Finishing, TheJoinedFileIsSavedUnderTheStampedNameAndTheWorkingFilesGo)
{
    ASSERT_TRUE(launch());
    record();
    const QString picture = app->recording.s_Video_File_Source;
    dialogs->savePaths = {saved};
    dialogs->answers = {0};
    window->btnStop->trigger();
    ASSERT_EQ(launches.size(), 1U);
    EXPECT_EQ(launches[0].arguments,
              QStringList({QStringLiteral("-i"), picture, QStringLiteral("-i"), app->recording.s_Sound_File_Source,
                           QStringLiteral("-c"), QStringLiteral("copy"), app->recording.s_AV_File_Source}));
    EXPECT_EQ(dialogs->savePanels.at(0).nameField, QFileInfo(picture).fileName());
    EXPECT_TRUE(QFile::exists(saved));
    EXPECT_TRUE(QDir(videoFolder()).isEmpty());
    EXPECT_EQ(dialogs->alerts.back().messageText, QStringLiteral("Success"));
    EXPECT_EQ(dialogs->opened, std::vector<QUrl>{QUrl::fromLocalFile(saved)});
}

TEST_F(Finishing, ATimerThatStopsTheRecordingWhileStopCatchesUpStopsItOnce)
{
    ASSERT_TRUE(launch());
    window->btnRecord->trigger();
    loop->advance(2s);
    loop->scheduleOnce({1, 1}, [this](const TimerFiring& firing) { app->stopRecording(firing.deadline); });
    clock.time += 5s; // the machine was busy
    window->btnStop->trigger();
    EXPECT_EQ(dialogs->savePanels.size(), 1U);
    EXPECT_EQ(app->recording.m_RecordStatus, Idle);
    EXPECT_FALSE(app->recording.isEnding());
}

TEST_F(Finishing, AWriterThatFailsEndsTheRecordingAndKeepsWhatThereIs)
{
    ASSERT_TRUE(launch());
    window->btnRecord->trigger();
    loop->advance(3s);
    dialogs->savePaths = {saved};
    movie->fail(QStringLiteral("The disk is full."));
    loop->advance(1500ms);
    EXPECT_EQ(app->recording.m_RecordStatus, Idle);
    EXPECT_TRUE(movie->finishRequested());
    EXPECT_TRUE(QFile::exists(saved));
    EXPECT_EQ(message(), QStringLiteral("The disk is full."));
}

TEST_F(Finishing, WithoutAUserAJoinThatHangsIsGivenUp)
{
    options.recordSeconds = 2;
    ASSERT_TRUE(launch());
    encoder.end = FakeChildProcess::End::WhenTerminated;
    window->btnRecord->trigger();
    loop->advance(2s);
    window->btnStop->trigger();
    EXPECT_TRUE(dialogs->alerts.back().informativeText.contains(QStringLiteral("60 seconds")));
}

TEST_F(Finishing, AScreenThatGoesWhileTheSavedMovieIsReadChangesNothing)
{
    options.recordSeconds = 2;
    for (const std::int64_t withSound : {1, 0}) {
        ASSERT_TRUE(launch());
        app->recording.b_Record_Include_Audio = withSound;
        dialogs->savePanels.clear();
        dialogs->savePaths = {saved};
        QSignalSpy finished(app.get(), &AppDelegate::recordingFinished);
        QSemaphore ended;
        bool gone = false;
        platform.readMovie = [&, whole = platform.readMovie](const QString& path) {
            if (path == saved && !std::exchange(gone, true)) {
                QMetaObject::invokeMethod(
                    app.get(),
                    [&] {
                        app->finishWithoutScreen(); // the real program ends here
                        ASSERT_EQ(finished.size(), 1);
                        EXPECT_EQ(finished.at(0).at(0), saved);
                        EXPECT_EQ(finished.at(0).at(1), QString());
                        EXPECT_EQ(finished.at(0).at(2).value<Kept>(), Kept::AsAsked);
                        EXPECT_TRUE(QDir(videoFolder()).isEmpty());
                        ended.release();
                    },
                    Qt::QueuedConnection);
                EXPECT_TRUE(ended.tryAcquire(1, 20000));
            }
            return whole(path);
        };
        record();
        window->btnStop->trigger();
        EXPECT_TRUE(gone);
        EXPECT_EQ(dialogs->savePanels.size(), 1U) << "saved twice";
        EXPECT_EQ(read(saved), withSound == 1 ? "joined" : "recorded");
        EXPECT_TRUE(recovered().isEmpty());
    }
}

TEST_F(Finishing, ARunThatIsOverCanBeEndedWhileItCompletesWhatAnEarlierOneLeft)
{
    QDir().mkpath(videoFolder());
    write(videoFolder() + QStringLiteral("/2026-07-09-10-00-00.mov"), QByteArray(4096, 1));
    write(videoFolder() + QStringLiteral("/audio.wav"),
          QByteArray::fromHex("524946463400000057415645666d742010000000010002"
                              "0044ac000010b102000400100064617461100000000101010101010101"
                              "0101010101010101"));
    options.snapshot = home.filePath(QStringLiteral("picture.png"));
    platform.repairMovie = [](const QString&) { return QString(); };
    readMovie = MovieFacts{QStringLiteral("It grows."), {}, {}};
    encoder.end = FakeChildProcess::End::WhenTerminated;
    std::unique_ptr<UnattendedRun> run;
    Nanoseconds begin{};
    whenEncoderStarts([&] {
        begin = clock.time;
        loop->scheduleOnce({3, 1}, [&run](const TimerFiring&) { run->endEarly(); });
    });
    ASSERT_TRUE(launch());
    run = std::make_unique<UnattendedRun>(*app, *loop, streams, options, QString());
    Q_EMIT app->pictureFinished({});
    EXPECT_EQ(QApplication::exec(), 1);
    EXPECT_EQ(launches.size(), 1U);
    EXPECT_LT(clock.time - begin, 10s);
    EXPECT_TRUE(dialogs->alerts.back().informativeText.contains(QStringLiteral("cancelled")));
    EXPECT_EQ(recovered().size(), 2);
}

TEST_F(Finishing, TimesNeitherRepeatNorGoBackWhateverTheClockDoes)
{
    ASSERT_TRUE(launch());
    app->recording.i_fps_of_Recording = 30;
    app->createRefreshTimers();
    window->btnRecord->trigger();
    const Nanoseconds begin = clock.time;
    loop->advance(1500ms);
    loop->stall(40s); // stopped and continued
    loop->advance(700ms);
    loop->stall(3s);
    loop->advance(2s);
    const double recorded = std::chrono::duration<double>(clock.time - begin).count();
    window->btnStop->trigger();
    const auto appends = movie->appends();
    ASSERT_FALSE(appends.empty());
    EXPECT_GT(CMTimeGetSeconds(appends.front().time), 0);
    for (std::size_t i = 1; i < appends.size(); ++i)
        ASSERT_GT(CMTimeGetSeconds(appends[i].time), CMTimeGetSeconds(appends[i - 1].time)) << i;
    EXPECT_NEAR(CMTimeGetSeconds(movie->end()), recorded, 0.04) << "nothing is lost";
}

} // namespace
