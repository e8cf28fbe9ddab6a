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

/// What has become of a recording, for whoever ordered it.
enum class Kept {
    Nothing,   ///< there is none, or it was discarded
    AsAsked,   ///< all of it, where it was wanted
    Otherwise, ///< it ended early, is in two files, or lies elsewhere
};

/// How a recording ended: where its files are then, and what is told. The working files, which lie in the video folder,
/// are picture, sound and, once these are joined, the joined file. R is the folder of recovered recordings. The status
/// is that of a run without a user.
///
/// | outcome          | the recording is                   | working files    | Kept, status  | what is told    |
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
/// (1) Otherwise and 3 when there is a problem: frames are missing, say, or the recording ended early.
/// (2) The next start moves them to R, completes and joins them, and tells the user.
/// (3) The joined file, or what was begun, remains until the next Record or the next start removes it.
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
    QString path;    ///< of the movie, or of the picture where they are two; empty when there is none
    QString problem; ///< what went wrong and what was kept, in the user's words; empty when all is well

    Kept kept() const;
    QString savedPath() const; ///< `path` where it is what was recorded and where it was wanted; else empty
};

/// What is known of a recording when it is stopped.
struct StoppedRecording {
    EncoderJob files; ///< the working files; picture and sound are complete when they are joined
    SoundInRecording sound = SoundInRecording::Absent;
    int framesPerSecond = 1;
    WorkingFolders folders;
};

/// Decides what becomes of one recording's files: joins sound and picture, asks where the movie is to go, moves it,
/// compares it with what was recorded, and removes the working files when nothing in them is only there. One object
/// for each recording, from Stop until Stop returns. Main thread, but for cancel.
class RecordingEnd {
public:
    RecordingEnd(StoppedRecording recording, EndServices services);
    RecordingEnd(const RecordingEnd&) = delete;
    RecordingEnd& operator=(const RecordingEnd&) = delete;

    /// Gives up joining or copying; the run loop must be woken afterwards. What was recorded is kept. Any thread.
    void cancel() { cancelled_ = true; }

    /// Joins sound and picture where there is sound. A failure is told by save.
    void join(const RecordedLengths& lengths);
    /// After join. `problem` is what went wrong before, in the user's words. Returns when the user has been told.
    RecordingOutcome save(const QString& problem);
    /// In place of join and save, or from within one of them, which is then never returned to. `services` have no
    /// event loop. With a user the recording is left for the next start, since there is nobody to ask and to tell.
    RecordingOutcome endWithoutScreen(const RecordedLengths& lengths, const QString& problem, EndServices services);

private:
    const EndServices& services() const { return withoutScreen_ ? *withoutScreen_ : services_; }
    bool hasSound() const { return recording_.sound == SoundInRecording::Present; }
    EncoderWatch watch(std::function<void(float)> progress) const;
    QString whatIsMissingFrom(const QString& movie);

    RecordingOutcome saveMovie();
    MoveResult moveTo(const QString& wanted);
    MoveResult moveWithProgress();
    std::optional<RecordingOutcome> judge(MoveResult moved); ///< nothing: the user wants to choose another place
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
    std::optional<EndServices> withoutScreen_; ///< once the screen is gone
    std::atomic<bool> cancelled_ = false;
    RecordedLengths lengths_; ///< what the movie is compared with
    QString joinProblem_;
    QString problem_; ///< what the outcome's problem begins with
    QString movie_;   ///< what is to be saved
    QString moving_;  ///< the file that is moved: movie_, or what was made of it for another kind
    QString wanted_;
    QString savedAs_;                           ///< where the movie is being moved, or was
    std::shared_future<MoveResult> moveResult_; ///< valid from the begin of a move on, unless it failed
};

/// Tells something about the file at `path`, with a button that shows its folder. Empty, or why that cannot be shown.
QString tellWithFolder(Dialogs& dialogs, Alert alert, const QString& path);

} // namespace lumavex
