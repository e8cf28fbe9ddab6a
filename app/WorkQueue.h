// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>

namespace lumavex {

/// A thread that runs one task after the other, in the order added. It starts with the first task.
class WorkQueue {
public:
    WorkQueue() = default;
    /// Waits for the running task and the queued ones.
    ~WorkQueue();
    WorkQueue(const WorkQueue&) = delete;
    WorkQueue& operator=(const WorkQueue&) = delete;

    /// Any thread. The queue's thread destroys the task.
    void add(std::function<void()> work);
    /// Returns when all tasks added before are done. Any thread but the queue's.
    void wait();

private:
    void run();

    std::mutex mutex_; ///< guards the members below
    std::condition_variable changed_;
    std::deque<std::function<void()>> waiting_;
    bool working_ = false;
    bool ending_ = false;
    std::thread thread_;
};

} // namespace lumavex
