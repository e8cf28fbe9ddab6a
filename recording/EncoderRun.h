// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/ChildProcess.h"
#include "platform/RunLoop.h"

#include <QString>
#include <QStringList>

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>

namespace lumavex {

/// Joins one movie and one sound file by stream copy.
struct EncoderJob {
    QString sffmpegPath; ///< path of the encoder; empty when there is none
    QString s_Video_File_Source;
    QString s_Sound_File_Source;
    QString s_AV_File_Source;                     ///< path of the joined file
    std::uint64_t i_Orig_Duration_in_Seconds = 0; ///< reference length of the progress
};

/// The work to which an encoder's reports refer.
enum EncoderProgressType : std::uint64_t { JoiningProgress = 0 };

/// The meaning of an encoder's reports, and its end. Main thread.
struct EncoderState {
    std::uint64_t u_Type_Progress = JoiningProgress; ///< an EncoderProgressType; only joining reports its progress
    bool terminated = false;                         ///< true when the encoder has ended, which ends the wait for it
};

/// Observers of a running encoder. Each function may be empty.
struct EncoderWatch {
    std::function<void(float percentage)> progress; ///< receives percentages between 0 and 100 from the encoder's
                                                    ///< reports
    std::function<bool()> isCancelled;              ///< called after every event; true ends the encoder
    /// Longest time without growth of the joined file before the encoder is ended; std::nullopt: unlimited, since a
    /// user can cancel it.
    std::optional<std::chrono::seconds> patience;
};

/// One run of the encoder.
struct EncoderCall {
    QString sffmpegPath; ///< path of the encoder; empty when there is none
    QStringList arguments;
    QString written;           ///< file that must exist afterwards and whose growth shows progress; empty: none
    std::uint64_t seconds = 0; ///< reference length of the progress
};

QStringList encoderArguments(const EncoderJob& job);

/// Runs the encoder and returns when it has ended; meanwhile the run loop serves the default mode. First removes any
/// file or link at the joined file's path. Returns an empty text when the joined file exists, otherwise the error as
/// text for the user, with the encoder's last output lines. `state` must be new. Main thread.
QString runEncoder(const EncoderJob& job, EncoderState& state, const ChildProcessFactory& createChildProcess,
                   RunLoop& runLoop, const EncoderWatch& watch);

/// Like the function above, for any use of the encoder; removes nothing first. `standardOutput` receives the encoder's
/// standard output; null: the output is discarded.
QString runEncoder(const EncoderCall& call, EncoderState& state, const ChildProcessFactory& createChildProcess,
                   RunLoop& runLoop, const EncoderWatch& watch, QByteArray* standardOutput = nullptr);

/// Joins in a program without a running event loop: blocks for at most ten minutes and does not report progress.
QString joinWithoutEvents(const EncoderJob& job);

/// The last lines that a program wrote to its standard error, without progress reports and empty lines, ready for
/// display: shortened to a readable length, unprintable characters replaced by spaces.
QString lastLines(const QByteArray& standardError);

} // namespace lumavex
