// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Clock.h"

#include <QString>

#include <functional>
#include <memory>

namespace lumavex {

/// Events in the sound of a recording that are reported to the user.
enum class SoundEvent {
    Lost,   ///< no sound (any more); the recording continues with silence in its place
    Back,   ///< sound is back, at its correct time
    Silent, ///< sound arrives, but ten seconds of the recording had none louder than -90 dB of full scale
    Muted,  ///< the same, and the sound server reports that the input is muted
    Heard,  ///< after Silent or Muted: there is sound
};

/// The loudest samples of both channels, 0 to 1 (full scale).
struct SoundPeaks {
    float left = 0;
    float right = 0;
};

/// Records the system's current sound input to a WAV file: linear PCM, 16 bits, 44100 Hz, 2 channels.
///
/// The file contains exactly the sound of the times between record and pause or stop, which the caller gives on the
/// monotonic clock: its first sample is the one heard at the first record's time, whenever the device really started,
/// and its length is the sum of the recorded times. Missing sound (no device yet, no server, a gap) becomes silence. A
/// lost input is searched for once a second as long as the recording lasts; when the system changes the current input,
/// the new one is recorded. Call on the main thread. The file's header is updated at least once a second, so that a
/// killed program leaves a readable file.
class SoundRecorder {
public:
    /// Called on the main thread, from its event loop. Lost comes first and then alternates with Back; Silent or Muted
    /// comes at most once per recording, and Heard once after it. `detail` is the reason for Lost, as text for the
    /// user, and the name of the input for Silent and Muted, empty when the system does not report it. A file that
    /// cannot be written is Lost for good.
    using EventHandler = std::function<void(SoundEvent event, const QString& detail)>;

    virtual ~SoundRecorder() = default;

    /// Starts, or continues after a pause, with the sound heard from `from` on. Returns at once.
    virtual void record(Nanoseconds from) = 0;
    /// Excludes the sound heard from `at` on.
    virtual void pause(Nanoseconds at) = 0;
    /// Ends the recording with the sound heard up to `at` (ignored while paused) and closes the file. Waits for sound
    /// still on its way, at most half a second. Empty, or the reason why the file is incomplete.
    virtual QString stop(Nanoseconds at) = 0;

    /// The peaks since the last call, paused or not. Does not wait.
    virtual SoundPeaks takePeaks() = 0;
};

/// Makes a recorder for a new file (an existing one is replaced, mode 0600). Never null; the event handler and stop
/// report a path that cannot be written.
using SoundRecorderFactory =
    std::function<std::unique_ptr<SoundRecorder>(const QString& path, SoundRecorder::EventHandler onEvent)>;

} // namespace lumavex
