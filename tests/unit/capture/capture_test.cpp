// SPDX-License-Identifier: GPL-3.0-or-later
#include "capture/FollowCursor.h"
#include "capture/FrameDimension.h"
#include "capture/WindowList.h"

#include <gtest/gtest.h>

using namespace lumavex;

TEST(FrameSizes, OfferedUpToTheFirstThatDoesNotFit)
{
    const auto catalogue = frameResolutionCatalogue();
    ASSERT_EQ(catalogue.size(), 30U);
    EXPECT_EQ(offeredFrameResolutions(catalogue, {1440, 900}), 16U);
    EXPECT_EQ(offeredFrameResolutions(catalogue, {1920, 1080}), 24U);
    EXPECT_EQ(offeredFrameResolutions(catalogue, {2560, 1600}), 30U);
    EXPECT_EQ(offeredFrameResolutions(catalogue, {100, 100}), 0U);
}

TEST(FrameSizes, StoredIndexesNeverLeaveTheCatalogue)
{
    EXPECT_EQ(usableOutputIndex(31), 31);
    EXPECT_EQ(usableFollowCursorIndex(29), 29);
    for (const std::int64_t wrong : {std::int64_t{-1}, std::int64_t{1}, std::int64_t{32}, INT64_MAX, INT64_MIN})
        EXPECT_EQ(usableOutputIndex(wrong), 0) << wrong;
    for (const std::int64_t wrong : {std::int64_t{-1}, std::int64_t{30}, INT64_MAX}) {
        EXPECT_EQ(usableFollowCursorIndex(wrong), 3) << wrong;
        EXPECT_EQ(usableRegionIndex(wrong), 1) << wrong;
    }
}

TEST(FollowCursor, StaysInsideSidewaysAndReachesBeyondAtTopAndBottom)
{
    const CGSize size{640, 480}, screen{1440, 900};
    const float low = static_cast<float>(480 / 2.2) - 240.0F;
    EXPECT_EQ(followCursorRect({100, 50}, size, screen), (CGRect{0, low, 640, 480}));
    EXPECT_NEAR(low, -21.8182, 1e-4);
    const CGRect corner = followCursorRect({1400, 880}, size, screen);
    EXPECT_EQ(corner.x, 800);
    EXPECT_NEAR(corner.y, 441.8182, 1e-4);
    EXPECT_EQ(followCursorRect({700, 450}, size, screen), (CGRect{380, 210, 640, 480}));
}

namespace {

QList<WindowEntry> enumerate(const std::vector<WindowDescription>& windows)
{
    auto list = std::make_shared<QList<WindowEntry>>();
    WindowListApplierData data(list);
    for (const WindowDescription& window : windows)
        WindowListApplierFunction(window, data);
    return *list;
}

WindowDescription window(std::optional<QString> owner, std::int64_t pid, std::uint32_t number, bool shared = true)
{
    return {shared, std::move(owner), pid, 10.4, -3.6, 640, 480, number, 0};
}

} // namespace

TEST(WindowList, EntriesHaveConsecutiveOrderAndWindowsThatAreNotSharedGetNone)
{
    const auto list = enumerate({window(QStringLiteral("Preview"), 501, 88),
                                 window(QStringLiteral("Hidden"), 5, 6, false), window(std::nullopt, 77, 9)});
    ASSERT_EQ(list.size(), 2);
    EXPECT_EQ(Return_Window_Identifier_String(list[0]), QStringLiteral("Preview (501) (88)"));
    EXPECT_EQ(list[0].value(kWindowOriginKey), QStringLiteral("10/-4"));
    EXPECT_EQ(list[0].value(kWindowSizeKey), QStringLiteral("640*480"));
    EXPECT_EQ(Return_Window_Identifier_String(list[1]), QStringLiteral("((unknown)) (77) (9)"));
    EXPECT_EQ(list[1].value(kWindowOrderKey), 1);
    EXPECT_EQ(newWindowListFromSelection({list[1], list[0]}), (std::vector<std::uint32_t>{88, 9}));
}

TEST(WindowList, TheChosenWindowIsGrabbedAloneElseAllButTheProgramsOwn)
{
    const auto list = enumerate({window(QStringLiteral("Lumavex"), 1, 10), window(QStringLiteral("Files"), 2, 20),
                                 window(QStringLiteral("Web"), 3, 30)});
    const auto numbers = [&](const QString* exclusive) {
        return newWindowListFromSelection(windowsToGrab(list, exclusive));
    };
    const QString web = QStringLiteral("Web (3) (30)"), gone = QStringLiteral("Files (2) (21)");
    EXPECT_EQ(numbers(nullptr), (std::vector<std::uint32_t>{20, 30}));
    EXPECT_EQ(numbers(&web), (std::vector<std::uint32_t>{30}));
    EXPECT_EQ(numbers(&gone), (std::vector<std::uint32_t>{20, 30}));
}
