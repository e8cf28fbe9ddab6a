// SPDX-License-Identifier: GPL-3.0-or-later
#include "compose/FrameLayout.h"

#include <gmock/gmock.h>

#include <limits>

namespace {

using namespace lumavex;
using testing::Optional;

/// A rectangle written with 32-bit numbers; comparisons are exact.
CGRect rect(float x, float y, float width, float height)
{
    return {x, y, width, height};
}

constexpr CGSize hd{1920, 1080};
constexpr CGSize smallHd{1280, 720};
constexpr CGSize preview{400, 225};

TEST(FrameLayout, ScreenAsSecondaryPicture)
{
    EXPECT_EQ(screenSecondaryRect(preview, 1, 8, hd), rect(293.33334F, 6.6666665F, 100, 56.25F));
    EXPECT_EQ(screenSecondaryRect(preview, 1, 0, hd), rect(6.6666665F, 162.08333F, 100, 56.25F));
    EXPECT_EQ(screenSecondaryRect(preview, 1, 4, hd), rect(150, 84.375F, 100, 56.25F));
    const CGRect places[] = {rect(32, 778, 480, 270), rect(720, 778, 480, 270), rect(1408, 778, 480, 270),
                             rect(32, 405, 480, 270), rect(720, 405, 480, 270), rect(1408, 405, 480, 270),
                             rect(32, 32, 480, 270),  rect(720, 32, 480, 270),  rect(1408, 32, 480, 270)};
    for (int code = 0; code <= 8; ++code)
        EXPECT_EQ(screenSecondaryRect(hd, 1, code, hd), places[code]) << code;
    for (const std::int64_t unknown : {std::int64_t{-1}, std::int64_t{9}, std::numeric_limits<std::int64_t>::min()})
        EXPECT_EQ(screenSecondaryRect(hd, 1, unknown, hd), places[8]) << unknown;
}

TEST(FrameLayout, SizeCodesDivideTheFramesWidth)
{
    const double widths[] = {240, 480, 640, 960};
    for (int code = 0; code <= 3; ++code)
        EXPECT_EQ(screenSecondaryRect(hd, code, 6, hd).width, widths[code]);
    EXPECT_EQ(screenSecondaryRect(hd, 4, 6, hd).width, 1920);
    EXPECT_EQ(cameraSecondaryRect(hd, -1, 6, 0).width, 1920);
}

TEST(FrameLayout, CameraAsSecondaryPicture)
{
    EXPECT_EQ(cameraSecondaryRect(smallHd, 1, 8, 7), rect(938.6667F, 21.333334F, 320, 180));
    EXPECT_EQ(cameraSecondaryRect(smallHd, 1, 8, 6).height, 180);
    EXPECT_EQ(cameraSecondaryRect(smallHd, 1, 8, 4).height, 261.81818F);
    EXPECT_EQ(cameraSecondaryRect(smallHd, 1, 8, 3).height, 240);
    EXPECT_EQ(cameraSecondaryRect(smallHd, 1, 8, 5).height, 240);
    EXPECT_EQ(cameraSecondaryRect(hd, 1, 8, 0), rect(1408, 32, 480, 270));
    // the first three codes and unknown ones take the frame's shape, which is not 16 : 9 here
    for (const std::int64_t code : {0, 1, 2, 8, -1})
        EXPECT_EQ(cameraSecondaryRect({800, 600}, 1, 8, code).height, 150) << code;
}

TEST(FrameLayout, Overlay)
{
    EXPECT_EQ(overlayRect(preview, 30, 8, {200, 100}), rect(363.33334F, 6.6666665F, 30, 15));
    EXPECT_EQ(overlayRect(hd, 300, 8, {200, 100}), rect(1588, 32, 300, 150));
}

TEST(FrameLayout, SteppingFitReduces)
{
    EXPECT_THAT(Return_Fitted_Rect(hd, smallHd), Optional(rect(0, 0, 1280, 720)));
    EXPECT_THAT(Return_Fitted_Rect({1366, 768}, smallHd), Optional(rect(21, 11.982452F, 1238, 696.0351F)));
    EXPECT_THAT(Return_Fitted_Rect({1920, 1200}, smallHd), Optional(rect(64, 0, 1152, 720)));
    EXPECT_THAT(Return_Fitted_Rect({1440, 900}, smallHd), Optional(rect(112, 30, 1056, 660)));
    EXPECT_THAT(Return_Fitted_Rect({1000, 1000}, smallHd), Optional(rect(332, 52, 616, 616)));
    EXPECT_THAT(Return_Fitted_Rect({720, 1280}, smallHd), Optional(rect(442, 8, 396, 704)));
    EXPECT_THAT(Return_Fitted_Rect(hd, {640, 480}), Optional(rect(0, 60, 640, 360)));
}

TEST(FrameLayout, SteppingFitEnlargesPastTheTarget)
{
    EXPECT_THAT(Return_Fitted_Rect({100, 70}, {1000, 600}), Optional(rect(50, -15, 900, 630)));
    EXPECT_THAT(Return_Fitted_Rect({640, 480}, hd), Optional(rect(160, -60, 1600, 1200)));
}

TEST(FrameLayout, SteppingFitLeavesWhatFits)
{
    EXPECT_THAT(Return_Fitted_Rect(smallHd, smallHd), Optional(rect(0, 0, 1280, 720)));
    EXPECT_THAT(Return_Fitted_Rect({1280, 700}, smallHd), Optional(rect(0, 10, 1280, 700)));
}

TEST(FrameLayout, SteppingFitAlwaysEnds)
{
    constexpr double infinity = std::numeric_limits<double>::infinity();
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(Return_Fitted_Rect({0, 480}, smallHd), std::nullopt);
    EXPECT_EQ(Return_Fitted_Rect(hd, {0, 720}), std::nullopt);
    EXPECT_EQ(Return_Fitted_Rect(hd, {1280, 0}), std::nullopt);
    EXPECT_EQ(Return_Fitted_Rect(hd, {nan, 720}), std::nullopt);
    EXPECT_EQ(Return_Fitted_Rect({infinity, 480}, smallHd), std::nullopt);
    EXPECT_EQ(Return_Fitted_Rect({nan, 480}, smallHd), std::nullopt);
    EXPECT_TRUE(Return_Fitted_Rect({1e12, 1e12}, smallHd)); // a step is less than 32 bits resolve
    EXPECT_THAT(Return_Fitted_Rect({640, 0}, smallHd)->height, 0);
}

} // namespace
