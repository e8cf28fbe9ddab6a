// SPDX-License-Identifier: GPL-3.0-or-later
#include "recording/FileMove.h"

#include "base/FileDescriptor.h"
#include "recording/FileError.h"
#include "recording/RecordingText.h"

#include <QByteArray>
#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace lumavex {

namespace {

constexpr std::size_t kChunk = std::size_t{1} << 20;

/// The two paths in the system's and in the user's form.
struct Paths {
    QString source;
    QString destination;
    QString folder; ///< folder of the destination
    QByteArray sourceName;
    QByteArray destinationName;
    QByteArray folderName;
};

Paths pathsOf(const QString& source, const QString& destination)
{
    const QString folder = QFileInfo(destination).absolutePath();
    return {source,
            destination,
            folder,
            QFile::encodeName(QFileInfo(source).absoluteFilePath()),
            QFile::encodeName(QFileInfo(destination).absoluteFilePath()),
            QFile::encodeName(folder)};
}

MoveResult failed(const Paths& paths, const QString& reason)
{
    return {MoveOutcome::Failed,
            RecordingText::tr("“%1” could not be moved to “%2”: %3.").arg(paths.source, paths.destination, reason)};
}

MoveResult failed(const Paths& paths, int error)
{
    if (error == EEXIST)
        return failed(paths, RecordingText::tr("something of this name is there already"));
    if (error == EISDIR)
        return failed(paths, RecordingText::tr("a folder of this name is there already"));
    return failed(paths, reasonForFileError(error, paths.folder));
}

/// Returns 0 when `from` has been renamed to `to`, otherwise the errno.
int renameFile(const QByteArray& from, const QByteArray& to, ExistingDestination existing)
{
    if (existing == ExistingDestination::Replace)
        return std::rename(from.constData(), to.constData()) == 0 ? 0 : errno;
    if (::renameat2(AT_FDCWD, from.constData(), AT_FDCWD, to.constData(), RENAME_NOREPLACE) == 0)
        return 0;
    if (errno != EINVAL && errno != ENOSYS)
        return errno;
    // Some network and FUSE file systems cannot rename without replacing, so look first.
    struct stat there = {};
    if (::lstat(to.constData(), &there) == 0)
        return EEXIST;
    return std::rename(from.constData(), to.constData()) == 0 ? 0 : errno;
}

void flushFolder(const QByteArray& folderName)
{
    const FileDescriptor folder(::open(folderName.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (folder.isOpen())
        ::fsync(folder.get()); // not every file system supports this; the file itself has been flushed
}

/// The file that grows beside the destination; the destructor removes it unless it has been renamed to the destination.
class TemporaryFile {
public:
    explicit TemporaryFile(const QByteArray& folderName) : name_(folderName + "/.lumavex-XXXXXX")
    {
        file = FileDescriptor(::mkostemp(name_.data(), O_CLOEXEC));
        exists_ = file.isOpen();
    }
    ~TemporaryFile()
    {
        if (exists_)
            ::unlink(name_.constData());
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    int becomes(const QByteArray& destinationName, ExistingDestination existing)
    {
        const int error = renameFile(name_, destinationName, existing);
        exists_ = error != 0;
        return error;
    }

    FileDescriptor file;

private:
    QByteArray name_;
    bool exists_ = false;
};

int writeAll(int file, const char* bytes, ssize_t count)
{
    while (count > 0) {
        const ssize_t written = ::write(file, bytes, static_cast<std::size_t>(count));
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return written < 0 ? errno : EIO;
        bytes += written;
        count -= written;
    }
    return 0;
}

/// Copies the content; Moved when all of it has been copied.
MoveResult copyContent(const Paths& paths, int from, int to, std::int64_t total, const MoveProgress& progress)
{
    // Allocating the space first detects a full disk before minutes of copying. Not every file system supports it.
    if (total > 0 && ::fallocate(to, 0, 0, total) != 0 && (errno == ENOSPC || errno == EFBIG || errno == EDQUOT))
        return failed(paths, errno);
    std::vector<char> chunk(kChunk);
    std::int64_t done = 0;
    for (;;) {
        const ssize_t count = ::read(from, chunk.data(), chunk.size());
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return failed(paths, RecordingText::tr("it cannot be read (%1)").arg(qt_error_string(errno)));
        if (count == 0)
            break;
        if (const int error = writeAll(to, chunk.data(), count))
            return failed(paths, error);
        done += count;
        if (progress && !progress(done, total))
            return {MoveOutcome::Cancelled, {}};
    }
    if (done != total)
        return failed(paths, RecordingText::tr("it changed meanwhile"));
    return {};
}

MoveResult moveByCopy(const Paths& paths, ExistingDestination existing, const MoveProgress& progress)
{
    const FileDescriptor source(::open(paths.sourceName.constData(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC));
    struct stat about = {};
    if (!source.isOpen() || ::fstat(source.get(), &about) != 0)
        return failed(paths, RecordingText::tr("it cannot be read (%1)").arg(qt_error_string(errno)));

    TemporaryFile copy(paths.folderName);
    if (!copy.file.isOpen())
        return failed(paths, errno);
    const MoveResult copied = copyContent(paths, source.get(), copy.file.get(), about.st_size, progress);
    if (copied.outcome != MoveOutcome::Moved)
        return copied;

    // Some file systems (FAT) refuse mode and time, which is acceptable; the content is essential.
    (void)::fchmod(copy.file.get(), about.st_mode & 0777);
    const struct timespec times[2] = {about.st_atim, about.st_mtim};
    (void)::futimens(copy.file.get(), times);
    std::error_code flushed = copy.file.flushToDisk();
    if (!flushed)
        flushed = copy.file.close();
    if (flushed)
        return failed(paths, flushed.value());
    if (const int error = copy.becomes(paths.destinationName, existing))
        return failed(paths, error);
    flushFolder(paths.folderName);

    if (::unlink(paths.sourceName.constData()) != 0)
        qWarning("oops: %s was copied but could not be removed: %s", qUtf8Printable(paths.source),
                 qUtf8Printable(qt_error_string(errno)));
    return {};
}

/// The umask; std::nullopt when the system does not provide it. The call umask(2) reads it only by changing it for all
/// threads.
std::optional<mode_t> umaskOfProcess()
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return {};
    for (const QByteArray& line : status.readAll().split('\n')) {
        bool isOctal = false;
        const uint mask = line.startsWith("Umask:") ? line.mid(6).trimmed().toUInt(&isOctal, 8) : 0;
        if (isOctal)
            return mask;
    }
    return {};
}

/// Both paths name the same file: renaming one to the other would do nothing and leave both.
MoveResult moveOntoItself(const Paths& paths, ExistingDestination existing)
{
    if (QFileInfo(paths.source).canonicalFilePath() == QFileInfo(paths.destination).canonicalFilePath())
        return {};
    if (existing == ExistingDestination::Keep)
        return failed(paths, EEXIST);
    if (::unlink(paths.sourceName.constData()) != 0)
        return failed(paths,
                      RecordingText::tr("it cannot be removed from where it is (%1)").arg(qt_error_string(errno)));
    return {};
}

} // namespace

void flushToDisk(const QString& path)
{
    const FileDescriptor file(::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC));
    if (file.isOpen())
        (void)file.flushToDisk();
}

MoveResult moveFile(const QString& source, const QString& destination, ExistingDestination existing,
                    const MoveProgress& progress)
{
    const Paths paths = pathsOf(source, destination);
    struct stat from = {};
    if (::lstat(paths.sourceName.constData(), &from) != 0)
        return failed(paths, errno == ENOENT ? RecordingText::tr("it is not there any more") : qt_error_string(errno));
    if (!S_ISREG(from.st_mode))
        return failed(paths, RecordingText::tr("it is not a file"));

    struct stat folder = {};
    if (::stat(paths.folderName.constData(), &folder) != 0)
        return failed(paths, errno);
    if (!S_ISDIR(folder.st_mode))
        return failed(paths, ENOTDIR);

    struct stat to = {};
    if (::lstat(paths.destinationName.constData(), &to) == 0) {
        if (to.st_dev == from.st_dev && to.st_ino == from.st_ino)
            return moveOntoItself(paths, existing);
        if (S_ISDIR(to.st_mode))
            return failed(paths, EISDIR);
        if (existing == ExistingDestination::Keep)
            return failed(paths, EEXIST);
    }

    const int error = renameFile(paths.sourceName, paths.destinationName, existing);
    if (error == EXDEV)
        return moveByCopy(paths, existing, progress);
    if (error != 0)
        return failed(paths, error);
    flushFolder(paths.folderName);
    return {};
}

void giveOrdinaryMode(const QString& path)
{
    if (const std::optional<mode_t> mask = umaskOfProcess())
        (void)::chmod(QFile::encodeName(path).constData(), 0666 & ~*mask);
}

} // namespace lumavex
