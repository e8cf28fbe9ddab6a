// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/contract/screen_grabber/Pictures.h"
#include "tests/contract/screen_grabber/Stage.h"
#include "tests/contract/screen_grabber/TestServer.h"

#include <gmock/gmock.h>

#include <QPainter>

#include <algorithm>
#include <chrono>
#include <functional>
#include <utility>
#include <vector>

namespace lumavex::test {
namespace {

constexpr QRgb kBlack = 0xff000000;

QRgb at(const Grab& grab, int x, int y)
{
    return grab.picture.pixel(x, y) | 0xff000000U;
}

class ScreenGrabberContract : public testing::TestWithParam<StageKind> {
protected:
    /// The main display once it shows that colour there: a compositing manager paints a little later than its windows.
    Grab mainDisplayShowing(int x, int y, QRgb color)
    {
        Grab grab;
        eventually([&] {
            grab = grabber.grabMainDisplay();
            return grab.outcome == GrabOutcome::Success && at(grab, x, y) == color;
        });
        return grab;
    }
    Grab windowsShowing(const std::vector<std::uint32_t>& numbers, int x, int y, QRgb color)
    {
        Grab grab;
        eventually([&] {
            grab = grabber.grabWindows(numbers);
            return grab.outcome == GrabOutcome::Success && at(grab, x, y) == color;
        });
        return grab;
    }

