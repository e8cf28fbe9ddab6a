// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDateTime>
#include <QString>

namespace lumavex {

/// Names of the files in the video folder beside the date-stamped movie.
inline constexpr QLatin1StringView kSoundFileName{"audio.wav"};
inline constexpr QLatin1StringView kJoinedFileName{"finalvideo.mov"};

/// The folders the program works in, without trailing separators.
struct WorkingFolders {
    QString s_Output_Folder;    ///< the main one; its absence at start marks the first run
    QString s_Video_Folder;     ///< movie and sound while recording and finishing; emptied at every start
    QString s_Picture_Folder;   ///< snapshots before they are saved; emptied at every start
    QString s_Recovered_Folder; ///< recordings that could not be finished; made when needed, never emptied
};

WorkingFolders workingFoldersIn(const QString& documentsFolder);

/// Whether the file lies in a folder that every start empties, or below one, by whatever links its path leads there.
bool isInWorkingFolder(const QString& path, const WorkingFolders& folders);

/// The user's documents folder as the XDG user directories name it.
QString documentsFolder();

/// Folder and name joined with one separator.
QString pathIn(const QString& folder, const QString& name);

enum class FolderCreation { Existed, Created, Failed };

/// Makes a folder and its missing parents, for the user alone (mode 0700). Whatever exists at the path counts as
/// existing, be it a folder or not; a folder of the user's is made private. It may be a link, since people link folders
/// to larger disks, but link and folder must belong to the user or to root: in anybody else's nothing is safe. `error`
/// is set for Failed, in the user's words.
FolderCreation createFolder(const QString& path, QString& error);

/// Removes everything inside the folder; the folder stays. A link is removed, what it points to is not, except that the
/// folder itself may be a link. What cannot be removed is logged and passed over. A path that is
/// not a folder holds nothing to remove.
void RemoveAllContentInFolder(const QString& folder);

/// The time, as it is written in it, as "YYYY-MM-dd-HH-mm-ss" in Latin digits whatever the locale. The year is
/// that of the ISO 8601 week: 2027-01-01, a Friday, belongs to the last week of 2026 and gives "2026-01-01".
QString dateStamp(const QDateTime& time);

/// Whether a file of this name is a movie of a recording: a date stamp with ".mov".
bool isDateStampedMovie(const QString& fileName);

} // namespace lumavex
