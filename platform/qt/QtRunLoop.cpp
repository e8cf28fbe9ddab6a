// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/qt/QtRunLoop.h"

#include <QApplication>
#include <QEventLoop>

#include <algorithm>
#include <utility>

namespace lumavex {

using std::chrono::milliseconds;

QtRunLoop::QtRunLoop(const Clock& clock) : clock_(clock)
{
    timer_.setTimerType(Qt::PreciseTimer);
    timer_.setSingleShot(true);
    QObject::connect(&timer_, &QTimer::timeout, &timer_, [this] { fire(); });
}

TimerId QtRunLoop::scheduleRepeating(TimerInterval interval, RunLoopMode mode, Callback callback)
{
    const TimerId id = queue_.add(interval, mode, DeadlineQueue::Repeat::Forever, clock_.now(), std::move(callback));
    arm();
    return id;
}

TimerId QtRunLoop::scheduleOnce(TimerInterval delay, Callback callback)
{
    const TimerId id =
        queue_.add(delay, RunLoopMode::Common, DeadlineQueue::Repeat::Once, clock_.now(), std::move(callback));
    arm();
    return id;
}

void QtRunLoop::invalidate(TimerId timer)
{
    queue_.remove(timer);
}

void QtRunLoop::setNextDeadline(TimerId timer, Nanoseconds deadline)
{
    queue_.setNextDeadline(timer, deadline);
    arm();
}

void QtRunLoop::restart(TimerId timer, Nanoseconds origin)
{
    queue_.restart(timer, origin);
    arm();
}

void QtRunLoop::runDue(std::span<const TimerId> timers, Nanoseconds until)
{
    while (queue_.runNext(timers, until, clock_.now())) {
    }
    arm();
}

void QtRunLoop::runUntil(const std::function<bool()>& done)
{
    ++defaultModeRuns_;
    arm();
    QEventLoop loop;
    while (!done())
        loop.processEvents(QEventLoop::WaitForMoreEvents);
    --defaultModeRuns_;
}

void QtRunLoop::wake()
{
    QMetaObject::invokeMethod(
        &timer_, [] {}, Qt::QueuedConnection);
}

RunLoopMode QtRunLoop::mode() const
{
    const bool tracking = QApplication::activePopupWidget() != nullptr;
    const bool modal = QApplication::activeModalWidget() != nullptr && defaultModeRuns_ == 0;
    return tracking || modal ? RunLoopMode::Common : RunLoopMode::Default;
}

void QtRunLoop::arm()
{
    // A Default timer that must not fire now is checked again when the next Common one fires; if none is left, a slow
    // check suffices.
    const auto deadline = queue_.earliest(mode());
    if (!deadline) {
        timer_.start(milliseconds(200));
        return;
    }
    const auto wait = std::chrono::ceil<milliseconds>(*deadline - clock_.now());
    timer_.start(std::clamp(wait, milliseconds(0), milliseconds(1000)));
}

void QtRunLoop::fire()
{
    // Only timers due on entry: a loop that cannot keep up still processes other events in between.
    const Nanoseconds until = clock_.now();
    arm(); // a callback may run its own event loop, in which the timers continue
    while (queue_.runNext(until, clock_.now(), mode())) {
    }
    arm();
}

} // namespace lumavex
