// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Clock.h"

namespace lumavex {

/// The two steps of a frame, each run by its own timer. Both timers have the same deadlines.
enum class FrameStep {
    Grab, ///< the screen is read
    View, ///< the grab is composed, shown and appended
};

/// Decides once per deadline, for both steps, if its frame comes too late for a picture of its own.
class FrameTick {
public:
    /// A frame is late when the next one, `interval` later, is due before this one begins: the next picture is newer.
    /// The duration of a frame that has begun never makes it late, so everything that was grabbed is composed.
    bool isLate(Nanoseconds deadline, Nanoseconds interval, Nanoseconds now)
    {
        if (deadline != deadline_) {
            deadline_ = deadline;
            late_ = deadline + interval <= now;
        }
        return late_;
    }

private:
    Nanoseconds deadline_{-1}; ///< the latest that was decided
    bool late_ = false;
};

} // namespace lumavex
