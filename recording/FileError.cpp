// SPDX-License-Identifier: GPL-3.0-or-later
#include "recording/FileError.h"

#include <QCoreApplication>

#include <cerrno>

namespace lumavex {

namespace {

struct Text {
    Q_DECLARE_TR_FUNCTIONS(FileError)
};

} // namespace

QString reasonForFileError(int error, const QString& folder)
{
    switch (error) {
    case ENOENT:
        return Text::tr("the folder “%1” does not exist").arg(folder);
    case ENOTDIR:
        return Text::tr("“%1” is not a folder").arg(folder);
    case EACCES:
    case EPERM:
        return Text::tr("you are not allowed to write in the folder “%1”").arg(folder);
    case EROFS:
        return Text::tr("the folder “%1” is read-only").arg(folder);
    case ENOSPC:
        return Text::tr("the disk that holds the folder “%1” is full").arg(folder);
    case EDQUOT:
        return Text::tr("your share of the disk that holds the folder “%1” is used up").arg(folder);
    case EFBIG:
        return Text::tr("the file is larger than the folder “%1” can hold").arg(folder);
    case ENAMETOOLONG:
        return Text::tr("the name is too long for the folder “%1”").arg(folder);
    case EIO:
        return Text::tr("the disk that holds the folder “%1” reports an error").arg(folder);
    default:
        return qt_error_string(error);
    }
}

} // namespace lumavex
