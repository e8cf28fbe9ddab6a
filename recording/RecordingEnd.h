// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "recording/EndServices.h"
#include "recording/FileMove.h"
#include "recording/FreeSpace.h"
#include "recording/Rescue.h"
#include "recording/SavedMovie.h"
#include "recording/WorkingFolders.h"

#include <QString>

#include <atomic>
#include <future>
#include <optional>

namespace lumavex {

/// Result of a recording for the caller.
enum class Kept {
    Nothing,   ///< no recording, or it was discarded
    AsAsked,   ///< complete and at the requested path
    Otherwise, ///< ended early, in two files, or at another path
};

/// The end of a recording: the final place of its files and the report to the user. The working files, which are in the
/// video folder, are picture, sound and, once these are joined, the joined file. R is the folder of recovered
/// recordings. The status is that of an unattended run.
///
/// | outcome          | the recording is                   | working files    | Kept, status  | report          |
/// |------------------|------------------------------------|------------------|---------------|-----------------|
/// | Saved            | at `path`                          | removed          | AsAsked 0 (1) | "Success"       |
/// | SavedUntidied    | at `path`                          | some remain (2)  | AsAsked 0 (1) | "Success"       |
/// | SavedApart       | picture at `path`, sound in R      | moved            | Otherwise 3   | why; "Success"  |
/// | SavedIncomplete  | in part at `path`; with sound in R | moved            | Otherwise 3   | why, where      |
/// | KeptWhole        | in R, one file                     | removed          | Otherwise 3   | why, where      |
/// | KeptApart        | in R, picture and sound            | moved            | Otherwise 3   | why, where      |
/// | KeptInPlace      | in the video folder, as R failed   | remain (2)       | Otherwise 3   | why, where      |
/// | Discarded        | at `path` if it has sound (3)      | removed, but (3) | Nothing 1     | nothing         |
/// | LeftForNextStart | in the video folder, complete      | remain (2)       | Otherwise 1   | nothing         |
/// | Nothing          | nowhere: refused, or no frame      | remain (3)       | Nothing 1     | why, if refused |
///
/// (1) Otherwise and 3 when there is a problem, such as missing frames or an early end of the recording.
/// (2) The next start moves them to R, completes and joins them, and reports to the user.
/// (3) The joined file, complete or not, remains until the next Record or the next start removes it.
enum class Ending {
    Nothing,
    Saved,
    SavedUntidied,
    SavedApart,
    SavedIncomplete,
    KeptWhole,
    KeptApart,
    KeptInPlace,
    Discarded,
    LeftForNextStart,
};

struct RecordingOutcome {
    Ending ending = Ending::Nothing;
    QString path;    ///< path of the movie, or of the picture when there are two files; empty when there is none
    QString problem; ///< problems and kept files, as text for the user; empty when there was no problem

    Kept kept() const;
    QString savedPath() const; ///< `path` when it holds the recording and is the requested one; otherwise empty
};

/// Facts about a recording when it is stopped.
struct StoppedRecording {
    EncoderJob files; ///< the working files; picture and sound are complete before they are joined
    SoundInRecording sound = SoundInRecording::Absent;
    int framesPerSecond = 1;
    WorkingFolders folders;
};

/// Handles the files at the end of one recording: joins sound and picture, asks for the movie's path, moves it,
/// compares it with the recorded lengths, and removes the working files when no content exists only in them. One object
/// per recording, from Stop until Stop returns. Main thread, except cancel.
class RecordingEnd {
public:
    RecordingEnd(StoppedRecording recording, EndServices services);
    RecordingEnd(const RecordingEnd&) = delete;
    RecordingEnd& operator=(const RecordingEnd&) = delete;

    /// Cancels joining or copying; the run loop must be woken afterwards. The recording is kept. Any thread.
    void cancel() { cancelled_ = true; }

    /// Joins sound and picture if there is sound. save reports a failure.
    void join(const RecordedLengths& lengths);
    /// Called after join. `problem` describes earlier problems as text for the user. Returns when the user has been
    /// told.
    RecordingOutcome save(const QString& problem);
    /// Called in place of join and save, or from within one of them, which then never resumes. `services` have no event
    /// loop. In an attended run the recording is left for the next start, since no dialog can be shown.
    RecordingOutcome endWithoutScreen(const RecordedLengths& lengths, const QString& problem, EndServices services);

private:
    const EndServices& services() const { return withoutScreen_ ? *withoutScreen_ : services_; }
    bool hasSound() const { return recording_.sound == SoundInRecording::Present; }
    EncoderWatch watch(std::function<void(float)> progress) const;
    QString whatIsMissingFrom(const QString& movie);

    RecordingOutcome saveMovie();
    MoveResult moveTo(const QString& wanted);
    MoveResult moveWithProgress();
    std::optional<RecordingOutcome> judge(MoveResult moved); ///< std::nullopt: the user wants to choose another path
    RecordingOutcome saved();
    RecordingOutcome savedIncomplete(const QString& missing);
    RecordingOutcome discarded() const;
    RecordingOutcome keepWhole(const QString& why);
    RecordingOutcome keepApart();
    void tellSaved(const QString& path);
    void tellKept(const QString& text, const QString& path);
    void tidy(RecordingOutcome& outcome) const;

    StoppedRecording recording_;
    const EndServices services_;
    std::optional<EndServices> withoutScreen_; ///< set after the screen is lost
    std::atomic<bool> cancelled_ = false;
    RecordedLengths lengths_; ///< reference for the comparison with the movie
    QString joinProblem_;
    QString problem_; ///< beginning of the outcome's problem
    QString movie_;   ///< the movie to save
    QString moving_;  ///< file being moved: movie_, or its copy in another container
    QString wanted_;
    QString savedAs_;                           ///< current or latest destination of the movie
    std::shared_future<MoveResult> moveResult_; ///< valid from the beginning of a move, unless it failed
};

/// Shows a message about the file at `path` with a button that shows its folder. Returns an empty text, or the reason
/// why the folder cannot be shown.
QString tellWithFolder(Dialogs& dialogs, Alert alert, const QString& path);

} // namespace lumavex
