// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <cstdint>
#include <functional>

namespace lumavex {

enum class ExistingDestination {
    Keep,    ///< the move fails when something is at the destination
    Replace, ///< a file at the destination is replaced, in one step, when the new one is complete
};

enum class MoveOutcome { Moved, Cancelled, Failed };

struct MoveResult {
    MoveOutcome outcome = MoveOutcome::Moved;
    QString error; ///< for Failed: what could not be moved where and why, in the user's words; else empty
};

/// Bytes copied so far, of how many. False cancels the move: the source stays, the destination is as it was.
using MoveProgress = std::function<bool(std::int64_t done, std::int64_t total)>;

/// Sees to it that what was written into the file, by whatever program, survives a power failure. Takes as long as the
/// disk needs. Any thread.
void flushToDisk(const QString& path);

/// Moves a regular file, to another file system too. Any thread; within one file system it takes no time, else as long
/// as copying does.
///
/// The source disappears only when the destination is complete, and on disk where it was copied; until then the
/// destination does not change.
/// Mode and modification time are kept. `progress` is called on the calling thread, only while copying.
MoveResult moveFile(const QString& source, const QString& destination, ExistingDestination existing,
                    const MoveProgress& progress = {});

/// Gives a file the mode that a new one of the user's gets, 0666 less the process's umask: while it is being made a
/// recording is for the user alone, saved it is a file like others. Where the file system keeps no modes, or the umask
/// is not to be learned (proc(5)), nothing changes. Any thread.
void giveOrdinaryMode(const QString& path);

} // namespace lumavex
