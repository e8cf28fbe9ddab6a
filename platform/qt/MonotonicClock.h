// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Clock.h"

namespace lumavex {

/// CLOCK_MONOTONIC, which std::chrono::steady_clock reads on Linux.
class MonotonicClock final : public Clock {
public:
    Nanoseconds now() const override { return std::chrono::steady_clock::now().time_since_epoch(); }
};

} // namespace lumavex
