// SPDX-License-Identifier: GPL-3.0-or-later
#include "compose/Window_Preview.h"

#include <QGuiApplication>
#include <QProcess>
#include <QStandardPaths>
#include <QTest>

#include <gmock/gmock.h>

namespace {

using namespace lumavex;

/// What a user does to a window; needs a display and the program xdotool.
class WindowPreviewOnADisplay : public testing::Test {
protected:
    void SetUp() override
    {
        if (QGuiApplication::platformName() != "xcb" || QStandardPaths::findExecutable("xdotool").isEmpty())
            GTEST_SKIP() << "needs an X display and xdotool";
        main.setGeometry(200, 150, 300, 80);
        main.show();
        window.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
    }

    void resizedByTheUser(int width, int height)
    {
        ASSERT_EQ(QProcess::execute("xdotool", {"windowsize", QString::number(window.winId()), QString::number(width),
                                                QString::number(height)}),
                  0);
    }

    bool becomes(const QSize& size)
    {
        return QTest::qWaitFor([&] { return window.size() == size; }, 3000);
    }

    QWidget main;
    float ratio = 1.7777778F;
    Window_Preview window{&main, ratio};
};

TEST_F(WindowPreviewOnADisplay, HeightFollowsWhenTheUserResizes)
{
    EXPECT_EQ(window.size(), QSize(200, 112));
    resizedByTheUser(640, 600);
    EXPECT_TRUE(becomes({640, 360})) << window.width() << 'x' << window.height();
    resizedByTheUser(320, 40);
    EXPECT_TRUE(becomes({320, 180})) << window.width() << 'x' << window.height();
    // It rests there: a window that argues with the window manager would go on changing.
    int resizes = 0;
    for (int i = 0; i < 10; ++i) {
        const QSize before = window.size();
        QTest::qWait(20);
        resizes += window.size() != before;
    }
    EXPECT_EQ(resizes, 0);
}

TEST_F(WindowPreviewOnADisplay, IsTransientForTheMainWindowAndOfItsClass)
{
    const auto property = [](WId id, const QString& name) {
        QProcess process;
        process.start("xprop", {"-id", QString::number(id), name});
        return process.waitForFinished(5000) ? process.readAllStandardOutput().simplified() : QByteArray();
    };
    if (QStandardPaths::findExecutable("xprop").isEmpty())
        GTEST_SKIP() << "needs xprop";
    EXPECT_TRUE(property(window.winId(), "WM_TRANSIENT_FOR").endsWith("0x" + QByteArray::number(main.winId(), 16)));
    EXPECT_EQ(property(window.winId(), "WM_CLASS"), property(main.winId(), "WM_CLASS"));
}

} // namespace
