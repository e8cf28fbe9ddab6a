// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Clock.h"

#include <cstdint>
#include <functional>
#include <span>

namespace lumavex {

/// Default: fires only while no modal window and no menu is open. Common: fires always.
enum class RunLoopMode { Default, Common };

/// Seconds as a fraction, so that the k-th deadline of a timer is exact and no rounding adds up: 1/30 s is {1, 30}.
struct TimerInterval {
    std::int64_t seconds = 1;
    std::int64_t parts = 1;
};

struct TimerFiring {
    Nanoseconds deadline; ///< when the call was due
};

using TimerId = std::uint64_t; ///< 0 names no timer

/// Repeating and one-shot timers with absolute deadlines on the monotonic clock. Main thread only.
///
/// Due timers run strictly in the order of their deadlines. At equal deadlines one-shot timers come first, so that a
/// recording told to end at an instant does not take the frame of that instant, which would last beyond it; the others
/// follow in the order in which they were created, moved or restarted last.
/// A Common timer's missed deadlines are not merged: they run late, each once. A Default timer that could not fire runs
/// once when its mode comes back and keeps its phase.
class RunLoop {
public:
    using Callback = std::function<void(const TimerFiring&)>;

    virtual ~RunLoop() = default;

    /// A repeating timer; its first deadline is one interval from now.
    virtual TimerId scheduleRepeating(TimerInterval interval, RunLoopMode mode, Callback callback) = 0;
    /// A timer that fires once, in any mode, and is then gone.
    virtual TimerId scheduleOnce(TimerInterval delay, Callback callback) = 0;
    /// Forgets the timer; nothing happens for 0 or a timer that is gone. Allowed inside the timer's own callback.
    virtual void invalidate(TimerId timer) = 0;

    /// Makes `deadline` the timer's next deadline; later ones follow at its interval. Missed ones are dropped.
    virtual void setNextDeadline(TimerId timer, Nanoseconds deadline) = 0;
    /// Starts a repeating timer's count anew: its deadlines are one, two, three intervals after `origin`, exactly.
    virtual void restart(TimerId timer, Nanoseconds origin) = 0;
    /// The timer's next deadline; zero for a timer that is gone.
    virtual Nanoseconds nextDeadline(TimerId timer) const = 0;

    /// Runs at once those of the timers whose deadline is not after `until`, in their order, without returning to the
    /// event loop. No other timer runs.
    virtual void runDue(std::span<const TimerId> timers, Nanoseconds until) = 0;

    /// Serves events and timers of the default mode until `done` answers true. `done` is asked after every event.
    virtual void runUntil(const std::function<bool()>& done) = 0;

    virtual Nanoseconds now() const = 0;
};

} // namespace lumavex
