// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/DesktopStyle.h"

#include <QGuiApplication>
#include <QImage>
#include <QPalette>
#include <QPixmap>

#include <gtest/gtest.h>

namespace lumavex {
namespace {

TEST(DesktopStyle, LinksCanBeReadOnDarkWindowsAndAreLeftAloneOnLightOnes)
{
    DesktopStyle style;
    QPalette dark(QColor(49, 54, 59), QColor(49, 54, 59));
    dark.setColor(QPalette::Link, Qt::blue);
    style.polish(dark);
    // Pure blue has a luminance of 0.07; on this ground 4.5 needs one of 0.31.
    EXPECT_GT(dark.color(QPalette::Link).green(), 120);
    EXPECT_GT(dark.color(QPalette::Link).blue(), dark.color(QPalette::Link).red()) << "still a blue";

    QPalette weak(QColor(127, 127, 127), QColor(127, 127, 127));
    weak.setColor(QPalette::Link, QColor(110, 110, 140));
    weak.setColor(QPalette::LinkVisited, QColor(110, 110, 140));
    style.polish(weak);
    EXPECT_EQ(weak.color(QPalette::Link), weak.color(QPalette::WindowText)) << "no more can be had";
    EXPECT_EQ(weak.color(QPalette::LinkVisited), weak.color(QPalette::WindowText));

    QPalette light(QColor(239, 239, 239), QColor(239, 239, 239));
    light.setColor(QPalette::Link, Qt::blue);
    style.polish(light);
    EXPECT_EQ(light.color(QPalette::Link), QColor(Qt::blue));
}

TEST(DesktopStyle, ArrowOfALongBarHasTheColourOfTheText)
{
    const QPalette usual = QGuiApplication::palette();
    QPalette palette = usual;
    palette.setColor(QPalette::WindowText, Qt::green);
    QGuiApplication::setPalette(palette);
    for (const auto which : {QStyle::SP_ToolBarHorizontalExtensionButton, QStyle::SP_ToolBarVerticalExtensionButton}) {
        const QImage arrow = DesktopStyle().standardIcon(which, nullptr, nullptr).pixmap(16, 16).toImage();
        int drawn = 0;
        for (int y = 0; y < arrow.height(); ++y)
            for (int x = 0; x < arrow.width(); ++x)
                if (const QColor pixel = arrow.pixelColor(x, y); pixel.alpha() > 200) {
                    ++drawn;
                    EXPECT_EQ(pixel.rgb(), QColor(Qt::green).rgb());
                }
        EXPECT_GT(drawn, 10);
    }
    QGuiApplication::setPalette(usual);
}

} // namespace
} // namespace lumavex
