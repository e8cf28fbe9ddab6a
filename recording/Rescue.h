// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/ChildProcess.h"
#include "platform/MovieWriter.h"
#include "platform/RunLoop.h"
#include "recording/EncoderRun.h"

#include <QString>

#include <vector>

namespace lumavex {

/// A recording that was put aside, where its files are now.
struct RescuedRecording {
    QString movie;
    QString sound; ///< empty when there is none
    QString error; ///< not empty: why a file could not be moved; what was not is in the folder it was in, to be kept
};

/// What the user is told about one file.
struct RescueNote {
    QString path;
    QString whatHappened; ///< a sentence
};

/// Moves a recording's files to the folder of recovered recordings (made if it is missing), the sound under the movie's
/// name. Names that are taken get a number: "<stamp>-2.mov" with "<stamp>-2.wav". `sound` may be empty or missing.
/// Where that fails both stay in their folder, the sound under the movie's name, so that no later recording replaces it
/// and the next start tries again. Any thread.
RescuedRecording putAside(const QString& movie, const QString& sound, const QString& recoveredFolder);

/// Start-up, before the working folders are emptied: puts aside every date-stamped movie that an earlier, killed run
/// left in the video folder, oldest first, with the sound of its own name, the latest one else with the sound file.
/// Movies without frames and a joined file, which belongs to a recording that was finished, are left to be removed.
/// Takes no time within one file system. Each is marked, before it is moved, until forgetRescued; those still marked,
/// because the run that was to complete them was killed too, come again.
std::vector<RescuedRecording> rescueLeftRecordings(const QString& videoFolder, const QString& recoveredFolder);

/// Whether everything worth keeping is out of the video folder.
bool allPutAside(const std::vector<RescuedRecording>& recordings);

/// What completing needs of the system.
struct RescueTools {
    MovieRepair repairMovie;
    MovieReader readMovie;
    ChildProcessFactory createChildProcess;
    QString sffmpegPath;
    EncoderWatch watch;
};

/// After the main window is shown: makes an ordinary movie of each recording put aside, joined with its sound under the
/// movie's name. A file goes only when what replaces it is complete; what cannot be completed or joined stays and is
/// named. Main thread; the run loop is served meanwhile.
std::vector<RescueNote> completeRescued(const std::vector<RescuedRecording>& recordings, const RescueTools& tools,
                                        RunLoop& runLoop);

/// The user has been told of these: they do not come again.
void forgetRescued(const std::vector<RescuedRecording>& recordings);

/// Says in the user's words where a recording was kept and what went wrong with that.
QString whereItIs(const RescuedRecording& kept);

/// The one message to the user; empty when there is nothing to tell.
QString rescueMessage(const std::vector<RescueNote>& notes);

} // namespace lumavex
