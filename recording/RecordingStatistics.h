// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/MovieWriter.h"
#include "recording/FrameCounts.h"

#include <QFile>

#include <cstdint>
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

/// The file that is told once a second what a recording does. Main thread.
class StatisticsFile {
public:
    /// Creates the file or empties it. Empty, or why it cannot be written, in the user's words.
    QString open(const QString& path);
    bool isOpen() const { return file_.isOpen(); }
    /// What the next line is to count from.
    void begin(const RecordingStatistics& now) { before_ = now; }
    /// Appends a line, which is in the file at once. After a failure the file is closed; empty, or why.
    QString append(const RecordingStatistics& now);

private:
    QString problem() const;

    QFile file_;
    RecordingStatistics before_;
};

} // namespace lumavex
