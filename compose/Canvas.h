// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "compose/PixelRows.h"

#include <QRect>
#include <QSize>

#include <cstddef>
#include <cstdint>

namespace lumavex {

/// Rows of pixels in memory that somebody else owns, top row first. Coordinates are downward.
struct Canvas {
    std::uint32_t* pixels = nullptr;
    QSize size;
    std::ptrdiff_t pixelsPerRow = 0;
    PixelOrder order = PixelOrder::BlueFirst;

    std::uint32_t* at(int x, int y) const { return pixels + y * pixelsPerRow + x; }

    /// Fills a rectangle, which must lie inside the canvas.
    void fillBlack(const QRect& rect) const;
    void fillTransparent(const QRect& rect) const;
};

} // namespace lumavex
