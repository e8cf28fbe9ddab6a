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

/// Streams of a stopped recording that must be completed. All must outlive the completion.
struct RecordedStreams {
    MovieWriter& writer;
    SoundRecorder* sound = nullptr; ///< null: without sound
    QString soundFile;
    CMTime firstFrame;
    CMTime end;              ///< end of the last frame
    std::int64_t frames = 0; ///< number of appended frames
    int framesPerSecond = 1; ///< rate at the end
};

/// Completes picture and sound of one recording, and compares the files' content with the recorded lengths. Main
/// thread.
class StreamCompletion {
public:
    StreamCompletion(const RecordedStreams& streams, RunLoop& runLoop) : streams_(streams), runLoop_(runLoop) {}

    /// Waits until the writer's input is ready, then asks the writer to finish, which it does on its own thread, and
    /// ends the sound at `heardUntil`. `progress` receives 20, 30 and 40 percent. To be called once.
    void begin(WriterReadiness& readiness, Nanoseconds heardUntil,
               const std::function<void(float percentage)>& progress);
    bool hasBegun() const { return result_.valid(); }
    /// After begin: serves the run loop until both files are complete.
    void wait();

    /// After begin: blocks until both files are complete.
    RecordedLengths lengths() const;
    QString problem() const; ///< as text for the user; empty when both files hold the recorded lengths

private:
    QString difference(const RecordedLengths& lengths) const;

    const RecordedStreams streams_;
    RunLoop& runLoop_;
    std::shared_future<MovieWriter::Result> result_; ///< valid after begin
    QString soundProblem_;
};

} // namespace lumavex
