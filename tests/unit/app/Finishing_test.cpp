// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/unit/app/Program.h"

#include <QAction>
#include <QDir>
#include <QFile>

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
