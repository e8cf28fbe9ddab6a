// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "media/sound/SoundFormat.h"
#include "platform/SoundRecorder.h"

#include <array>
#include <atomic>

namespace lumavex {

/// Peak level of the sound that a device delivers, and the duration of its silence. The sound's thread adds, any other
/// thread takes; neither ever waits for the other.
class SoundLevel {
public:
    /// Louder samples than this are sound: 1 of 32768 is -90 dB of full scale, the noise of rounding.
    static constexpr int kSilence = 1;

    void add(std::span<const std::int16_t> samples); ///< interleaved
    /// Restarts the count of silent frames; on the thread that adds.
    void restartSilence() { silentFrames_ = 0; }

    /// The peaks since the last call.
    SoundPeaks take();
    /// Silent frames at the end of the added sound; on the thread that adds.
    std::int64_t silentFrames() const { return silentFrames_; }

private:
    std::array<std::atomic<int>, kSoundChannels> peaks_{};
    std::int64_t silentFrames_ = 0;
};

} // namespace lumavex
