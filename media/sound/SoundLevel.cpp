// SPDX-License-Identifier: GPL-3.0-or-later
#include "media/sound/SoundLevel.h"

#include <algorithm>
#include <cstdlib>

namespace lumavex {

void SoundLevel::add(std::span<const std::int16_t> samples)
{
    std::array<int, kSoundChannels> loudest{};
    for (std::size_t i = 0; i + kSoundChannels <= samples.size(); i += kSoundChannels) {
        for (std::size_t channel = 0; channel < kSoundChannels; ++channel)
            loudest[channel] = std::max(loudest[channel], std::abs(int{samples[i + channel]}));
    }
    if (*std::ranges::max_element(loudest) > kSilence)
        silentFrames_ = 0;
    else
        silentFrames_ += static_cast<std::int64_t>(samples.size() / kSoundChannels);

    for (std::size_t channel = 0; channel < kSoundChannels; ++channel) {
        std::atomic<int>& peak = peaks_[channel];
        int known = peak.load(std::memory_order_relaxed);
        while (known < loudest[channel]
               && !peak.compare_exchange_weak(known, loudest[channel], std::memory_order_relaxed)) {
        }
    }
}

SoundPeaks SoundLevel::take()
{
    const auto taken = [](std::atomic<int>& peak) {
        return static_cast<float>(peak.exchange(0, std::memory_order_relaxed)) / 32768.0F;
    };
    return {taken(peaks_[0]), taken(peaks_[1])};
}

} // namespace lumavex
