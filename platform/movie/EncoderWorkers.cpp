// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/movie/EncoderWorkers.h"

#include "platform/movie/JpegEncoder.h"

#include <algorithm>

namespace lumavex {

namespace {

// Beyond this the pixel buffers that wait would take memory for no gain: eight cores encode 4K at 60 frames a second.
constexpr unsigned int kMostWorkers = 8;
// Encoded frames are small; this many ride out a disk that stands still for a second or two.
constexpr std::size_t kSlots = 64;

unsigned int workerCount()
{
    return std::clamp(std::thread::hardware_concurrency(), 1U, kMostWorkers);
}

} // namespace

EncoderWorkers::EncoderWorkers() : mostUnencoded_(2 * std::size_t{workerCount()} + 2), ring_(kSlots)
{
    spare_.reserve(kSlots);
    for (unsigned int i = 0; i < workerCount(); ++i)
        workers_.emplace_back([this] { work(); });
}

EncoderWorkers::~EncoderWorkers()
{
    close(Rest::Discard);
}

bool EncoderWorkers::isReadyLocked() const
{
    return unencoded_ < mostUnencoded_ && put_ - taken_ < ring_.size();
}

bool EncoderWorkers::isReady() const
{
    const std::lock_guard lock(mutex_);
    return isReadyLocked();
}

EncoderWorkers::Slot& EncoderWorkers::put(std::int64_t start)
{
    Slot& slot = ring_[put_ % ring_.size()];
    ++put_;
    slot.frame.start = start;
    slot.frame.failed = false;
    return slot;
}

bool EncoderWorkers::encode(CVPixelBufferRef pixels, std::int64_t start)
{
    {
        const std::lock_guard lock(mutex_);
        if (closed_ || !isReadyLocked())
            return false;
        Slot& slot = put(start);
        slot.pixels = std::move(pixels);
        slot.done = false;
        ++unencoded_;
        wasFull_ = !isReadyLocked();
    }
    toEncode_.notify_one();
    return true;
}

bool EncoderWorkers::repeat(std::int64_t start)
{
    {
        const std::lock_guard lock(mutex_);
        if (closed_ || !isReadyLocked())
            return false;
        put(start).done = true;
        wasFull_ = !isReadyLocked();
    }
    toTake_.notify_one();
    return true;
}

void EncoderWorkers::close(Rest rest)
{
    {
        const std::lock_guard lock(mutex_);
        closed_ = true;
        discarded_ = discarded_ || rest == Rest::Discard;
    }
    toEncode_.notify_all();
    toTake_.notify_all();
}

EncoderWorkers::Slot* EncoderWorkers::nextToEncode()
{
    // Repetitions wake no encoder. What was taken meanwhile must be passed over: its slots belong to later frames by
    // now, and one of those would be found a second time under its own number.
    claimed_ = std::max(claimed_, taken_);
    while (!discarded_ && claimed_ < put_) {
        Slot& slot = ring_[claimed_++ % ring_.size()];
        if (!slot.done)
            return &slot;
    }
    return nullptr;
}

void EncoderWorkers::work()
{
    JpegEncoder encoder;
    std::unique_lock lock(mutex_);
    for (;;) {
        Slot* slot = nullptr;
        toEncode_.wait(lock, [&] {
            slot = nextToEncode();
            return slot || closed_;
        });
        if (!slot)
            return;
        CVPixelBufferRef pixels = std::move(slot->pixels);
        std::unique_ptr<JpegBuffer> jpeg;
        if (!spare_.empty()) {
            jpeg = std::move(spare_.back());
            spare_.pop_back();
        }
        lock.unlock();

        if (!jpeg)
            jpeg = std::make_unique<JpegBuffer>();
        const bool encoded = encoder.encode(*pixels, *jpeg);
        pixels.reset();

        lock.lock();
        slot->frame.jpeg = std::move(jpeg);
        slot->frame.failed = !encoded;
        slot->done = true;
        --unencoded_;
        toTake_.notify_one();
        notifyIfBecameReady(lock);
    }
}

void EncoderWorkers::notifyIfBecameReady(std::unique_lock<std::mutex>& lock)
{
    if (!wasFull_ || !isReadyLocked())
        return;
    wasFull_ = false;
    lock.unlock();
    {
        const std::lock_guard observing(observerMutex_);
        if (observer_)
            observer_();
    }
    lock.lock();
}

void EncoderWorkers::observeReadiness(std::function<void()> becameReady)
{
    const std::lock_guard observing(observerMutex_);
    observer_ = std::move(becameReady);
}

EncoderWorkers::Taken EncoderWorkers::take(Frame& frame, std::chrono::steady_clock::time_point deadline)
{
    std::unique_lock lock(mutex_);
    const auto somethingToTell = [this] {
        return discarded_ || (taken_ < put_ ? ring_[taken_ % ring_.size()].done : closed_);
    };
    if (!toTake_.wait_until(lock, deadline, somethingToTell))
        return Taken::TimedOut;
    if (discarded_ || taken_ == put_)
        return Taken::NoMore;
    frame = std::move(ring_[taken_ % ring_.size()].frame);
    ++taken_;
    notifyIfBecameReady(lock);
    return Taken::Frame;
}

void EncoderWorkers::giveBack(std::unique_ptr<JpegBuffer> jpeg)
{
    if (!jpeg)
        return;
    const std::lock_guard lock(mutex_);
    if (spare_.size() < kSlots)
        spare_.push_back(std::move(jpeg));
}

} // namespace lumavex
