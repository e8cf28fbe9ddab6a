// SPDX-License-Identifier: GPL-3.0-or-later
#include "compose/ImageHelpers.h"

#include "compose/FrameLayout.h"
#include "compose/PixelRows.h"
#include "platform/ColorMatrix.h"

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
    const ColorMatrix matrix(controls.f_ColorControls_Saturation, controls.f_ColorControls_Brightness,
                             controls.f_ColorControls_Contrast);
    for (int y = 0; y < result.height(); ++y)
        matrix.apply(reinterpret_cast<std::uint32_t*>(result.scanLine(y)), std::size_t(result.width()));
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
