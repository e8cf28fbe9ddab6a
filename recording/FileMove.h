// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <cstdint>
#include <functional>

namespace lumavex {

enum class ExistingDestination {
    Keep,    ///< the move fails when the destination exists
    Replace, ///< an existing destination is replaced atomically when the new file is complete
};

enum class MoveOutcome { Moved, Cancelled, Failed };

struct MoveResult {
    MoveOutcome outcome = MoveOutcome::Moved;
    QString error; ///< for Failed: file, destination and reason as text for the user; otherwise empty
};

/// Receives the bytes copied so far and the total. Returning false cancels the move: the source stays, and the
/// destination is unchanged.
using MoveProgress = std::function<bool(std::int64_t done, std::int64_t total)>;

/// Ensures that the file's content, whichever program wrote it, survives a power failure. Takes as long as the disk
/// needs. Any thread.
void flushToDisk(const QString& path);

/// Moves a regular file, also to another file system. Any thread. Takes no time within one file system, otherwise as
/// long as copying.
///
/// The source disappears only when the destination is complete, and flushed to disk if it was copied; until then the
/// destination does not change.
/// Mode and modification time are kept. `progress` is called on the calling thread, only while copying.
MoveResult moveFile(const QString& source, const QString& destination, ExistingDestination existing,
                    const MoveProgress& progress = {});

/// Sets the mode of a new file, 0666 less the process's umask: a recording in progress is readable by the user alone, a
/// saved one is an ordinary file. Changes nothing when the file system keeps no modes or the umask is unknown
/// (proc(5)). Any thread.
void giveOrdinaryMode(const QString& path);

} // namespace lumavex
