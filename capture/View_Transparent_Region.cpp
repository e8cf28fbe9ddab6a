// SPDX-License-Identifier: GPL-3.0-or-later
#include "capture/View_Transparent_Region.h"

#include "capture/RegionHandles.h"

#include <QPainter>

#include <cmath>

namespace lumavex {

namespace {

constexpr double frameWidth = 3;

CGRect squareOf(const FrameDimension& handle)
{
    return {handle.sizeDimension.width, handle.sizeDimension.height, handleSide, handleSide};
}

} // namespace

View_Transparent_Region::View_Transparent_Region(QWidget* parent) : QWidget(parent)
{
    setAttribute(Qt::WA_TransparentForMouseEvents); // the window receives the events
}

void View_Transparent_Region::setHandles(const std::vector<FrameDimension>& handles, const CGSize& screen)
{
    handles_ = &handles;
    screen_ = screen;
    update();
}

void View_Transparent_Region::setNeedsDisplay()
{
    // Only these pixels: redrawing a whole large screen at each motion would take processor time from the recording.
    update(logicalRegion(shown_ + drawnPixels()));
}

QRegion View_Transparent_Region::drawnPixels() const
{
    if (!handles_)
        return {};
    const double half = frameWidth / 2;
    const QRectF outline = flippedDown(regionOfHandles(*handles_), screen_.height);
    const QRect outer = outline.adjusted(-half, -half, half, half).toAlignedRect();
    const QRect inner = outline.adjusted(std::ceil(half), std::ceil(half), -std::ceil(half), -std::ceil(half)).toRect();
    QRegion pixels(outer);
    if (inner.isValid())
        pixels -= inner;
    for (const FrameDimension& handle : *handles_)
        pixels += flippedDown(squareOf(handle), screen_.height).toAlignedRect();
    return pixels;
}

CGPoint View_Transparent_Region::locationOf(const QPointF& logicalPosition) const
{
    return locationOf((logicalPosition * devicePixelRatioF()).toPoint());
}

CGPoint View_Transparent_Region::locationOf(const QPoint& devicePixel) const
{
    return {static_cast<double>(devicePixel.x()), screen_.height - 1 - devicePixel.y()};
}

QRegion View_Transparent_Region::logicalRegion(const QRegion& devicePixels) const
{
    const double scale = 1 / devicePixelRatioF();
    QRegion region;
    for (const QRect& rect : devicePixels) {
        const QRectF pixels(rect);
        region += QRectF(pixels.topLeft() * scale, pixels.size() * scale).toAlignedRect();
    }
    return region;
}

void View_Transparent_Region::paintEvent(QPaintEvent*)
{
    if (!handles_)
        return;
    const CGRect region = regionOfHandles(*handles_);
    shown_ = drawnPixels();
    Q_EMIT setRect_Screen_Region(region);
    QPainter painter(this);
    painter.scale(1 / devicePixelRatioF(), 1 / devicePixelRatioF());
    drawRect(painter, region);
}

void View_Transparent_Region::drawRect(QPainter& painter, const CGRect& region) const
{
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(Qt::blue, frameWidth, Qt::SolidLine, Qt::FlatCap, Qt::MiterJoin));
    painter.drawRect(flippedDown(region, screen_.height));

    for (const std::int32_t corner : {LowerLeftHandle, LowerRightHandle, UpperLeftHandle, UpperRightHandle})
        painter.fillRect(flippedDown(squareOf(handles_->at(static_cast<std::size_t>(corner))), screen_.height),
                         Qt::green);

    const QRectF centre = flippedDown(squareOf(handles_->at(CentreHandle)), screen_.height);
    painter.fillRect(centre, Qt::red);
    const QRectF cross = centre.adjusted(2, 2, -2, -2);
    painter.setPen(QPen(Qt::black, 1, Qt::SolidLine, Qt::FlatCap));
    painter.drawLine(cross.bottomLeft(), cross.topRight());
    painter.drawLine(cross.bottomRight(), cross.topLeft());
}

} // namespace lumavex
