// SPDX-License-Identifier: GPL-3.0-or-later
#include "recording/WorkerRun.h"

#include <QCoreApplication>

#include <atomic>
#include <thread>

namespace lumavex {

void runOnWorker(RunLoop& runLoop, const std::function<void()>& work)
{
    std::atomic<bool> done = false;
    std::thread worker([&work, &done] {
        work();
        done = true;
        // The run loop looks at `done` after every event; this is that event.
        QMetaObject::invokeMethod(
            QCoreApplication::instance(), [] {}, Qt::QueuedConnection);
    });
    runLoop.runUntil([&done] { return done.load(); });
    worker.join();
}

} // namespace lumavex
