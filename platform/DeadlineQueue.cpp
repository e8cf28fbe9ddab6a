// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/DeadlineQueue.h"

#include <algorithm>
#include <tuple>
#include <utility>

namespace lumavex {

Nanoseconds DeadlineQueue::Timer::deadline() const
{
    // Whole rounds of `parts` intervals first, so that nothing overflows in any lifetime of the program.
    constexpr std::int64_t billion = 1'000'000'000;
    const std::int64_t rounds = k / interval.parts;
    const std::int64_t rest = k % interval.parts;
    return base + Nanoseconds(rounds * interval.seconds * billion + rest * interval.seconds * billion / interval.parts);
}

TimerId DeadlineQueue::add(TimerInterval interval, RunLoopMode mode, TimerOrder order, Repeat repeat, Nanoseconds now,
                           RunLoop::Callback callback)
{
    timers_.push_back(
        {++lastId_, interval, mode, order, repeat, now, 1, std::make_shared<RunLoop::Callback>(std::move(callback))});
    return lastId_;
}

void DeadlineQueue::remove(TimerId timer)
{
    std::erase_if(timers_, [timer](const Timer& t) { return t.id == timer; });
}

void DeadlineQueue::setNextDeadline(TimerId timer, Nanoseconds deadline)
{
    if (Timer* found = find(timer)) {
        found->base = deadline;
        found->k = 0;
    }
}

void DeadlineQueue::restart(TimerId timer, Nanoseconds origin)
{
    if (Timer* found = find(timer)) {
        found->base = origin;
        found->k = 1;
    }
}

Nanoseconds DeadlineQueue::nextDeadline(TimerId timer) const
{
    const Timer* found = find(timer);
    return found ? found->deadline() : Nanoseconds{0};
}

std::optional<Nanoseconds> DeadlineQueue::earliest(RunLoopMode mode) const
{
    const Timer* next = first(mode);
    return next ? std::optional(next->deadline()) : std::nullopt;
}

bool DeadlineQueue::runNext(Nanoseconds until, Nanoseconds now, RunLoopMode mode)
{
    const Timer* next = first(mode);
    if (!next || next->deadline() > until)
        return false;

    TimerFiring firing{next->deadline(), false};
    const auto callback = next->callback; // outlives the timer, should the callback remove it
    if (next->repeat == Repeat::Once) {
        remove(next->id);
    } else {
        Timer& timer = timers_[static_cast<std::size_t>(next - timers_.data())];
        ++timer.k;
        firing.overtaken = timer.deadline() <= now;
        while (timer.mode == RunLoopMode::Default && timer.deadline() <= now)
            ++timer.k;
    }
    (*callback)(firing);
    return true;
}

DeadlineQueue::Timer* DeadlineQueue::find(TimerId timer)
{
    const auto it = std::ranges::find(timers_, timer, &Timer::id);
    return it == timers_.end() ? nullptr : &*it;
}

const DeadlineQueue::Timer* DeadlineQueue::find(TimerId timer) const
{
    const auto it = std::ranges::find(timers_, timer, &Timer::id);
    return it == timers_.end() ? nullptr : &*it;
}

const DeadlineQueue::Timer* DeadlineQueue::first(RunLoopMode mode) const
{
    const Timer* best = nullptr;
    for (const Timer& timer : timers_) {
        if (mode == RunLoopMode::Common && timer.mode == RunLoopMode::Default)
            continue;
        if (!best
            || std::tuple(timer.deadline(), timer.order, timer.id)
                   < std::tuple(best->deadline(), best->order, best->id))
            best = &timer;
    }
    return best;
}

} // namespace lumavex
