// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>

namespace lumavex {

/// A time on, or a span of, the monotonic clock (CLOCK_MONOTONIC: it stands still while the machine is suspended).
using Nanoseconds = std::chrono::nanoseconds;

/// The monotonic clock, abstract so that tests can turn its hands. Any thread.
class Clock {
public:
    virtual ~Clock() = default;
    virtual Nanoseconds now() const = 0;
};

} // namespace lumavex
