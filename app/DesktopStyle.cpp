// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/DesktopStyle.h"

#include <QGuiApplication>
#include <QIconEngine>
#include <QPainter>
#include <QPalette>
#include <QPixmap>

#include <algorithm>
#include <cmath>

namespace lumavex {

namespace {

/// Minimum contrast for legible text of usual size (WCAG 2.1, 1.4.3).
constexpr double kLeastContrast = 4.5;

/// Relative luminance by WCAG 2.1.
double luminance(const QColor& color)
{
    const auto linear = [](double value) {
        return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

/// Contrast ratio by WCAG 2.1.
double contrast(const QColor& a, const QColor& b)
{
    const auto [darker, lighter] = std::minmax({luminance(a), luminance(b)});
    return (lighter + 0.05) / (darker + 0.05);
}

/// Mixes as many tenths of `other` into the colour as it needs to be legible on the background.
QColor readable(const QColor& color, const QColor& other, const QColor& background)
{
    QColor mixed = color;
    for (int tenths = 1; tenths <= 10 && contrast(mixed, background) < kLeastContrast; ++tenths) {
        const float share = static_cast<float>(tenths) / 10;
        mixed = QColor::fromRgbF(std::lerp(color.redF(), other.redF(), share),
                                 std::lerp(color.greenF(), other.greenF(), share),
                                 std::lerp(color.blueF(), other.blueF(), share));
    }
    return mixed;
}

/// Two chevrons that point to the hidden part of the bar.
class ExtensionArrow final : public QIconEngine {
public:
    explicit ExtensionArrow(Qt::Orientation orientation) : orientation_(orientation) {}

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State) override
    {
        draw(*painter, rect, mode, 1);
    }

    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override
    {
        return scaledPixmap(size, mode, state, 1);
    }

    /// `scale` is device pixels per window pixel. `size` is in device pixels with Qt 6.4, in window pixels with 6.8.
    QPixmap scaledPixmap(const QSize& size, QIcon::Mode mode, QIcon::State, qreal scale) override
    {
        const QSize pixels = QT_VERSION < QT_VERSION_CHECK(6, 8, 0) ? size : (QSizeF(size) * scale).toSize();
        QPixmap pixmap(pixels);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        draw(painter, QRect({0, 0}, pixels), mode, scale);
        return pixmap;
    }

    QIconEngine* clone() const override { return new ExtensionArrow(orientation_); }

private:
    void draw(QPainter& painter, const QRect& rect, QIcon::Mode mode, double scale) const
    {
        constexpr double kSide = 16;
        const auto group = mode == QIcon::Disabled ? QPalette::Disabled : QPalette::Active;
        const double side = std::min<double>({double(rect.width()), double(rect.height()), kSide * scale});
        painter.save();
        painter.setRenderHint(QPainter::Antialiasing);
        painter.translate(QRectF(rect).center());
        painter.scale(side / kSide, side / kSide);
        if (orientation_ == Qt::Vertical)
            painter.rotate(90);
        else if (QGuiApplication::isRightToLeft())
            painter.rotate(180);
        painter.setPen(QPen(QGuiApplication::palette().color(group, QPalette::WindowText), 1.5, Qt::SolidLine,
                            Qt::RoundCap, Qt::RoundJoin));
        for (const double x : {-4.0, 0.5})
            painter.drawPolyline(QPolygonF({{x, -4}, {x + 3.5, 0}, {x, 4}}));
        painter.restore();
    }

    Qt::Orientation orientation_;
};

} // namespace

void DesktopStyle::polish(QPalette& palette)
{
    QProxyStyle::polish(palette);
    for (const auto group : {QPalette::Active, QPalette::Inactive}) {
        const QColor text = palette.color(group, QPalette::WindowText);
        const QColor background = palette.color(group, QPalette::Window);
        for (const auto role : {QPalette::Link, QPalette::LinkVisited})
            palette.setColor(group, role, readable(palette.color(group, role), text, background));
    }
}

QIcon DesktopStyle::standardIcon(StandardPixmap which, const QStyleOption* option, const QWidget* widget) const
{
    if (which == SP_ToolBarHorizontalExtensionButton)
        return QIcon(new ExtensionArrow(Qt::Horizontal));
    if (which == SP_ToolBarVerticalExtensionButton)
        return QIcon(new ExtensionArrow(Qt::Vertical));
    return QProxyStyle::standardIcon(which, option, widget);
}

} // namespace lumavex
