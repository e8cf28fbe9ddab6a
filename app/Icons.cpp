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
        QSvgRenderer renderer(coloured);
        if (mode == QIcon::Disabled)
            painter->setOpacity(0.45);
        renderer.render(painter, QRectF(rect));
        painter->setOpacity(1);
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
