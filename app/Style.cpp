// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/Style.h"

#include <QGuiApplication>
#include <QIconEngine>
#include <QPainter>
#include <QPalette>
#include <QPixmap>

#include <algorithm>
#include <cmath>

namespace lumavex {

namespace {

/// The least contrast at which text of usual size can be read (WCAG 2.1, 1.4.3).
constexpr double kReadable = 4.5;

/// WCAG 2.1, relative luminance.
double luminance(const QColor& color)
{
    const auto linear = [](double value) {
        return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

/// WCAG 2.1, contrast ratio.
double contrast(const QColor& a, const QColor& b)
{
    const auto [darker, lighter] = std::minmax({luminance(a), luminance(b)});
    return (lighter + 0.05) / (darker + 0.05);
}

/// The color, with as much of the other as it needs to be read on the ground.
QColor readable(const QColor& color, const QColor& other, const QColor& ground)
{
    QColor mixed = color;
    for (float share = 0.1F; share <= 1 && contrast(mixed, ground) < kReadable; share += 0.1F)
        mixed = QColor::fromRgbF(std::lerp(color.redF(), other.redF(), share),
                                 std::lerp(color.greenF(), other.greenF(), share),
                                 std::lerp(color.blueF(), other.blueF(), share));
    return mixed;
}

/// Two chevrons, pointing to where the bar goes on.
class ExtensionArrow final : public QIconEngine {
public:
    explicit ExtensionArrow(Qt::Orientation orientation) : orientation_(orientation) {}

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State) override
    {
        const auto group = mode == QIcon::Disabled ? QPalette::Disabled : QPalette::Active;
        const double side = std::min({rect.width(), rect.height(), 16});
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        painter->translate(QRectF(rect).center());
        painter->scale(side / 16, side / 16);
        if (orientation_ == Qt::Vertical)
            painter->rotate(90);
        else if (QGuiApplication::isRightToLeft())
            painter->rotate(180);
        painter->setPen(QPen(QGuiApplication::palette().color(group, QPalette::WindowText), 1.5, Qt::SolidLine,
                             Qt::RoundCap, Qt::RoundJoin));
        for (const double x : {-4.0, 0.5})
            painter->drawPolyline(QPolygonF({{x, -4}, {x + 3.5, 0}, {x, 4}}));
        painter->restore();
    }

    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override
    {
        QPixmap pixmap(size);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        paint(&painter, QRect({0, 0}, size), mode, state);
        return pixmap;
    }

    QIconEngine* clone() const override { return new ExtensionArrow(orientation_); }

private:
    Qt::Orientation orientation_;
};

} // namespace

void Style::polish(QPalette& palette)
{
    QProxyStyle::polish(palette);
    for (const auto group : {QPalette::Active, QPalette::Inactive}) {
        const QColor text = palette.color(group, QPalette::WindowText);
        const QColor ground = palette.color(group, QPalette::Window);
        for (const auto role : {QPalette::Link, QPalette::LinkVisited})
            palette.setColor(group, role, readable(palette.color(group, role), text, ground));
    }
}

QIcon Style::standardIcon(StandardPixmap which, const QStyleOption* option, const QWidget* widget) const
{
    if (which == SP_ToolBarHorizontalExtensionButton)
        return QIcon(new ExtensionArrow(Qt::Horizontal));
    if (which == SP_ToolBarVerticalExtensionButton)
        return QIcon(new ExtensionArrow(Qt::Vertical));
    return QProxyStyle::standardIcon(which, option, widget);
}

} // namespace lumavex
