// SPDX-License-Identifier: GPL-3.0-or-later
#include "movie/FragmentQueue.h"

#include <algorithm>

namespace lumavex {

namespace {

constexpr std::chrono::seconds kLongestWait{1};
constexpr std::size_t kMostBytes = std::size_t{48} << 20;

} // namespace

std::error_code FragmentQueue::add(std::int64_t start, std::unique_ptr<JpegRows> jpeg, TimePoint now)
{
    if (samples_.empty())
        oldest_ = now;
    else
        lastDuration_ = start - samples_.back().start;
    if (jpeg) {
        if (samples_.empty() && !pictures_.empty()) {
            giveBack_(std::move(pictures_.back()));
            pictures_.clear();
            pictureBytes_ = 0;
        }
        pictureBytes_ += jpeg->bytes().size();
        pictures_.push_back(std::move(jpeg));
    }
    samples_.push_back({start, pictures_.size() - 1});
    // Less than kLongestWait (one second), so that a steady recording never has to guess a duration.
    const std::int64_t fragmentTicks = timescale_ * 3 / 4;
    if (samples_.size() > 1 && (start - samples_.front().start >= fragmentTicks || pictureBytes_ >= kMostBytes)) {
        const auto error = write(samples_.size() - 1, start);
        oldest_ = now;
        return error;
    }
    return {};
}

FragmentQueue::TimePoint FragmentQueue::deadline() const
{
    return samples_.empty() ? TimePoint::max() : oldest_ + kLongestWait;
}

std::error_code FragmentQueue::writeAll()
{
    return samples_.empty() ? std::error_code{} : writeAll(samples_.back().start + lastDuration_);
}

std::error_code FragmentQueue::writeAll(std::int64_t end)
{
    if (samples_.empty())
        return {};
    const std::int64_t start = samples_.back().start;
    return write(samples_.size(), std::clamp(end, start + 1, start + kLongestSample));
}

std::error_code FragmentQueue::write(std::size_t count, std::int64_t end)
{
    const std::size_t pictureCount = samples_[count - 1].picture + 1;
    parts_.clear();
    for (std::size_t i = 0; i < pictureCount; ++i)
        parts_.push_back(pictures_[i]->bytes());
    const auto error = file_.appendFragment(std::span(samples_).first(count), end, parts_);
    forgetWritten(count);
    return error;
}

// Keeps the newest picture even if it is written: the next frame may repeat it.
void FragmentQueue::forgetWritten(std::size_t count)
{
    const std::size_t kept = count < samples_.size() ? samples_[count].picture : pictures_.size() - 1;
    samples_.erase(samples_.begin(), samples_.begin() + static_cast<std::ptrdiff_t>(count));
    for (FragmentSample& sample : samples_)
        sample.picture -= kept;
    for (std::size_t i = 0; i < kept; ++i)
        giveBack_(std::move(pictures_[i]));
    pictures_.erase(pictures_.begin(), pictures_.begin() + static_cast<std::ptrdiff_t>(kept));
    pictureBytes_ = 0;
    for (const auto& picture : pictures_)
        pictureBytes_ += picture->bytes().size();
}

} // namespace lumavex
