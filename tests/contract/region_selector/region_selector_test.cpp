// SPDX-License-Identifier: GPL-3.0-or-later
#include "capture/RegionHandles.h"
#include "capture/Window_Transparent_Region.h"
#include "platform/x11/X11Overlay.h"
#include "tests/contract/region_selector/OtherClient.h"

#include <QApplication>
#include <QProcess>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <ostream>

namespace lumavex {

static void PrintTo(const CGRect& r, std::ostream* out)
{
    *out << "(" << r.x << ", " << r.y << ", " << r.width << ", " << r.height << ")";
}

} // namespace lumavex

using namespace lumavex;
using namespace std::chrono_literals;

namespace {

bool until(const std::function<bool()>& done)
{
    return QTest::qWaitFor(done, 10'000);
}

/// The selector on the real screen, with another program's window beneath. The pointer and the keyboard are the
/// display's own.
class RegionSelector : public testing::Test {
protected:
    RegionSelector()
    {
        state.size_Screen = {static_cast<double>(beneath.screenSize().width()),
                             static_cast<double>(beneath.screenSize().height())};
        state.size_Region = {320, 240};
        x0 = (beneath.screenSize().width() - 320) / 2;
        y0 = (beneath.screenSize().height() - 240) / 2;
        input(QStringLiteral("mouseup 1"));
    }

    /// Opens the selector, carries out the script once it shows, and returns what the modal run returned. A script must
    /// end it.
    int run(const std::function<void()>& script)
    {
        Window_Transparent_Region selector(state, *overlay);
        QTimer::singleShot(0, &selector, [&] {
            if (until([&] { return selector.isActiveWindow() && shows(initialRegion()); }))
                script();
            else
                ADD_FAILURE() << "The selector does not show";
            // Whatever became of the script, the test goes on.
            QTimer::singleShot(10s, &selector, [&] {
                ADD_FAILURE() << "The selector was not ended";
                selector.close();
            });
        });
        return selector.runModal();
    }

    CGRect initialRegion() const { return {double(x0), double(y0), 320, 240}; }

    /// Whether the selector has the region, and the screen shows it: its frame, its handles, and beside them what lies
    /// beneath, to the pixel.
    bool shows(const CGRect& region)
    {
        if (state.rect_Screen_Region != region)
            return false;
        const QImage picture = beneath.screen();
        const QRect frame = flippedDown(region, state.size_Screen.height).toRect();
        const QRect outside = frame.adjusted(-5, -5, 5, 5);
        const QRect inside = frame.adjusted(5, 5, -5, -5);
        const QRect centre = QRect(0, 0, 12, 12).translated(frame.center() - QPoint(6, 6));
        const QPoint middle(frame.center().x(), frame.top());
        return picture.pixel(middle) == 0xff0000ffU && picture.pixel(middle - QPoint(0, 1)) == 0xff0000ffU
               && isBeneath(picture, QRegion(picture.rect()) - outside) && isBeneath(picture, QRegion(inside) - centre);
    }

    static bool isBeneath(const QImage& picture, const QRegion& where)
    {
        for (const QRect& rect : where)
            for (int y = rect.top(); y <= rect.bottom(); ++y)
                for (int x = rect.left(); x <= rect.right(); ++x)
                    if ((picture.pixel(x, y) | 0xff000000U) != OtherClient::colour)
                        return false;
        return true;
    }

    static void input(const QString& what)
    {
        QProcess xdotool;
        xdotool.start(QStringLiteral("xdotool"), what.split(u' '));
        ASSERT_TRUE(xdotool.waitForFinished(10000) && xdotool.exitCode() == 0);
    }
    void point(int x, int y) const
    {
        input(QStringLiteral("mousemove %1 %2").arg(x).arg(beneath.screenSize().height() - 1 - y));
    }
    /// From and to locations in screen coordinates; the pointer stops on its way.
    void drag(QPoint from, QPoint to) const
    {
        point(from.x(), from.y());
        input(QStringLiteral("mousedown 1"));
        point((from.x() + to.x()) / 2 + 3, (from.y() + to.y()) / 2 + 3);
        point(to.x(), to.y());
        input(QStringLiteral("mouseup 1"));
    }
    void click(int x, int y) const
    {
        point(x, y);
        input(QStringLiteral("click 1"));
    }
    void clickCentre() const
    {
        const CGSize& centre = state.arrayScreenPointSquare.at(CentreHandle).sizeDimension;
        click(static_cast<int>(centre.width) + 5, static_cast<int>(centre.height) + 5);
    }

    OtherClient beneath;
    CaptureState state;
    std::unique_ptr<ScreenOverlay> overlay = createX11Overlay();
    int x0 = 0;
    int y0 = 0;
};

} // namespace

TEST_F(RegionSelector, FollowsTheDraggedCornersToThePixel)
{
    const int code = run([this] {
        // A press on the very edge of a square hits it, also where nothing is drawn.
        drag({x0 + 5, y0 + 5}, {x0, y0});
        EXPECT_TRUE(until([this] { return shows({x0 + 5.0, y0 + 5.0, 315, 235}); }));
        drag({x0 + 320 + 5, y0 + 240 + 5}, {x0 + 401, y0 + 301});
        EXPECT_TRUE(until([this] { return shows({x0 + 5.0, y0 + 5.0, 401, 301}); }));
        drag({x0 + 1, y0 + 302}, {x0 - 99, y0 + 333});
        EXPECT_TRUE(until([this] { return shows({x0 - 94.0, y0 + 5.0, 500, 333}); }));
        drag({x0 + 405, y0 + 4}, {x0 + 350, y0 - 77});
        EXPECT_TRUE(until([this] { return shows({x0 - 94.0, y0 - 72.0, 449, 410}); }));
        // Past the opposite corner.
        drag({x0 - 97, y0 - 75}, {x0 + 371, y0 - 75});
        EXPECT_TRUE(until([this] { return shows({x0 + 355.0, y0 - 70.0, 21, 408}); }));
        clickCentre();
    });
    EXPECT_EQ(code, 1);
    EXPECT_EQ(state.rect_Screen_Region, (CGRect{x0 + 355.0, y0 - 70.0, 21, 408}));
    EXPECT_EQ(beneath.pressesSoFar(), 0);
}

TEST_F(RegionSelector, TakesThePressesBesideTheHandlesToo)
{
    run([this] {
        const int right = beneath.screenSize().width() - 1;
        const int top = beneath.screenSize().height() - 1;
        for (const QPoint& place : {QPoint{0, 0},
                                    {right, 0},
                                    {0, top},
                                    {right, top},
                                    {x0 + 50, y0 + 50},
                                    {x0 + 50, y0},
                                    {x0 - 6, y0},
                                    {x0, y0 + 6}})
            drag(place, {300, 300});
        EXPECT_TRUE(until([this] { return shows(initialRegion()); }));
        EXPECT_EQ(beneath.pressesSoFar(), 0);
        clickCentre();
    });
    EXPECT_EQ(state.rect_Screen_Region, initialRegion());
    EXPECT_EQ(beneath.pressesSoFar(), 0);
    // The screen is everybody's again.
    ASSERT_TRUE(until([this] { return isBeneath(beneath.screen(), QRect({0, 0}, beneath.screenSize())); }));
    click(300, 300);
    EXPECT_TRUE(until([this] { return beneath.pressesSoFar() == 1; }));
}

TEST_F(RegionSelector, DrawsFrameAndHandlesExactly)
{
    run([this] {
        const QImage picture = beneath.screen();
        const auto at = [&](double x, double y) { // the pixel whose lower-left corner is there
            return QColor(picture.pixel(static_cast<int>(x), picture.height() - 1 - static_cast<int>(y))).name();
        };
        const auto filled = [&](int x, int y, const char* colour) {
            for (int dy = 0; dy < 10; ++dy)
                for (int dx = 0; dx < 10; ++dx)
                    if (at(x + dx, y + dy) != QLatin1String(colour))
                        return false;
            return true;
        };
        for (const QPoint& corner : {QPoint{x0, y0}, {x0 + 320, y0}, {x0, y0 + 240}, {x0 + 320, y0 + 240}})
            EXPECT_TRUE(filled(corner.x() - 5, corner.y() - 5, "#00ff00")) << corner.x() << " " << corner.y();
        // The line is three pixels wide and lies on both sides of the edge: half a pixel, two, and half a pixel.
        const QString none = QColor(OtherClient::colour).name();
        for (const auto& [offset, seen] : {std::pair{-3, false}, {-2, true}, {1, true}, {2, false}})
            EXPECT_EQ(at(x0 + offset, y0 + 120) != none, seen) << offset;
        // A cross in the red square.
        EXPECT_EQ(at(x0 + 155, y0 + 115), QLatin1String("#ff0000"));
        EXPECT_LT(QColor(at(x0 + 159, y0 + 119)).red(), 128);
        clickCentre();
    });
}

TEST_F(RegionSelector, ReachesTheLastPixelOfTheScreen)
{
    run([this] {
        const int right = beneath.screenSize().width() - 1;
        const int top = beneath.screenSize().height() - 1;
        drag({x0, y0}, {0, 0});
        drag({x0 + 320, y0 + 240}, {right, top});
        const auto shown = [&](int x, int y) {
            return until([&] { return QColor(beneath.screen().pixel(x, y)) == QColor(Qt::green); });
        };
        EXPECT_TRUE(shown(right, 0));
        EXPECT_TRUE(shown(0, top));
        EXPECT_TRUE(shown(right, top));
        EXPECT_TRUE(shown(0, 0));
        EXPECT_EQ(state.rect_Screen_Region, (CGRect{5, 5, double(right), double(top)}));
        clickCentre();
    });
}

TEST_F(RegionSelector, EndsByKeyboardAndByClosing)
{
    for (const char* key : {"Escape", "Return", "alt+F4"}) {
        EXPECT_EQ(run([key] { input(QStringLiteral("key ") + QLatin1String(key)); }), 1) << key;
        EXPECT_EQ(state.rect_Screen_Region, initialRegion());
    }
}

TEST_F(RegionSelector, FollowsACompositingManagerThatComesAndGoes)
{
    if (overlay->blendsTranslucentWindows())
        GTEST_SKIP() << "The display has one already";
    run([this] {
        const int settling = 600; // ms; the selector looks at the desktop four times a second
        const auto works = [this](const QPoint& from, const QPoint& to) {
            click(200, 200);
            drag(from, to);
            const double x = to.x() + 5;
            const double y = to.y() + 5;
            EXPECT_TRUE(until([&] { return shows({x, y, x0 + 320 - x, y0 + 240 - y}); }));
            EXPECT_EQ(beneath.pressesSoFar(), 0);
        };
        QProcess picom;
        picom.startCommand(QStringLiteral("picom --backend xrender --config /dev/null"));
        ASSERT_TRUE(until([this] { return overlay->blendsTranslucentWindows(); }));
        QTest::qWait(settling);
        EXPECT_TRUE(until([this] { return shows(initialRegion()); }));
        works({x0, y0}, {x0 - 45, y0 - 45});
        picom.terminate();
        ASSERT_TRUE(picom.waitForFinished());
        QTest::qWait(settling);
        EXPECT_TRUE(until([this] { return shows({x0 - 40.0, y0 - 40.0, 360, 280}); }));
        works({x0 - 41, y0 - 41}, {x0 - 5, y0 - 5});
        clickCentre();
    });
}
