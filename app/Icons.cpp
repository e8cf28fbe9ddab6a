// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/Icons.h"

#include <QFile>
#include <QGuiApplication>
#include <QIconEngine>
#include <QPainter>
#include <QPalette>
#include <QPixmap>
#include <QSvgRenderer>

#include <utility>

namespace lumavex {

namespace {

constexpr const char* accent = "#e5484d"; ///< red of the record button

/// The accent colour mixed half and half with the window colour, for disabled commands.
QColor paler(const QPalette& palette)
{
    const QColor red(QLatin1String{accent});
    const QColor ground = palette.color(QPalette::Disabled, QPalette::Window);
    return {(red.red() + ground.red()) / 2, (red.green() + ground.green()) / 2, (red.blue() + ground.blue()) / 2};
}

class SvgIconEngine final : public QIconEngine {
public:
    explicit SvgIconEngine(QByteArray svg) : svg_(std::move(svg)) {}

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State) override
    {
        const QPalette palette = QGuiApplication::palette();
        const auto group = mode == QIcon::Disabled ? QPalette::Disabled : QPalette::Active;
        const auto role = mode == QIcon::Selected ? QPalette::HighlightedText : QPalette::WindowText;
        QByteArray coloured = svg_;
        coloured.replace("#000000", palette.color(group, role).name().toLatin1());
        if (mode == QIcon::Disabled)
            coloured.replace(accent, paler(palette).name().toLatin1());
        QSvgRenderer renderer(coloured);
        renderer.render(painter, QRectF(rect));
    }

    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override
    {
        QPixmap pixmap(size);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        paint(&painter, QRect({0, 0}, size), mode, state);
        return pixmap;
    }

    QIconEngine* clone() const override { return new SvgIconEngine(svg_); }

private:
    QByteArray svg_;
};

} // namespace

QIcon themedIcon(const QString& name)
{
    QFile file(QStringLiteral(":/icons/%1.svg").arg(name));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return QIcon(new SvgIconEngine(file.readAll()));
}

} // namespace lumavex
