// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/fakes/FakeCameraFrame.h"

#include <libyuv.h>
#include <turbojpeg.h>

#include <memory>

namespace lumavex {
namespace {

constexpr int kJpegQuality = 90;

std::vector<std::uint8_t> jpegOf(const QImage& picture)
{
    const std::unique_ptr<void, int (*)(tjhandle)> compressor(tjInitCompress(), tjDestroy);
    unsigned char* memory = nullptr;
    unsigned long bytes = 0;
    tjCompress2(compressor.get(), picture.constBits(), picture.width(), int(picture.bytesPerLine()), picture.height(),
                TJPF_BGRX, &memory, &bytes, TJSAMP_422, kJpegQuality, 0);
    const std::unique_ptr<unsigned char, void (*)(unsigned char*)> owned(memory, tjFree);
    return {memory, memory + bytes};
}

} // namespace

FakeCameraFrame::FakeCameraFrame(const QImage& picture, CameraPixels pixels) : pixels_(pixels), size_(picture.size())
{
    const QImage image = picture.convertToFormat(QImage::Format_RGB32);
    const int width = size_.width();
    const int height = size_.height();
    const int half = (width + 1) / 2;
    const int halfRows = (height + 1) / 2;
    const auto plane = [this](int index, int stride, int rows) {
        strides_[index] = stride;
        planes_[index].resize(std::size_t(stride) * std::size_t(rows));
        return planes_[index].data();
    };
    const std::uint8_t* from = image.constBits();
    const int stride = int(image.bytesPerLine());
    switch (pixels) {
    case CameraPixels::Mjpeg:
        planes_[0] = jpegOf(image);
        break;
    case CameraPixels::Yuy2:
        libyuv::ARGBToYUY2(from, stride, plane(0, half * 4, height), half * 4, width, height);
        break;
    case CameraPixels::Nv12: {
        std::uint8_t* y = plane(0, width, height);
        libyuv::ARGBToNV12(from, stride, y, width, plane(1, half * 2, halfRows), half * 2, width, height);
        break;
    }
    case CameraPixels::I420: {
        std::uint8_t* y = plane(0, width, height);
        std::uint8_t* u = plane(1, half, halfRows);
        libyuv::ARGBToI420(from, stride, y, width, u, half, plane(2, half, halfRows), half, width, height);
        break;
    }
    case CameraPixels::Bgrx:
        std::copy_n(from, std::size_t(stride) * std::size_t(height), plane(0, stride, height));
        break;
    }
}

CameraFrame FakeCameraFrame::frame() const
{
    CameraFrame frame;
    frame.pixels = pixels_;
    frame.size = size_;
    for (int i = 0; i < 3; ++i) {
        frame.planes[i] = planes_[i].empty() ? nullptr : planes_[i].data();
        frame.strides[i] = strides_[i];
    }
    frame.bytes = planes_[0].size();
    return frame;
}

} // namespace lumavex
