// SPDX-License-Identifier: GPL-3.0-or-later
#include "compose/Window_Preview.h"

#include <QPaintEvent>
#include <QSignalSpy>
#include <QTest>
#include <QWindow>

#include <gmock/gmock.h>

namespace {

using namespace lumavex;

class WindowPreview : public testing::Test {
protected:
    WindowPreview() { main.setGeometry(100, 100, 300, 80); }

    QWidget main;
    float ratio = 1.7777778F;
};

TEST_F(WindowPreview, SizesFollowTheRatioOfTheMoment)
{
    const Window_Preview window(&main, ratio);
    EXPECT_EQ(window.iw_minimum, 200.0F);
    EXPECT_EQ(window.ih_minimum, 112.5F);
    EXPECT_EQ(window.windowWillResize_toSize({150, 999}), (CGSize{200, 200 / double(ratio)}));
    EXPECT_NEAR(window.windowWillResize_toSize({150, 999}).height, 112.49999916, 1e-8);
    EXPECT_NEAR(window.windowWillResize_toSize({640, 1}).height, 359.9999973, 1e-7);
    ratio = 1.0F;
    EXPECT_EQ(window.windowWillResize_toSize({300, 1}), (CGSize{300, 300}));
}

TEST_F(WindowPreview, OpensAtTheMinimumAndItsHeightFollowsItsWidth)
{
    ratio = 4.0F / 3;
    Window_Preview window(&main, ratio);
    window.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
    EXPECT_EQ(window.windowTitle(), "Preview");
    EXPECT_EQ(window.size(), QSize(200, 150));
    EXPECT_EQ(window.viewPreview()->size(), window.size());
    window.resize(400, 17);
    EXPECT_TRUE(QTest::qWaitFor([&window] { return window.size() == QSize(400, 300); }));
    ratio = 2.0F;
    window.resize(50, 50);
    EXPECT_TRUE(QTest::qWaitFor([&window] { return window.size() == QSize(200, 100); }));
}

TEST_F(WindowPreview, ClosingHidesAndKeepsPlaceAndSize)
{
    Window_Preview window(&main, ratio);
    const QSignalSpy closed(&window, &Window_Preview::windowShouldClose);
    window.show();
    window.resize(320, 1);
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
    const QRect place = window.geometry();
    EXPECT_TRUE(window.close());
    EXPECT_FALSE(window.isVisible());
    window.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
    EXPECT_EQ(window.geometry(), place);
    QTest::keyClick(&window, Qt::Key_Escape);
    EXPECT_FALSE(window.isVisible());
    EXPECT_EQ(closed.count(), 2);
    window.show();
    window.hide(); // the menu's way
    EXPECT_EQ(closed.count(), 2);
}

TEST_F(WindowPreview, StandsBesideTheMainWindowAndMovesWithIt)
{
    main.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&main));
    Window_Preview window(&main, ratio);
    window.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
    EXPECT_EQ(window.windowHandle()->transientParent(), main.windowHandle());
    EXPECT_FALSE(window.geometry().intersects(main.frameGeometry()));
    EXPECT_TRUE(window.screen()->availableGeometry().contains(window.geometry()));
    const QPoint place = window.pos();
    main.move(main.pos() + QPoint(40, 30));
    EXPECT_TRUE(QTest::qWaitFor([&] { return window.pos() == place + QPoint(40, 30); }));
    ASSERT_GT(window.geometry().top(), main.geometry().bottom());
    main.resize(main.width(), main.height() + 25); // for a message
    EXPECT_TRUE(QTest::qWaitFor([&] { return window.pos() == place + QPoint(40, 55); }));

    const Window_Preview next(&main, ratio, window.lowerLeft());
    EXPECT_EQ(next.geometry(), window.geometry());
    ratio = 1;
    const Window_Preview higher(&main, ratio, window.lowerLeft());
    EXPECT_EQ(higher.geometry().bottomLeft(), window.geometry().bottomLeft());
    EXPECT_EQ(higher.height(), 200);
}

/// Gathers what a widget is asked to paint.
class PaintedRegion : public QObject {
public:
    QRegion region;
    bool eventFilter(QObject*, QEvent* event) override
    {
        if (event->type() == QEvent::Paint)
            region += static_cast<QPaintEvent*>(event)->region();
        return false;
    }
};

TEST_F(WindowPreview, ViewDrawsOnlyWhatChanged)
{
    View_Preview view;
    view.resize(200, 112);
    view.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&view));
    PaintedRegion painted;
    view.installEventFilter(&painted);
    const auto paintedBy = [&](const QSize& size, const std::optional<ChangedArea>& changed) {
        QTest::qWait(50);
        painted.region = {};
        QImage picture(size, QImage::Format_RGB32);
        picture.fill(Qt::white);
        view.setPicture(picture, changed);
        QTest::qWait(50);
        return painted.region;
    };
    const QSize size = view.pixelSize();
    EXPECT_EQ(paintedBy(size, ChangedArea(QRect(1, 1, 1, 1))), view.rect()) << "there was no picture before";
    EXPECT_EQ(paintedBy(size, {}), view.rect());
    EXPECT_EQ(paintedBy(size, ChangedArea()), QRegion());
    ChangedArea two(QRect(10, 20, 5, 6));
    two.add(QRect(100, 50, 1, 1));
    EXPECT_EQ(paintedBy(size, two), QRegion(10, 20, 5, 6) + QRegion(100, 50, 1, 1));
    EXPECT_EQ(paintedBy(size / 2, ChangedArea(QRect(1, 1, 1, 1))), view.rect());
}

TEST_F(WindowPreview, ViewShowsThePictureAndBlackWithoutOne)
{
    View_Preview view;
    view.resize(20, 10);
    EXPECT_EQ(view.pixelSize(), QSize(20, 10));
    EXPECT_EQ(view.grab().toImage().pixel(5, 5), 0xFF000000);
    QImage picture(20, 10, QImage::Format_RGB32);
    picture.fill(Qt::white);
    picture.setPixel(3, 4, 0xFF0000FF);
    view.setPicture(picture, {});
    EXPECT_EQ(view.grab().toImage().convertToFormat(QImage::Format_RGB32), picture);
}

} // namespace
