// SPDX-License-Identifier: GPL-3.0-or-later
#include "settings_dialog/PictureView.h"

#include <QPainter>

namespace lumavex {

void PictureView::setPicture(const QImage& picture, const QString& emptyText)
{
    picture_ = picture;
    emptyText_ = emptyText;
    setAccessibleDescription(picture.isNull() ? emptyText : QString());
    setToolTip(picture.isNull() ? QString() : tr("%1 x %2 pixels").arg(picture.width()).arg(picture.height()));
    update();
}

void PictureView::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    QColor line = palette().color(QPalette::WindowText);
    line.setAlphaF(0.35F);
    const QRectF frame = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);
    if (picture_.isNull()) {
        painter.setPen(line);
        painter.setBrush(palette().color(QPalette::Base));
        painter.drawRoundedRect(frame, 3, 3);
        painter.setPen(palette().color(QPalette::Text));
        painter.drawText(rect().adjusted(6, 4, -6, -4), Qt::AlignCenter | Qt::TextWordWrap, emptyText_);
        return;
    }
    const QSizeF fitted = QSizeF(picture_.size()).scaled(QSizeF(size()) - QSizeF(8, 8), Qt::KeepAspectRatio);
    QRectF place(QPointF(), fitted);
    place.moveCenter(QRectF(rect()).center());
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(0xf2, 0xf2, 0xf2));
    painter.drawRoundedRect(frame, 3, 3);
    painter.setBrush(QBrush(QColor(0xd8, 0xd8, 0xd8), Qt::Dense4Pattern));
    painter.drawRoundedRect(frame, 3, 3);
    painter.drawImage(place, picture_);
    painter.setPen(line);
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(frame, 3, 3);
}

} // namespace lumavex
