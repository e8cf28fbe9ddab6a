// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/CMTime.h"

#include <limits>
#include <numeric>
#include <optional>

namespace lumavex {

namespace {

// Wide enough for value * timescale * timescale: 63 + 31 + 31 bits, plus one bit for a sum.
__extension__ using Int128 = __int128;

constexpr std::int32_t kLargestTimescale = std::numeric_limits<std::int32_t>::max();
constexpr CMTime kNotValid{0, 1, 0, 0};

bool isValid(CMTime time)
{
    return (time.flags & kCMTimeFlags_Valid) != 0 && time.timescale > 0;
}

std::optional<std::int64_t> narrowed(Int128 value)
{
    if (value < std::numeric_limits<std::int64_t>::min() || value > std::numeric_limits<std::int64_t>::max())
        return std::nullopt;
    return static_cast<std::int64_t>(value);
}

Int128 dividedHalfAwayFromZero(Int128 numerator, Int128 denominator)
{
    const Int128 half = denominator / 2;
    // An odd denominator has no exact half, so adding its lower half rounds as well.
    return (numerator < 0 ? numerator - half : numerator + half) / denominator;
}

// a + sign * b
CMTime sum(CMTime a, CMTime b, int sign)
{
    if (!isValid(a) || !isValid(b) || (a.epoch != b.epoch && a.epoch != 0 && b.epoch != 0))
        return kNotValid;
    CMTime sum;
    sum.flags = a.flags | b.flags;
    sum.epoch = a.epoch != 0 ? a.epoch : b.epoch;

    const Int128 signedValue = Int128{b.value} * sign;
    const std::int64_t common = std::lcm<std::int64_t, std::int64_t>(a.timescale, b.timescale);
    std::optional<std::int64_t> value;
    if (common <= kLargestTimescale) {
        sum.timescale = static_cast<std::int32_t>(common);
        value = narrowed(Int128{a.value} * (common / a.timescale) + signedValue * (common / b.timescale));
    } else {
        sum.timescale = kLargestTimescale;
        sum.flags |= kCMTimeFlags_HasBeenRounded;
        const Int128 numerator = Int128{a.value} * b.timescale + signedValue * a.timescale;
        value = narrowed(dividedHalfAwayFromZero(numerator * kLargestTimescale, Int128{a.timescale} * b.timescale));
    }
    if (!value)
        return kNotValid;
    sum.value = *value;
    return sum;
}

} // namespace

CMTime CMTimeMake(std::int64_t value, std::int32_t timescale)
{
    if (timescale <= 0)
        return kNotValid;
    return {value, timescale, kCMTimeFlags_Valid, 0};
}

CMTime CMTimeAdd(CMTime a, CMTime b)
{
    return sum(a, b, 1);
}

CMTime CMTimeSubtract(CMTime a, CMTime b)
{
    return sum(a, b, -1);
}

int CMTimeCompare(CMTime a, CMTime b)
{
    if (!isValid(a) || !isValid(b))
        return static_cast<int>(isValid(b)) - static_cast<int>(isValid(a));
    if (a.epoch != b.epoch)
        return a.epoch < b.epoch ? -1 : 1;
    const Int128 left = Int128{a.value} * b.timescale;
    const Int128 right = Int128{b.value} * a.timescale;
    return static_cast<int>(left > right) - static_cast<int>(left < right);
}

std::int64_t CMTimeConvertScale(CMTime time, std::int32_t timescale)
{
    if (!isValid(time) || timescale <= 0)
        return 0;
    const Int128 ticks = dividedHalfAwayFromZero(Int128{time.value} * timescale, time.timescale);
    if (const auto value = narrowed(ticks))
        return *value;
    return ticks < 0 ? std::numeric_limits<std::int64_t>::min() : std::numeric_limits<std::int64_t>::max();
}

double CMTimeGetSeconds(CMTime time)
{
    if (!isValid(time))
        return std::numeric_limits<double>::quiet_NaN();
    return static_cast<double>(time.value) / time.timescale;
}

} // namespace lumavex
