// SPDX-License-Identifier: GPL-3.0-or-later
#include "camera/FrameConverter.h"

#include "tests/fakes/FakeCameraFrame.h"

#include <QBuffer>
#include <QImageWriter>

#include <gtest/gtest.h>
#include <turbojpeg.h>

#include <cmath>
#include <random>

namespace lumavex {
namespace {

const std::optional<ColorMatrix> kNoControls;
constexpr int kPadding = 12; ///< bytes after each row that belong to nobody

/// Planes of noise, and what the standards say their pixels are.
class NoiseFrame {
public:
    NoiseFrame(CameraPixels pixels, QSize size, CameraMatrix matrix, CameraRange range)
    {
        const int half = (size.width() + 1) / 2;
        const bool planar = pixels == CameraPixels::Nv12 || pixels == CameraPixels::I420;
        addPlane(pixels == CameraPixels::Bgrx ? size.width() * 4 : planar ? size.width() : half * 4, size.height());
        for (int chroma = 0; planar && chroma < (pixels == CameraPixels::Nv12 ? 1 : 2); ++chroma)
            addPlane(pixels == CameraPixels::Nv12 ? half * 2 : half, (size.height() + 1) / 2);
        frame.pixels = pixels;
        frame.size = size;
        frame.matrix = matrix;
        frame.range = range;
        for (std::size_t i = 0; i < planes_.size(); ++i)
            frame.planes[i] = planes_[i].data();
    }

    /// R, G, B as floating-point numbers, limited to 0 to 255.
    std::array<double, 3> pixel(int x, int y) const
    {
        const int half = x / 2;
        switch (frame.pixels) {
        case CameraPixels::Yuy2:
            return rgb(at(0, 2 * x, y), at(0, 4 * half + 1, y), at(0, 4 * half + 3, y));
        case CameraPixels::Nv12:
            return rgb(at(0, x, y), at(1, 2 * half, y / 2), at(1, 2 * half + 1, y / 2));
        case CameraPixels::I420:
            return rgb(at(0, x, y), at(1, half, y / 2), at(2, half, y / 2));
        default:
            return {double(at(0, 4 * x + 2, y)), double(at(0, 4 * x + 1, y)), double(at(0, 4 * x, y))};
        }
    }

    CameraFrame frame;

private:
    void addPlane(int bytes, int rows)
    {
        const int stride = bytes + kPadding;
        frame.strides[planes_.size()] = stride;
        auto& plane = planes_.emplace_back(std::size_t(stride) * std::size_t(rows));
        for (std::uint8_t& byte : plane)
            byte = std::uint8_t(random_());
    }
    int at(int plane, int x, int y) const
    {
        return planes_[std::size_t(plane)][std::size_t(y) * std::size_t(frame.strides[plane]) + std::size_t(x)];
    }
    std::array<double, 3> rgb(int y, int u, int v) const
    {
        const bool full = frame.range == CameraRange::Full;
        const double kr = frame.matrix == CameraMatrix::Bt601 ? 0.299 : 0.2126;
        const double kb = frame.matrix == CameraMatrix::Bt601 ? 0.114 : 0.0722;
        const double luma = full ? y : (y - 16) * 255.0 / 219;
        const double scale = full ? 255.0 / 255 : 255.0 / 224;
        const double blue = luma + (u - 128) * scale * 2 * (1 - kb);
        const double red = luma + (v - 128) * scale * 2 * (1 - kr);
        const double green = (luma - kr * red - kb * blue) / (1 - kr - kb);
        return {std::clamp(red, 0.0, 255.0), std::clamp(green, 0.0, 255.0), std::clamp(blue, 0.0, 255.0)};
    }

