// SPDX-License-Identifier: GPL-3.0-or-later
#include "compose/Resampler.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <random>

namespace {

using namespace lumavex;

QImage noise(int width, int height, unsigned seed = 5)
{
    std::mt19937 random(seed);
    QImage image(width, height, QImage::Format_RGB32);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            reinterpret_cast<QRgb*>(image.scanLine(y))[x] = random();
    return image;
}

QImage resampled(const QImage& picture, const QRect& source, const QSize& size, QRect clip = {})
{
    QImage result(size, QImage::Format_RGB32);
    result.fill(Qt::magenta);
    const Canvas canvas{reinterpret_cast<std::uint32_t*>(result.bits()), size, result.bytesPerLine() / 4,
                        PixelOrder::BlueFirst};
    const QRect whole(QPoint(), size);
    Resampler().draw(picture, source, whole, clip.isNull() ? whole : clip, canvas, AlphaUse::Opaque);
    return result;
}

/// The mean of the rectangle of source pixels under each target pixel, for whole reductions.
QImage meanOverBlocks(const QImage& picture, int factorX, int factorY)
{
    QImage result(picture.width() / factorX, picture.height() / factorY, QImage::Format_RGB32);
    for (int y = 0; y < result.height(); ++y) {
        for (int x = 0; x < result.width(); ++x) {
            double sums[3] = {};
            for (int j = 0; j < factorY; ++j) {
                for (int i = 0; i < factorX; ++i) {
                    const QRgb pixel = picture.pixel(x * factorX + i, y * factorY + j);
                    sums[0] += qRed(pixel);
                    sums[1] += qGreen(pixel);
                    sums[2] += qBlue(pixel);
                }
            }
            const double count = factorX * factorY;
            result.setPixel(x, y,
                            qRgb(int(std::lround(sums[0] / count)), int(std::lround(sums[1] / count)),
                                 int(std::lround(sums[2] / count))));
        }
    }
    return result;
}

double rmsDifference(const QImage& a, const QImage& b)
{
    double sum = 0;
    for (int y = 0; y < a.height(); ++y)
        for (int x = 0; x < a.width(); ++x)
            sum += std::pow(qGreen(a.pixel(x, y)) - qGreen(b.pixel(x, y)), 2);
    return std::sqrt(sum / (a.width() * a.height()));
}

TEST(Resampler, WholeReductionsGiveTheMeanOfEveryBlock)
{
    const QImage picture = noise(384, 192);
    for (const int factor : {2, 3, 4, 6, 8, 12, 16}) {
        EXPECT_EQ(resampled(picture, picture.rect(), picture.size() / factor), meanOverBlocks(picture, factor, factor))
            << factor;
    }
    EXPECT_EQ(resampled(picture, picture.rect(), {96, 192}), meanOverBlocks(picture, 4, 1));
    EXPECT_EQ(resampled(picture, picture.rect(), {384, 32}), meanOverBlocks(picture, 1, 6));
}

TEST(Resampler, OtherReductionsLoseNoPixels)
{
    // White noise has a deviation of 74, which is what skipping most of the pixels would leave.
    const QImage picture = noise(315, 140);
    for (const int factor : {5, 7}) {
        const QImage reference = meanOverBlocks(picture, factor, factor);
        EXPECT_LT(rmsDifference(resampled(picture, picture.rect(), reference.size()), reference), 13.0) << factor;
    }
}

TEST(Resampler, LinearRampsStayWhereTheyAre)
{
    QImage ramp(240, 16, QImage::Format_RGB32);
    for (int y = 0; y < ramp.height(); ++y)
        for (int x = 0; x < ramp.width(); ++x)
            ramp.setPixel(x, y, qRgb(0, x + 5, 0));
    for (const int width : {31, 47, 80, 100, 161, 239, 241, 333, 720, 1000}) {
        const QImage scaled = resampled(ramp, ramp.rect(), {width, 16});
        const double step = 240.0 / width;
        for (int x = int(8 / step) + 1; x < width - int(8 / step) - 1; ++x)
            ASSERT_NEAR(qGreen(scaled.pixel(x, 7)), (x + 0.5) * step - 0.5 + 5, 1.5) << width << ' ' << x;
    }
}

TEST(Resampler, NothingOutsideTheSourceIsMixedIn)
{
    QImage picture(60, 60, QImage::Format_RGB32);
    picture.fill(Qt::red);
    for (int y = 20; y < 37; ++y)
        for (int x = 20; x < 39; ++x)
            picture.setPixel(x, y, 0xFF00FF00);
    for (const QSize size : {QSize(1, 1), QSize(3, 2), QSize(19, 17), QSize(27, 25), QSize(100, 99)}) {
        QImage green(size, QImage::Format_RGB32);
        green.fill(QColor(0, 255, 0));
        EXPECT_EQ(resampled(picture, {20, 20, 19, 17}, size), green) << size.width();
    }
    // a single pixel, enlarged and in the last corner of its picture
    picture.setPixel(59, 59, 0xFF0000FF);
    QImage blue(9, 9, QImage::Format_RGB32);
    blue.fill(Qt::blue);
    EXPECT_EQ(resampled(picture, {59, 59, 1, 1}, {9, 9}), blue);
}

} // namespace
