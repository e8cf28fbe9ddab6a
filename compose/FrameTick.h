// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Clock.h"

namespace lumavex {

/// The two steps of a frame, each taken by a timer of its own. Both timers have the same deadlines.
enum class FrameStep {
    Grab, ///< the screen is read
    View, ///< what was read is composed, shown and appended
};

/// Decides once for each deadline, for both steps, whether its frame comes too late for a picture of its own.
class FrameTick {
public:
    /// A frame is late when the next one, `interval` later, is due before this one was begun: the next picture is the
    /// newer one. How long a frame takes once it was begun never makes it late, so whatever was grabbed is composed.
    bool isLate(Nanoseconds deadline, Nanoseconds interval, Nanoseconds now)
    {
        if (deadline != deadline_) {
            deadline_ = deadline;
            late_ = deadline + interval <= now;
        }
        return late_;
    }

private:
    Nanoseconds deadline_{-1}; ///< the latest that was decided about
    bool late_ = false;
};

} // namespace lumavex
