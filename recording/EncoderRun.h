// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/ChildProcess.h"
#include "platform/RunLoop.h"

#include <QString>
#include <QStringList>

#include <cstdint>
#include <functional>

namespace lumavex {

/// Joining one movie and one sound file by stream copy.
struct EncoderJob {
    QString sffmpegPath; ///< empty when there is no encoder
    QString s_Video_File_Source;
    QString s_Sound_File_Source;
    QString s_AV_File_Source;                     ///< must not exist: the encoder does not overwrite
    std::uint64_t i_Orig_Duration_in_Seconds = 0; ///< what the progress is measured by
};

QStringList encoderArguments(const EncoderJob& job);

/// Runs the encoder and returns when it has ended; meanwhile the run loop serves the default mode. `progress` gets
/// percentages between 0 and 100 as the encoder reports. Empty when the joined file is there, else what went wrong, in
/// the user's words, with the encoder's own last lines. Main thread.
QString runEncoder(const EncoderJob& job, const ChildProcessFactory& createChildProcess, RunLoop& runLoop,
                   const std::function<void(float percentage)>& progress);

/// The last lines a program wrote to its standard error, without progress reports and empty lines.
QString lastLines(const QByteArray& standardError);

} // namespace lumavex
