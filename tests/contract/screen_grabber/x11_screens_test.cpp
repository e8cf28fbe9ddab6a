// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/x11/XcbScreenGrabber.h"
#include "tests/contract/screen_grabber/TestClient.h"
#include "tests/contract/screen_grabber/TestServer.h"

#include <QFile>
#include <QPainter>
#include <QTemporaryDir>

#include <gmock/gmock.h>

#include <atomic>
#include <thread>
#include <utility>
#include <vector>

// Screens of other kinds and sizes, and screens that change or vanish.

namespace lumavex::test {
namespace {

constexpr QRgb kColor = 0xff3264c8;

void expectGivenUp(ScreenGrabber& grabber, const std::string& reason)
{
    EXPECT_EQ(grabber.grabMainDisplay().outcome, GrabOutcome::GiveUp);
    EXPECT_EQ(grabber.grabWindows({1}).outcome, GrabOutcome::GiveUp);
    EXPECT_TRUE(grabber.windowDescriptions(ListAllWindows).empty());
    EXPECT_FALSE(grabber.trouble().isEmpty());
    EXPECT_THAT(grabber.trouble().toStdString(), testing::HasSubstr(reason));
}

TEST(X11Screens, LostScreenIsGivenUpAndItsPicturesStay)
{
    TestServer server(TestServer::Options{});
    auto grabber = createXcbScreenGrabber();
    QImage kept;
    {
        TestClient client;
        client.show({0, 0, 640, 480}, kColor);
        kept = grabber->grabMainDisplay().picture;
        server.kill();
    }
    expectGivenUp(*grabber, "lost");
    grabber.reset();
    EXPECT_EQ(kept.pixel(639, 479) | 0xff000000U, kColor);
}

TEST(X11Screens, DeepColoursAreConverted)
{
    TestServer server({.screen = "320x200x30", .arguments = {}});
    TestClient client;
    const auto window = client.show({0, 0, 100, 100}, kColor);
    const auto grabber = createXcbScreenGrabber();
    ASSERT_EQ(grabber->trouble(), QString());
    EXPECT_EQ(grabber->grabMainDisplay().picture.pixel(50, 50) | 0xff000000U, kColor);
    EXPECT_TRUE(eventually([&] {
        const Grab grab = grabber->grabWindows({window});
        return grab.outcome == GrabOutcome::Success && (grab.picture.pixel(50, 50) | 0xff000000U) == kColor;
    }));
}

TEST(X11Screens, FewColoursAreRefusedInWords)
{
    for (const auto* screen : {"320x200x16", "320x200x8"}) {
        TestServer server({.screen = screen, .arguments = {}});
        expectGivenUp(*createXcbScreenGrabber(), screen + 8);
    }
}

TEST(X11Screens, WithoutOptionalExtensionsTheScreenIsStillGrabbed)
{
    TestServer server({.arguments = {"-extension", "DAMAGE", "-extension", "RANDR", "-extension", "Composite"}});
    TestClient client;
    const auto window = client.show({0, 0, 640, 480}, kColor);
    const auto grabber = createXcbScreenGrabber();
    EXPECT_EQ(grabber->trouble(), QString());
    EXPECT_EQ(grabber->sizeOfMainDisplay(), (CGSize{640, 480}));
    EXPECT_EQ(grabber->grabMainDisplay().picture.pixel(639, 479) | 0xff000000U, kColor);
    EXPECT_EQ(grabber->grabWindows({window}).outcome, GrabOutcome::GiveUp);
    EXPECT_FALSE(grabber->trouble().isEmpty());
}

TEST(X11Screens, OddSizesHaveNoGapsBetweenRows)
{
    TestServer server({.screen = "333x211x24", .arguments = {}});
    TestClient client;
    client.show({332, 210, 1, 1}, kColor);
    const auto grabber = createXcbScreenGrabber();
    const Grab grab = grabber->grabMainDisplay();
    EXPECT_EQ(grab.picture.size(), QSize(333, 211));
    EXPECT_EQ(grab.picture.pixel(332, 210) | 0xff000000U, kColor);
    EXPECT_NE(grab.picture.pixel(331, 210) | 0xff000000U, kColor);
}

TEST(X11Screens, SizeFollowsTheMainDisplay)
{
    TestServer server({.screen = "800x600x24", .arguments = {}});
    TestClient client;
    const auto grabber = createXcbScreenGrabber();
    ASSERT_EQ(grabber->sizeOfMainDisplay(), (CGSize{800, 600}));
    ASSERT_EQ(grabber->grabMainDisplay().picture.size(), QSize(800, 600));
    for (const QStringList& arguments :
         {QStringList{"--newmode", "small", "10", "512", "520", "528", "540", "384", "390", "395", "400"},
          QStringList{"--addmode", "screen", "small"}, QStringList{"--output", "screen", "--mode", "small"}})
        ASSERT_TRUE(TestServer::run("xrandr", arguments));
    EXPECT_EQ(grabber->sizeOfMainDisplay(), (CGSize{512, 384}));
    Grab grab;
    EXPECT_TRUE(eventually([&] { return (grab = grabber->grabMainDisplay()).outcome == GrabOutcome::Success; }));
    EXPECT_EQ(grab.picture.size(), QSize(512, 384));
    client.movePointer(0, 383);
    EXPECT_EQ(grabber->mouseLocation(), (CGPoint{0, 0}));
    ASSERT_TRUE(TestServer::run("xrandr", {"--output", "screen", "--primary"}));
    EXPECT_EQ(grabber->sizeOfMainDisplay(), (CGSize{512, 384}));
    // A root larger than its one output: only the output is the main display.
    ASSERT_TRUE(TestServer::run("xrandr", {"--fb", "700x500"}));
    EXPECT_EQ(grabber->sizeOfMainDisplay(), (CGSize{512, 384}));
    EXPECT_EQ(grabber->windowDescriptions(ListAllWindows).back().width, 512);
}

/// As the toolkit chooses the screen of the region selector.
TEST(X11Screens, OfSeveralMonitorsThePrimaryOneCountsElseTheFirst)
{
    TestServer server({.screen = "800x600x24", .arguments = {}});
    ASSERT_TRUE(TestServer::run("xrandr", {"--setmonitor", "right", "300/80x600/160+500+0", "screen"}));
    ASSERT_TRUE(TestServer::run("xrandr", {"--setmonitor", "left", "500/130x600/160+0+0", "none"}));
    EXPECT_EQ(createXcbScreenGrabber()->sizeOfMainDisplay(), (CGSize{300, 600}));
    ASSERT_TRUE(TestServer::run("xrandr", {"--delmonitor", "left"}));
    ASSERT_TRUE(TestServer::run("xrandr", {"--setmonitor", "*left", "500/130x600/160+0+0", "none"}));
    EXPECT_EQ(createXcbScreenGrabber()->sizeOfMainDisplay(), (CGSize{500, 600}));
}

TEST(X11Screens, ChangesThatNoDamageTellsOfAreFound)
{
    const QTemporaryDir folder;
    TestServer server({.arguments = {"-fbdir", folder.path()}});
    TestClient client;
    client.show({0, 0, 640, 480}, 0xff000000);
    QFile file(folder.filePath("Xvfb_screen0")); // the screen itself, at the end of a window dump
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    uchar* const memory = file.map(0, file.size());
    ASSERT_TRUE(memory);
    auto* const pixels = reinterpret_cast<std::uint32_t*>(memory + file.size()) - 640 * 480;
    const auto grabber = createXcbScreenGrabber();
    const Grab before = grabber->grabMainDisplay();
    EXPECT_EQ(grabber->grabMainDisplay().serial, before.serial);

    pixels[100 * 640 + 200] = kColor;
    Grab grab;
    ASSERT_TRUE(eventually([&] { return (grab = grabber->grabMainDisplay()).serial != before.serial; }));
    const auto changed = grab.changes.since(before.serial);
    ASSERT_TRUE(changed);
    EXPECT_THAT(std::vector<QRect>(changed->begin(), changed->end()), testing::ElementsAre(QRect(200, 100, 1, 1)));
    // While there are such changes no grab misses one; equal pixels are none.
    for (int i = 0; i < 20; ++i) {
        pixels[i] = kColor;
        grab = grabber->grabMainDisplay();
        EXPECT_EQ(grab.picture.pixel(i, 0) | 0xff000000U, kColor);
        EXPECT_EQ(grabber->grabMainDisplay().serial, grab.serial);
    }
}

TEST(X11Screens, PicturesMayEndOnOtherThreadsAndAfterTheGrabber)
{
    TestServer server(TestServer::Options{});
    TestClient client;
    const auto window = client.show({0, 0, 640, 480}, 0xff000000);
    auto grabber = createXcbScreenGrabber();
    std::vector<std::thread> workers;
    for (unsigned i = 1; i <= 30; ++i) {
        const QRgb color = 0xff000000U | i * 0x010305U;
        client.fill(window, {0, 0, 640, 480}, color);
        workers.emplace_back([picture = grabber->grabMainDisplay().picture, color, i]() mutable {
            std::this_thread::sleep_for(std::chrono::milliseconds(i % 7));
            EXPECT_EQ(picture.pixel(639, 479) | 0xff000000U, color) << "the memory was used again too early";
            picture = QImage();
        });
    }
    grabber.reset();
    for (std::thread& worker : workers)
        worker.join();
}

TEST(X11Screens, ChangesMissNothingThatIsDrawnMeanwhile)
{
    TestServer server(TestServer::Options{});
    TestClient client;
    const auto window = client.show({0, 0, 640, 480}, 0xff000000);
    std::atomic<bool> enough = false;
    const auto grabber = createXcbScreenGrabber();
    const std::vector<std::uint32_t> windows{window};
    for (const bool main : {true, false}) {
        const auto grabNow = [&] { return main ? grabber->grabMainDisplay() : grabber->grabWindows(windows); };
        const auto reference = createXcbScreenGrabber();
        enough = false;
        QImage followed;
        std::uint64_t serial = 0;
        std::thread painter([&] {
            TestClient other;
            for (unsigned i = 1; !enough; ++i) {
                const QRect part(static_cast<int>(i * 37 % 600), static_cast<int>(i * 71 % 460),
                                 1 + static_cast<int>(i % 30), 1 + static_cast<int>(i % 20));
                other.fill(window, part, 0xff000000U | i * 0x9e3779U);
            }
        });
        const auto follow = [&] {
            const Grab grab = grabNow();
            const auto changed = grab.changes.since(std::exchange(serial, grab.serial));
            const ChangedArea area = changed.value_or(ChangedArea(grab.picture.rect()));
            if (followed.isNull())
                followed = grab.picture.copy();
            for (const QRect& rect : area)
                QPainter(&followed).drawImage(rect, grab.picture, rect);
        };
        for (int i = 0; i < 300; ++i)
            follow();
        enough = true;
        painter.join();
        follow();
        const QImage truth = reference->grabMainDisplay().picture; // the window covers the screen
        for (int y = 0; y < truth.height(); ++y)
            for (int x = 0; x < truth.width(); ++x)
                ASSERT_EQ(followed.pixel(x, y) & 0xffffffU, truth.pixel(x, y) & 0xffffffU) << main << x << ' ' << y;
    }
}

} // namespace
} // namespace lumavex::test
