// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/CMTime.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace lumavex {
namespace {

constexpr std::int32_t kLargest = std::numeric_limits<std::int32_t>::max();

void expectTime(CMTime time, std::int64_t value, std::int32_t timescale, std::uint32_t flags = kCMTimeFlags_Valid)
{
    EXPECT_EQ(time.value, value);
    EXPECT_EQ(time.timescale, timescale);
    EXPECT_EQ(time.flags, flags);
}

TEST(CMTime, SumsAreExactInTheLeastCommonMultiple)
{
    expectTime(CMTimeAdd(CMTimeMake(1, 30), CMTimeMake(1, 30)), 2, 30);
    expectTime(CMTimeAdd(CMTimeMake(1, 30), CMTimeMake(1, 25)), 11, 150);
    expectTime(CMTimeAdd(CMTimeMake(-1, 4), CMTimeMake(1, 6)), -1, 12);
    // One hour of changing rates: the sum is what rational arithmetic gives, whatever the order.
    CMTime time = CMTimeMake(1, 30);
    for (int second = 0; second < 3600; ++second) {
        const int rate = 28 + second % 4; // the common multiple of 28 to 31 and 30 is 377580
        for (int frame = 0; frame < rate; ++frame)
            time = CMTimeAdd(time, CMTimeMake(1, rate));
    }
    expectTime(time, 377580LL * 3600 + 377580 / 30, 377580);
}

TEST(CMTime, RoundsOnlyWhereTheMultiplePasses31Bits)
{
    // 46341 * 46340 is 2147441940, the largest product of neighbours that fits; the next one is a little too large.
    expectTime(CMTimeAdd(CMTimeMake(1, 46341), CMTimeMake(1, 46340)), 46340 + 46341, 2147441940);
    const CMTime rounded = CMTimeAdd(CMTimeMake(1, 46349), CMTimeMake(1, 46351));
    const long double exact = (1.0L / 46349 + 1.0L / 46351) * kLargest;
    expectTime(rounded, std::llroundl(exact), kLargest, kCMTimeFlags_Valid | kCMTimeFlags_HasBeenRounded);
    // Once rounded, always marked; negative sums round away from zero like positive ones.
    EXPECT_TRUE(CMTimeAdd(rounded, CMTimeMake(1, kLargest)).flags & kCMTimeFlags_HasBeenRounded);
    EXPECT_EQ(CMTimeAdd(CMTimeMake(-1, 46349), CMTimeMake(-1, 46351)).value, -rounded.value);
    // No intermediate passes 128 bits.
    const CMTime large = CMTimeAdd(CMTimeMake(std::numeric_limits<std::int64_t>::max() / 4, kLargest),
                                   CMTimeMake(std::numeric_limits<std::int64_t>::max() / 4, kLargest - 1));
    EXPECT_NEAR(CMTimeGetSeconds(large), std::pow(2.0, 62) / kLargest, 16);
}

TEST(CMTime, WhatIsNotValidStaysSo)
{
    EXPECT_EQ(CMTimeMake(1, 0).flags, 0U);
    EXPECT_EQ(CMTimeMake(1, -30).flags, 0U);
    EXPECT_EQ(CMTimeAdd(CMTimeMake(1, 0), CMTimeMake(1, 30)).flags, 0U);
    EXPECT_EQ(CMTimeAdd(CMTimeMake(std::numeric_limits<std::int64_t>::max(), 1), CMTimeMake(1, 1)).flags, 0U);
    CMTime first = CMTimeMake(1, 30);
    first.epoch = 1;
    CMTime second = CMTimeMake(1, 30);
    second.epoch = 2;
    EXPECT_EQ(CMTimeAdd(first, second).flags, 0U);
    EXPECT_EQ(CMTimeAdd(first, CMTimeMake(1, 30)).epoch, 1);
    EXPECT_TRUE(std::isnan(CMTimeGetSeconds(CMTimeMake(1, 0))));
}

TEST(CMTime, ComparesExactly)
{
    EXPECT_EQ(CMTimeCompare(CMTimeMake(1, 3), CMTimeMake(10, 30)), 0);
    const std::int64_t huge = std::numeric_limits<std::int64_t>::max();
    EXPECT_EQ(CMTimeCompare(CMTimeMake(huge, kLargest), CMTimeMake(huge - 1, kLargest)), 1);
    EXPECT_EQ(CMTimeCompare(CMTimeMake(333333333, 1000000000), CMTimeMake(1, 3)), -1);
    EXPECT_EQ(CMTimeCompare(CMTimeMake(5, 1), CMTimeMake(0, 0)), -1) << "what is not valid comes last";
}

TEST(CMTime, ConvertsToTicksHalfAwayFromZero)
{
    EXPECT_EQ(CMTimeConvertScale(CMTimeMake(1, 30), 90000), 3000);
    EXPECT_EQ(CMTimeConvertScale(CMTimeMake(1, 29), 90000), 3103); // 3103.45
    EXPECT_EQ(CMTimeConvertScale(CMTimeMake(1, 2), 1), 1);
    EXPECT_EQ(CMTimeConvertScale(CMTimeMake(-1, 2), 1), -1);
    EXPECT_EQ(CMTimeConvertScale(CMTimeMake(1, 3), 1), 0);
    EXPECT_EQ(CMTimeConvertScale(CMTimeMake(std::numeric_limits<std::int64_t>::max(), 1), 90000),
              std::numeric_limits<std::int64_t>::max());
}

} // namespace
} // namespace lumavex
