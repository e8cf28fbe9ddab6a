// SPDX-License-Identifier: GPL-3.0-or-later
#include "recording/WorkingFolders.h"

#include "base/FileDescriptor.h"
#include "recording/FileError.h"
#include "recording/RecordingText.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QStandardPaths>

#include <cerrno>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

namespace lumavex {

namespace {

struct CloseFolder {
    void operator()(DIR* folder) const { ::closedir(folder); }
};

void logFailure(const QByteArray& path)
{
    qWarning("oops: %s could not be removed: %s", path.constData(), qUtf8Printable(qt_error_string(errno)));
}

void removeContent(FileDescriptor folder, const QByteArray& path);

void removeEntry(int folder, const char* name, const QByteArray& path)
{
    if (::unlinkat(folder, name, 0) == 0)
        return;
    // POSIX specifies EPERM for a folder, Linux returns EISDIR.
    if (errno == EISDIR || errno == EPERM) {
        const int unlinkError = errno;
        FileDescriptor inner(::openat(folder, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
        if (inner.isOpen())
            removeContent(std::move(inner), path);
        else if (errno == ENOTDIR)
            errno = unlinkError;
        if (::unlinkat(folder, name, AT_REMOVEDIR) == 0)
            return;
    }
    logFailure(path);
}

void removeContent(FileDescriptor folder, const QByteArray& path)
{
    const std::unique_ptr<DIR, CloseFolder> entries(::fdopendir(folder.get()));
    if (!entries)
        return logFailure(path);
    const int descriptor = folder.release(); // now owned by `entries`
    while (const struct dirent* entry = ::readdir(entries.get())) {
        if (std::strcmp(entry->d_name, ".") != 0 && std::strcmp(entry->d_name, "..") != 0)
            removeEntry(descriptor, entry->d_name, path + '/' + entry->d_name);
    }
}

/// Ensures that no other user can write into the folder at the path, or read it. False when it belongs to another user.
/// Does nothing when the path is not a folder.
bool makePrivate(const QString& path)
{
    const QByteArray name = QFile::encodeName(path);
    const auto isTrusted = [](const struct stat& about) { return about.st_uid == ::geteuid() || about.st_uid == 0; };
    struct stat about = {};
    if (::lstat(name.constData(), &about) != 0 || (S_ISLNK(about.st_mode) && !isTrusted(about)))
        return false;
    const FileDescriptor folder(::open(name.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!folder.isOpen())
        return true;
    if (::fstat(folder.get(), &about) != 0 || !isTrusted(about))
        return false;
    if ((about.st_mode & 077) != 0)
        (void)::fchmod(folder.get(), about.st_mode & 0700); // some file systems keep no modes
    return true;
}

/// Returns 0, or the errno of the component that could not be created.
int makeFolders(const QString& path)
{
    const QByteArray name = QFile::encodeName(path);
    if (::mkdir(name.constData(), 0700) == 0)
        return 0;
    if (errno != ENOENT)
        return errno;
    const QString parent = QFileInfo(path).absolutePath();
    if (parent == path)
        return ENOENT;
    const int error = makeFolders(parent);
    if (error != 0 && error != EEXIST)
        return error;
    return ::mkdir(name.constData(), 0700) == 0 ? 0 : errno;
}

} // namespace

WorkingFolders workingFoldersIn(const QString& documentsFolder)
{
    return {pathIn(documentsFolder, QStringLiteral("Lumavex")), pathIn(documentsFolder, QStringLiteral("LumavexVideo")),
            pathIn(documentsFolder, QStringLiteral("LumavexPicture")),
            pathIn(documentsFolder, QStringLiteral("LumavexRecovered"))};
}

bool isInWorkingFolder(const QString& path, const WorkingFolders& folders)
{
    const QString folder = QFileInfo(QFileInfo(path).absolutePath()).canonicalFilePath() + u'/';
    for (const QString& working : {folders.s_Output_Folder, folders.s_Video_Folder, folders.s_Picture_Folder}) {
        const QString present = QFileInfo(working).canonicalFilePath();
        if (!present.isEmpty() && folder.startsWith(present + u'/'))
            return true;
    }
    return false;
}

QString documentsFolder()
{
    return QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
}

QString pathIn(const QString& folder, const QString& name)
{
    return QDir::cleanPath(folder + u'/' + name);
}

FolderCreation createFolder(const QString& path, QString& error)
{
    if (QFileInfo::exists(path)) {
        if (makePrivate(path))
            return FolderCreation::Existed;
        error = RecordingText::tr("The folder “%1” belongs to another user.").arg(path);
        return FolderCreation::Failed;
    }
    const QString absolute = QDir::cleanPath(QFileInfo(path).absoluteFilePath());
    const int failure = makeFolders(absolute);
    if (failure == 0)
        return FolderCreation::Created;
    error = RecordingText::tr("The folder “%1” could not be made: %2.")
                .arg(path, reasonForFileError(failure, QFileInfo(absolute).absolutePath()));
    return FolderCreation::Failed;
}

void RemoveAllContentInFolder(const QString& folder)
{
    const QByteArray path = QFile::encodeName(folder);
    FileDescriptor descriptor(::open(path.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (descriptor.isOpen())
        removeContent(std::move(descriptor), path);
    else if (errno != ENOENT && errno != ENOTDIR)
        logFailure(path);
}

QString dateStamp(const QDateTime& time)
{
    int weekYear = 0;
    const QDate date = time.date();
    date.weekNumber(&weekYear);
    const QTime clock = time.time();
    return QString::asprintf("%04d-%02d-%02d-%02d-%02d-%02d", weekYear, date.month(), date.day(), clock.hour(),
                             clock.minute(), clock.second());
}

bool isDateStampedMovie(const QString& fileName)
{
    static const QRegularExpression pattern(
        QStringLiteral(R"(\A[0-9]{4}-[0-9]{2}-[0-9]{2}-[0-9]{2}-[0-9]{2}-[0-9]{2}\.mov\z)"));
    return pattern.match(fileName).hasMatch();
}

} // namespace lumavex
