// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/LineWriter.h"

#include <cerrno>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <poll.h>
#include <pthread.h>
#include <string_view>
#include <thread>
#include <unistd.h>
#include <utility>

namespace lumavex {

namespace {

constexpr std::size_t kMostQueuedBytes = 64 * 1024;

std::error_code writeAll(int file, std::string_view text)
{
    while (!text.empty()) {
        const ssize_t written = ::write(file, text.data(), text.size());
        if (written >= 0) {
            text.remove_prefix(static_cast<std::size_t>(written));
        } else if (errno == EAGAIN) { // another program that shares the file has made it non-blocking
            pollfd room{file, POLLOUT, 0};
            ::poll(&room, 1, -1);
        } else if (errno != EINTR) {
            return lastError();
        }
    }
    return {};
}

} // namespace

struct LineWriter::Shared {
    std::function<FileDescriptor()> open; ///< used only by the thread, once it runs
    std::mutex mutex;                     ///< guards the members below
    std::condition_variable changed;
    std::deque<std::string> waiting;
    std::size_t bytes = 0; ///< queued or being written
    std::error_code error;
    bool started = false;
    bool ending = false;
};

LineWriter::LineWriter(std::function<FileDescriptor()> open) : shared_(std::make_shared<Shared>())
{
    shared_->open = std::move(open);
}

LineWriter::LineWriter(FileDescriptor file)
    : LineWriter([kept = std::make_shared<FileDescriptor>(std::move(file))] { return std::move(*kept); })
{
}

LineWriter::~LineWriter()
{
    const std::lock_guard lock(shared_->mutex);
    shared_->ending = true;
    shared_->changed.notify_all();
}

bool LineWriter::add(std::string text, Room room)
{
    const std::lock_guard lock(shared_->mutex);
    if (room == Room::Bounded && shared_->bytes > kMostQueuedBytes)
        return false;
    shared_->bytes += text.size();
    shared_->waiting.push_back(std::move(text));
    if (!std::exchange(shared_->started, true))
        std::thread([shared = shared_] { run(shared); }).detach();
    shared_->changed.notify_all();
    return true;
}

bool LineWriter::isIdle() const
{
    const std::lock_guard lock(shared_->mutex);
    return shared_->bytes == 0;
}

bool LineWriter::waitUntilIdle(std::chrono::milliseconds patience) const
{
    std::unique_lock lock(shared_->mutex);
    return shared_->changed.wait_for(lock, patience, [this] { return shared_->bytes == 0; });
}

std::error_code LineWriter::error() const
{
    const std::lock_guard lock(shared_->mutex);
    return shared_->error;
}

void LineWriter::run(const std::shared_ptr<Shared>& shared)
{
    pthread_setname_np(pthread_self(), "lineWriter");
    const FileDescriptor file = shared->open();
    const std::error_code opening = file.isOpen() ? std::error_code() : lastError();
    std::unique_lock lock(shared->mutex);
    while (!shared->ending) {
        if (shared->waiting.empty()) {
            shared->changed.wait(lock);
            continue;
        }
        const std::string text = std::move(shared->waiting.front());
        shared->waiting.pop_front();
        lock.unlock();
        const std::error_code error = opening ? opening : writeAll(file.get(), text);
        lock.lock();
        shared->bytes -= text.size();
        if (error)
            shared->error = error;
        shared->changed.notify_all();
    }
}

} // namespace lumavex
