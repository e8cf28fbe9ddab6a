// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Clock.h"

#include <QString>

#include <functional>
#include <memory>

namespace lumavex {

/// What the user should know about the sound of a recording.
enum class SoundEvent {
    Lost,   ///< it cannot be heard (any more); the recording goes on with silence in its place
    Back,   ///< it is heard again, and stands where it belongs
    Silent, ///< it is heard, but ten seconds of the recording had no sound louder than -90 dB of full scale
    Muted,  ///< the same, and the sound server says that the input is muted
    Heard,  ///< after Silent or Muted: there is sound
};

/// The loudest samples of both channels, 0 to 1 (full scale).
struct SoundPeaks {
    float left = 0;
    float right = 0;
};

/// Records the system's current sound input into a WAV file: linear PCM, 16 bits, 44100 Hz, 2 channels.
///
/// The file holds exactly the sound of the times between record and pause or stop, told on the monotonic clock by
/// the caller: its first sample is the one heard at the first record's time, whenever the device really began, and
/// its length is the sum of the recorded times. What could not be heard (no device yet, no server, a gap) is silence.
/// An input that was lost is looked for again, once a second, as long as the recording lasts; when the system makes
/// another input the current one, that is heard. Calls on the main thread. The file's header is kept up to date at
/// least once a second, so that a killed program leaves a readable file.
class SoundRecorder {
public:
    /// Called on the main thread, from its event loop. Lost comes first and then takes turns with Back; Silent or Muted
    /// comes once a recording at most, and Heard once after it. `detail` says of Lost why, in the user's words; of
    /// Silent and Muted which input it is, empty when the system does not tell. A file that cannot be written is Lost
    /// for good.
    using EventHandler = std::function<void(SoundEvent event, const QString& detail)>;

    virtual ~SoundRecorder() = default;

    /// Starts, or after a pause continues, with the sound heard from `from` on. Returns at once.
    virtual void record(Nanoseconds from) = 0;
    /// Leaves out the sound heard from `at` on.
    virtual void pause(Nanoseconds at) = 0;
    /// Ends the recording with the sound heard up to `at` (ignored while paused) and closes the file.
    /// Waits for sound still on its way, at most half a second. Empty, or why the file is not complete.
    virtual QString stop(Nanoseconds at) = 0;

    /// What was heard since the last call, paused or not. Waits for nothing.
    virtual SoundPeaks takePeaks() = 0;
};

/// Makes a recorder for a new file (an existing one is replaced, mode 0600). Never null; a path that cannot be
/// written is reported by the event handler and by stop.
using SoundRecorderFactory =
    std::function<std::unique_ptr<SoundRecorder>(const QString& path, SoundRecorder::EventHandler onEvent)>;

} // namespace lumavex
