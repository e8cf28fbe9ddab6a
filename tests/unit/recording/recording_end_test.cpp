// SPDX-License-Identifier: GPL-3.0-or-later
#include "recording/RecordingEnd.h"
#include "tests/fakes/FakeDialogs.h"

#include <QDir>
#include <QFile>
#include <QStorageInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace lumavex {
namespace {

QString read(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : "<missing>";
}

void write(const QString& path, const char* content)
{
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(content) > 0) << qPrintable(path);
}

/// A new recording for each call of finish.
struct RecordingEndTest : testing::Test {
    QTemporaryDir home;
    const WorkingFolders folders = workingFoldersIn(home.path());
    const QString recoveredFolder = folders.s_Recovered_Folder;
    const QString saved = home.filePath("saved.mov");
    const QString picture = pathIn(folders.s_Video_Folder, "2026-07-09-10-00-00.mov");
    const QString sound = pathIn(folders.s_Video_Folder, "audio.wav");
    FakeDialogs dialogs;
    QString joinFailure;
    std::function<std::int64_t(const QString& path)> frames = [](const QString&) { return 60; }; ///< in a movie
    EndServices::Answers answers = EndServices::Answers::ByUser;
    std::unique_ptr<RecordingEnd> end;

    RecordingOutcome finish(const std::vector<QString>& paths, const std::vector<int>& chosen = {})
    {
        dialogs.savePaths = {paths.begin(), paths.end()};
        dialogs.answers = {chosen.begin(), chosen.end()};
        QDir().mkpath(folders.s_Video_Folder);
        write(picture, "picture");
        if (!QDir(sound).exists())
            write(sound, "sound");
        const auto facts = [this](const QString& path) {
            return MovieFacts{{}, MovieFacts::Track{frames(path), 2}, {}};
        };
        EndServices services{dialogs, facts};
        services.answers = answers;
        services.run = [](const std::function<void()>& work) { work(); };
        services.join = [this](const EncoderJob& job, const EncoderWatch&) {
            write(job.s_AV_File_Source, "joined");
            return joinFailure;
        };
        const EncoderJob files{"ffmpeg", picture, sound, pathIn(folders.s_Video_Folder, kJoinedFileName), 2};
        end = std::make_unique<RecordingEnd>(StoppedRecording{files, SoundInRecording::Present, 30, folders}, services);
        end->join({60, 2, {}});
        return end->save({});
    }
    QStringList working() const
    {
        return QDir(folders.s_Video_Folder, {}, {}, QDir::NoDotAndDotDot | QDir::AllEntries).entryList();
    }
    QStringList recovered() const { return QDir(recoveredFolder).entryList(QDir::Files); }
};

TEST_F(RecordingEndTest, WhatIsDiscardedLeavesTheJoinedFileAndWhatIsSavedNothing)
{
    EXPECT_EQ(finish({}).ending, Ending::Discarded);
    EXPECT_TRUE(dialogs.alerts.empty());
    EXPECT_EQ(working(), QStringList{kJoinedFileName});
    const RecordingOutcome outcome =
        finish({pathIn(folders.s_Video_Folder, "emptied at the next start.mov"), saved}, {0});
    EXPECT_EQ(outcome.ending, Ending::Saved);
    EXPECT_EQ(outcome.kept(), Kept::AsAsked);
    EXPECT_EQ(read(outcome.savedPath()), "joined");
    EXPECT_EQ(working(), QStringList());
    write(home.filePath("ordinary"), "as any program makes it");
    EXPECT_EQ(QFile::permissions(saved), QFile::permissions(home.filePath("ordinary")));
    QDir().mkpath(sound); // so that it cannot be removed
    EXPECT_EQ(finish({saved}).ending, Ending::SavedUntidied);
    EXPECT_EQ(working(), QStringList{"audio.wav"});
}

TEST_F(RecordingEndTest, WhatCannotBeJoinedIsKeptApartAndThePictureSavedAloneWhereWanted)
{
    joinFailure = "It crashed.";
    RecordingOutcome outcome = finish({});
    EXPECT_EQ(outcome.ending, Ending::KeptApart);
    EXPECT_TRUE(outcome.problem.contains(joinFailure) && outcome.problem.contains(recoveredFolder));
    EXPECT_EQ(working(), QStringList());
    EXPECT_EQ(recovered().size(), 2);
    EXPECT_EQ(finish({}, {0}).ending, Ending::KeptApart) << "the panel was cancelled";
    EXPECT_EQ(recovered().size(), 4);
    outcome = finish({saved}, {0});
    EXPECT_EQ(outcome.ending, Ending::SavedApart);
    EXPECT_EQ(read(outcome.savedPath()), "picture");
    EXPECT_EQ(recovered().size(), 5);
}

TEST_F(RecordingEndTest, AMovieThatLacksSomethingIsToldAndEverythingKept)
{
    frames = [this](const QString& path) { return path == saved ? 59 : 60; };
    const RecordingOutcome outcome = finish({saved}, {0});
    EXPECT_EQ(outcome.ending, Ending::SavedIncomplete);
    EXPECT_EQ(outcome.savedPath(), "");
    EXPECT_EQ(recovered().size(), 2);
    EXPECT_EQ(dialogs.opened, std::vector<QUrl>{QUrl::fromLocalFile(recoveredFolder)});
}

TEST_F(RecordingEndTest, WhatCannotBeSavedIsKeptWholeAndNotRemovedWhereItCannotBePutAside)
{
    EXPECT_EQ(finish({"/proc/nowhere/a.mov", "/proc/nowhere/b.mov"}, {0, 1}).ending, Ending::KeptWhole);
    EXPECT_EQ(dialogs.savePanels.size(), 2U);
    EXPECT_EQ(read(pathIn(recoveredFolder, recovered().value(0))), "joined");
    EXPECT_EQ(working(), QStringList());

    ASSERT_TRUE(QDir(recoveredFolder).removeRecursively());
    write(recoveredFolder, "a file in the way");
    EXPECT_EQ(finish({"/proc/nowhere/a.mov"}, {1}).ending, Ending::KeptInPlace);
    EXPECT_EQ(read(picture), "joined") << "under the stamped name";
    EXPECT_EQ(read(sound), "sound");
    joinFailure = "It crashed.";
    EXPECT_EQ(finish({saved}, {0}).ending, Ending::KeptInPlace);
    EXPECT_FALSE(QFile::exists(saved)) << "the sound alone is not found at the next start";
    EXPECT_EQ(working(), (QStringList{"2026-07-09-10-00-00.mov", "2026-07-09-10-00-00.wav"}));
}

TEST_F(RecordingEndTest, WithoutAUserACancelBeforeTheCopyHolds)
{
    const QTemporaryDir other("/dev/shm/lumavex-end-XXXXXX");
    if (QStorageInfo(other.path()).device() == QStorageInfo(home.path()).device())
        GTEST_SKIP() << "there is one file system only";
    answers = EndServices::Answers::ByProgram;
    frames = [this](const QString&) {
        end->cancel(); // between joining and copying
        return 60;
    };
    EXPECT_EQ(finish({other.filePath("saved.mov")}).ending, Ending::KeptWhole);
    EXPECT_TRUE(QDir(other.path()).isEmpty());
}

} // namespace
} // namespace lumavex
