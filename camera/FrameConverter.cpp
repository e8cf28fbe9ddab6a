// SPDX-License-Identifier: GPL-3.0-or-later
#include "camera/FrameConverter.h"

#include "camera/JpegFrame.h"

#include <libyuv.h>

#include <algorithm>
#include <cstring>
#include <utility>

namespace lumavex {
namespace {

/// Rows unpacked at a time, so that they are in the processor's cache for the colour controls. Even, for halved planes.
constexpr int kBand = 16;
/// Limits that reject absurd sizes: a damaged JPEG header may contain any size and would cost gigabytes.
constexpr int kLargestSide = 16384;
constexpr std::int64_t kMostPixels = 64 << 20;

const libyuv::YuvConstants* constantsOf(const CameraFrame& frame)
{
    const bool full = frame.range == CameraRange::Full;
    if (frame.matrix == CameraMatrix::Bt709)
        return full ? &libyuv::kYuvF709Constants : &libyuv::kYuvH709Constants;
    return full ? &libyuv::kYuvJPEGConstants : &libyuv::kYuvI601Constants;
}

std::uint8_t* bytesOf(std::vector<std::uint32_t>& pixels)
{
    return reinterpret_cast<std::uint8_t*>(pixels.data());
}

QSize pictureSize(const QSize& frame, const QSize& wanted)
{
    const bool smaller = wanted.width() <= frame.width() && wanted.height() <= frame.height();
    return !wanted.isEmpty() && smaller ? wanted : frame;
}

void copyOpaque(const std::uint8_t* from, int fromStride, std::uint8_t* to, int stride, int width, int rows)
{
    for (int y = 0; y < rows; ++y) {
        const std::uint8_t* source = from + std::ptrdiff_t(y) * fromStride;
        auto* target = reinterpret_cast<std::uint32_t*>(to + std::ptrdiff_t(y) * stride);
        for (int x = 0; x < width; ++x) {
            std::uint32_t pixel = 0; // the camera's rows may start at any byte
            std::memcpy(&pixel, source + std::ptrdiff_t(x) * 4, sizeof pixel);
            target[x] = pixel | 0xFF000000U;
        }
    }
}

} // namespace

/// Destination of unpacked rows.
struct FrameConverter::Target {
    std::uint32_t* pixels = nullptr;
    QSize size;
    const std::optional<ColorMatrix>& controls;

