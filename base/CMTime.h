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

/// The exact sum, in the least common multiple of both timescales. Where that multiple passes 2^31 - 1, the sum is
/// rounded to the nearest tick of timescale 2^31 - 1 and carries
/// kCMTimeFlags_HasBeenRounded. A rounded summand makes the sum rounded. Not valid are a sum with a time that is not
/// valid, one of times of two epochs other than 0 (a span of time has epoch 0), and one whose value passes 64 bits.
CMTime CMTimeAdd(CMTime a, CMTime b);

/// The exact difference a - b, under the rules of CMTimeAdd.
CMTime CMTimeSubtract(CMTime a, CMTime b);

/// -1, 0 or 1, compared exactly: epochs first. A time that is not valid comes after every valid one.
int CMTimeCompare(CMTime a, CMTime b);

/// The time in ticks of another timescale, rounded half away from zero, held within 64 bits. 0 when the time is not
/// valid or the timescale not positive.
std::int64_t CMTimeConvertScale(CMTime time, std::int32_t timescale);

/// Not a number when the time is not valid.
double CMTimeGetSeconds(CMTime time);

} // namespace lumavex
