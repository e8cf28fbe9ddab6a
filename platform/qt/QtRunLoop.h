// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/DeadlineQueue.h"

#include <QTimer>

namespace lumavex {

/// The run loop on Qt's event loop: one precise timer is set to the earliest deadline.
class QtRunLoop final : public RunLoop {
public:
    /// The clock must outlive the run loop.
    explicit QtRunLoop(const Clock& clock);

    TimerId scheduleRepeating(TimerInterval interval, RunLoopMode mode, Callback callback) override;
    TimerId scheduleOnce(TimerInterval delay, Callback callback) override;
    void invalidate(TimerId timer) override;
    void setNextDeadline(TimerId timer, Nanoseconds deadline) override;
    void restart(TimerId timer, Nanoseconds origin) override;
    Nanoseconds nextDeadline(TimerId timer) const override { return queue_.nextDeadline(timer); }
    void runDue(std::span<const TimerId> timers, Nanoseconds until) override;
    void runUntil(const std::function<bool()>& done) override;
    void wake() override;
    Nanoseconds now() const override { return clock_.now(); }

private:
    RunLoopMode mode() const;
    void arm();
    void fire();

    const Clock& clock_;
    DeadlineQueue queue_;
    QTimer timer_;
    int defaultModeRuns_ = 0; ///< number of active runUntil calls: they run the default mode even beneath a sheet
};

} // namespace lumavex
