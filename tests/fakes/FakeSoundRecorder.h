// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/SoundRecorder.h"

#include <QStringList>

#include <memory>
#include <vector>

namespace lumavex {

/// State of the recorders that a test's factory made, in order. Main thread.
struct FakeSound {
    struct Call {
        enum class Kind { Record, Pause, Stop };
        Kind kind;
        Nanoseconds time;
        bool operator==(const Call&) const = default;
    };
    struct Recording {
        QString path;
        std::vector<Call> calls;
        Nanoseconds recorded{0}; ///< sum of the recorded times: the length that the file would have
        bool isRecording = false;
        bool isStopped = false;
        SoundPeaks peaks;                    ///< result of takePeaks
        SoundRecorder::EventHandler onEvent; ///< call it to report an event; cleared with its recorder
    };

    std::vector<std::shared_ptr<Recording>> recordings;
    QString stopError; ///< result of the next stops
};

/// Makes recorders that write no file and record no sound; they log their calls in `sound`, which they share.
SoundRecorderFactory fakeSoundRecorderFactory(std::shared_ptr<FakeSound> sound);

} // namespace lumavex
