// SPDX-License-Identifier: GPL-3.0-or-later
#include "compose/ImageHelpers.h"

#include "compose/FrameLayout.h"
#include "compose/PixelRows.h"

#include <QPainter>

#include <algorithm>
#include <cmath>

namespace lumavex {

namespace {

QSize roundedSize(const CGRect& rect)
{
    return {int(std::lround(rect.width)), int(std::lround(rect.height))};
}

/// The picture as premultiplied pixels; where it has no alpha channel, what its fourth bytes hold does not matter.
QImage withAlpha(const QImage& picture)
{
    if (picture.format() != QImage::Format_RGB32)
        return picture.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    QImage result(picture.size(), QImage::Format_ARGB32_Premultiplied);
    for (int y = 0; y < picture.height(); ++y)
        rowFunctions().copy(reinterpret_cast<std::uint32_t*>(result.scanLine(y)),
                            reinterpret_cast<const std::uint32_t*>(picture.constScanLine(y)),
                            std::size_t(picture.width()), {PixelOrder::BlueFirst, AlphaUse::Opaque});
    return result;
}

/// The controls as one matrix over red, green and blue with whole coefficients, of 4096 parts.
///
/// With s, b and k the saturation, brightness and contrast (each a tenth of its control) and Y the Rec. 709 luma,
///   v = Y + s (c - Y) + 255 b          saturation about the luma, brightness added
///   c' = 127.5 + k (v - 127.5)         contrast about mid grey
/// rounded to the nearest and limited to 0 to 255. Per channel that is
///   c' = k s c + k (1 - s) Y + 127.5 (1 - k) + 255 k b,
/// whose coefficients for neutral values are exactly 1, 0 and 0. The share of Y is the same for all three channels, so
/// grey stays grey.
struct ControlMatrix {
    static constexpr int bits = 12;
    static constexpr double one = 1 << bits;
    /// Past this every pixel is at its limits anyway; within it 32 bits hold every sum.
    static constexpr double largest = 16;

    explicit ControlMatrix(const ColorControls& controls)
    {
        const double s = limited(controls.f_ColorControls_Saturation / 10);
        const double b = limited(controls.f_ColorControls_Brightness / 10);
        const double k = limited(controls.f_ColorControls_Contrast / 10);
        own = whole(k * s);
        lumaRed = whole(k * (1 - s) * 0.2126);
        lumaBlue = whole(k * (1 - s) * 0.0722);
        lumaGreen = whole(k * (1 - s)) - lumaRed - lumaBlue;
        constant = whole(127.5 * (1 - k) + 255 * k * b) + (1 << (bits - 1));
    }

    static double limited(float value) { return std::isnan(value) ? 0 : std::clamp(double(value), -largest, largest); }
    static int whole(double value) { return int(std::lround(value * one)); }
    static int channel(int sum) { return std::clamp(sum >> bits, 0, 255); }

    QRgb of(QRgb pixel) const
    {
        const int red = qRed(pixel);
        const int green = qGreen(pixel);
        const int blue = qBlue(pixel);
        const int shared = lumaRed * red + lumaGreen * green + lumaBlue * blue + constant;
        return (pixel & 0xFF000000U) | QRgb(channel(own * red + shared)) << 16
               | QRgb(channel(own * green + shared)) << 8 | QRgb(channel(own * blue + shared));
    }

    int own = 0;
    int lumaRed = 0;
    int lumaGreen = 0;
    int lumaBlue = 0;
    int constant = 0;
};

QImage withoutScale(const QImage& picture)
{
    QImage result = picture;
    result.setDevicePixelRatio(1);
    return result;
}

} // namespace

QImage partOfImage(const QImage& picture, const CGRect& rect)
{
    const QSize size = roundedSize(rect);
    if (picture.isNull() || size.isEmpty())
        return {};
    const QPoint corner(int(std::lround(rect.x)), int(std::lround(picture.height() - rect.y - rect.height)));
    QImage part(size, QImage::Format_ARGB32_Premultiplied);
    part.fill(Qt::transparent);
    const QRect inside = QRect(corner, size) & picture.rect();
    if (inside.isEmpty())
        return part;
    const QImage source = withAlpha(picture);
    for (int y = inside.top(); y <= inside.bottom(); ++y)
        std::copy_n(reinterpret_cast<const QRgb*>(source.constScanLine(y)) + inside.x(), inside.width(),
                    reinterpret_cast<QRgb*>(part.scanLine(y - corner.y())) + (inside.x() - corner.x()));
    return part;
}

QImage Return_Image_For_Region_IntoRect(const QImage& picture, const CGRect& rect)
{
    if (picture.width() == 0)
        return picture;
    QImage canvas(roundedSize(rect), QImage::Format_RGB32);
    canvas.fill(Qt::black);
    const auto fitted =
        Return_Fitted_Rect({double(picture.width()), double(picture.height())}, {rect.width, rect.height});
    if (!fitted || canvas.isNull())
        return canvas;
    QPainter painter(&canvas);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(flippedDown(*fitted, rect.height), withAlpha(picture), QRectF(picture.rect()));
    return canvas;
}

QImage imageColorControls(const QImage& picture, const ColorControls& controls)
{
    const bool transparency = picture.hasAlphaChannel();
    QImage result = picture.convertToFormat(transparency ? QImage::Format_ARGB32 : QImage::Format_RGB32);
    const ControlMatrix matrix(controls);
    for (int y = 0; y < result.height(); ++y) {
        auto* pixel = reinterpret_cast<QRgb*>(result.scanLine(y));
        std::transform(pixel, pixel + result.width(), pixel, [&matrix](QRgb p) { return matrix.of(p); });
    }
    return result;
}

QImage CGImageRefFromImage(const QImage& drawable)
{
    return withoutScale(drawable);
}

QImage imageFromCGImageRef(const QImage& pixels)
{
    return withoutScale(pixels);
}

} // namespace lumavex
