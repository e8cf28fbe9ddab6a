// SPDX-License-Identifier: GPL-3.0-or-later
#include "compose/View_Preview.h"

#include <QPainter>

namespace lumavex {

View_Preview::View_Preview(QWidget* parent) : QWidget(parent)
{
    setAttribute(Qt::WA_OpaquePaintEvent);
}

void View_Preview::setPicture(const QImage& picture, const std::optional<ChangedArea>& changed)
{
    const bool pixelForPixel = picture_.size() == picture.size() && picture.size() == pixelSize();
    picture_ = picture;
    if (!changed || !pixelForPixel) {
        update();
        return;
    }
    // The view may be on the captured screen, where everything that is drawn is captured again.
    const qreal scale = devicePixelRatioF();
    for (const QRect& part : *changed)
        update(QRectF(part.x() / scale, part.y() / scale, part.width() / scale, part.height() / scale).toAlignedRect());
}

QSize View_Preview::pixelSize() const
{
    return (QSizeF(size()) * devicePixelRatioF()).toSize();
}

void View_Preview::drawRect(const QRect& dirty)
{
    QPainter painter(this);
    if (picture_.isNull()) {
        painter.fillRect(dirty, Qt::black);
        return;
    }
    painter.setClipRect(dirty);
    painter.setRenderHint(QPainter::SmoothPixmapTransform, picture_.size() != pixelSize());
    painter.drawImage(QRectF(rect()), picture_, QRectF(picture_.rect()));
}

} // namespace lumavex
