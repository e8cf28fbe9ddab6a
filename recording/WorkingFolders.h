// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDateTime>
#include <QString>

namespace lumavex {

/// Names of the files in the video folder beside the date-stamped movie.
inline constexpr QLatin1StringView kSoundFileName{"audio.wav"};
inline constexpr QLatin1StringView kJoinedFileName{"finalvideo.mov"};

/// The program's working folders, without trailing separators.
struct WorkingFolders {
    QString s_Output_Folder;    ///< main folder; its absence at start marks the first run
    QString s_Video_Folder;     ///< movie and sound while recording and finishing; emptied at every start
    QString s_Picture_Folder;   ///< snapshots before they are saved; emptied at every start
    QString s_Recovered_Folder; ///< recordings that could not be finished; created when needed, never emptied
};

WorkingFolders workingFoldersIn(const QString& documentsFolder);

/// True when the file is in a folder that every start empties, or in a subfolder, after resolving all links in its
/// path.
bool isInWorkingFolder(const QString& path, const WorkingFolders& folders);

/// The user's documents folder according to the XDG user directories.
QString documentsFolder();

/// Folder and name joined with one separator.
QString pathIn(const QString& folder, const QString& name);

enum class FolderCreation { Existed, Created, Failed };

/// Creates a folder and its missing parents, accessible to the user alone (mode 0700). Anything that exists at the path
/// counts as existing, even if it is not a folder; an existing folder of the user is made private. It may be a link,
/// since people link folders to larger disks, but link and folder must belong to the user or to root: a folder of
/// another user is not safe. `error` is set for Failed, as text for the user.
FolderCreation createFolder(const QString& path, QString& error);

/// Removes everything inside the folder; the folder stays. A link is removed without following it, except that the
/// folder itself may be a link. Logs and skips entries that cannot be removed. Does nothing when the path is not a
/// folder.
void RemoveAllContentInFolder(const QString& folder);

/// Formats the time's own fields as "YYYY-MM-dd-HH-mm-ss" in Latin digits in every locale. The year is that of the ISO
/// 8601 week: 2027-01-01, a Friday, belongs to the last week of 2026 and yields "2026-01-01".
QString dateStamp(const QDateTime& time);

/// True when the file name is that of a recorded movie: a date stamp with ".mov".
bool isDateStampedMovie(const QString& fileName);

} // namespace lumavex
