// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Clock.h"

#include <QString>

#include <functional>
#include <memory>

namespace lumavex {

/// Records the system's current sound input into a WAV file: linear PCM, 16 bits, 44100 Hz, 2 channels.
///
/// The file holds exactly the sound of the times between record and pause or stop, told on the monotonic clock by
/// the caller: its first sample is the one heard at the first record's time, whenever the device really began, and
/// its length is the sum of the recorded times. What could not be heard (no device yet, no server, a gap) is silence.
/// Calls on the main thread. The file's header is kept up to date at least once a second, so that a killed program
/// leaves a readable file.
class SoundRecorder {
public:
    /// Called on the main thread, at most once a recording, when the sound cannot be heard (any more); the text says
    /// why in the user's words. The recording goes on with silence.
    using TroubleHandler = std::function<void(const QString& reason)>;

    virtual ~SoundRecorder() = default;

    /// Starts, or after a pause continues, with the sound heard from `from` on. Returns at once.
    virtual void record(Nanoseconds from) = 0;
    /// Leaves out the sound heard from `at` on.
    virtual void pause(Nanoseconds at) = 0;
    /// Ends the recording with the sound heard up to `at` (ignored while paused) and closes the file.
    /// Waits for sound still on its way, at most half a second. Empty, or why the file is not complete.
    virtual QString stop(Nanoseconds at) = 0;
};

/// Makes a recorder for a new file (an existing one is replaced, mode 0600). Never null; a path that cannot be
/// written is reported by the trouble handler and by stop.
using SoundRecorderFactory =
    std::function<std::unique_ptr<SoundRecorder>(const QString& path, SoundRecorder::TroubleHandler onTrouble)>;

} // namespace lumavex
