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

/// Joining one movie and one sound file by stream copy.
struct EncoderJob {
    QString sffmpegPath; ///< empty when there is no encoder
    QString s_Video_File_Source;
    QString s_Sound_File_Source;
    QString s_AV_File_Source;                     ///< where the joined file goes
    std::uint64_t i_Orig_Duration_in_Seconds = 0; ///< what the progress is measured by
};

/// The work that an encoder's reports are about.
enum EncoderProgressType : std::uint64_t { JoiningProgress = 0 };

/// What an encoder's reports are taken for, and whether it has ended. Main thread.
struct EncoderState {
    std::uint64_t u_Type_Progress = JoiningProgress; ///< an EncoderProgressType; only joining reports its progress
    bool terminated = false;                         ///< the encoder has ended, which ends the wait for it
};

/// How an encoder at work is watched. Each function may be empty.
struct EncoderWatch {
    std::function<void(float percentage)> progress; ///< gets percentages between 0 and 100 as the encoder reports
    std::function<bool()> isCancelled;              ///< asked after every event; true ends the encoder
    /// The longest that the joined file may go without growing before the encoder is ended; nothing: for ever, since
    /// somebody is there to cancel it.
    std::optional<std::chrono::seconds> patience;
};

/// One run of the encoder.
struct EncoderCall {
    QString sffmpegPath; ///< empty when there is no encoder
    QStringList arguments;
    QString written;           ///< the file that must be there afterwards, by whose growth work is told; empty: none
    std::uint64_t seconds = 0; ///< what the progress is measured by
};

QStringList encoderArguments(const EncoderJob& job);

/// Runs the encoder and returns when it has ended; meanwhile the run loop serves the default mode. Whatever lies in the
/// joined file's place is removed first, a link too. Empty when the joined file is there, else what went wrong, in the
/// user's words, with the encoder's own last lines. `state` is a fresh one. Main thread.
QString runEncoder(const EncoderJob& job, EncoderState& state, const ChildProcessFactory& createChildProcess,
                   RunLoop& runLoop, const EncoderWatch& watch);

/// The same for any use of the encoder; nothing is removed before. `standardOutput` receives what the encoder writes
/// there; null: nobody wants it.
QString runEncoder(const EncoderCall& call, EncoderState& state, const ChildProcessFactory& createChildProcess,
                   RunLoop& runLoop, const EncoderWatch& watch, QByteArray* standardOutput = nullptr);

/// Joins for a program that has no event loop any more: blocks, ten minutes at most, and does not tell the progress.
QString joinWithoutEvents(const EncoderJob& job);

/// The last lines a program wrote to its standard error, without progress reports and empty lines, fit to be shown:
/// cut to a readable length, what cannot be printed as spaces.
QString lastLines(const QByteArray& standardError);

} // namespace lumavex
