// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Clock.h"
#include "base/LineWriter.h"
#include "platform/MovieWriter.h"
#include "recording/FrameCounts.h"

#include <QString>

#include <cstdint>
#include <memory>
#include <optional>

namespace lumavex {

/// Processor time of the whole process, all threads, in seconds.
struct ProcessorTime {
    double user = 0;
    double system = 0;
};
ProcessorTime processorTimeOfProcess();

/// The state of a recording at one moment; counts are since Record.
struct RecordingStatistics {
    double time = 0; ///< length of the movie so far, in seconds
    FrameCounts frames;
    MovieWriterStatistics movie;
    ProcessorTime processor;
    std::optional<double>
        skew; ///< seconds by which the next frame's time is ahead of the sound's; std::nullopt without sound
};

/// One line of JSON without line end: the counts between the two moments, and the state at `now`.
QByteArray statisticsLine(const RecordingStatistics& before, const RecordingStatistics& now);

/// The file that receives the statistics once a second. A FIFO or terminal that nobody reads never blocks the
/// recording: a line that does not fit is dropped, and the next line covers its time too. Main thread.
class StatisticsFile {
public:
    /// Creates or empties the file. Returns an empty text, or the reason for a failure as text for the user.
    QString open(const QString& path);
    bool isOpen() const { return writer_ != nullptr; }
    /// Sets the start of the next line's counts.
    void begin(const RecordingStatistics& now);
    enum class Line {
        Ordinary,
        Last, ///< last line of a recording: always fits; waits for it for at most a second
    };
    /// Appends a line. After a failure, which may be reported only by a later call, the file is closed. Returns an
    /// empty text, or the reason.
    QString append(const RecordingStatistics& now, Line line);

private:
    QString problem(int error) const;

    QString path_;
    std::unique_ptr<LineWriter> writer_; ///< null when no file is open
    RecordingStatistics before_;
    Nanoseconds untoldLateness_{0}; ///< of the dropped lines
};

} // namespace lumavex
