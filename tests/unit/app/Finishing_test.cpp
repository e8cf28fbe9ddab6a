// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/unit/app/Program.h"

#include <QAction>
#include <QDir>
#include <QFile>
#include <QPushButton>

using namespace lumavex;
using namespace std::chrono_literals;

TEST_F(Program, TheJoinedFileIsSavedUnderTheStampedNameAndTheWorkingFilesGo)
{
    ASSERT_TRUE(launch());
    window->btnRecord->trigger();
    loop->advance(2s);
    const QString picture = app->recording.s_Video_File_Source;
    for (const QString& path : {picture, app->recording.s_Sound_File_Source}) {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    }
    const QString saved = home.filePath(QStringLiteral("saved.mov"));
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

TEST_F(Program, AFailedEncoderKeepsPictureAndSoundAndOffersThePictureAlone)
{
    ASSERT_TRUE(launch());
    encoder.failure = QStringLiteral("It crashed.");
    encoder.work = {};
    window->btnRecord->trigger();
    loop->advance(2s);
    for (const QString& path : {app->recording.s_Video_File_Source, app->recording.s_Sound_File_Source}) {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("kept");
    }
    QString path, problem;
    QObject::connect(app.get(), &AppDelegate::recordingFinished, [&](const QString& p, const QString& why) {
        path = p;
        problem = why;
    });
    window->btnStop->trigger();
    const QDir recovered(home.filePath(QStringLiteral("Documents/LumavexRecovered")));
    EXPECT_EQ(recovered.entryList(QDir::Files).size(), 2);
    EXPECT_TRUE(dialogs->alerts.back().informativeText.contains(recovered.path()));
    EXPECT_TRUE(problem.contains(QStringLiteral("It crashed.")));
    EXPECT_EQ(path, QString());
    EXPECT_EQ(app->recording.m_RecordStatus, Idle);
}

TEST_F(Program, AMoveThatFailsAsksAgainAndThenKeepsTheMovie)
{
    ASSERT_TRUE(launch());
    window->btnRecord->trigger();
    loop->advance(2s);
    dialogs->savePaths = {QStringLiteral("/proc/nowhere/a.mov"), QStringLiteral("/proc/nowhere/b.mov")};
    dialogs->answers = {0, 1};
    window->btnStop->trigger();
    EXPECT_EQ(dialogs->savePanels.size(), 2U);
    const QDir recovered(home.filePath(QStringLiteral("Documents/LumavexRecovered")));
    ASSERT_EQ(recovered.entryList(QDir::Files).size(), 1);
    EXPECT_TRUE(dialogs->alerts.back().informativeText.contains(recovered.entryList(QDir::Files).at(0)));
}

TEST_F(Program, WhatCannotBePutAsideIsNotRemoved)
{
    QDir().mkpath(home.filePath(QStringLiteral("Documents")));
    QFile inTheWay(home.filePath(QStringLiteral("Documents/LumavexRecovered")));
    ASSERT_TRUE(inTheWay.open(QIODevice::WriteOnly));
    ASSERT_TRUE(launch());
    const auto record = [this](const QByteArray& content) {
        window->btnRecord->trigger();
        loop->advance(2s);
        for (const QString& path : {app->recording.s_Video_File_Source, app->recording.s_Sound_File_Source}) {
            QFile file(path);
            EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
        }
        window->btnStop->trigger();
    };
    const auto content = [](const QString& path) {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<missing>");
    };
    const QDir video(videoFolder());

    encoder.failure = QStringLiteral("It crashed.");
    record("first");
    const QString first = QFileInfo(app->recording.s_Video_File_Source).completeBaseName();
    EXPECT_EQ(content(video.filePath(first + QStringLiteral(".mov"))), "first");
    EXPECT_EQ(content(video.filePath(first + QStringLiteral(".wav"))), "first");
    EXPECT_TRUE(dialogs->alerts.back().informativeText.contains(video.filePath(first + QStringLiteral(".mov"))));
    ASSERT_TRUE(QFile::rename(video.filePath(first + QStringLiteral(".mov")), video.filePath(QStringLiteral("x.mov"))));

    encoder.failure.clear();
    dialogs->savePaths = {QStringLiteral("/proc/nowhere/a.mov")};
    dialogs->answers = {1};
    record("second");
    EXPECT_EQ(content(app->recording.s_Video_File_Source), "joined") << "the joined movie bears the stamped name";
    EXPECT_EQ(content(video.filePath(first + QStringLiteral(".wav"))), "first");
}

TEST_F(Program, AMovieIsNotSavedWhereTheNextStartRemovesItAndElsewhereItGetsAnOrdinaryMode)
{
    ASSERT_TRUE(launch());
    app->recording.b_Record_Include_Audio = 0;
    window->btnRecord->trigger();
    loop->advance(2s);
    QFile picture(app->recording.s_Video_File_Source);
    ASSERT_TRUE(picture.open(QIODevice::WriteOnly));
    picture.setPermissions(QFile::ReadOwner | QFile::WriteOwner);
    const QString saved = home.filePath(QStringLiteral("saved.mov"));
    dialogs->savePaths = {picture.fileName(), saved};
    dialogs->answers = {0};
    window->btnStop->trigger();
    EXPECT_EQ(dialogs->savePanels.size(), 2U);
    EXPECT_TRUE(QFile::exists(saved));
    QFile ordinary(home.filePath(QStringLiteral("ordinary")));
    ASSERT_TRUE(ordinary.open(QIODevice::WriteOnly));
    EXPECT_EQ(QFileInfo(saved).permissions(), QFileInfo(ordinary).permissions());
}

TEST_F(Program, ATimerThatStopsTheRecordingWhileStopCatchesUpStopsItOnce)
{
    ASSERT_TRUE(launch());
    window->btnRecord->trigger();
    loop->advance(2s);
    loop->scheduleOnce({1, 1}, [this](const TimerFiring& firing) { app->stopRecording(firing.deadline); });
    clock.time += 5s; // the machine was busy
    window->btnStop->trigger();
    EXPECT_EQ(dialogs->savePanels.size(), 1U);
    EXPECT_EQ(app->recording.m_RecordStatus, Idle);
    EXPECT_FALSE(app->recording.stopping);
}

TEST_F(Program, WhatFailsWhileFinishingIsTold)
{
    ASSERT_TRUE(launch());
    window->btnRecord->trigger();
    loop->advance(100ms);
    movie->fail(QStringLiteral("The disk is full."));
    window->btnStop->trigger();
    EXPECT_EQ(window->findChild<MessageStrip*>()->accessibleName(), QStringLiteral("The disk is full."));
}

TEST_F(Program, AWriterThatFailsEndsTheRecordingAndKeepsWhatThereIs)
{
    ASSERT_TRUE(launch());
    window->btnRecord->trigger();
    loop->advance(3s);
    dialogs->savePaths = {home.filePath(QStringLiteral("saved.mov"))};
    movie->fail(QStringLiteral("The disk is full."));
    loop->advance(1500ms);
    EXPECT_EQ(app->recording.m_RecordStatus, Idle);
    EXPECT_TRUE(movie->finishRequested());
    EXPECT_TRUE(QFile::exists(home.filePath(QStringLiteral("saved.mov"))));
}

TEST_F(Program, ASavedMovieThatLacksSomethingIsToldAndEverythingKept)
{
    ASSERT_TRUE(launch());
    window->btnRecord->trigger();
    loop->advance(2s);
    for (const QString& path : {app->recording.s_Video_File_Source, app->recording.s_Sound_File_Source}) {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    }
    const QString saved = home.filePath(QStringLiteral("saved.mov"));
    dialogs->savePaths = {saved};
    const auto frames = [this] { return std::int64_t(movie->appends().size()); };
    // Whole when it was joined, a frame short when it was moved.
    platform.readMovie = [&](const QString& path) {
        MovieFacts facts;
        facts.picture = MovieFacts::Track{frames() - (path == saved ? 1 : 0), CMTimeGetSeconds(movie->end())};
        return facts;
    };
    Kept kept = Kept::Nothing;
    QObject::connect(app.get(), &AppDelegate::recordingFinished,
                     [&kept](const QString&, const QString&, Kept what) { kept = what; });
    dialogs->answers = {0};
    window->btnStop->trigger();
    const QString recovered = home.filePath(QStringLiteral("Documents/LumavexRecovered"));
    EXPECT_TRUE(QFile::exists(saved));
    EXPECT_EQ(QDir(recovered).entryList(QDir::Files).size(), 2);
    EXPECT_NE(dialogs->alerts.back().messageText, QStringLiteral("Success"));
    EXPECT_TRUE(dialogs->alerts.back().informativeText.contains(recovered));
    EXPECT_EQ(dialogs->opened, std::vector<QUrl>{QUrl::fromLocalFile(recovered)});
    EXPECT_EQ(kept, Kept::Otherwise);
}

TEST_F(Program, AnEncoderThatLeavesSomethingOutHasFailed)
{
    ASSERT_TRUE(launch());
    window->btnRecord->trigger();
    loop->advance(2s);
    for (const QString& path : {app->recording.s_Video_File_Source, app->recording.s_Sound_File_Source}) {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    }
    readMovie = MovieFacts{QStringLiteral("The movie is not complete."), {}, {}};
    window->btnStop->trigger();
    EXPECT_TRUE(dialogs->savePanels.empty());
    EXPECT_TRUE(dialogs->alerts.back().informativeText.contains(QStringLiteral("not complete")));
    EXPECT_EQ(QDir(home.filePath(QStringLiteral("Documents/LumavexRecovered"))).entryList(QDir::Files).size(), 2);
}

TEST_F(Program, CancellingAJoinThatHangsKeepsBothFiles)
{
    ASSERT_TRUE(launch());
    encoder.end = FakeChildProcess::End::WhenTerminated;
    window->show();
    window->btnRecord->trigger();
    loop->advance(2s);
    for (const QString& path : {app->recording.s_Video_File_Source, app->recording.s_Sound_File_Source}) {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    }
    loop->scheduleOnce({3, 1}, [this](const TimerFiring&) {
        auto* button = window->findChild<QPushButton*>(QStringLiteral("btnCancel"));
        ASSERT_TRUE(button && button->isVisible());
        button->click();
    });
    window->btnStop->trigger();
    EXPECT_TRUE(dialogs->alerts.back().informativeText.contains(QStringLiteral("cancelled")));
    EXPECT_EQ(QDir(home.filePath(QStringLiteral("Documents/LumavexRecovered"))).entryList(QDir::Files).size(), 2);
    EXPECT_FALSE(app->recording.stopping);
}

TEST_F(Program, WithoutAUserAJoinThatHangsIsGivenUp)
{
    options.recordSeconds = 2;
    ASSERT_TRUE(launch());
    encoder.end = FakeChildProcess::End::WhenTerminated;
    window->btnRecord->trigger();
    loop->advance(2s);
    const Nanoseconds begin = clock.time;
    window->btnStop->trigger();
    EXPECT_LT(clock.time - begin, 65s);
    EXPECT_TRUE(dialogs->alerts.back().informativeText.contains(QStringLiteral("60 seconds")));
}

TEST_F(Program, TimesNeitherRepeatNorGoBackWhateverTheClockDoes)
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

TEST_F(Program, AnotherResolutionOfTheScreenIsFittedIntoTheRunningMovie)
{
    ASSERT_TRUE(launch());
    window->btnRecord->trigger();
    loop->advance(2s);
    QImage upright(300, 400, QImage::Format_RGB32);
    upright.fill(Qt::green);
    screen->setScreen(upright);
    loop->advance(2s);
    QImage frame;
    for (const FakeMovie::Append& append : movie->appends())
        if (!append.repeated)
            frame = append.picture;
    ASSERT_EQ(frame.size(), QSize(640, 480));
    EXPECT_EQ(frame.pixelColor(320, 240), QColor(Qt::green));
    EXPECT_EQ(frame.pixelColor(320, 5), QColor(Qt::green));
    EXPECT_EQ(frame.pixelColor(5, 240), QColor(Qt::black)) << "in its own proportions";
    EXPECT_EQ(app->recording.m_RecordStatus, Recording);
}
