// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>

namespace lumavex {

/// A time or a duration on the monotonic clock (CLOCK_MONOTONIC, which stops while the machine is suspended).
using Nanoseconds = std::chrono::nanoseconds;

/// The time on that clock. Any thread.
inline Nanoseconds monotonicNow()
{
    return std::chrono::steady_clock::now().time_since_epoch(); // CLOCK_MONOTONIC
}

/// The monotonic clock; abstract so that tests can set the time. Any thread.
class Clock {
public:
    virtual ~Clock() = default;
    virtual Nanoseconds now() const = 0;
};

} // namespace lumavex
