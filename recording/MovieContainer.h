// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "recording/EncoderRun.h"

namespace lumavex {

/// Containers that hold Motion JPEG and linear PCM as recorded.
enum class MovieContainer { QuickTime, Matroska, Avi };

/// The container for the file name's extension, in upper or lower case: .mov, .mkv, .avi. std::nullopt for any other
/// name.
std::optional<MovieContainer> containerOf(const QString& path);

/// True when the name has the extension of another container than the recorded one.
bool promisesAnotherKind(const QString& path);

/// Copies a movie into another container.
struct ContainerJob {
    QString sffmpegPath;
    QString movie;
    QString copy;              ///< its extension decides the container; an existing file is removed
    int framesPerSecond = 1;   ///< rate of the movie
    std::uint64_t seconds = 0; ///< reference length of the progress
};

/// Copies the streams unchanged and verifies that the copy holds the same bytes. Returns an empty text when it does,
/// otherwise the error as text for the user. Main thread; the run loop serves the default mode meanwhile.
QString copyIntoContainer(const ContainerJob& job, const ChildProcessFactory& createChildProcess, RunLoop& runLoop,
                          const EncoderWatch& watch);

} // namespace lumavex
