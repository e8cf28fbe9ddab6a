// SPDX-License-Identifier: GPL-3.0-or-later
#include "movie/EncoderWorkers.h"

#include "movie/JpegEncoder.h"

#include <algorithm>

namespace lumavex {

namespace {

// More workers would only let more pixel buffers wait: eight cores encode 4K at 60 frames a second.
constexpr unsigned int kMostWorkers = 8;
// Encoded frames are small; this many bridge a disk stall of a second or two.
constexpr std::size_t kSlots = 64;
// As many again wait to be written, and a frame may consist of several strips.
constexpr std::size_t kMostSpare = 3 * kSlots;
// The workers share larger pictures, such as 4K; joining strips costs a copy.
constexpr int kMostStripPixels = 4 << 20;

unsigned int workerCount()
{
    return std::clamp(std::thread::hardware_concurrency(), 1U, kMostWorkers);
}

// Splits a run into strips of similar height.
void cutIntoStrips(MacroblockRows run, int mostRows, std::vector<JpegStrip>& strips)
{
    for (int left = (run.count - 1) / mostRows + 1; left > 0; --left) {
        const int count = run.count / left;
        strips.push_back({{run.first, count}, nullptr});
        run = {run.first + count, run.count - count};
    }
}

} // namespace

EncoderWorkers::EncoderWorkers() : mostUnencoded_(2 * std::size_t{workerCount()} + 2), ring_(kSlots)
{
    spare_.reserve(kMostSpare);
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

std::size_t EncoderWorkers::queued() const
{
    const std::lock_guard lock(mutex_);
    return static_cast<std::size_t>(put_ - taken_);
}

EncoderWorkers::Slot& EncoderWorkers::put(std::int64_t start)
{
    Slot& slot = ring_[put_ % ring_.size()];
    ++put_;
    slot.frame.start = start;
    slot.frame.strips.clear();
    slot.frame.failed = false;
    slot.begun = 0;
    slot.unencoded = 0;
    return slot;
}

bool EncoderWorkers::encode(CVPixelBufferRef pixels, std::span<const MacroblockRows> runs, std::int64_t start)
{
    const int mostRows = std::max(kMostStripPixels / (kMacroblockHeight * pixels->width), 1);
    std::size_t strips = 0;
    {
        const std::lock_guard lock(mutex_);
        if (closed_ || !isReadyLocked())
            return false;
        Slot& slot = put(start);
        for (const MacroblockRows run : runs)
            cutIntoStrips(run, mostRows, slot.frame.strips);
        strips = slot.frame.strips.size();
        slot.unencoded = strips;
        slot.pixels = std::move(pixels);
        ++unencoded_;
        wasFull_ = !isReadyLocked();
    }
    if (strips == 1)
        toEncode_.notify_one();
    else
        toEncode_.notify_all();
    return true;
}

bool EncoderWorkers::repeat(std::int64_t start)
{
    {
        const std::lock_guard lock(mutex_);
        if (closed_ || !isReadyLocked())
            return false;
        put(start);
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
    if (discarded_)
        return nullptr;
    // take() may already have removed repetitions and put() refilled their slots.
    for (claimed_ = std::max(claimed_, taken_); claimed_ < put_; ++claimed_) {
        Slot& slot = ring_[claimed_ % ring_.size()];
        if (slot.begun < slot.frame.strips.size())
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
        encodeStrip(encoder, *slot, lock);
    }
}

void EncoderWorkers::encodeStrip(JpegEncoder& encoder, Slot& slot, std::unique_lock<std::mutex>& lock)
{
    JpegStrip& strip = slot.frame.strips[slot.begun++];
    const bool isLast = slot.begun == slot.frame.strips.size();
    CVPixelBufferRef pixels = isLast ? std::move(slot.pixels) : slot.pixels;
    std::unique_ptr<JpegRows> jpeg = spareLocked();
    lock.unlock();

    const bool encoded = encoder.encode(*pixels, strip.rows, *jpeg);
    pixels.reset();

    lock.lock();
    strip.jpeg = std::move(jpeg);
    slot.frame.failed = slot.frame.failed || !encoded;
    if (--slot.unencoded > 0)
        return;
    --unencoded_;
    toTake_.notify_one();
    notifyIfBecameReady(lock);
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
    const auto hasResult = [this] {
        return discarded_ || (taken_ < put_ ? ring_[taken_ % ring_.size()].unencoded == 0 : closed_);
    };
    if (!toTake_.wait_until(lock, deadline, hasResult))
        return Taken::TimedOut;
    if (discarded_ || taken_ == put_)
        return Taken::NoMore;
    std::swap(frame, ring_[taken_ % ring_.size()].frame);
    ++taken_;
    notifyIfBecameReady(lock);
    return Taken::Frame;
}

std::unique_ptr<JpegRows> EncoderWorkers::spareLocked()
{
    if (spare_.empty())
        return std::make_unique<JpegRows>();
    std::unique_ptr<JpegRows> jpeg = std::move(spare_.back());
    spare_.pop_back();
    return jpeg;
}

std::unique_ptr<JpegRows> EncoderWorkers::spare()
{
    const std::lock_guard lock(mutex_);
    return spareLocked();
}

void EncoderWorkers::giveBack(std::unique_ptr<JpegRows> jpeg)
{
    if (!jpeg)
        return;
    const std::lock_guard lock(mutex_);
    if (spare_.size() < kMostSpare)
        spare_.push_back(std::move(jpeg));
}

} // namespace lumavex
