// SPDX-License-Identifier: GPL-3.0-or-later
#include "capture/GuidePicture.h"

#include <QFile>
#include <QPainter>
#include <QPalette>
#include <QSvgRenderer>

namespace lumavex {

namespace {

QByteArray nameOf(const QColor& colour)
{
    return colour.name().toLatin1();
}

QColor between(const QColor& a, const QColor& b)
{
    return {(a.red() + b.red()) / 2, (a.green() + b.green()) / 2, (a.blue() + b.blue()) / 2};
}

/// Replaces the colours by marks first, so that no inserted colour is replaced again.
QByteArray coloured(QByteArray svg, const QPalette& palette)
{
    const QColor text = palette.color(QPalette::WindowText);
    const QColor base = palette.color(QPalette::Base);
    const std::pair<const char*, QByteArray> colours[] = {{"#000000", nameOf(text)},
                                                          {"#ffffff", nameOf(base)},
                                                          {"#808080", nameOf(between(text, base))},
                                                          {"#0000aa", nameOf(palette.color(QPalette::Highlight))}};
    for (std::size_t i = 0; i < std::size(colours); ++i)
        svg.replace(colours[i].first, "@" + QByteArray::number(static_cast<int>(i)));
    for (std::size_t i = 0; i < std::size(colours); ++i)
        svg.replace("@" + QByteArray::number(static_cast<int>(i)), colours[i].second);
    return svg;
}

} // namespace

void GuidePicture::setPicture(const QString& path)
{
    QFile file(path);
    svg_ = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    update();
}

void GuidePicture::paintEvent(QPaintEvent*)
{
    QSvgRenderer renderer(coloured(svg_, palette()));
    if (!renderer.isValid())
        return;
    const QSizeF size = renderer.viewBoxF().size().scaled(rect().size(), Qt::KeepAspectRatio);
    QRectF target(QPointF(), size);
    target.moveCenter(QRectF(rect()).center());
    QPainter painter(this);
    renderer.render(&painter, target);
}

} // namespace lumavex
