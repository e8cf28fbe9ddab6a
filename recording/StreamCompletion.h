// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/CMTime.h"
#include "platform/MovieWriter.h"
#include "platform/RunLoop.h"
#include "platform/SoundRecorder.h"
#include "recording/SavedMovie.h"
#include "recording/WriterReadiness.h"

#include <QString>

#include <cstdint>
#include <functional>
#include <future>

namespace lumavex {

/// What a stopped recording's files are completed by. All of it outlives the completion.
struct RecordedStreams {
    MovieWriter& writer;
    SoundRecorder* sound = nullptr; ///< null: without sound
    QString soundFile;
    CMTime firstFrame;
    CMTime end;              ///< of the last frame
    std::int64_t frames = 0; ///< that were appended
    int framesPerSecond = 1; ///< at the end
};

/// Completes picture and sound of one recording, and compares what is in the files with what was recorded. Main thread.
class StreamCompletion {
public:
    StreamCompletion(const RecordedStreams& streams, RunLoop& runLoop) : streams_(streams), runLoop_(runLoop) {}

    /// Waits until the writer's input is ready, then asks the writer to finish, which it does on a thread of its own,
    /// and ends the sound at `heardUntil`. `progress` gets 20, 30 and 40 percent. Once.
    void begin(WriterReadiness& readiness, Nanoseconds heardUntil,
               const std::function<void(float percentage)>& progress);
    bool hasBegun() const { return result_.valid(); }
    /// After begin: serves the run loop until both files are complete.
    void wait();

    /// After begin; block until both files are complete.
    RecordedLengths lengths() const;
    QString problem() const; ///< in the user's words; empty when both files hold what was recorded

private:
    QString difference(const RecordedLengths& lengths) const;

    const RecordedStreams streams_;
    RunLoop& runLoop_;
    std::shared_future<MovieWriter::Result> result_; ///< valid from begin on
    QString soundProblem_;
};

} // namespace lumavex
