// SPDX-License-Identifier: GPL-3.0-or-later
#include "compose/ImageHelpers.h"

#include "compose/FrameLayout.h"

#include <QPainter>

#include <algorithm>
#include <cmath>

namespace lumavex {

namespace {

QSize roundedSize(const CGRect& rect)
{
    return {int(std::lround(rect.width)), int(std::lround(rect.height))};
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
    const QImage source = picture.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    const QRect inside = QRect(corner, size) & picture.rect();
    for (int y = inside.top(); y <= inside.bottom(); ++y)
        for (int x = inside.left(); x <= inside.right(); ++x)
            reinterpret_cast<QRgb*>(part.scanLine(y - corner.y()))[x - corner.x()] =
                reinterpret_cast<const QRgb*>(source.constScanLine(y))[x];
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
    painter.drawImage(flippedDown(*fitted, rect.height), picture.convertToFormat(QImage::Format_ARGB32_Premultiplied),
                      QRectF(picture.rect()));
    return canvas;
}

QImage imageColorControls(const QImage& picture, const ColorControls& controls)
{
    const double saturation = controls.f_ColorControls_Saturation / 10;
    const double brightness = controls.f_ColorControls_Brightness / 10;
    const double contrast = controls.f_ColorControls_Contrast / 10;
    QImage result(picture.size(), picture.hasAlphaChannel() ? QImage::Format_ARGB32 : QImage::Format_RGB32);
    for (int y = 0; y < result.height(); ++y) {
        for (int x = 0; x < result.width(); ++x) {
            const QRgb pixel = picture.pixel(x, y);
            const double luma = 0.2126 * qRed(pixel) + 0.7152 * qGreen(pixel) + 0.0722 * qBlue(pixel);
            const auto controlled = [&](int channel) {
                const double value = luma + saturation * (channel - luma) + 255 * brightness;
                return int(std::lround(std::clamp(127.5 + contrast * (value - 127.5), 0.0, 255.0)));
            };
            result.setPixel(
                x, y,
                qRgba(controlled(qRed(pixel)), controlled(qGreen(pixel)), controlled(qBlue(pixel)), qAlpha(pixel)));
        }
    }
    return imageFromCGImageRef(result);
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