    std::vector<std::vector<std::uint8_t>> planes_;
    std::mt19937 random_{11};
};

struct Kind {
    CameraPixels pixels;
    CameraMatrix matrix;
    CameraRange range;
    double tolerance; ///< of the integer arithmetic on the way, with 6 bits after the point
    double blue = tolerance;
};

/// The conversion limits its coefficient of U to 2, which should be 2.112: (2.112 - 2) * 128, and the rounding.
constexpr double kBlue709 = 17;

class FrameKinds : public testing::TestWithParam<Kind> {};

TEST_P(FrameKinds, EveryPixelHasTheColoursOfTheStandard)
{
    const Kind kind = GetParam();
    FrameConverter converter;
    for (const QSize size : {QSize(64, 32), QSize(321, 45), QSize(33, 17), QSize(7, 3), QSize(1, 1)}) {
        const NoiseFrame noise(kind.pixels, size, kind.matrix, kind.range);
        const QImage picture = converter.convert(noise.frame, kNoControls);
        ASSERT_EQ(picture.size(), size);
        ASSERT_EQ(picture.format(), QImage::Format_RGB32);
        for (int y = 0; y < size.height(); ++y)
            for (int x = 0; x < size.width(); ++x) {
                const auto expected = noise.pixel(x, y);
                const QRgb pixel = reinterpret_cast<const QRgb*>(picture.constScanLine(y))[x];
                ASSERT_EQ(qAlpha(pixel), 255);
                ASSERT_NEAR(qRed(pixel), expected[0], kind.tolerance) << x << ", " << y << " of " << size.width();
                ASSERT_NEAR(qGreen(pixel), expected[1], kind.tolerance) << x << ", " << y << " of " << size.width();
                ASSERT_NEAR(qBlue(pixel), expected[2], kind.blue) << x << ", " << y << " of " << size.width();
            }
    }
}

TEST_P(FrameKinds, ColourControlsChangeThePictureAndNothingElse)
{
    const Kind kind = GetParam();
    FrameConverter converter;
    const NoiseFrame noise(kind.pixels, {70, 41}, kind.matrix, kind.range);
    const ColorMatrix controls(3, 1, 14);
    QImage plain = converter.convert(noise.frame, kNoControls).copy();
    for (int y = 0; y < plain.height(); ++y)
        controls.apply(reinterpret_cast<std::uint32_t*>(plain.scanLine(y)), std::size_t(plain.width()));
    EXPECT_EQ(converter.convert(noise.frame, controls), plain);
}

INSTANTIATE_TEST_SUITE_P(
    All, FrameKinds,
    testing::Values(Kind{CameraPixels::Bgrx, CameraMatrix::Bt601, CameraRange::Full, 0},
                    Kind{CameraPixels::Yuy2, CameraMatrix::Bt601, CameraRange::Limited, 3},
                    Kind{CameraPixels::Yuy2, CameraMatrix::Bt709, CameraRange::Limited, 3, kBlue709},
                    Kind{CameraPixels::Yuy2, CameraMatrix::Bt601, CameraRange::Full, 3},
                    Kind{CameraPixels::Nv12, CameraMatrix::Bt601, CameraRange::Limited, 3},
                    Kind{CameraPixels::Nv12, CameraMatrix::Bt709, CameraRange::Full, 3},
                    Kind{CameraPixels::I420, CameraMatrix::Bt601, CameraRange::Full, 3},
                    Kind{CameraPixels::I420, CameraMatrix::Bt709, CameraRange::Limited, 3, kBlue709}));

QImage solid(QSize size, QRgb color)
{
    QImage picture(size, QImage::Format_RGB32);
    picture.fill(color);
    return picture;
}

void expectNear(QRgb pixel, QRgb expected, int tolerance)
{
    EXPECT_NEAR(qRed(pixel), qRed(expected), tolerance);
    EXPECT_NEAR(qGreen(pixel), qGreen(expected), tolerance);
    EXPECT_NEAR(qBlue(pixel), qBlue(expected), tolerance);
    EXPECT_EQ(qAlpha(pixel), 255);
}

/// A frame of what the camera called a JPEG.
CameraFrame jpegFrame(const QByteArray& bytes)
{
    CameraFrame frame;
    frame.pixels = CameraPixels::Mjpeg;
    frame.planes[0] = reinterpret_cast<const std::uint8_t*>(bytes.constData());
    frame.bytes = std::size_t(bytes.size());
    return frame;
}

TEST(FrameConverter, JpegFramesWithAndWithoutHuffmanTables)
{
    FrameConverter converter;
    const QRgb color = qRgb(200, 90, 40);
    const FakeCameraFrame packed(solid({101, 67}, color), CameraPixels::Mjpeg);
    CameraFrame frame = packed.frame();
    frame.size = {4, 4}; // what the JPEG says counts
    const QImage picture = converter.convert(frame, kNoControls);
    ASSERT_EQ(picture.size(), QSize(101, 67));
    expectNear(picture.pixel(100, 66), color, 3);

    QByteArray bytes(reinterpret_cast<const char*>(frame.planes[0]), qsizetype(frame.bytes));
    int removed = 0;
    for (qsizetype table; (table = bytes.indexOf("\xff\xc4")) > 0; ++removed) // DHT; none is escaped within a segment
        bytes.remove(table, 2 + 256 * std::uint8_t(bytes[table + 2]) + std::uint8_t(bytes[table + 3]));
    ASSERT_GT(removed, 0);
    EXPECT_EQ(converter.convert(jpegFrame(bytes), kNoControls), picture);
    expectNear(converter.convert(jpegFrame(bytes.chopped(20)), kNoControls).pixel(5, 5), color, 3); // what is there
    EXPECT_TRUE(converter.convert(jpegFrame(bytes.first(20)), kNoControls).isNull());
}

TEST(FrameConverter, AJpegThatAsksForTooMuchIsGivenUp)
{
    FrameConverter converter;
    QBuffer buffer;
    QImageWriter writer(&buffer, "jpg");
    writer.setProgressiveScanWrite(true);
    ASSERT_TRUE(writer.write(solid({64, 48}, qRgb(20, 200, 20))));
    EXPECT_FALSE(converter.convert(jpegFrame(buffer.data()), kNoControls).isNull());
    QByteArray scans = buffer.data();
    const qsizetype lastScan = scans.lastIndexOf("\xff\xda");
    scans.insert(lastScan, scans.mid(lastScan, scans.size() - 2 - lastScan).repeated(600));
    EXPECT_TRUE(converter.convert(jpegFrame(scans), kNoControls).isNull()) << "minutes";

    QByteArray large = buffer.data();
    // The SOF2 segment, height before width: 12288 each.
    large.replace(large.indexOf("\xff\xc2") + 5, 4, "\x30\x00\x30\x00", 4);
    CameraFrame frame = jpegFrame(large);
    EXPECT_TRUE(converter.convert(frame, kNoControls).isNull()) << "gigabytes";
    frame.picture = {64, 48};
    EXPECT_TRUE(converter.convert(frame, kNoControls).isNull());
}

TEST(FrameConverter, LargerFramesAreCutToTheShapeAndScaledOnce)
{
    FrameConverter converter;
    // Red, green and blue columns of a third each; a square cut out of the middle holds half of the outer two.
    QImage scene = solid({1440, 720}, qRgb(0, 255, 0));
    for (int y = 0; y < 720; ++y)
        for (int x = 0; x < 480; ++x) {
            scene.setPixel(x, y, qRgb(255, 0, 0));
            scene.setPixel(1439 - x, y, qRgb(0, 0, 255));
        }
    for (const CameraPixels pixels : {CameraPixels::Bgrx, CameraPixels::Nv12, CameraPixels::Mjpeg}) {
        const FakeCameraFrame packed(scene, pixels);
        CameraFrame frame = packed.frame();
        for (const int side : {719, 500, 360, 301, 180, 150, 97}) {
            frame.picture = {side, side};
            const QImage picture = converter.convert(frame, kNoControls);
            ASSERT_EQ(picture.size(), frame.picture);
            // The scaler weighs with 7 bits that add up to 127 parts: white may become 253.
            const int tolerance = pixels == CameraPixels::Bgrx ? 2 : 6;
            const int edge = side * 120 / 720; // of the outer columns in the square
            expectNear(picture.pixel(edge - 3, side / 2), qRgb(255, 0, 0), tolerance);
            expectNear(picture.pixel(edge + 3, 0), qRgb(0, 255, 0), tolerance);
            expectNear(picture.pixel(side - edge - 4, side - 1), qRgb(0, 255, 0), tolerance);
            expectNear(picture.pixel(side - edge + 3, side / 2), qRgb(0, 0, 255), tolerance);
        }
    }
}

TEST(FrameConverter, ScalingLosesNoPixel)
{
    FrameConverter converter;
    // Fine black and white columns become even grey at any reduction that skips none.
    QImage scene(960, 540, QImage::Format_RGB32);
    for (int y = 0; y < 540; ++y)
        for (int x = 0; x < 960; ++x)
            scene.setPixel(x, y, x % 2 ? qRgb(255, 255, 255) : qRgb(0, 0, 0));
    const FakeCameraFrame packed(scene, CameraPixels::Bgrx);
    CameraFrame frame = packed.frame();
    for (const QSize size : {QSize(480, 270), QSize(320, 180), QSize(160, 90)}) {
        frame.picture = size;
        const QImage picture = converter.convert(frame, kNoControls);
        for (int x = 0; x < size.width(); ++x)
            expectNear(picture.pixel(x, size.height() / 2), qRgb(128, 128, 128), 2);
    }
}

TEST(FrameConverter, PicturesAreNeverEnlarged)
{
    FrameConverter converter;
    const FakeCameraFrame packed(solid({320, 240}, qRgb(250, 100, 0)), CameraPixels::Bgrx);
    CameraFrame frame = packed.frame();
    for (const QSize wanted : {QSize(640, 480), QSize(640, 100), QSize(100, 241), QSize()}) {
        frame.picture = wanted;
        EXPECT_EQ(converter.convert(frame, kNoControls).size(), QSize(320, 240));
    }
    frame.picture = {100, 100}; // the controls reach what is scaled too
    expectNear(converter.convert(frame, ColorMatrix(0, 0, 10)).pixel(99, 99), qRgb(125, 125, 125), 2);
}

TEST(FrameConverter, PicturesThatAreStillHeldAreNotWrittenAgain)
{
    auto converter = std::make_unique<FrameConverter>();
    const FakeCameraFrame red(solid({64, 48}, qRgb(255, 0, 0)), CameraPixels::Bgrx);
    const FakeCameraFrame blue(solid({64, 48}, qRgb(0, 0, 255)), CameraPixels::Bgrx);
    const QImage held = converter->convert(red.frame(), kNoControls);
    QImage copy = held;
    for (int i = 0; i < 20; ++i)
        EXPECT_EQ(converter->convert(blue.frame(), kNoControls).pixel(63, 47), qRgb(0, 0, 255));
    EXPECT_EQ(held.pixel(63, 47), qRgb(255, 0, 0));
    converter.reset(); // pictures outlive it
    EXPECT_EQ(copy.pixel(0, 0), qRgb(255, 0, 0));
}

} // namespace
} // namespace lumavex
