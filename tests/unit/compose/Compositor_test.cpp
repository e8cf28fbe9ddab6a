// SPDX-License-Identifier: GPL-3.0-or-later
#include "compose/Compositor.h"

#include "compose/FrameLayout.h"
#include "compose/ImageHelpers.h"
#include "tests/unit/compose/ConceptualFrame.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <thread>
#include <vector>

namespace {

using namespace lumavex;

QImage flat(int width, int height, const QColor& colour, QImage::Format format = QImage::Format_RGB32)
{
    QImage image(width, height, format);
    image.fill(colour);
    return image;
}

/// A grab: the fourth byte of its pixels holds rubbish.
QImage grabbed(int width, int height, const std::function<QRgb(double, double)>& colourAt)
{
    QImage image(width, height, QImage::Format_RGB32);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            reinterpret_cast<QRgb*>(image.scanLine(y))[x] =
                (colourAt((x + 0.5) / width, (y + 0.5) / height) & 0xFFFFFFU) | 0x11000000U;
    return image;
}

QRgb smooth(double x, double y)
{
    return qRgb(int(20 + 200 * x), int(230 - 200 * y), int(128 + 100 * std::sin(5 * x + 3 * y)));
}

QRgb blocks(double x, double y)
{
    return (int(x * 8) + int(y * 6)) % 2 ? qRgb(240, 200, 30) : qRgb(10, 60, 130);
}

/// Screen primary, entire screen, everything else off.
FrameInputs screenInputs(const QImage& grab, const CGSize& size_Screen)
{
    FrameInputs inputs;
    inputs.screen.imgScreenCapture = {grab, 1};
    inputs.screen.size_Screen = size_Screen;
    inputs.screen.imgMouseCursor = flat(16, 16, QColor(255, 0, 255), QImage::Format_ARGB32_Premultiplied);
    return inputs;
}

FrameInputs whiteScreen(int width, int height)
{
    return screenInputs(flat(width, height, Qt::white), {double(width), double(height)});
}

QImage outputOf(const FrameInputs& inputs, int width, int height)
{
    const CVPixelBufferRef buffer = Compositor().outputPass(inputs, {double(width), double(height)});
    return buffer ? imageFromPixelBuffer(*buffer) : QImage();
}

TEST(Compositor, PixelsAreAlphaRedGreenBlueWithoutGaps)
{
    const CVPixelBufferRef buffer = Compositor().outputPass(
        screenInputs(grabbed(7, 5, [](double, double) { return qRgb(10, 20, 30); }), {7, 5}), {7, 5});
    ASSERT_TRUE(buffer);
    EXPECT_EQ(buffer->pixelFormat, kCVPixelFormatType_32ARGB);
    EXPECT_EQ(buffer->bytesPerRow, 7 * 4);
    for (int i = 0; i < 7 * 5; ++i)
        EXPECT_THAT(std::vector<int>(buffer->baseAddress + 4 * i, buffer->baseAddress + 4 * i + 4),
                    testing::ElementsAre(255, 10, 20, 30));
}

TEST(Compositor, OverlaysOfAnyFormatChangeWithTheirSerial)
{
    Compositor compositor;
    FrameInputs inputs = whiteScreen(640, 480);
    inputs.bOverlay = true;
    inputs.i_Size_Overlay = 20;
    inputs.i_Position_Overlay = 4;
    std::uint64_t serial = 0;
    for (const QImage::Format format : {QImage::Format_RGB888, QImage::Format_Grayscale8, QImage::Format_RGBA64,
                                        QImage::Format_RGB32, QImage::Format_ARGB32_Premultiplied}) {
        const int grey = 40 + int(serial) * 20;
        inputs.imgOverlay = {flat(33, 21, QColor(grey, grey, grey), format), ++serial};
        const auto buffer = compositor.outputPass(inputs, {640, 480});
        EXPECT_EQ(imageFromPixelBuffer(*buffer).pixel(320, 240), qRgb(grey, grey, grey)) << format;
    }
    inputs.imgOverlay.image = {};
    EXPECT_EQ(outputOf(inputs, 640, 480).pixel(320, 240), 0xFFFFFFFF);
}

TEST(Compositor, EmptySizesGiveNoFrame)
{
    Compositor compositor;
    const FrameInputs inputs = whiteScreen(64, 48);
    EXPECT_FALSE(compositor.outputPass(inputs, {0, 480}));
    EXPECT_FALSE(compositor.outputPass(inputs, {640, std::nan("")}));
    EXPECT_FALSE(compositor.outputPass(inputs, {1e9, 1e9}));
    EXPECT_TRUE(compositor.previewPass(inputs, {}, {}).isNull());
    // no screen size yet
    EXPECT_EQ(outputOf(screenInputs({}, {}), 20, 20), flat(20, 20, Qt::transparent, QImage::Format_ARGB32));
}

/// Every pixel lies within what the reference has `reach` pixels around it, but for `tolerance`.
void expectAgreement(const QImage& frame, const QImage& reference, int reach, int tolerance, const std::string& what)
{
    ASSERT_EQ(frame.size(), reference.size());
    int wrong = 0;
    for (int y = 0; y < frame.height(); ++y) {
        for (int x = 0; x < frame.width(); ++x) {
            for (int shift = 0; shift < 32; shift += 8) {
                int low = 255;
                int high = 0;
                for (int j = std::max(y - reach, 0); j <= std::min(y + reach, frame.height() - 1); ++j) {
                    const auto* row = reinterpret_cast<const QRgb*>(reference.constScanLine(j));
                    for (int i = std::max(x - reach, 0); i <= std::min(x + reach, frame.width() - 1); ++i) {
                        low = std::min(low, int(row[i] >> shift & 255));
                        high = std::max(high, int(row[i] >> shift & 255));
                    }
                }
                const int value = int(reinterpret_cast<const QRgb*>(frame.constScanLine(y))[x] >> shift & 255);
                wrong += value < low - tolerance || value > high + tolerance;
            }
        }
    }
    EXPECT_EQ(wrong, 0) << what;
}

/// The frame of either pass is as drawn step by step.
void expectAsDefined(const FrameInputs& inputs, const QSize& size, int reach, int tolerance, const std::string& what)
{
    const CGSize units{double(size.width()), double(size.height())};
    expectAgreement(outputOf(inputs, size.width(), size.height()).convertToFormat(QImage::Format_ARGB32_Premultiplied),
                    conceptualFrame(inputs, FramePass::Output, size, units), reach, tolerance, "output, " + what);
    expectAgreement(Compositor().previewPass(inputs, size, units),
                    conceptualFrame(inputs, FramePass::Preview, size, units), reach, tolerance, "preview, " + what);
}

TEST(Compositor, EverythingStandsToThePixelWhereItIsDrawnStepByStep)
{
    const CGPoint cursors[] = {{70, 20}, {0, 0}, {-6, -9}, {239, 119}, {-16, 5}, {30, 110}, {99, 60}, {500, 5}, {8, 8}};
    for (const auto& [screen, frame] : {std::pair<QSize, QSize>{{240, 120}, {240, 120}},
                                        {{240, 150}, {160, 90}},
                                        {{180, 112}, {160, 90}},
                                        {{160, 90}, {240, 120}}}) {
        for (int scene = 0; scene < 3 * 2 * 3 * 9; ++scene) {
            const int place = scene % 9;
            FrameInputs inputs = screenInputs(flat(screen.width(), screen.height(), QColor(0, 0, 200)),
                                              {double(screen.width()), double(screen.height())});
            if (scene / 9 % 3 == 0)
                inputs.screen.imgScreenCapture = {}; // before the first grab
            if (scene / 9 % 3 != 1)
                inputs.camera = {flat(64, 48, QColor(0, 200, 0)), 1};
            inputs.i_Show_Secondary = scene / 27 % 2 * 7; // anything but 0
            inputs.i_Video_Source_Primary = 1 + scene / 54;
            inputs.index_size_Video_Output = place % 2 * 5;
            inputs.i_Position_Camera_Secondary = inputs.i_Position_Screen_Secondary = place;
            inputs.i_Size_Camera_Secondary = inputs.i_Size_Screen_Secondary = place % 4;
            inputs.i_Camera_CRP = place;
            inputs.bOverlay = place % 3 != 1;
            inputs.imgOverlay = {flat(20, 10, QColor(255, 0, 0, 128), QImage::Format_ARGB32), 1};
            inputs.i_Size_Overlay = 4;
            inputs.i_Position_Overlay = (place + scene / 27) % 9;
            if (screen == frame && inputs.i_Video_Source_Primary == 1) // elsewhere its edges are resampled
                inputs.screen.cursor = cursors[place];
            expectAsDefined(inputs, frame, 0, 1, std::to_string(scene) + " " + std::to_string(frame.width()));
        }
    }
}

TEST(Compositor, EqualSizesAreCopied)
{
    for (int place = 0; place <= 8; ++place) {
        FrameInputs inputs = screenInputs(grabbed(240, 120, smooth), {240, 120});
        inputs.i_Show_Secondary = 1;
        inputs.camera = {grabbed(60, 30, blocks), 1};
        inputs.i_Position_Camera_Secondary = place;
        expectAsDefined(inputs, {240, 120}, 0, 0, std::to_string(place));
    }
}

TEST(Compositor, PreviewLayoutCountsUnitsAndPaintsPixels)
{
    FrameInputs inputs = whiteScreen(1920, 1080);
    inputs.bOverlay = true;
    inputs.imgOverlay = {flat(200, 100, Qt::red, QImage::Format_ARGB32), 1};
    const QImage preview = Compositor().previewPass(inputs, {800, 450}, {400, 225});
    EXPECT_EQ(preview.format(), QImage::Format_RGB32);
    expectAgreement(preview, conceptualFrame(inputs, FramePass::Preview, {800, 450}, {400, 225}), 0, 0, "");
}

TEST(Compositor, OneResamplingAgreesWithDrawingStepByStep)
{
    const std::optional<CGRect> cuts[] = {std::nullopt,
                                          CGRect{33, 21, 320, 240},
                                          CGRect{0, -14.2F, 320, 240},
                                          CGRect{200, 100, 400, 300},
                                          CGRect{50.4, 60.7, 97, 301},
                                          CGRect{5000, 5000, 320, 240},
                                          CGRect{0, 0, 0, 240}};
    const QSize sizes[] = {{320, 240}, {431, 163}, {613, 345}};
    for (const bool edges : {false, true}) {
        const auto pattern = edges ? blocks : smooth;
        for (std::size_t c = 0; c < std::size(cuts); ++c) {
            for (const QSize& size : sizes) {
                FrameInputs inputs = screenInputs(grabbed(511, 383, pattern), {480, 360});
                inputs.screen.cut = cuts[c];
                if (edges)
                    inputs.screen.cursor = CGPoint{210, 118};
                inputs.camera = {grabbed(160, 120, pattern), 1};
                inputs.i_Show_Secondary = 1;
                inputs.index_size_Video_Output = 5;
                inputs.i_Position_Screen_Secondary = 3;
                inputs.i_Size_Screen_Secondary = 3;
                inputs.i_Video_Source_Primary = 1 + std::int64_t(c % 2);
                expectAsDefined(inputs, size, edges ? 2 : 1, 6,
                                "cut " + std::to_string(c) + " width " + std::to_string(size.width()));
            }
        }
    }
}

TEST(Compositor, FramesAreReusedAndOutliveTheCompositor)
{
    auto compositor = std::make_unique<Compositor>();
    const FrameInputs inputs = whiteScreen(64, 48);
    const std::uint8_t* first = compositor->outputPass(inputs, {64, 48})->baseAddress;
    CVPixelBufferRef kept = compositor->outputPass(inputs, {64, 48});
    EXPECT_EQ(kept->baseAddress, first);
    const CVPixelBufferRef second = compositor->outputPass(inputs, {64, 48});
    EXPECT_NE(second->baseAddress, first); // the first one is still in use
    QImage preview = compositor->previewPass(inputs, {64, 48}, {64, 48});
    const uchar* bits = preview.constBits();
    preview = {};
    preview = compositor->previewPass(inputs, {64, 48}, {64, 48});
    EXPECT_EQ(preview.constBits(), bits);
    std::thread([frame = std::move(kept)]() mutable { frame.reset(); }).join();
    EXPECT_EQ(compositor->outputPass(inputs, {64, 48})->baseAddress, first);
    compositor.reset();
    EXPECT_EQ(second->baseAddress[0], 255);
    EXPECT_EQ(preview.pixel(5, 5), 0xFFFFFFFF);
}

} // namespace
