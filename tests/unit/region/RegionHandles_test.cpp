// SPDX-License-Identifier: GPL-3.0-or-later
#include "capture/RegionHandles.h"

#include <gmock/gmock.h>

#include <ostream>

namespace lumavex {

static void PrintTo(const CGRect& r, std::ostream* out)
{
    *out << "(" << r.x << ", " << r.y << ", " << r.width << ", " << r.height << ")";
}

} // namespace lumavex

using namespace lumavex;
using testing::ElementsAre;

namespace {

using Handles = std::vector<FrameDimension>;

/// The handles as pairs, which print well.
std::vector<std::pair<double, double>> pairs(const Handles& handles)
{
    std::vector<std::pair<double, double>> result;
    for (const FrameDimension& handle : handles)
        result.emplace_back(handle.sizeDimension.width, handle.sizeDimension.height);
    return result;
}

std::pair<double, double> at(double x, double y)
{
    return {x, y};
}

Handles usual()
{
    return centredHandles({320, 240}, {1440, 900});
}

Handles dragged(std::int32_t handle, const CGPoint& location)
{
    Handles handles = usual();
    dragHandle(handles, handle, location);
    return handles;
}

} // namespace

TEST(RegionHandles, AreCentredOnTheScreen)
{
    EXPECT_THAT(pairs(usual()), ElementsAre(at(555, 325), at(875, 325), at(715, 445), at(555, 565), at(875, 565)));
    EXPECT_EQ(regionOfHandles(usual()), (CGRect{560, 330, 320, 240}));
}

TEST(RegionHandles, TruncateTowardZero)
{
    // An odd difference, an odd size, and fractions.
    const Handles odd = centredHandles({321.9, 241.9}, {1440, 900});
    EXPECT_THAT(pairs(odd), ElementsAre(at(554, 324), at(875, 324), at(714, 444), at(554, 565), at(875, 565)));
    // A region larger than the screen lies on both sides of it: (800 - 1153) / 2 is -176, not -177.
    const Handles large = centredHandles({1153, 864}, {800, 600});
    EXPECT_THAT(pairs(large), ElementsAre(at(-181, -137), at(972, -137), at(395, 295), at(-181, 727), at(972, 727)));
    EXPECT_EQ(regionOfHandles(large), (CGRect{-176, -132, 1153, 864}));
    EXPECT_EQ(regionOfHandles({{{-3.7, 2.9}}, {{10.9, 20.2}}}), (CGRect{2, 7, 13, 18}));
}

TEST(RegionHandles, AreHitUpToTheirEdges)
{
    for (const CGPoint& inside : {CGPoint{555, 325}, {565, 335}, {555, 335}, {565, 325}, {560, 330}})
        EXPECT_EQ(handleAt(usual(), inside), LowerLeftHandle);
    for (const CGPoint& outside : {CGPoint{554, 330}, {566, 330}, {560, 324}, {560, 336}, {554.99, 325}, {640, 400}})
        EXPECT_EQ(handleAt(usual(), outside), NoHandle);
    EXPECT_EQ(handleAt(usual(), {885, 335}), LowerRightHandle);
    EXPECT_EQ(handleAt(usual(), {720, 450}), CentreHandle);
    EXPECT_EQ(handleAt(usual(), {555, 575}), UpperLeftHandle);
    EXPECT_EQ(handleAt(usual(), {885, 575}), UpperRightHandle);
    EXPECT_EQ(handleAt({}, {0, 0}), NoHandle);
}

TEST(RegionHandles, OverlappingOnesAreHitLowestIndexFirst)
{
    Handles handles = usual();
    dragHandle(handles, UpperRightHandle, {555, 325}); // all five in one place
    EXPECT_EQ(handleAt(handles, {560, 330}), LowerLeftHandle);
    dragHandle(handles, UpperRightHandle, {567, 325}); // the centre is at 561, between the left and the right ones
    EXPECT_EQ(handleAt(handles, {563, 330}), LowerLeftHandle);
    EXPECT_EQ(handleAt(handles, {566, 330}), CentreHandle);
    EXPECT_EQ(handleAt(handles, {567, 330}), LowerRightHandle);
}

TEST(RegionHandles, JumpToThePointerAndTheirNeighboursAndTheCentreFollow)
{
    const struct {
        std::int32_t handle;
        CGPoint to;
        std::vector<std::pair<double, double>> handles;
    } cases[] = {
        {LowerLeftHandle, {560, 330}, {{560, 330}, {875, 330}, {717, 447}, {560, 565}, {875, 565}}},
        {LowerLeftHandle, {400, 200}, {{400, 200}, {875, 200}, {637, 382}, {400, 565}, {875, 565}}},
        {LowerRightHandle, {1000, 200}, {{555, 200}, {1000, 200}, {777, 382}, {555, 565}, {1000, 565}}},
        {UpperLeftHandle, {400, 700}, {{400, 325}, {875, 325}, {637, 512}, {400, 700}, {875, 700}}},
        // Fractions stay in corners only.
        {UpperRightHandle, {1000.75, 700.5}, {{555, 325}, {1000.75, 325}, {777, 512}, {555, 700.5}, {1000.75, 700.5}}},
        // Past the opposite corner the half is rounded from the coordinate that the index calls left or lower.
        {LowerLeftHandle, {900, 600}, {{900, 600}, {875, 600}, {888, 583}, {900, 565}, {875, 565}}},
        {LowerRightHandle, {500, 600}, {{555, 600}, {500, 600}, {528, 583}, {555, 565}, {500, 565}}},
        {UpperLeftHandle, {900, 300}, {{900, 325}, {875, 325}, {888, 313}, {900, 300}, {875, 300}}},
        {UpperRightHandle, {500, 300}, {{555, 325}, {500, 325}, {528, 313}, {555, 300}, {500, 300}}},
    };
    for (const auto& [handle, to, handles] : cases)
        EXPECT_EQ(pairs(dragged(handle, to)), handles) << handle << " to " << to.x << ", " << to.y;
    EXPECT_EQ(regionOfHandles(dragged(LowerLeftHandle, {900, 600})), (CGRect{880, 570, 25, 35}));
    EXPECT_EQ(regionOfHandles(dragged(UpperRightHandle, {500, 300})), (CGRect{505, 305, 55, 25}));
    EXPECT_EQ(regionOfHandles(dragged(UpperRightHandle, {1000.75, 700.5})), (CGRect{560, 330, 445, 375}));
}
