// SPDX-License-Identifier: GPL-3.0-or-later
#include "compose/Canvas.h"

#include <algorithm>

namespace lumavex {

namespace {

void fill(const Canvas& canvas, const QRect& rect, std::uint32_t value)
{
    for (int y = rect.top(); y <= rect.bottom(); ++y)
        std::fill_n(canvas.at(rect.x(), y), rect.width(), value);
}

} // namespace

void Canvas::fillBlack(const QRect& rect) const
{
    fill(*this, rect, order == PixelOrder::AlphaFirst ? 0x000000FFU : 0xFF000000U);
}

void Canvas::fillTransparent(const QRect& rect) const
{
    fill(*this, rect, 0);
}

} // namespace lumavex
