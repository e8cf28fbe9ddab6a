// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/CameraModes.h"

#include <gtest/gtest.h>

namespace lumavex {
namespace {

CameraMode mode(QSize size, double rate = 30, int cost = 0, std::size_t id = 0)
{
    return {.smallest = size, .largest = size, .rate = rate, .cost = cost, .id = id};
}

constexpr QSize kVga{640, 480};
constexpr QSize kHd{1280, 720};
constexpr QSize kFullHd{1920, 1080};

TEST(CameraModes, CodesOutsideTheTableAreRefused)
{
    const std::vector<CameraMode> modes{mode(kVga), mode(kFullHd)};
    for (std::int64_t code = -1; code <= 8; ++code)
        EXPECT_EQ(chooseCameraMode(modes, code).has_value(), code >= 0 && code < 8) << code;
    EXPECT_FALSE(chooseCameraMode(modes, std::int64_t(1) << 40));
    EXPECT_FALSE(chooseCameraMode({}, 0));
}

TEST(CameraModes, LowMediumAndHighAreTheNearestSizes)
{
    const std::vector<CameraMode> modes{mode({160, 120}), mode({352, 288}), mode({800, 600}), mode(kFullHd)};
    EXPECT_EQ(chooseCameraMode(modes, 0)->size, QSize(352, 288));
    EXPECT_EQ(chooseCameraMode(modes, 1)->size, QSize(800, 600));
    EXPECT_EQ(chooseCameraMode(modes, 2)->size, QSize(800, 600));
    EXPECT_EQ(chooseCameraMode(modes, 2)->picture, QSize(800, 600)) << "not scaled";
    EXPECT_EQ(chooseCameraMode({mode({160, 120})}, 2)->size, QSize(160, 120));
}

TEST(CameraModes, ExactCodesTakeTheSizeOrScaleALargerOne)
{
    const std::vector<CameraMode> modes{mode({320, 240}), mode({800, 600}), mode({848, 480}), mode(kFullHd)};
    EXPECT_EQ(chooseCameraMode(modes, 3)->size, QSize(320, 240));
    // 848x480 is smaller, but 800x600 has the shape.
    EXPECT_EQ(chooseCameraMode(modes, 5)->size, QSize(800, 600));
    EXPECT_EQ(chooseCameraMode(modes, 5)->picture, kVga);
    EXPECT_EQ(chooseCameraMode(modes, 7)->size, kFullHd);
    EXPECT_EQ(chooseCameraMode(modes, 7)->picture, kHd);
    EXPECT_FALSE(chooseCameraMode({mode(kVga)}, 7));
    EXPECT_FALSE(chooseCameraMode({mode({1280, 480}), mode({640, 720})}, 7));
}

TEST(CameraModes, FluentModesComeBeforeSlowOnesAndCheapBeforeDear)
{
    const std::vector<CameraMode> webcam{mode(kHd, 10, 0, 1), mode(kHd, 30, 3, 2), mode(kVga, 30, 0, 3),
                                         mode(kVga, 30, 3, 4)};
    EXPECT_EQ(chooseCameraMode(webcam, 7)->id, 2U);
    EXPECT_EQ(chooseCameraMode(webcam, 2)->id, 2U);
    EXPECT_EQ(chooseCameraMode(webcam, 5)->id, 3U);
    // The very size, if slow, is still what was asked for.
    EXPECT_EQ(chooseCameraMode({mode(kHd, 10, 0, 1), mode(kFullHd, 30, 0, 2)}, 7)->id, 1U);
    EXPECT_EQ(chooseCameraMode({mode({1280, 960}, 5, 0, 1), mode(kFullHd, 30, 0, 2)}, 7)->id, 2U);
}

TEST(CameraModes, RangesGiveTheSizeWithinTheirSteps)
{
    const CameraMode range{.smallest = {48, 32}, .largest = {1000, 1000}, .step = {16, 8}};
    EXPECT_EQ(chooseCameraMode({range}, 4)->size, QSize(352, 288));
    EXPECT_EQ(chooseCameraMode({range}, 6)->size, QSize(960, 544));
    EXPECT_EQ(chooseCameraMode({range}, 6)->picture, QSize(960, 540));
    EXPECT_FALSE(chooseCameraMode({range}, 7));
    EXPECT_EQ(chooseCameraMode({range}, 2)->size, QSize(992, 720)) << "1000 is not within the steps";
    const CameraMode endless{.smallest = {1, 1}, .largest = {INT_MAX, INT_MAX}};
    EXPECT_EQ(chooseCameraMode({endless}, 7)->size, kHd);
}

} // namespace
} // namespace lumavex
