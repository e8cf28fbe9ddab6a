// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/DeadlineQueue.h"

#include <QCoreApplication>

#include <chrono>
#include <thread>

namespace lumavex {

/// A clock whose time the test sets.
class FakeClock final : public Clock {
public:
    Nanoseconds now() const override { return time; }
    Nanoseconds time{1'000'000'000};
};

/// A run loop that runs only when the test advances it.
class FakeRunLoop final : public RunLoop {
public:
    explicit FakeRunLoop(FakeClock& clock) : clock_(clock) {}

    TimerId scheduleRepeating(TimerInterval interval, RunLoopMode timerMode, Callback callback) override
    {
        return queue_.add(interval, timerMode, DeadlineQueue::Repeat::Forever, clock_.time, std::move(callback));
    }
    TimerId scheduleOnce(TimerInterval delay, Callback callback) override
    {
        return queue_.add(delay, RunLoopMode::Common, DeadlineQueue::Repeat::Once, clock_.time, std::move(callback));
    }
    void invalidate(TimerId timer) override { queue_.remove(timer); }
    void setNextDeadline(TimerId timer, Nanoseconds deadline) override { queue_.setNextDeadline(timer, deadline); }
    void restart(TimerId timer, Nanoseconds origin) override { queue_.restart(timer, origin); }
    Nanoseconds nextDeadline(TimerId timer) const override { return queue_.nextDeadline(timer); }
    void runDue(std::span<const TimerId> timers, Nanoseconds until) override
    {
        while (queue_.runNext(timers, until, clock_.time)) {
        }
    }
    /// At first this clock runs no faster than the real one, so that waiting for real threads does not seem to take
    /// long; later it runs as fast as possible, for tests in which a thread hangs.
    void runUntil(const std::function<bool()>& done) override
    {
        for (int turn = 0; !done(); ++turn) {
            QCoreApplication::processEvents(); // reports of other threads
            if (turn < kRealTurns && !done())
                std::this_thread::sleep_for(kTurn);
            advance(kTurn);
        }
    }
    void wake() override {} // runUntil polls anyway
    Nanoseconds now() const override { return clock_.time; }

    /// Lets time pass; each timer fires at its deadline.
    void advance(Nanoseconds span)
    {
        const Nanoseconds end = clock_.time + span;
        for (auto next = queue_.earliest(mode); next && *next <= end; next = queue_.earliest(mode)) {
            clock_.time = std::max(clock_.time, *next);
            queue_.runNext(clock_.time, clock_.time, mode);
        }
        clock_.time = std::max(clock_.time, end);
    }
    /// Lets time pass while the main thread is busy, then runs the overdue timers.
    void stall(Nanoseconds span)
    {
        clock_.time += span;
        while (queue_.runNext(clock_.time, clock_.time, mode)) {
        }
    }

    RunLoopMode mode = RunLoopMode::Default;

private:
    static constexpr std::chrono::milliseconds kTurn{1};
    static constexpr int kRealTurns = 200;

    FakeClock& clock_;
    DeadlineQueue queue_;
};

} // namespace lumavex
