// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/DeadlineQueue.h"

#include <algorithm>
#include <tuple>
#include <utility>

namespace lumavex {

namespace {

auto firesIn(RunLoopMode mode)
{
    return [mode](const auto& timer) { return mode == RunLoopMode::Default || timer.mode == RunLoopMode::Common; };
}

} // namespace

Nanoseconds DeadlineQueue::Timer::deadline() const
{
    // Counts whole rounds of `parts` intervals first, so that nothing overflows in any lifetime of the program.
    constexpr std::int64_t billion = 1'000'000'000;
    const std::int64_t rounds = k / interval.parts;
    const std::int64_t rest = k % interval.parts;
    return base + Nanoseconds(rounds * interval.seconds * billion + rest * interval.seconds * billion / interval.parts);
}

TimerId DeadlineQueue::add(TimerInterval interval, RunLoopMode mode, Repeat repeat, Nanoseconds now,
                           RunLoop::Callback callback)
{
    timers_.push_back({++lastId_, interval, mode, repeat, ++starts_, now, 1,
                       std::make_shared<RunLoop::Callback>(std::move(callback))});
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
        found->started = ++starts_;
    }
}

void DeadlineQueue::restart(TimerId timer, Nanoseconds origin)
{
    if (Timer* found = find(timer)) {
        found->base = origin;
        found->k = 1;
        found->started = ++starts_;
    }
}

Nanoseconds DeadlineQueue::nextDeadline(TimerId timer) const
{
    const Timer* found = find(timer);
    return found ? found->deadline() : Nanoseconds{0};
}

template <class Condition>
const DeadlineQueue::Timer* DeadlineQueue::first(const Condition& may) const
{
    const auto place = [](const Timer& timer) {
        return std::tuple(timer.deadline(), timer.repeat != Repeat::Once, timer.started);
    };
    const Timer* best = nullptr;
    for (const Timer& timer : timers_)
        if (may(timer) && (!best || place(timer) < place(*best)))
            best = &timer;
    return best;
}

std::optional<Nanoseconds> DeadlineQueue::earliest(RunLoopMode mode) const
{
    const Timer* next = first(firesIn(mode));
    return next ? std::optional(next->deadline()) : std::nullopt;
}

bool DeadlineQueue::runNext(Nanoseconds until, Nanoseconds now, RunLoopMode mode)
{
    return run(first(firesIn(mode)), until, now);
}

bool DeadlineQueue::runNext(std::span<const TimerId> timers, Nanoseconds until, Nanoseconds now)
{
    return run(first([timers](const Timer& timer) { return std::ranges::find(timers, timer.id) != timers.end(); }),
               until, now);
}

bool DeadlineQueue::run(const Timer* next, Nanoseconds until, Nanoseconds now)
{
    if (!next || next->deadline() > until)
        return false;

    const TimerFiring firing{next->deadline()};
    const auto callback = next->callback; // outlives the timer if the callback removes it
    if (next->repeat == Repeat::Once) {
        remove(next->id);
    } else {
        Timer& timer = timers_[static_cast<std::size_t>(next - timers_.data())];
        ++timer.k;
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

} // namespace lumavex
