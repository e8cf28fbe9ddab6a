// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Clock.h"

#include <cstdint>
#include <deque>
#include <optional>
#include <vector>

namespace lumavex {

/// Determines when sound was heard, on the monotonic clock, from two sources of which neither is reliable alone:
///
/// - The device's clock as the sound server reports it includes all latencies and does not jitter. But some servers
///   report a clock that drifts by percents from the sound they deliver, and the first readings are inaccurate.
/// - The times of arrival cannot drift, but are late by an unknown latency and, on a busy machine, by much more. The
///   earliest arrival of the last six seconds, relative to the stream, is free of the latter, even when the process
///   stood still for some seconds and all sound of that time arrives at once.
///
/// So the first readings of the device's clock determine the start of the stream. The latency is the delay of arrivals
/// behind it during the first three seconds; after that the arrivals minus the latency give the time. Pure, one thread.
class CaptureClock {
public:
    /// Returns the monotonic time at which the stream's time was zero, for a chunk that ends at `streamEnd` (stream
    /// time) and arrived at `now`, when the device's clock showed `deviceNow` (stream time).
    Nanoseconds streamOrigin(Nanoseconds now, Nanoseconds streamEnd, Nanoseconds deviceNow);

private:
    struct Arrival {
        Nanoseconds at;
        Nanoseconds origin;
    };
    Nanoseconds earliestOrigin(Nanoseconds now, Nanoseconds origin);

    std::deque<Arrival> arrivals_;      ///< candidates for the earliest of the last six seconds; origins increase
    std::vector<Nanoseconds> readings_; ///< the first origins according to the device's clock, sorted
    std::optional<Nanoseconds> begun_;
    Nanoseconds latency_{0};
};

} // namespace lumavex
