// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/RunLoop.h"

#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace lumavex {

/// The timers of a run loop and the order in which they are due. Independent of event loop and clock, so that the real
/// run loop and the tests' one obey the same rules (see RunLoop). One thread.
class DeadlineQueue {
public:
    enum class Repeat { Forever, Once };

    TimerId add(TimerInterval interval, RunLoopMode mode, Repeat repeat, Nanoseconds now, RunLoop::Callback callback);
    void remove(TimerId timer);
    void setNextDeadline(TimerId timer, Nanoseconds deadline);
    void restart(TimerId timer, Nanoseconds origin);
    /// Zero for a timer that no longer exists.
    Nanoseconds nextDeadline(TimerId timer) const;

    /// The earliest deadline of the timers that may fire: all, or with Common only the common ones.
    std::optional<Nanoseconds> earliest(RunLoopMode mode) const;

    /// Runs the first timer whose deadline is not after `until`, and skips deadlines that a Default timer missed up to
    /// `now`. False when there is none. The callback may add, remove and move timers and run the queue itself.
    bool runNext(Nanoseconds until, Nanoseconds now, RunLoopMode mode);
    /// The same for the given timers only.
    bool runNext(std::span<const TimerId> timers, Nanoseconds until, Nanoseconds now);

private:
    struct Timer {
        TimerId id;
        TimerInterval interval;
        RunLoopMode mode;
        Repeat repeat;
        std::uint64_t started; ///< order in which timers were added, moved or restarted
        Nanoseconds base;      ///< deadline number k is base + k intervals, so that rounding errors do not add up
        std::int64_t k;
        std::shared_ptr<RunLoop::Callback> callback;

        Nanoseconds deadline() const;
    };

    Timer* find(TimerId timer);
    const Timer* find(TimerId timer) const;
    /// The first of the timers for which `may` is true.
    template <class Condition>
    const Timer* first(const Condition& may) const;
    bool run(const Timer* next, Nanoseconds until, Nanoseconds now);

    std::vector<Timer> timers_;
    TimerId lastId_ = 0;
    std::uint64_t starts_ = 0;
};

} // namespace lumavex
