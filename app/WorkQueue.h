// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>

namespace lumavex {

/// A thread that does one piece of work after the other, in the order they were given. It begins with the first.
class WorkQueue {
public:
    WorkQueue() = default;
    /// Waits for the piece that is being done and those that wait.
    ~WorkQueue();
    WorkQueue(const WorkQueue&) = delete;
    WorkQueue& operator=(const WorkQueue&) = delete;

    /// Any thread. The work is destroyed by the queue's thread.
    void add(std::function<void()> work);
    /// Returns when all that was given has been done. Any thread but the queue's.
    void wait();

private:
    void run();

    std::mutex mutex_; ///< guards what follows
    std::condition_variable changed_;
    std::deque<std::function<void()>> waiting_;
    bool working_ = false;
    bool ending_ = false;
    std::thread thread_;
};

} // namespace lumavex
