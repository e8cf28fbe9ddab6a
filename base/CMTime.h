// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

namespace lumavex {

enum CMTimeFlags : std::uint32_t {
    kCMTimeFlags_Valid = 1U << 0,
    kCMTimeFlags_HasBeenRounded = 1U << 1,
};

/// A rational time: value / timescale seconds. A plain value, usable from any thread.
struct CMTime {
    std::int64_t value = 0;
    std::int32_t timescale = 1;
    std::uint32_t flags = 0;
    std::int64_t epoch = 0;
};

/// A valid time of value / timescale seconds; timescale must be positive, else the result is not valid (flags 0).
CMTime CMTimeMake(std::int64_t value, std::int32_t timescale);

/// The exact sum, in the least common multiple of both timescales. If that multiple exceeds 2^31 - 1, the sum is
/// rounded to the nearest tick of timescale 2^31 - 1 and carries kCMTimeFlags_HasBeenRounded. The sum of a rounded time
/// is rounded, too. The sum is not valid if a time is not valid, if the epochs differ and neither is 0 (a duration has
/// epoch 0), or if the value exceeds 64 bits.
CMTime CMTimeAdd(CMTime a, CMTime b);

/// The exact difference a - b, under the rules of CMTimeAdd.
CMTime CMTimeSubtract(CMTime a, CMTime b);

/// Returns -1, 0 or 1. The comparison is exact and compares epochs first. A time that is not valid sorts after all
/// valid ones.
int CMTimeCompare(CMTime a, CMTime b);

/// The time in ticks of another timescale, rounded half away from zero and clamped to 64 bits. 0 if the time is not
/// valid or the timescale is not positive.
std::int64_t CMTimeConvertScale(CMTime time, std::int32_t timescale);

/// NaN if the time is not valid.
double CMTimeGetSeconds(CMTime time);

} // namespace lumavex
