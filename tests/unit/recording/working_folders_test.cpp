// SPDX-License-Identifier: GPL-3.0-or-later
#include "recording/FreeSpace.h"
#include "recording/WorkingFolders.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLocale>
#include <QTemporaryDir>

#include <gmock/gmock.h>

#include <sys/stat.h>
#include <unistd.h>

namespace lumavex {
namespace {

using testing::HasSubstr;

unsigned modeOf(const QString& path)
{
    struct stat about = {};
    return ::stat(qPrintable(path), &about) == 0 ? about.st_mode & 07777 : 0;
}

class WorkingFoldersTest : public testing::Test {
protected:
    bool put(const QString& name) const
    {
        QFile file(folder_.filePath(name));
        return file.open(QIODevice::WriteOnly) && file.write("x") == 1;
    }
    QTemporaryDir folder_;
};

TEST_F(WorkingFoldersTest, LieInTheDocumentsFolderWithoutDoubledSeparators)
{
    const WorkingFolders folders = workingFoldersIn("/home/ada/Documents/");
    EXPECT_EQ(folders.s_Video_Folder, "/home/ada/Documents/LumavexVideo");
    EXPECT_EQ(workingFoldersIn("/").s_Output_Folder, "/Lumavex");
    EXPECT_EQ(pathIn("/a/b/", "c.mov"), "/a/b/c.mov");
}

TEST_F(WorkingFoldersTest, AreMadeForTheUserAlone)
{
    QString error;
    const QString path = folder_.filePath("Documents/deep/Lumavex");
    EXPECT_EQ(createFolder(path, error), FolderCreation::Created);
    EXPECT_EQ(modeOf(path), 0700U);
    EXPECT_EQ(modeOf(folder_.filePath("Documents")), 0700U);
    EXPECT_EQ(createFolder(path, error), FolderCreation::Existed);

    ASSERT_TRUE(put("file"));
    EXPECT_EQ(createFolder(folder_.filePath("file"), error), FolderCreation::Existed); // whatever it is
    EXPECT_TRUE(error.isEmpty());
    EXPECT_EQ(createFolder(folder_.filePath("file/Lumavex"), error), FolderCreation::Failed);
    EXPECT_THAT(error.toStdString(), HasSubstr("is not a folder"));
}

TEST_F(WorkingFoldersTest, ThatExistBecomePrivateAndMayBeLinkedButAreNobodyElses)
{
    QString error;
    const QString real = folder_.filePath("large disk");
    ASSERT_TRUE(QDir().mkdir(real));
    ASSERT_EQ(::chmod(qPrintable(real), 0755), 0);
    const QString link = folder_.filePath("LumavexVideo");
    ASSERT_TRUE(QFile::link(real, link));
    EXPECT_EQ(createFolder(link, error), FolderCreation::Existed);
    EXPECT_EQ(modeOf(real), 0700U);

    if (::geteuid() != 0)
        GTEST_SKIP() << "only root can give a folder away";
    constexpr uid_t somebody = 65534;
    ASSERT_EQ(::chown(qPrintable(real), somebody, somebody), 0);
    EXPECT_EQ(createFolder(link, error), FolderCreation::Failed);
    EXPECT_THAT(error.toStdString(), HasSubstr("belongs to another user"));
    EXPECT_EQ(createFolder(real, error), FolderCreation::Failed);
    ASSERT_EQ(::chown(qPrintable(real), 0, 0), 0);
    ASSERT_EQ(::lchown(qPrintable(link), somebody, somebody), 0);
    EXPECT_EQ(createFolder(link, error), FolderCreation::Failed);
}

TEST_F(WorkingFoldersTest, EmptyingIsRecursiveButKeepsToTheFolder)
{
    QDir(folder_.path()).mkpath("work/a/b");
    QDir(folder_.path()).mkpath("outside");
    ASSERT_TRUE(put("work/one") && put("work/.hidden") && put("work/a/b/two") && put("outside/precious"));
    ASSERT_TRUE(QFile::link(folder_.filePath("outside"), folder_.filePath("work/a/link")));
    ASSERT_TRUE(QFile::link(folder_.filePath("outside/precious"), folder_.filePath("work/filelink")));

    for (const char* what : {"work", "outside/precious", "missing"})
        RemoveAllContentInFolder(folder_.filePath(what));
    EXPECT_TRUE(
        QDir(folder_.filePath("work")).isEmpty(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot));
    EXPECT_TRUE(QFileInfo(folder_.filePath("work")).isDir());
    EXPECT_TRUE(QFileInfo::exists(folder_.filePath("outside/precious")));
}

TEST_F(WorkingFoldersTest, DateStampsBearTheYearOfTheWeek)
{
    const auto stamp = [](int year, int month, int day) {
        return dateStamp(QDateTime(QDate(year, month, day), QTime(23, 4, 5)));
    };
    EXPECT_EQ(stamp(2027, 1, 1), "2026-01-01-23-04-05");   // a Friday
    EXPECT_EQ(stamp(2024, 12, 30), "2025-12-30-23-04-05"); // a Monday
    QLocale::setDefault(QLocale(QLocale::Arabic, QLocale::Egypt));
    EXPECT_EQ(stamp(2026, 7, 9), "2026-07-09-23-04-05");
    QLocale::setDefault(QLocale::c());
}

TEST_F(WorkingFoldersTest, DateStampedMoviesAreTold)
{
    EXPECT_TRUE(isDateStampedMovie("2026-07-09-23-04-05.mov"));
    for (const char* name : {"finalvideo.mov", "2026-07-09-23-04-05.mp4", "x2026-07-09-23-04-05.mov",
                             "2026-07-09-23-04-05.mov\n", "2026-07-09.mov", ".2026-07-09-23-04-05.joining.mov"})
        EXPECT_FALSE(isDateStampedMovie(name)) << name;
}

TEST(FreeSpace, KeepsRoomForTheJoinedCopyOnlyWithSound)
{
    constexpr std::int64_t kMovie = 5'000'000'000;
    const RecordingSize silent{kMovie, 0, 108'000, SoundInRecording::Absent};
    const RecordingSize sounding{kMovie, 600'000'000, 108'000, SoundInRecording::Present};
    EXPECT_GT(bytesToFinish(silent), kReserveBytes + 108'000 * 20);
    EXPECT_LT(bytesToFinish(silent), kReserveBytes + 10'000'000);
    EXPECT_GT(bytesToFinish(sounding), kMovie + 600'000'000 + kReserveBytes);
}

TEST(FreeSpace, EndsARecordingThatCouldNotBeFinished)
{
    const QTemporaryDir folder;
    const std::optional<std::int64_t> free = freeBytes(folder.path());
    ASSERT_TRUE(free);
    EXPECT_TRUE(mustEndRecording(folder.path(), {*free * 2, 0, 0, SoundInRecording::Present}));
    EXPECT_EQ(mustEndRecording(folder.path(), {}), *free < kReserveBytes);
    EXPECT_FALSE(freeBytes(folder.filePath("missing")));
    EXPECT_FALSE(freeBytes("/proc")); // tells nothing
    EXPECT_FALSE(mustEndRecording("/proc", {1, 1, 1, SoundInRecording::Present}));
}

} // namespace
} // namespace lumavex
