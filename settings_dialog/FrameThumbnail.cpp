// SPDX-License-Identifier: GPL-3.0-or-later
#include "settings_dialog/FrameThumbnail.h"

#include <QPainter>

#include <algorithm>
#include <cmath>

namespace lumavex {

namespace {

constexpr int longestSide = 288;

QString nameOf(FrameOutline::Of of)
{
    switch (of) {
    case FrameOutline::Of::Screen:
        return FrameThumbnail::tr("Screen");
    case FrameOutline::Of::Camera:
        return FrameThumbnail::tr("Camera");
    case FrameOutline::Of::Overlay:
        break;
    }
    return FrameThumbnail::tr("Overlay");
}

/// Draws an outline that is visible on any picture: light beside dark, with its name in the middle.
void draw(QPainter& painter, const QRectF& place, const QString& name)
{
    painter.setBrush(QColor(255, 255, 255, 60));
    painter.setPen(QPen(QColor(0, 0, 0, 200), 3));
    painter.drawRect(place);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(QColor(255, 255, 255), 1.4));
    painter.drawRect(place);
    const QSizeF text = painter.fontMetrics().size(0, name);
    if (text.width() + 8 > place.width() || text.height() > place.height())
        return;
    QRectF label({}, text + QSizeF(8, 2));
    label.moveCenter(place.center());
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(0, 0, 0, 170));
    painter.drawRoundedRect(label, 3, 3);
    painter.setPen(Qt::white);
    painter.drawText(label, Qt::AlignCenter, name);
}

} // namespace

FrameThumbnail::FrameThumbnail(QWidget* parent) : QWidget(parent)
{
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void FrameThumbnail::setRatio(double ratio)
{
    ratio_ = std::isfinite(ratio) && ratio > 0 ? std::clamp(ratio, 0.3, 4.0) : 16.0 / 9;
    updateGeometry();
}

void FrameThumbnail::setPicture(const QImage& frame)
{
    frame_ = frame;
    update();
}

void FrameThumbnail::setOutlines(std::vector<FrameOutline> outlines)
{
    outlines_ = std::move(outlines);
    update();
}

QSize FrameThumbnail::pixelSize() const
{
    return (QSizeF(size()) * devicePixelRatioF()).toSize();
}

QSize FrameThumbnail::sizeHint() const
{
    return ratio_ >= 1 ? QSize(longestSide, int(std::lround(longestSide / ratio_)))
                       : QSize(int(std::lround(longestSide * ratio_)), longestSide);
}

void FrameThumbnail::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    painter.fillRect(rect(), Qt::black);
    if (!frame_.isNull())
        painter.drawImage(QRectF(rect()), frame_);
    QFont small = font();
    small.setPointSizeF(small.pointSizeF() * 0.85);
    painter.setFont(small);
    for (const FrameOutline& outline : outlines_) {
        const QRectF& place = outline.place;
        draw(painter, {place.x() * width(), place.y() * height(), place.width() * width(), place.height() * height()},
             nameOf(outline.of));
    }
}

} // namespace lumavex
