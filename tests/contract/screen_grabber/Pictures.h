// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QImage>
#include <QRect>

namespace lumavex::test {

inline constexpr QRgb kRed = 0xffff0000;
inline constexpr QRgb kGreen = 0xff00c800;
inline constexpr QRgb kBlue = 0xff0a14fa;

/// Area in which pictures of the same size differ, whatever their fourth bytes hold.
inline QRect difference(const QImage& a, const QImage& b)
{
    QRect found;
    for (int y = 0; y < a.height(); ++y)
        for (int x = 0; x < a.width(); ++x)
            if ((a.pixel(x, y) ^ b.pixel(x, y)) & 0xffffffU)
                found |= QRect(x, y, 1, 1);
    return found;
}

} // namespace lumavex::test
