// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/x11/XcbScreenGrabber.h"
#include "tests/contract/screen_grabber/Pictures.h"
#include "tests/contract/screen_grabber/TestClient.h"
#include "tests/contract/screen_grabber/TestServer.h"

#include <gmock/gmock.h>

#include <unistd.h>

#include <algorithm>
#include <optional>

// Behaviour of windows on a real X server while they are grabbed.

namespace lumavex::test {
namespace {

class X11Windows : public testing::Test {
protected:
    explicit X11Windows(const TestServer::Options& options = {}) : server(options) {}

    std::optional<WindowDescription> describe(std::uint32_t number)
    {
        for (const WindowDescription& entry : grabber->windowDescriptions(ListAllWindows)) {
            if (entry.number == number)
                return entry;
        }
        return std::nullopt;
    }
    bool shows(const std::vector<std::uint32_t>& windows, int x, int y, QRgb color)
    {
        return eventually([&] {
            last = grabber->grabWindows(windows);
            return last.outcome == GrabOutcome::Success && last.picture.rect().contains(x, y)
                   && (last.picture.pixel(x, y) | 0xff000000U) == color;
        });
    }

    TestServer server;
    TestClient client;
    std::unique_ptr<ScreenGrabber> grabber = createXcbScreenGrabber();
    Grab last;
};

class X11ManagedWindows : public X11Windows {
protected:
    X11ManagedWindows() : X11Windows({.windowManager = true, .arguments = {}}) {}
};

class X11CompositedWindows : public X11Windows {
protected:
    X11CompositedWindows() : X11Windows({.windowManager = true, .compositingManager = true, .arguments = {}}) {}
};

TEST_F(X11Windows, UnmappedWindowIsRetriedAndComesBack)
{
    const auto window = client.show({10, 10, 60, 40}, kRed);
    ASSERT_TRUE(shows({window}, 0, 0, kRed));
    EXPECT_TRUE(grabber->showsContents(window));
    client.unmap(window);
    EXPECT_FALSE(grabber->showsContents(window));
    EXPECT_EQ(grabber->grabWindows({window}).outcome, GrabOutcome::Retry);
    EXPECT_FALSE(describe(window)->shared);
    client.map(window);
    client.fill(window, {0, 0, 60, 40}, kGreen);
    EXPECT_TRUE(shows({window}, 5, 5, kGreen)) << "the picture of before the unmapping is still shown";
    client.destroy(window);
    EXPECT_FALSE(grabber->showsContents(window));
    EXPECT_EQ(grabber->grabWindows({window}).outcome, GrabOutcome::Retry);
    EXPECT_FALSE(describe(window));
    EXPECT_EQ(grabber->trouble(), QString());
}

TEST_F(X11Windows, SurvivesWindowsThatComeAndGoMeanwhile)
{
    std::vector<std::uint32_t> windows;
    for (int i = 0; i < 12; ++i)
        windows.push_back(client.show({i * 20, i * 10, 100, 80}, kRed));
    for (int i = 0; i < 200; ++i) {
        // Not synchronised with the grabber on purpose: requests of both meet in the server.
        xcb_destroy_window(client.connection(), windows[i % 12]);
        xcb_flush(client.connection());
        const Grab grab = grabber->grabWindows(windows);
        EXPECT_NE(grab.outcome, GrabOutcome::GiveUp);
        windows[i % 12] = client.show({i % 300, i % 200, 40 + i % 90, 30 + i % 50}, kGreen);
        grabber->windowDescriptions(ListAllWindows);
    }
    const auto survivor = client.show({0, 0, 70, 50}, kBlue);
    EXPECT_TRUE(shows({survivor}, 69, 49, kBlue));
    EXPECT_EQ(grabber->trouble(), QString());
}

TEST_F(X11Windows, WindowsOffTheScreenAreNotShared)
{
    const auto helper = client.show({-100, -100, 1, 1}, kRed);
    const auto partly = client.show({-50, 470, 60, 60}, kRed);
    EXPECT_FALSE(describe(helper)->shared);
    EXPECT_TRUE(describe(partly)->shared);
    EXPECT_EQ(describe(partly)->x, -50);
}

TEST_F(X11Windows, NamesOwnersAndLayers)
{
    const auto classed = client.show({0, 0, 50, 50}, kRed);
    client.setClass(classed, QByteArray("player\0Movie Player\0", 20));
    client.setPid(classed, 4711);
    const auto menu = client.show({50, 0, 50, 50}, kRed); // says nothing, but belongs to the same program
    EXPECT_EQ(describe(classed)->ownerName, QStringLiteral("Movie Player"));
    EXPECT_EQ(describe(classed)->ownerPid, 4711);
    EXPECT_EQ(describe(menu)->ownerName, QStringLiteral("Movie Player"));
    EXPECT_EQ(describe(menu)->ownerPid, 4711);
    EXPECT_GT(describe(menu)->layer, 0);

    TestClient other;
    const auto classless = other.show({100, 0, 50, 50}, kRed);
    EXPECT_EQ(describe(classless)->ownerName, std::nullopt);
    other.setPid(classless, static_cast<std::uint32_t>(getpid()));
    EXPECT_EQ(describe(classless)->ownerName, QStringLiteral("screen_grabber_")); // the kernel keeps 15 characters
    other.setAtoms(classless, "_NET_WM_WINDOW_TYPE", "_NET_WM_WINDOW_TYPE_DESKTOP");
    EXPECT_LT(describe(classless)->layer, 0);
    other.setAtoms(classless, "_NET_WM_WINDOW_TYPE", "_NET_WM_WINDOW_TYPE_DOCK");
    EXPECT_GT(describe(classless)->layer, 0);
}

TEST_F(X11Windows, LooksAreTheWindowsOwnTitleAndTheIconOfTheWantedSize)
{
    const auto plain = client.show({0, 0, 50, 50}, kRed);
    const auto dressed = client.show({50, 0, 50, 50}, kRed);
    client.setText(dressed, "WM_NAME", "STRING", "old");
    EXPECT_EQ(grabber->looksOf({dressed}, 16).at(0).title, QStringLiteral("old"));
    client.setText(dressed, "_NET_WM_NAME", "UTF8_STRING", "\xc3\x84 title");
    // Two icons, and a third of which most is missing.
    client.setNumbers(dressed, "_NET_WM_ICON", {1, 2, kRed, kGreen, 1, 1, kBlue, 90, 90, kRed});
    const auto looks = grabber->looksOf({plain, dressed, 0xdead}, 1);
    ASSERT_EQ(looks.size(), 3U);
    EXPECT_EQ(looks[0].title, QString());
    EXPECT_TRUE(looks[0].icon.isNull());
    EXPECT_EQ(looks[1].title, QString::fromUtf8("\xc3\x84 title"));
    EXPECT_EQ(looks[1].icon.size(), QSize(1, 1));
    EXPECT_EQ(looks[1].icon.pixel(0, 0), kBlue);
    EXPECT_EQ(grabber->looksOf({dressed}, 3).at(0).icon.pixel(0, 1), kGreen) << "the largest there is";
}

TEST_F(X11Windows, OrderFollowsRaising)
{
    const auto first = client.show({0, 0, 50, 50}, kRed);
    const auto second = client.show({10, 10, 50, 50}, kGreen);
    EXPECT_EQ(grabber->windowDescriptions(ListAllWindows).front().number, second);
    client.raise(first);
    EXPECT_EQ(grabber->windowDescriptions(ListAllWindows).front().number, first);
}

TEST_F(X11Windows, PartialChangesKeepTheRestAndTheStacking)
{
    client.leaveWallpaper(0xff0000ff);
    client.fillRoot({0, 0, 640, 480}, kBlue);
    const auto low = client.show({100, 100, 200, 200}, kRed);
    const auto high = client.show({150, 150, 50, 50}, kGreen);
    const std::vector<std::uint32_t> windows{high, low, client.root()};
    ASSERT_TRUE(shows(windows, 299, 299, kRed));
    ASSERT_TRUE(shows(windows, 160, 160, kGreen));
    client.fill(low, {20, 20, 60, 60}, 0xffffffff); // screen 120..179, partly under the other window
    ASSERT_TRUE(shows(windows, 120, 120, 0xffffffff));
    const auto at = [&](int x, int y) { return last.picture.pixel(x, y) | 0xff000000U; };
    EXPECT_EQ(at(149, 149), 0xffffffff);
    EXPECT_EQ(at(150, 150), kGreen);
    EXPECT_EQ(at(119, 120), kRed);
    EXPECT_EQ(at(180, 149), kRed);
    EXPECT_EQ(at(99, 99), kBlue);
}

TEST_F(X11Windows, DesktopWithoutWallpaperIsWhatWasSeenOfIt)
{
    client.fillRoot({0, 0, 640, 480}, kGreen);
    ASSERT_TRUE(shows({client.root()}, 300, 300, kGreen));
    client.show({200, 200, 200, 200}, kRed); // what it covers was seen before
    EXPECT_TRUE(shows({client.root()}, 300, 300, kGreen));
    client.fillRoot({0, 0, 100, 100}, kBlue);
    EXPECT_TRUE(shows({client.root()}, 50, 50, kBlue));
    EXPECT_EQ(last.picture.pixel(300, 300) | 0xff000000U, kGreen);
}

TEST_F(X11Windows, AlphaIsIgnoredWhereTheScreenIgnoresIt)
{
    const auto window = client.showTranslucent({0, 0, 40, 40}, 0x00ff0000);
    EXPECT_TRUE(shows({window}, 5, 5, kRed));
}

TEST_F(X11CompositedWindows, AlphaIsBlended)
{
    client.leaveWallpaper(0xff0000ff);
    const auto window = client.showTranslucent({0, 0, 40, 40}, 0x80800000);
    EXPECT_TRUE(shows({window, client.root()}, 5, 5, 0xff80007f));
    EXPECT_TRUE(shows({window}, 5, 5, 0xff800000));
    const Grab opaque = grabber->grabWindows({window, client.root()}, infiniteRect, ImageOpaque);
    EXPECT_EQ(opaque.picture.pixel(5, 5) | 0xff000000U, 0xff800000);
}

TEST_F(X11CompositedWindows, ThePaintingSurfaceOfTheManagerIsNoWindow)
{
    const auto window = client.show({10, 10, 40, 40}, kRed);
    ASSERT_TRUE(shows({window}, 5, 5, kRed));
    for (const WindowDescription& entry : grabber->windowDescriptions(ListAllWindows)) {
        EXPECT_FALSE(entry.number != client.root() && entry.shared && entry.width >= 640) << entry.number;
    }
}

TEST_F(X11ManagedWindows, WindowComesWithItsFrameUnderTheClientsNumber)
{
    const auto window = client.show({100, 120, 200, 100}, kGreen, TestClient::Managed::Yes);
    // The frame is there before the window manager has made all of it.
    eventually([&] { return describe(window) && describe(window)->height > 100; });
    client.setClass(window, QByteArray("x\0Framed\0", 9));
    const auto description = describe(window);
    ASSERT_TRUE(description);
    EXPECT_EQ(description->ownerName, QStringLiteral("Framed"));
    EXPECT_EQ(description->layer, 0);
    EXPECT_GT(description->width, 200 - 1);
    EXPECT_GT(description->height, 100);
    client.show({0, 0, 640, 480}, kBlue); // covers it
    const int clientLeft = static_cast<int>(description->width - 200) / 2;
    ASSERT_TRUE(shows({window}, clientLeft + 100, static_cast<int>(description->height) - 50, kGreen));
    EXPECT_EQ(last.picture.size(), QSize(static_cast<int>(description->width), static_cast<int>(description->height)));
    const QRgb title = last.picture.pixel(last.picture.width() / 2, 3) | 0xff000000U;
    EXPECT_NE(title, kBlue);
    EXPECT_NE(title, kGreen);
    client.setAtoms(window, "_NET_WM_STATE", "_NET_WM_STATE_ABOVE");
    EXPECT_TRUE(eventually([&] { return describe(window)->layer > 0; }));
}

} // namespace
} // namespace lumavex::test
