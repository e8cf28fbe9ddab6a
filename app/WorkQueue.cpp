// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/WorkQueue.h"

#include <pthread.h>
#include <utility>

namespace lumavex {

WorkQueue::~WorkQueue()
{
    {
        const std::lock_guard lock(mutex_);
        ending_ = true;
        changed_.notify_all();
    }
    if (thread_.joinable())
        thread_.join();
}

void WorkQueue::add(std::function<void()> work)
{
    const std::lock_guard lock(mutex_);
    waiting_.push_back(std::move(work));
    if (!thread_.joinable())
        thread_ = std::thread([this] { run(); });
    changed_.notify_all();
}

void WorkQueue::wait()
{
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return waiting_.empty() && !working_; });
}

void WorkQueue::run()
{
    pthread_setname_np(pthread_self(), "workQueue");
    std::unique_lock lock(mutex_);
    for (;;) {
        changed_.wait(lock, [this] { return ending_ || !waiting_.empty(); });
        if (waiting_.empty())
            return;
        working_ = true;
        auto work = std::exchange(waiting_.front(), {});
        waiting_.pop_front();
        lock.unlock();
        work();
        work = {}; // destroys its captures before reporting it done
        lock.lock();
        working_ = false;
        changed_.notify_all();
    }
}

} // namespace lumavex
