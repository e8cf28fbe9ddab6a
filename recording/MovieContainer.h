// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "recording/EncoderRun.h"

namespace lumavex {

/// The kinds of file that hold Motion JPEG and linear PCM as they are recorded.
enum class MovieContainer { QuickTime, Matroska, Avi };

/// By the ending of the file's name, in either case: .mov, .mkv, .avi. Nothing for any other name.
std::optional<MovieContainer> containerOf(const QString& path);

/// Whether the name promises another kind of file than the one that is recorded.
bool promisesAnotherKind(const QString& path);

/// A movie that is to be copied into a file of another kind.
struct ContainerJob {
    QString sffmpegPath;
    QString movie;
    QString copy;              ///< its name's ending decides its kind; what lies there is removed
    int framesPerSecond = 1;   ///< of the movie
    std::uint64_t seconds = 0; ///< what the progress is measured by
};

/// Copies the streams as they are, and reads the copy to see that it holds the same bytes. Empty when it does, else
/// what went wrong, in the user's words. Main thread; the run loop serves the default mode meanwhile.
QString copyIntoContainer(const ContainerJob& job, const ChildProcessFactory& createChildProcess, RunLoop& runLoop,
                          const EncoderWatch& watch);

} // namespace lumavex
