// SPDX-License-Identifier: GPL-3.0-or-later
#include "recording/FileMove.h"
#include "tests/support/contentOf.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStorageInfo>
#include <QTemporaryDir>

#include <gmock/gmock.h>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace lumavex {
namespace {

using testing::HasSubstr;

constexpr int kSize = 3 * 1024 * 1024 + 17;

class FileMoveTest : public testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(here_.isValid() && there_.isValid());
        if (QStorageInfo(here_.path()) == QStorageInfo(there_.path()))
            GTEST_SKIP() << "/tmp and /dev/shm are one file system";
        content_.resize(kSize);
        for (int i = 0; i < kSize; ++i)
            content_[i] = static_cast<char>(i * 31 + i / 251);
        source = here_.filePath("movie.mov");
        ASSERT_TRUE(write(source, content_));
        QFile file(source);
        ASSERT_TRUE(file.open(QIODevice::ReadWrite) && file.setFileTime(time_, QFileDevice::FileModificationTime));
        file.setPermissions(QFile::ReadOwner | QFile::WriteOwner);
    }

    static bool write(const QString& path, const QByteArray& content)
    {
        QFile file(path);
        return file.open(QIODevice::WriteOnly) && file.write(content) == content.size();
    }
    static QStringList allFilesIn(const QTemporaryDir& folder)
    {
        return QDir(folder.path()).entryList(QDir::Files | QDir::Hidden | QDir::System);
    }
    void expectMovedTo(const QString& destination) const
    {
        EXPECT_FALSE(QFileInfo::exists(source));
        EXPECT_TRUE(contentOf(destination) == content_);
        EXPECT_EQ(QFileInfo(destination).lastModified(), time_);
        struct stat about = {};
        ASSERT_EQ(::stat(qPrintable(destination), &about), 0);
        EXPECT_EQ(about.st_mode & 07777, 0600U);
    }
    void expectUntouched(const MoveResult& result, const QString& reason) const
    {
        EXPECT_EQ(result.outcome, MoveOutcome::Failed);
        EXPECT_THAT(result.error.toStdString(), HasSubstr(reason.toStdString()));
        EXPECT_THAT(result.error.toStdString(), HasSubstr(source.toStdString()));
        EXPECT_TRUE(contentOf(source) == content_);
    }

    QTemporaryDir here_{"/tmp/lumavex-move-XXXXXX"};
    QTemporaryDir there_{"/dev/shm/lumavex-move-XXXXXX"};
    QByteArray content_;
    QString source;
    const QDateTime time_ = QDateTime::fromMSecsSinceEpoch(1600000000123);
};

TEST_F(FileMoveTest, RenamesWithinAFileSystem)
{
    const QString destination = here_.filePath("saved.mov");
    const MoveResult result = moveFile(source, destination, ExistingDestination::Keep, [](auto, auto) {
        ADD_FAILURE() << "copied where renaming would do";
        return true;
    });
    EXPECT_EQ(result.outcome, MoveOutcome::Moved) << qPrintable(result.error);
    expectMovedTo(destination);
}

TEST_F(FileMoveTest, CopiesToAnotherFileSystem)
{
    const QString destination = there_.filePath("saved.mov");
    std::vector<std::int64_t> steps;
    const MoveResult result =
        moveFile(source, destination, ExistingDestination::Keep, [&](std::int64_t done, std::int64_t total) {
            EXPECT_EQ(total, kSize);
            EXPECT_FALSE(QFileInfo::exists(destination)) << "visible before it was complete";
            steps.push_back(done);
            return true;
        });
    EXPECT_EQ(result.outcome, MoveOutcome::Moved) << qPrintable(result.error);
    expectMovedTo(destination);
    EXPECT_EQ(allFilesIn(there_), QStringList{"saved.mov"});
    EXPECT_GT(steps.size(), 2U);
    EXPECT_TRUE(std::is_sorted(steps.begin(), steps.end()));
    EXPECT_EQ(steps.back(), kSize);
}

