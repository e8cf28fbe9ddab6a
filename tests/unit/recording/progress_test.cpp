// SPDX-License-Identifier: GPL-3.0-or-later
#include "recording/Duration.h"
#include "recording/EncoderProgress.h"
#include "recording/RateRule.h"

#include <gtest/gtest.h>

#include <limits>

namespace lumavex {
namespace {

TEST(RateRule, GoesByTheCountUnlessItIsBelowAnEighthAndIsNeverZero)
{
    EXPECT_EQ(adaptedRate(30, 2, 30), 30); // 30 / 8 is 3
    EXPECT_EQ(adaptedRate(30, 3, 30), 3);
    EXPECT_EQ(adaptedRate(30, 45, 30), 45);
    EXPECT_EQ(adaptedRate(60, 0, 17), 60);
    EXPECT_EQ(adaptedRate(7, 0, 5), 5); // 7 / 8 is 0, not greater than 0
    EXPECT_EQ(adaptedRate(0, 0, 0), 1);
    EXPECT_EQ(adaptedRate(30, std::int64_t{1} << 40, 30), std::numeric_limits<std::int32_t>::max());
}

TEST(Duration, HoursAreNotWrapped)
{
    EXPECT_EQ(timeFormatted(360000 + 3599), "100:59:59");
}

TEST(EncoderProgress, TakesTheLastUsableTimeOfAChunk)
{
    EXPECT_EQ(encoderSeconds("time=00:00:05.12 bitrate=N/A\rtime=00:00:07.50 bit"), 7);
    EXPECT_EQ(encoderSeconds("time=01-02.03 "), 3723);             // its separators are not looked at
    EXPECT_EQ(encoderSeconds("frame= 9 time=00:00:05"), 5);        // ends right behind the value
    EXPECT_EQ(encoderSeconds("time=00:00:05.12 time=00:00"), 5);   // the last one is cut off
    EXPECT_EQ(encoderSeconds("time=00:00:05 TIME=00:00:09"), 9);   // following ones ignore case
    EXPECT_EQ(encoderSeconds("TIME=00:00:09 x time=00:00:05"), 5); // the first one does not
    EXPECT_EQ(encoderSeconds("time=time=00:00:05 00:00:06"), 0);   // its value is "time=00:"
    EXPECT_EQ(encoderSeconds("time=N/A bitrate=N/A"), 0);

    EXPECT_EQ(encoderSeconds(""), std::nullopt);
    EXPECT_EQ(encoderSeconds("TIME=00:00:09"), std::nullopt);
    EXPECT_EQ(encoderSeconds("time=00:00:0"), std::nullopt);
    // When even the first is cut off, later ones are not looked for; there is no room for them anyway.
    EXPECT_EQ(encoderSeconds("frame=1 time="), std::nullopt);

    EXPECT_EQ(encoderSeconds("Größe time=00:00:05.1"), 5);
    EXPECT_EQ(encoderSeconds("time=00:00:05.12 Gr\xC3"), std::nullopt); // cut inside a character
    EXPECT_EQ(encoderSeconds("\xB6\xC3 time=00:00:05.12"), std::nullopt);
}

} // namespace
} // namespace lumavex
