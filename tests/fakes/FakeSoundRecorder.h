// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/SoundRecorder.h"

#include <QStringList>

#include <memory>
#include <vector>

namespace lumavex {

/// What became of the recorders a test's factory made, in order. Main thread.
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
        Nanoseconds recorded{0}; ///< the sum of the recorded times: the length the file would have
        bool isRecording = false;
        bool isStopped = false;
        SoundPeaks peaks;                    ///< what takePeaks takes
        SoundRecorder::EventHandler onEvent; ///< call it to tell something; emptied with its recorder
    };

    std::vector<std::shared_ptr<Recording>> recordings;
    QString stopError; ///< what the next stops return
};

/// Makes recorders that write no file and hear nothing, and note what they are told in `sound`, which they share.
SoundRecorderFactory fakeSoundRecorderFactory(std::shared_ptr<FakeSound> sound);

} // namespace lumavex
