// SPDX-License-Identifier: GPL-3.0-or-later
// Frames of a camera in every kind of pixels. The input's first bytes say which, the rest are the picture's.
#include "camera/FrameConverter.h"
#include "camera/JpegFrame.h"
#include "tests/fuzz/Fuzzing.h"

#include <algorithm>
#include <vector>

using namespace lumavex;

namespace {

/// A larger JPEG picture costs the fuzzer time and teaches it nothing.
constexpr std::int64_t kMostPixels = 128 * 128;

/// A plane that has exactly the bytes its rows need, so that a read past its end is found.
std::vector<std::uint8_t> plane(Input& input, int rowBytes, int stride, int rows)
{
    std::vector<std::uint8_t> bytes(static_cast<std::size_t>(stride) * static_cast<std::size_t>(rows - 1)
                                    + static_cast<std::size_t>(rowBytes));
    const auto rest = input.rest();
    std::copy_n(rest.begin(), std::min(rest.size(), bytes.size()), bytes.begin());
    return bytes;
}

struct PlaneShape {
    int rowBytes = 0;
    int rows = 0;
};

std::vector<PlaneShape> planesOf(CameraPixels pixels, const QSize& size)
{
    const int halfWidth = (size.width() + 1) / 2;
    const int halfHeight = (size.height() + 1) / 2;
    switch (pixels) {
    case CameraPixels::Yuy2:
        return {{halfWidth * 4, size.height()}};
    case CameraPixels::Nv12:
        return {{size.width(), size.height()}, {halfWidth * 2, halfHeight}};
    case CameraPixels::I420:
        return {{size.width(), size.height()}, {halfWidth, halfHeight}, {halfWidth, halfHeight}};
    case CameraPixels::Bgrx:
        return {{size.width() * 4, size.height()}};
    case CameraPixels::Mjpeg:
        break;
    }
    return {};
}

QSize sizeFrom(Input& input)
{
    const int width = input.byte();
    return {width, input.byte()};
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static FrameConverter converter;
    Input input(data, size);
    CameraFrame frame;
    frame.pixels = static_cast<CameraPixels>(input.byte() % 5);
    const unsigned variant = input.byte();
    frame.matrix = variant & 1U ? CameraMatrix::Bt709 : CameraMatrix::Bt601;
    frame.range = variant & 2U ? CameraRange::Full : CameraRange::Limited;
    const int padding = static_cast<int>(variant >> 2 & 7U); // of every row
    const auto controls = variant & 32U ? std::optional(ColorMatrix(15, 1, 8)) : std::nullopt;
    frame.size = sizeFrom(input);
    frame.picture = sizeFrom(input);

    std::vector<std::vector<std::uint8_t>> planes;
    if (frame.pixels == CameraPixels::Mjpeg) {
        const auto rest = input.rest();
        planes.emplace_back(rest.begin(), rest.end()); // a copy that ends where the picture does
        frame.bytes = rest.size();
        frame.planes[0] = planes.front().data();
        frame.size = JpegFrame().open(frame.planes[0], frame.bytes);
        if (std::int64_t(frame.size.width()) * frame.size.height() > kMostPixels)
            return 0;
    } else if (!frame.size.isEmpty()) {
        for (const PlaneShape& shape : planesOf(frame.pixels, frame.size)) {
            const std::size_t index = planes.size();
            frame.strides[index] = shape.rowBytes + padding;
            planes.push_back(plane(input, shape.rowBytes, frame.strides[index], shape.rows));
            frame.planes[index] = planes.back().data();
        }
    }
    const QImage picture = converter.convert(frame, controls);
    if (picture.isNull()) {
        require(frame.pixels == CameraPixels::Mjpeg || frame.size.isEmpty(), "a whole frame gives a picture");
        return 0;
    }
    const bool scaled = !frame.picture.isEmpty() && frame.picture.width() <= frame.size.width()
                        && frame.picture.height() <= frame.size.height();
    require(picture.size() == (scaled ? frame.picture : frame.size), "a picture has the size that was asked for");
    require(picture.pixel(picture.width() - 1, picture.height() - 1) >> 24 == 255, "a picture is opaque");
    return 0;
}
