// SPDX-License-Identifier: GPL-3.0-or-later
#include "media/sound/CaptureClock.h"

#include <algorithm>

namespace lumavex {
namespace {

using namespace std::chrono_literals;

constexpr Nanoseconds kWindow = 3s;
constexpr Nanoseconds kArrivalWindow = 6s;
constexpr std::size_t kReadings = 9;

} // namespace

Nanoseconds CaptureClock::streamOrigin(Nanoseconds now, Nanoseconds streamEnd, Nanoseconds deviceNow)
{
    const Nanoseconds arrived = earliestOrigin(now, now - streamEnd);
    begun_ = begun_.value_or(now);
    if (readings_.size() < kReadings) {
        const Nanoseconds deviceOrigin = now - deviceNow;
        readings_.insert(std::upper_bound(readings_.begin(), readings_.end(), deviceOrigin), deviceOrigin);
    }
    if (now - *begun_ < kWindow)
        latency_ = arrived - readings_[readings_.size() / 2];
    return arrived - latency_;
}

Nanoseconds CaptureClock::earliestOrigin(Nanoseconds now, Nanoseconds origin)
{
    while (!arrivals_.empty() && arrivals_.back().origin >= origin)
        arrivals_.pop_back();
    arrivals_.push_back({now, origin});
    while (arrivals_.front().at < now - kArrivalWindow)
        arrivals_.pop_front();
    return arrivals_.front().origin;
}

} // namespace lumavex
