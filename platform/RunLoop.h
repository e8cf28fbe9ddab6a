// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Clock.h"

#include <cstdint>
#include <functional>
#include <span>

namespace lumavex {

/// Default: fires only while no modal window and no menu is open. Common: always fires.
enum class RunLoopMode { Default, Common };

/// Seconds as a fraction, so that the k-th deadline of a timer is exact and rounding errors do not add up: 1/30 s is
/// {1, 30}.
struct TimerInterval {
    std::int64_t seconds = 1;
    std::int64_t parts = 1;
};

struct TimerFiring {
    Nanoseconds deadline; ///< time at which the call was due
};

using TimerId = std::uint64_t; ///< 0 is no timer

/// Repeating and one-shot timers with absolute deadlines on the monotonic clock. Main thread only, but for wake.
///
/// Due timers run strictly in the order of their deadlines. At equal deadlines one-shot timers come first, so that a
/// recording that ends at an instant does not include the frame of that instant, which would last beyond it; the others
/// follow in the order in which they were last created, moved or restarted.
/// Missed deadlines of a Common timer are not merged: they run late, each once. A Default timer that could not fire
/// runs once when its mode returns, and keeps its phase.
class RunLoop {
public:
    using Callback = std::function<void(const TimerFiring&)>;

    virtual ~RunLoop() = default;

    /// Adds a repeating timer; its first deadline is one interval from now.
    virtual TimerId scheduleRepeating(TimerInterval interval, RunLoopMode mode, Callback callback) = 0;
    /// Adds a timer that fires once, in any mode, and then no longer exists.
    virtual TimerId scheduleOnce(TimerInterval delay, Callback callback) = 0;
    /// Removes the timer; does nothing for 0 or an unknown timer. Allowed inside the timer's own callback.
    virtual void invalidate(TimerId timer) = 0;

    /// Makes `deadline` the timer's next deadline; later ones follow at its interval. Missed ones are dropped.
    virtual void setNextDeadline(TimerId timer, Nanoseconds deadline) = 0;
    /// Restarts a repeating timer's count: its deadlines are exactly one, two, three intervals after `origin`.
    virtual void restart(TimerId timer, Nanoseconds origin) = 0;
    /// The timer's next deadline; zero for an unknown timer.
    virtual Nanoseconds nextDeadline(TimerId timer) const = 0;

    /// Runs at once those of the timers whose deadline is not after `until`, in their order, without returning to the
    /// event loop. No other timer runs.
    virtual void runDue(std::span<const TimerId> timers, Nanoseconds until) = 0;

    /// Processes events and timers of the default mode until `done` returns true. It is called after every event.
    virtual void runUntil(const std::function<bool()>& done) = 0;
    /// Makes runUntil ask `done` again, which another thread has changed. Any thread.
    virtual void wake() = 0;

    virtual Nanoseconds now() const = 0;
};

} // namespace lumavex
