// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/x11/XcbScreenGrabber.h"
#include "tests/contract/screen_grabber/Pictures.h"
#include "tests/contract/screen_grabber/TestClient.h"
#include "tests/contract/screen_grabber/TestServer.h"

#include <gmock/gmock.h>
#include <xcb/composite.h>

#include <QPainter>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <thread>
#include <utility>

// The screen without some of its windows, on a real X server.

namespace lumavex::test {
namespace {

constexpr QRgb kOurs = 0xffff00ff;
constexpr QRect kScreenRect(0, 0, 640, 480);
constexpr QRect kBottom(-40, -30, 720, 540); ///< larger than the screen

bool showsOurs(const QImage& picture)
{
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x)
            if ((picture.pixel(x, y) | 0xff000000U) == kOurs)
                return true;
    return false;
}

class X11LeftOutWindows : public testing::TestWithParam<bool> {
protected:
    std::vector<std::uint32_t> listed(const std::vector<xcb_window_t>& ours, bool desktop)
    {
        std::vector<std::uint32_t> numbers;
        for (const WindowDescription& entry : grabber->windowDescriptions(ListOnScreenOnly)) {
            const bool left = std::find(ours.begin(), ours.end(), entry.number) != ours.end();
            if (entry.shared && !left && (desktop || entry.number != client.root()))
                numbers.push_back(entry.number);
        }
        return numbers;
    }
    bool isRedirected(xcb_window_t window)
    {
        xcb_connection_t* const c = client.connection();
        auto* const error =
            xcb_request_check(c, xcb_composite_name_window_pixmap_checked(c, window, xcb_generate_id(c)));
        const bool refused = error != nullptr;
        std::free(error);
        return !refused;
    }
    int next(int below) { return static_cast<int>((random_ = random_ * 1103515245 + 12345) >> 16) % below; }
    QRect somewhere() { return {next(600) - 40, next(440) - 30, 20 + next(160), 20 + next(140)}; }

