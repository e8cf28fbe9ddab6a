// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/ChildProcess.h"
#include "platform/MovieWriter.h"
#include "platform/RunLoop.h"
#include "recording/EncoderRun.h"

#include <QString>

#include <vector>

namespace lumavex {

/// The current paths of a recording that was put aside.
struct RescuedRecording {
    QString movie;
    QString sound; ///< empty when there is none
    QString error; ///< not empty: reason why a file could not be moved; such a file stays in its folder and must be
                   ///< kept
};

/// Message to the user about one file.
struct RescueNote {
    QString path;
    QString whatHappened; ///< a sentence
};

/// Moves a recording's files to the folder of recovered recordings (created if missing), the sound under the movie's
/// name. Names in use get a number: "<stamp>-2.mov" with "<stamp>-2.wav". `sound` may be empty or missing. On a failure
/// both stay in their folder, the sound under the movie's name, so that no later recording replaces it and the next
/// start tries again. Any thread.
RescuedRecording putAside(const QString& movie, const QString& sound, const QString& recoveredFolder);

/// To be called at start-up, before the working folders are emptied: puts aside every date-stamped movie that an
/// earlier, killed run left in the video folder, oldest first, with the sound of its own name; the latest one otherwise
/// gets the sound file. Movies without frames and a joined file, which belongs to a finished recording, are left to be
/// removed. Takes no time within one file system. Each movie is marked before it is moved, until forgetRescued; those
/// still marked because the completing run was killed too are returned again.
std::vector<RescuedRecording> rescueLeftRecordings(const QString& videoFolder, const QString& recoveredFolder);

/// True when all files worth keeping are out of the video folder.
bool allPutAside(const std::vector<RescuedRecording>& recordings);

/// Services of the system that completing needs.
struct RescueTools {
    MovieRepair repairMovie;
    MovieReader readMovie;
    ChildProcessFactory createChildProcess;
    QString sffmpegPath;
    EncoderWatch watch;
};

/// To be called after the main window is shown: makes an ordinary movie of each recording put aside, joined with its
/// sound under the movie's name. A file is removed only when its replacement is complete; recordings that cannot be
/// completed or joined stay and are named. Main thread; serves the run loop meanwhile.
std::vector<RescueNote> completeRescued(const std::vector<RescuedRecording>& recordings, const RescueTools& tools,
                                        RunLoop& runLoop);

/// The user has been told of these: they are not returned again.
void forgetRescued(const std::vector<RescuedRecording>& recordings);

/// The place where a recording was kept, and the problems with it, as text for the user.
QString whereItIs(const RescuedRecording& kept);

/// The single message to the user; empty when there is nothing to report.
QString rescueMessage(const std::vector<RescueNote>& notes);

} // namespace lumavex
