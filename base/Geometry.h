// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QRectF>
#include <QSizeF>

namespace lumavex {

/// A point, a size and a rectangle in 64-bit floating point. Unless a comment says otherwise the origin is the
/// LOWER-left corner of the main display, view or picture, y grows UPWARD, and the unit is one device pixel.
/// These are not QPointF/QRectF, so that an upward rectangle cannot be drawn without the flip.
struct CGPoint {
    double x = 0;
    double y = 0;
    friend bool operator==(const CGPoint&, const CGPoint&) = default;
};

struct CGSize {
    double width = 0;
    double height = 0;
    friend bool operator==(const CGSize&, const CGSize&) = default;
};

struct CGRect {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;
    friend bool operator==(const CGRect&, const CGRect&) = default;
};

/// The only flip: converts an upward rectangle inside an area of the given height to a downward Qt rectangle, and back.
inline QRectF flippedDown(const CGRect& up, double height)
{
    return {up.x, height - up.y - up.height, up.width, up.height};
}
inline CGRect flippedUp(const QRectF& down, double height)
{
    return {down.x(), height - down.y() - down.height(), down.width(), down.height()};
}

/// Width divided by height, both converted to 32-bit floating point first.
inline float ratioOf(const CGSize& size)
{
    return static_cast<float>(size.width) / static_cast<float>(size.height);
}

} // namespace lumavex
