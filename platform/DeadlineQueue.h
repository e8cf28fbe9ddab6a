// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/RunLoop.h"

#include <memory>
#include <optional>
#include <vector>

namespace lumavex {

/// The timers of a run loop and the order in which they are due. Knows no event loop and reads no clock, so that the
/// real run loop and the tests' one obey the same rules (stated at RunLoop). One thread.
class DeadlineQueue {
public:
    enum class Repeat { Forever, Once };

    TimerId add(TimerInterval interval, RunLoopMode mode, TimerOrder order, Repeat repeat, Nanoseconds now,
                RunLoop::Callback callback);
    void remove(TimerId timer);
    void setNextDeadline(TimerId timer, Nanoseconds deadline);
    void restart(TimerId timer, Nanoseconds origin);
    /// Zero for a timer that is gone.
    Nanoseconds nextDeadline(TimerId timer) const;

    /// The earliest deadline of the timers that may fire: all of them, or with Common only the common ones.
    std::optional<Nanoseconds> earliest(RunLoopMode mode) const;

    /// Runs the first timer whose deadline is not after `until`, `now` telling whether it is overtaken; false when
    /// there is none. The callback may add, remove and move timers and run the queue itself.
    bool runNext(Nanoseconds until, Nanoseconds now, RunLoopMode mode);

private:
    struct Timer {
        TimerId id;
        TimerInterval interval;
        RunLoopMode mode;
        TimerOrder order;
        Repeat repeat;
        Nanoseconds base; ///< deadline number k is base + k intervals, without adding up roundings
        std::int64_t k;
        std::shared_ptr<RunLoop::Callback> callback;

        Nanoseconds deadline() const;
    };

    Timer* find(TimerId timer);
    const Timer* find(TimerId timer) const;
    const Timer* first(RunLoopMode mode) const;

    std::vector<Timer> timers_;
    TimerId lastId_ = 0;
};

} // namespace lumavex
