// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Clock.h"

#include <cstdint>
#include <deque>
#include <optional>
#include <vector>

namespace lumavex {

/// Tells when sound was heard, on the monotonic clock, from two witnesses of which neither can be trusted alone:
///
/// - The device's clock as the sound server reports it knows all latencies and does not jitter. But some servers
///   report a clock that runs away by percents from the sound they deliver, and the first readings are off.
/// - The times of arrival cannot run away, but are late by an unknown latency and, on a busy machine, by much more.
///   The earliest arrival of the last six seconds, relative to the stream, is free of the latter, also when the process
///   stood still for some seconds and all that was heard meanwhile arrives at once.
///
/// So the first readings of the device's clock tell where the stream begins. The latency is what arrivals are later
/// than that in the first three seconds; from then on the arrivals less the latency tell the time. Pure, one thread.
class CaptureClock {
public:
    /// For a chunk that ends at `streamEnd` in the stream's time and arrived at `now`, when the device's clock said
    /// `deviceNow` in the stream's time: the monotonic time at which the stream's time was zero.
    Nanoseconds streamOrigin(Nanoseconds now, Nanoseconds streamEnd, Nanoseconds deviceNow);

private:
    struct Arrival {
        Nanoseconds at;
        Nanoseconds origin;
    };
    Nanoseconds earliestOrigin(Nanoseconds now, Nanoseconds origin);

    std::deque<Arrival> arrivals_;      ///< of the last six seconds, those that may become the earliest; origins grow
    std::vector<Nanoseconds> readings_; ///< the first origins by the device's clock, sorted
    std::optional<Nanoseconds> begun_;
    Nanoseconds latency_{0};
};

} // namespace lumavex
