// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "media/sound/SoundFormat.h"
#include "platform/SoundRecorder.h"

#include <array>
#include <atomic>

namespace lumavex {

/// How loud the sound is that a device delivers, and for how long it has been silent. The sound's thread adds, any
/// other takes; neither ever waits for the other.
class SoundLevel {
public:
    /// Louder samples than this are sound; so many of 32768 are -90 dB of full scale, the noise of rounding.
    static constexpr int kSilence = 1;

    void add(std::span<const std::int16_t> samples); ///< interleaved
    /// Forgets the silence so far; on the thread that adds.
    void restartSilence() { silentFrames_ = 0; }

    /// The peaks since the last call.
    SoundPeaks take();
    /// Frames of silence at the end of what was added; on the thread that adds.
    std::int64_t silentFrames() const { return silentFrames_; }

private:
    std::array<std::atomic<int>, kSoundChannels> peaks_{};
    std::int64_t silentFrames_ = 0;
};

} // namespace lumavex