    const std::unique_ptr<Stage> stage = createStage(GetParam());
    ScreenGrabber& grabber = stage->grabber();
};

TEST_P(ScreenGrabberContract, GrabsTheMainDisplayToThePixel)
{
    ASSERT_EQ(grabber.trouble(), QString());
    EXPECT_EQ(grabber.sizeOfMainDisplay(), (CGSize{640, 480}));
    stage->show({100, 50, 200, 100}, kRed);
    const Grab grab = mainDisplayShowing(100, 50, kRed);
    ASSERT_EQ(grab.outcome, GrabOutcome::Success);
    EXPECT_EQ(grab.picture.size(), QSize(640, 480));
    EXPECT_EQ(grab.picture.format(), QImage::Format_RGB32);
    EXPECT_EQ(at(grab, 299, 149), kRed);
    EXPECT_NE(at(grab, 99, 50), kRed);
    EXPECT_NE(at(grab, 300, 149), kRed);
    EXPECT_NE(at(grab, 299, 150), kRed);
}

TEST_P(ScreenGrabberContract, SerialsTellWhetherPixelsChanged)
{
    const std::uint32_t window = stage->show({10, 10, 50, 50}, kRed);
    mainDisplayShowing(20, 20, kRed);
    Grab before;
    ASSERT_TRUE(eventually([&] {
        before = grabber.grabMainDisplay();
        const Grab again = grabber.grabMainDisplay();
        return again.serial == before.serial && again.picture.constBits() == before.picture.constBits();
    }));
    EXPECT_NE(before.serial, 0U);
    stage->recolor(window, kGreen);
    const Grab after = mainDisplayShowing(20, 20, kGreen);
    EXPECT_EQ(at(after, 20, 20), kGreen);
    EXPECT_NE(after.serial, before.serial);
    EXPECT_EQ(at(before, 20, 20), kRed) << "a picture handed out earlier was overwritten";
    ASSERT_TRUE(
        eventually([&] { return grabber.grabWindows({window}).serial == grabber.grabWindows({window}).serial; }));
}

TEST_P(ScreenGrabberContract, ChangesTellWherePicturesDiffer)
{
    const QRect bounds(100, 60, 300, 200);
    const std::uint32_t window = stage->show(bounds, kBlue);
    QImage model(bounds.size(), QImage::Format_RGB32);
    model.fill(kBlue);
    std::vector<std::pair<QRect, QRgb>> drawn;
    const bool nobodyElseDraws = GetParam() != StageKind::ManagedServer && GetParam() != StageKind::CompositedServer;
    const auto wholeScreen = [&] { return grabber.grabMainDisplay(); };
    const auto composite = [&] { return grabber.grabWindows({window}); };
    unsigned random = 7;
    const auto next = [&](int below) { return static_cast<int>((random = random * 1103515245 + 12345) >> 16) % below; };
    for (const bool main : {true, false}) {
        const std::function<Grab()> grabNow = main ? std::function<Grab()>(wholeScreen) : composite;
        const QRect place = main ? bounds : QRect(QPoint(0, 0), bounds.size());
        std::vector<Grab> kept;
        for (int round = 0; round < 40; ++round) {
            const QRect part(next(280), next(190), 1 + next(40), 1 + next(30));
            const QRgb color = qRgb(next(4) * 60, next(4) * 60, 200);
            drawn.emplace_back(part, color);
            stage->draw(window, part, color);
            QPainter(&model).fillRect(part, QColor(color));
            Grab grab;
            auto lostAfter = std::chrono::steady_clock::now() + std::chrono::seconds(1);
            ASSERT_TRUE(eventually([&] {
                // A compositing manager that takes over a window may lose what was drawn into it.
                if (std::chrono::steady_clock::now() > lostAfter) {
                    lostAfter += std::chrono::seconds(1);
                    kept.clear();
                    for (const auto& [earlierPart, earlierColor] : drawn)
                        stage->draw(window, earlierPart, earlierColor);
                }
                grab = grabNow();
                return grab.outcome == GrabOutcome::Success && difference(grab.picture.copy(place), model).isNull();
            })) << main
                << round;
            if (!kept.empty() && nobodyElseDraws) {
                const auto changed = grab.changes.since(kept.back().serial);
                ASSERT_TRUE(changed);
                for (const QRect& rect : *changed)
                    EXPECT_TRUE((part & model.rect()).translated(place.topLeft()).contains(rect)) << main << round;
            }
            for (const Grab& earlier : kept) {
                const auto changed = grab.changes.since(earlier.serial);
                if (!changed)
                    continue;
                QImage updated = earlier.picture.copy();
                for (const QRect& rect : *changed)
                    QPainter(&updated).drawImage(rect, grab.picture, rect);
                EXPECT_EQ(difference(updated, grab.picture), QRect()) << main << round;
            }
            // Some pictures stay in use, so that memory of several ages comes back.
            if (kept.size() > 4)
                kept.erase(kept.begin() + next(4));
            kept.push_back(grab);
        }
    }
}

TEST_P(ScreenGrabberContract, WhatLooksAsBeforeIsNoChange)
{
    const std::uint32_t window = stage->show({100, 60, 300, 200}, kBlue);
    mainDisplayShowing(150, 100, kBlue);
    Grab before;
    ASSERT_TRUE(eventually([&] {
        before = grabber.grabMainDisplay();
        return grabber.grabMainDisplay().serial == before.serial;
    }));
    for (int i = 0; i < 20; ++i) { // more often than changes are remembered
        stage->draw(window, {10, 10, 50, 50}, kBlue);
        grabber.grabMainDisplay();
    }
    stage->draw(window, {20, 30, 1, 1}, kRed);
    const auto changed = mainDisplayShowing(120, 90, kRed).changes.since(before.serial);
    ASSERT_TRUE(changed);
    EXPECT_THAT(std::vector<QRect>(changed->begin(), changed->end()), testing::ElementsAre(QRect(120, 90, 1, 1)));
}

TEST_P(ScreenGrabberContract, WindowsHaveASerial)
{
    const auto settled = [&] {
        std::uint64_t serial = 0;
        eventually([&] {
            grabber.sizeOfMainDisplay(); // whatever was announced is here
            return std::exchange(serial, grabber.windowsSerial()) == grabber.windowsSerial();
        });
        return serial;
    };
    const std::uint64_t before = settled();
    EXPECT_NE(before, 0U);
    const std::uint32_t window = stage->show({10, 10, 50, 50}, kRed);
    const std::uint64_t shown = settled();
    EXPECT_NE(shown, before);
    stage->recolor(window, kGreen);
    stage->movePointer(3, 4);
    grabber.grabMainDisplay();
    grabber.windowDescriptions(ListAllWindows);
    // The fake's stage puts all its windows anew, and a compositing manager makes windows of its own.
    if (GetParam() != StageKind::Fake && GetParam() != StageKind::CompositedServer) {
        EXPECT_EQ(settled(), shown);
    }
}

TEST_P(ScreenGrabberContract, CompositeIsAsLargeAsTheUnionAndBlackBetween)
{
    const std::uint32_t low = stage->show({20, 30, 100, 80}, kRed);
    const std::uint32_t high = stage->show({90, 60, 60, 120}, kGreen);
    stage->show({0, 0, 640, 480}, kBlue); // covers both and is not asked for
    const Grab grab = windowsShowing({high, low}, 0, 0, kRed);
    ASSERT_EQ(grab.outcome, GrabOutcome::Success);
    EXPECT_EQ(grab.picture.size(), QSize(130, 150));
    EXPECT_EQ(at(grab, 69, 30), kRed);
    EXPECT_EQ(at(grab, 70, 29), kRed);
    EXPECT_EQ(at(grab, 70, 30), kGreen);
    EXPECT_EQ(at(grab, 129, 149), kGreen);
    EXPECT_EQ(at(grab, 129, 0), kBlack);
    EXPECT_EQ(at(grab, 0, 149), kBlack);
    EXPECT_EQ(windowsShowing({high}, 59, 119, kGreen).picture.size(), QSize(60, 120));
    // The order asked for counts, not that on the screen.
    EXPECT_EQ(at(windowsShowing({low, high}, 70, 30, kRed), 70, 30), kRed);
    // Limited to the screen's columns left of 100 and rows from 60 on.
    const Grab part = grabber.grabWindows({high, low}, {0, 0, 100, 420}, ImageDefault);
    EXPECT_EQ(part.picture.size(), QSize(80, 120));
    EXPECT_EQ(at(part, 69, 0), kRed);
    EXPECT_EQ(at(part, 70, 0), kGreen);
    EXPECT_EQ(grabber.grabWindows({high, low}, {400, 0, 100, 420}, ImageDefault).outcome, GrabOutcome::Retry);
}

TEST_P(ScreenGrabberContract, WindowBeyondTheEdgeIsWholeAlone_AndCutWithTheDesktop)
{
    const std::uint32_t window = stage->show({600, 440, 100, 90}, kRed);
    const Grab alone = windowsShowing({window}, 99, 89, kRed);
    EXPECT_EQ(alone.picture.size(), QSize(100, 90));
    EXPECT_EQ(at(alone, 99, 89), kRed);

    const std::uint32_t desktop = grabber.windowDescriptions(ListAllWindows).back().number;
    const Grab both = windowsShowing({window, desktop}, 639, 479, kRed);
    EXPECT_EQ(both.picture.size(), QSize(640, 480));
    EXPECT_EQ(at(both, 600, 440), kRed);
    EXPECT_EQ(at(both, 599, 440), Stage::kDesktop);
    EXPECT_EQ(at(both, 0, 0), Stage::kDesktop);
}

TEST_P(ScreenGrabberContract, WithoutReadableWindowItAsksToTryAgain)
{
    const std::uint32_t window = stage->show({0, 0, 30, 20}, kRed);
    EXPECT_EQ(grabber.grabWindows({}).outcome, GrabOutcome::Retry);
    EXPECT_EQ(grabber.grabWindows({0xfffff}).outcome, GrabOutcome::Retry);
    EXPECT_EQ(windowsShowing({0xfffff, window}, 0, 0, kRed).picture.size(), QSize(30, 20));
    EXPECT_EQ(grabber.trouble(), QString());
}

TEST_P(ScreenGrabberContract, DescribesWindowsFrontToBackAndTheDesktopLast)
{
    const std::uint32_t low = stage->show({20, 30, 100, 80}, kRed);
    const std::uint32_t high = stage->show({90, 60, 60, 120}, kGreen);
    const std::uint32_t away = stage->show({-100, -100, 20, 20}, kBlue);
    const auto descriptions = grabber.windowDescriptions(ListOnScreenOnly);
    const auto find = [&](std::uint32_t number) {
        return std::find_if(descriptions.begin(), descriptions.end(),
                            [&](const WindowDescription& entry) { return entry.number == number; });
    };
    EXPECT_EQ(find(away), descriptions.end());
    ASSERT_NE(find(low), descriptions.end());
    ASSERT_NE(find(high), descriptions.end());
    EXPECT_LT(find(high), find(low));
    EXPECT_TRUE(find(low)->shared);
    EXPECT_EQ(find(low)->x, 20);
    EXPECT_EQ(find(low)->y, 30);
    EXPECT_EQ(find(low)->width, 100);
    EXPECT_EQ(find(low)->height, 80);
    const WindowDescription& desktop = descriptions.back();
    EXPECT_EQ(desktop.ownerName, QStringLiteral("Desktop"));
    EXPECT_TRUE(desktop.shared);
    EXPECT_EQ(desktop.width, 640);
    EXPECT_EQ(desktop.height, 480);
    for (const WindowDescription& entry : descriptions)
        EXPECT_GE(entry.layer, desktop.layer);
}

TEST_P(ScreenGrabberContract, PointerCountsFromTheLowerLeft)
{
    for (const QPoint& place : {QPoint(0, 479), QPoint(639, 0), QPoint(120, 400)}) {
        stage->movePointer(place.x(), place.y());
        EXPECT_EQ(grabber.mouseLocation(), (CGPoint{double(place.x()), double(479 - place.y())}));
    }
}

std::string nameOf(const testing::TestParamInfo<StageKind>& kind)
{
    constexpr const char* names[] = {"Fake", "Server", "ManagedServer", "CompositedServer",
                                     "ServerWithoutSharedMemory"};
    return names[static_cast<int>(kind.param)];
}

INSTANTIATE_TEST_SUITE_P(Stages, ScreenGrabberContract,
                         testing::Values(StageKind::Fake, StageKind::Server, StageKind::ManagedServer,
                                         StageKind::CompositedServer, StageKind::ServerWithoutSharedMemory),
                         nameOf);

} // namespace
} // namespace lumavex::test