    TestServer server{{.windowManager = GetParam(), .compositingManager = GetParam(), .arguments = {}}};
    TestClient client;
    std::unique_ptr<ScreenGrabber> grabber = createXcbScreenGrabber();

private:
    unsigned random_ = 11;
};

/// The reference is the composite of all windows but ours, with the lowest in place of the desktop. Being larger than
/// the screen it cannot be made of the screen's picture.
TEST_P(X11LeftOutWindows, LookAsIfTheyWereNotThere)
{
    const bool composited = GetParam();
    const auto everything = createXcbScreenGrabber();
    std::vector<xcb_window_t> others{client.show(kBottom, 0xff204060)};
    for (int i = 0; i < 4; ++i)
        others.push_back(client.show(somewhere(), qRgb(40 * i, 200, 50)));
    others.push_back(client.showTranslucent(somewhere(), 0x80800000));
    const std::vector<xcb_window_t> ours{client.show(somewhere(), kOurs), client.show(somewhere(), kOurs)};

    const auto act = [&] {
        const xcb_window_t other = others[static_cast<std::size_t>(next(6))];
        const xcb_window_t own = ours[static_cast<std::size_t>(next(2))];
        const xcb_window_t any = next(2) ? own : others[static_cast<std::size_t>(1 + next(5))];
        switch (next(8)) {
        case 0:
            return client.raise(any);
        case 1:
            return client.unmap(own);
        case 2:
            return client.map(own);
        case 3:
        case 4:
            return client.place(any, somewhere());
        case 5:
            return client.place(own, next(4) ? somewhere() : QRect(20, 20, 500, 400)); // in the way everywhere
        default:
            client.fill(own, {0, 0, 100, 100}, kOurs);
            return client.fill(other, {next(300), next(300), 30, 20}, qRgb(next(4) * 60, next(4) * 60, 200));
        }
    };
    QImage followed;
    std::uint64_t serial = 0;
    for (int round = 0; round < 150; ++round) {
        act();
        Grab grab;
        QImage reference;
        const auto looksRight = [&] {
            grab = grabber->grabWindows(listed(ours, true));
            if (grab.outcome != GrabOutcome::Success)
                return false;
            EXPECT_FALSE(showsOurs(grab.picture)) << round;
            const auto changed = grab.changes.since(std::exchange(serial, grab.serial));
            for (const QRect& rect : changed.value_or(ChangedArea(kScreenRect))) {
                if (followed.isNull())
                    followed = grab.picture.copy();
                QPainter(&followed).drawImage(rect, grab.picture, rect);
            }
            EXPECT_EQ(difference(followed, grab.picture), QRect()) << round;
            const Grab all = everything->grabWindows(listed(ours, false));
            reference = all.picture.copy(kScreenRect.translated(-kBottom.topLeft()));
            return all.outcome == GrabOutcome::Success && difference(grab.picture, reference).isNull();
        };
        // A compositing manager paints a little later; without one the next grab must be right.
        ASSERT_TRUE(composited ? eventually(looksRight) : looksRight())
            << round << difference(grab.picture, reference).x();
    }
}

TEST_P(X11LeftOutWindows, AreNotSeenWhileTheyMove)
{
    client.show(kBottom, kRed);
    const std::vector<xcb_window_t> ours{client.show({0, 0, 120, 90}, kOurs)};
    const std::vector<std::uint32_t> windows = listed(ours, true);
    ASSERT_TRUE(eventually([&] { // its application has drawn what was covered
        return (grabber->grabWindows(windows).picture.pixel(5, 5) | 0xff000000U) == kRed;
    }));
    std::atomic<bool> enough = false;
    std::thread mover([&] {
        TestClient other;
        for (int i = 0; !enough; ++i)
            other.place(ours[0], {i * 7 % 500, i * 5 % 380, 120, 90});
    });
    for (int i = 0; i < 150; ++i)
        EXPECT_FALSE(showsOurs(grabber->grabWindows(windows).picture)) << i;
    enough = true;
    mover.join();
}

TEST_P(X11LeftOutWindows, OnlyWhatTheyMayCoverIsRedirected)
{
    if (GetParam())
        return; // a compositing manager redirects all windows
    client.fillRoot(kScreenRect, 0xff204060);
    const auto beneath = client.show({0, 0, 200, 200}, kRed);
    const auto far = client.show({400, 200, 200, 200}, kRed);
    const auto hiding = client.show({0, 300, 200, 180}, kRed);
    client.raise(hiding);
    const auto hidden = client.show({50, 350, 60, 60}, kOurs);
    client.raise(hiding);
    const auto own = client.show({50, 50, 100, 100}, kOurs);
    const std::vector<xcb_window_t> ours{own, hidden};
    const auto colorAt = [&](int x, int y) {
        return grabber->grabWindows(listed(ours, true)).picture.pixel(x, y) | 0xff000000U;
    };
    EXPECT_EQ(colorAt(100, 100), kRed);
    EXPECT_TRUE(isRedirected(beneath));
    EXPECT_FALSE(isRedirected(far));
    EXPECT_FALSE(isRedirected(hiding)) << "it covers ours, so nothing is to be mended there";
    // Drawings made while it was covered appear once it is not.
    client.fill(beneath, {60, 60, 20, 20}, kGreen);
    EXPECT_EQ(colorAt(70, 70), kGreen);
    client.place(own, {150, 50, 100, 100});
    EXPECT_EQ(colorAt(70, 70), kGreen);
    EXPECT_EQ(colorAt(180, 80), kRed);
    EXPECT_EQ(colorAt(240, 80), 0xff204060);
    // One window alone is read from the screen too, until another one covers it.
    const auto grabFar = [&] { return grabber->grabWindows({far}).picture; };
    EXPECT_EQ(grabFar().size(), QSize(200, 200));
    EXPECT_FALSE(isRedirected(far));
    client.place(own, {350, 250, 100, 50});
    EXPECT_FALSE(showsOurs(grabFar()));
    EXPECT_TRUE(isRedirected(far));
}

INSTANTIATE_TEST_SUITE_P(Screens, X11LeftOutWindows, testing::Bool(), [](const auto& composited) {
    return composited.param ? std::string("Composited") : std::string("Plain");
});

} // namespace
} // namespace lumavex::test
