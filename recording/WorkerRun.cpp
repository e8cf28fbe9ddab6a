// SPDX-License-Identifier: GPL-3.0-or-later
#include "recording/WorkerRun.h"

#include <atomic>
#include <thread>

namespace lumavex {

void runOnWorker(RunLoop& runLoop, const std::function<void()>& work)
{
    std::atomic<bool> done = false;
    std::thread worker([&] {
        work();
        done = true;
        runLoop.wake();
    });
    runLoop.runUntil([&done] { return done.load(); });
    worker.join();
}

} // namespace lumavex
