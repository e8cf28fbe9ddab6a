// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Clock.h"

#include <cstdint>
#include <span>

namespace lumavex {

/// The recorder's only format: linear PCM of signed 16-bit samples, left and right interleaved, 44100 Hz.
inline constexpr std::int64_t kSoundRate = 44100;
inline constexpr std::size_t kSoundChannels = 2;
inline constexpr std::size_t kBytesPerSoundFrame = kSoundChannels * sizeof(std::int16_t);

enum class SoundContinuity {
    Follows,  ///< begins where the previous chunk ended
    AfterGap, ///< the first chunk, or sound was lost before it
};

/// A chunk of sound as the device delivers it.
struct SoundChunk {
    Nanoseconds capturedAt{0}; ///< time at which its first frame was heard; may jitter from chunk to chunk
    std::span<const std::int16_t> samples{}; ///< interleaved; valid during the call it is passed to
    SoundContinuity continuity = SoundContinuity::Follows;
};

} // namespace lumavex