TEST_F(FileMoveTest, ReplacesOnlyWhenTold)
{
    for (const QTemporaryDir* folder : {&here_, &there_}) {
        const QString destination = folder->filePath("saved.mov");
        ASSERT_TRUE(write(destination, "older"));
        expectUntouched(moveFile(source, destination, ExistingDestination::Keep), "there already");
        EXPECT_EQ(contentOf(destination), "older");

        EXPECT_EQ(moveFile(source, destination, ExistingDestination::Replace).outcome, MoveOutcome::Moved);
        EXPECT_TRUE(contentOf(destination) == content_);
        ASSERT_TRUE(write(source, content_));
    }
}

TEST_F(FileMoveTest, ACopyThatIsCancelledOrFailsLeavesNoTrace)
{
    struct rlimit unlimited = {};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &unlimited), 0);
    const struct rlimit limited = {kSize / 2, unlimited.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &limited), 0);
    const QString destination = there_.filePath("saved.mov");
    const MoveResult failed = moveFile(source, destination, ExistingDestination::Keep);
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &unlimited), 0);
    expectUntouched(failed, "larger than the folder");
    EXPECT_TRUE(allFilesIn(there_).isEmpty());

    ASSERT_TRUE(write(destination, "older"));
    const MoveResult result = moveFile(source, destination, ExistingDestination::Replace,
                                       [](std::int64_t done, std::int64_t total) { return done < total / 2; });
    EXPECT_EQ(result.outcome, MoveOutcome::Cancelled);
    EXPECT_TRUE(result.error.isEmpty());
    EXPECT_TRUE(contentOf(source) == content_);
    EXPECT_EQ(contentOf(destination), "older");
    EXPECT_EQ(allFilesIn(there_), QStringList{"saved.mov"});
}

TEST_F(FileMoveTest, SaysWhyItCannotBeMoved)
{
    ASSERT_TRUE(write(there_.filePath("file"), "x"));
    ASSERT_TRUE(QDir(there_.path()).mkdir("saved.mov"));
    const std::pair<QString, QString> cases[] = {
        {there_.filePath("missing/saved.mov"), "the folder “" + there_.filePath("missing") + "” does not exist"},
        {there_.filePath("file/saved.mov"), "is not a folder"},
        {there_.filePath("saved.mov"), "a folder of this name"},
        {"/proc/saved.mov", "“/proc”"}};
    for (const auto& [destination, reason] : cases)
        expectUntouched(moveFile(source, destination, ExistingDestination::Replace), reason);

    EXPECT_EQ(moveFile(here_.path(), there_.filePath("x"), ExistingDestination::Keep).outcome, MoveOutcome::Failed);
    const MoveResult gone = moveFile(here_.filePath("gone"), there_.filePath("x"), ExistingDestination::Keep);
    EXPECT_THAT(gone.error.toStdString(), HasSubstr("not there any more"));
}

TEST_F(FileMoveTest, OntoItselfIsDoneAlready)
{
    const QString roundabout = here_.path() + "/../" + QFileInfo(here_.path()).fileName() + "/movie.mov";
    EXPECT_EQ(moveFile(source, roundabout, ExistingDestination::Replace).outcome, MoveOutcome::Moved);
    EXPECT_TRUE(contentOf(source) == content_);

    const QString second = here_.filePath("second.mov"); // another name of the same file
    ASSERT_EQ(::link(qPrintable(source), qPrintable(second)), 0);
    EXPECT_EQ(moveFile(source, second, ExistingDestination::Replace).outcome, MoveOutcome::Moved);
    expectMovedTo(second);
}

TEST_F(FileMoveTest, TheOrdinaryModeFollowsTheUmask)
{
    for (const auto& [mask, expected] : {std::pair<mode_t, mode_t>{0022, 0644}, {0002, 0664}, {0077, 0600}}) {
        const mode_t before = ::umask(mask);
        giveOrdinaryMode(source);
        ::umask(before);
        struct stat about = {};
        ASSERT_EQ(::stat(qPrintable(source), &about), 0);
        EXPECT_EQ(about.st_mode & 0777, expected);
    }
}

} // namespace
} // namespace lumavex
