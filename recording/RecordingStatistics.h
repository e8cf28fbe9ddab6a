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
    double time = 0; ///< the movie's length so far, in seconds
    FrameCounts frames;
    MovieWriterStatistics movie;
    ProcessorTime processor;
    std::optional<double>
        skew; ///< seconds by which the next frame's time is ahead of the sound's; nothing when there is none
};

/// One line of JSON, without the line's end: what was counted between the two moments, and how it stands at `now`.
QByteArray statisticsLine(const RecordingStatistics& before, const RecordingStatistics& now);

/// The file that is told once a second what a recording does. One that nobody reads, be it a FIFO or a terminal, never
/// holds up the recording: a line for which there is no room is left out, and the next one tells of its time too. Main
/// thread.
class StatisticsFile {
public:
    /// Creates the file or empties it. Empty, or why it cannot be written, in the user's words.
    QString open(const QString& path);
    bool isOpen() const { return writer_ != nullptr; }
    /// What the next line is to count from.
    void begin(const RecordingStatistics& now);
    enum class Line {
        Ordinary,
        Last, ///< of a recording: there is room for it, and it is waited for, a second at most
    };
    /// Appends a line. After a failure, which a later call may be the first to tell, the file is closed; empty, or why.
    QString append(const RecordingStatistics& now, Line line);

private:
    QString problem(int error) const;

    QString path_;
    std::unique_ptr<LineWriter> writer_; ///< null when no file is open
    RecordingStatistics before_;
    Nanoseconds untoldLateness_{0}; ///< of the lines left out
};

} // namespace lumavex
