// SPDX-License-Identifier: GPL-3.0-or-later
#include "recording/FileError.h"

#include "recording/RecordingText.h"

#include <cerrno>

namespace lumavex {

QString reasonForFileError(int error, const QString& folder)
{
    switch (error) {
    case ENOENT:
        return RecordingText::tr("the folder “%1” does not exist").arg(folder);
    case ENOTDIR:
        return RecordingText::tr("“%1” is not a folder").arg(folder);
    case EACCES:
    case EPERM:
        return RecordingText::tr("you are not allowed to write in the folder “%1”").arg(folder);
    case EROFS:
        return RecordingText::tr("the folder “%1” is read-only").arg(folder);
    case ENOSPC:
        return RecordingText::tr("the disk that holds the folder “%1” is full").arg(folder);
    case EDQUOT:
        return RecordingText::tr("your share of the disk that holds the folder “%1” is used up").arg(folder);
    case EFBIG:
        return RecordingText::tr("the file is larger than the folder “%1” can hold").arg(folder);
    case ENAMETOOLONG:
        return RecordingText::tr("the name is too long for the folder “%1”").arg(folder);
    case EIO:
        return RecordingText::tr("the disk that holds the folder “%1” reports an error").arg(folder);
    default:
        return qt_error_string(error);
    }
}

} // namespace lumavex
