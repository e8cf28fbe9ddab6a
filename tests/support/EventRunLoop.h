// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/RunLoop.h"

#include <QCoreApplication>

#include <gtest/gtest.h>

namespace lumavex {

/// Serves the application's events until a condition is true; for code that needs no run loop timers.
class EventRunLoop : public RunLoop {
public:
    TimerId scheduleRepeating(TimerInterval, RunLoopMode, Callback) override { return unexpected(); }
    TimerId scheduleOnce(TimerInterval, Callback) override { return unexpected(); }
    void invalidate(TimerId) override {}
    void setNextDeadline(TimerId, Nanoseconds) override {}
    void restart(TimerId, Nanoseconds) override {}
    Nanoseconds nextDeadline(TimerId) const override { return {}; }
    void runDue(std::span<const TimerId>, Nanoseconds) override {}
    void runUntil(const std::function<bool()>& done) override
    {
        while (!done())
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    void wake() override { QCoreApplication::postEvent(QCoreApplication::instance(), new QEvent(QEvent::User)); }
    Nanoseconds now() const override { return {}; }

private:
    static TimerId unexpected()
    {
        ADD_FAILURE() << "no timer was expected here";
        return 0;
    }
};

} // namespace lumavex