    int stride() const { return size.width() * 4; }
    std::uint8_t* row(int y) const { return reinterpret_cast<std::uint8_t*>(pixels) + std::ptrdiff_t(y) * stride(); }
    void color(int top, int rows) const
    {
        if (controls)
            controls->apply(reinterpret_cast<std::uint32_t*>(row(top)), std::size_t(rows) * std::size_t(size.width()));
    }
};

FrameConverter::FrameConverter() : jpeg_(std::make_unique<JpegFrame>()) {}

FrameConverter::~FrameConverter() = default;

QImage FrameConverter::convert(const CameraFrame& frame, const std::optional<ColorMatrix>& controls)
{
    CameraFrame known = frame;
    if (frame.pixels == CameraPixels::Mjpeg)
        known.size = jpeg_->open(frame.planes[0], frame.bytes);
    if (known.size.isEmpty() || known.size.width() > kLargestSide || known.size.height() > kLargestSide
        || std::int64_t(known.size.width()) * known.size.height() > kMostPixels)
        return {};
    static const std::optional<ColorMatrix> none;
    const auto& used = controls && !controls->isNeutral() ? controls : none;
    const QSize size = pictureSize(known.size, frame.picture);
    if (size != known.size)
        return scaled(known, size, used);
    QImage picture = pool_.take(size);
    if (picture.isNull() || !unpack(known, {PicturePool::pixels(picture), size, used}))
        return {};
    return picture;
}

bool FrameConverter::unpack(const CameraFrame& frame, const Target& target)
{
    if (frame.pixels == CameraPixels::Mjpeg) {
        if (!jpeg_->decode(target.row(0), target.stride(), target.size))
            return false;
        target.color(0, target.size.height());
        return true;
    }
    for (int top = 0; top < target.size.height(); top += kBand) {
        const int rows = std::min(kBand, target.size.height() - top);
        if (!unpackRows(frame, top, rows, target.row(top), target.stride()))
            return false;
        target.color(top, rows);
    }
    return true;
}

bool FrameConverter::unpackRows(const CameraFrame& frame, int top, int rows, std::uint8_t* to, int stride)
{
    const int width = frame.size.width();
    const auto plane = [&frame](int index, int row) {
        return frame.planes[index] + std::ptrdiff_t(row) * frame.strides[index];
    };
    switch (frame.pixels) {
    case CameraPixels::Yuy2:
        return unpackYuy2(frame, top, rows, to, stride);
    case CameraPixels::Nv12:
        return libyuv::NV12ToARGBMatrix(plane(0, top), frame.strides[0], plane(1, top / 2), frame.strides[1], to,
                                        stride, constantsOf(frame), width, rows)
               == 0;
    case CameraPixels::I420:
        return libyuv::I420ToARGBMatrix(plane(0, top), frame.strides[0], plane(1, top / 2), frame.strides[1],
                                        plane(2, top / 2), frame.strides[2], to, stride, constantsOf(frame), width,
                                        rows)
               == 0;
    case CameraPixels::Bgrx:
        copyOpaque(plane(0, top), frame.strides[0], to, stride, width, rows);
        return true;
    case CameraPixels::Mjpeg:
        break;
    }
    return false;
}

bool FrameConverter::unpackYuy2(const CameraFrame& frame, int top, int rows, std::uint8_t* to, int stride)
{
    const int width = frame.size.width();
    const std::uint8_t* from = frame.planes[0] + std::ptrdiff_t(top) * frame.strides[0];
    const libyuv::YuvConstants* constants = constantsOf(frame);
    if (constants == &libyuv::kYuvI601Constants)
        return libyuv::YUY2ToARGB(from, frame.strides[0], to, stride, width, rows) == 0;
    // libyuv converts this format directly only with the most common constants; with others the planes are separated
    // first.
    const int half = (width + 1) / 2;
    unpacked_.resize(std::size_t(kBand) * std::size_t(width + 2 * half));
    std::uint8_t* y = unpacked_.data();
    std::uint8_t* u = y + std::ptrdiff_t(kBand) * width;
    std::uint8_t* v = u + std::ptrdiff_t(kBand) * half;
    return libyuv::YUY2ToI422(from, frame.strides[0], y, width, u, half, v, half, width, rows) == 0
           && libyuv::I422ToARGBMatrix(y, width, u, half, v, half, to, stride, constants, width, rows) == 0;
}

QImage FrameConverter::scaled(const CameraFrame& frame, const QSize& picture,
                              const std::optional<ColorMatrix>& controls)
{
    // A JPEG picture can be decoded at a half, a quarter or an eighth of its size, which costs less than decoding it
    // whole.
    QSize size = frame.size;
    if (frame.pixels == CameraPixels::Mjpeg)
        size = JpegFrame::smallestNotBelow(size, picture);
    whole_.resize(std::size_t(size.width()) * std::size_t(size.height()));
    static const std::optional<ColorMatrix> none;
    QImage result = pool_.take(picture);
    if (result.isNull() || !unpack(frame, {whole_.data(), size, none}))
        return {};

    const QRect part = partOfShape(size, picture);
    const std::uint8_t* from = bytesOf(whole_) + (std::ptrdiff_t(part.y()) * size.width() + part.x()) * 4;
    int fromStride = size.width() * 4;
    QSize left = part.size();
    // Bilinear filtering reads two pixels per direction, so that one step must not reduce further than by half.
    while (left.width() >= picture.width() * 2 && left.height() >= picture.height() * 2 && left / 2 != picture) {
        const QSize half(left.width() / 2, left.height() / 2);
        std::vector<std::uint32_t>& next = from == bytesOf(halved_[0]) ? halved_[1] : halved_[0];
        next.resize(std::size_t(half.width()) * std::size_t(half.height()));
        libyuv::ARGBScale(from, fromStride, half.width() * 2, half.height() * 2, bytesOf(next), half.width() * 4,
                          half.width(), half.height(), libyuv::kFilterBox);
        from = bytesOf(next);
        fromStride = half.width() * 4;
        left = half;
    }
    const Target target{PicturePool::pixels(result), picture, controls};
    if (libyuv::ARGBScale(from, fromStride, left.width(), left.height(), target.row(0), target.stride(),
                          picture.width(), picture.height(), libyuv::kFilterBilinear)
        != 0)
        return {};
    target.color(0, picture.height());
    return result;
}

QRect FrameConverter::partOfShape(const QSize& size, const QSize& picture)
{
    const auto rounded = [](std::int64_t a, int b, int c) { return int((a * b + c / 2) / c); };
    QSize part = size;
    const std::int64_t across = std::int64_t(size.width()) * picture.height();
    const std::int64_t down = std::int64_t(size.height()) * picture.width();
    if (across > down)
        part.setWidth(std::min(size.width(), rounded(size.height(), picture.width(), picture.height())));
    else if (across < down)
        part.setHeight(std::min(size.height(), rounded(size.width(), picture.height(), picture.width())));
    return {QPoint((size.width() - part.width()) / 2, (size.height() - part.height()) / 2), part};
}

} // namespace lumavex
