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

constexpr QRgb black = 0xFF000000;
constexpr QRgb nothing = 0;

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

/// The smallest rectangle around the pixels of a colour, upward like the layout's, null when there are none.
CGRect areaOf(const QImage& image, QRgb colour)
{
    QRect area;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            if (image.pixel(x, y) == colour)
                area |= QRect(x, y, 1, 1);
    return area.isNull() ? CGRect{} : flippedUp(area, image.height());
}

bool onlyContains(const QImage& image, const QRect& area, QRgb colour)
{
    for (int y = area.top(); y <= area.bottom(); ++y)
        for (int x = area.left(); x <= area.right(); ++x)
            if (image.pixel(x, y) != colour)
                return false;
    return true;
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

TEST(Compositor, EqualSizesAreCopied)
{
    const QImage grab = grabbed(1920, 1080, blocks);
    const QImage expected = partOfImage(grab, {0, 0, 1920, 1080}).convertToFormat(QImage::Format_ARGB32);
    EXPECT_EQ(outputOf(screenInputs(grab, {1920, 1080}), 1920, 1080), expected);
}

TEST(Compositor, ScreenIsFittedOnBlack)
{
    EXPECT_EQ(areaOf(outputOf(whiteScreen(1920, 1080), 1280, 720), 0xFFFFFFFF), (CGRect{0, 0, 1280, 720}));
    const QImage wide = outputOf(whiteScreen(1920, 1200), 1280, 720);
    EXPECT_EQ(areaOf(wide, 0xFFFFFFFF), (CGRect{64, 0, 1152, 720}));
    EXPECT_TRUE(onlyContains(wide, {0, 0, 64, 720}, black));
    EXPECT_TRUE(onlyContains(wide, {1216, 0, 64, 720}, black));
    EXPECT_EQ(areaOf(outputOf(whiteScreen(1440, 900), 1280, 720), 0xFFFFFFFF), (CGRect{112, 30, 1056, 660}));
}

TEST(Compositor, RegionIsFittedTwice)
{
    FrameInputs inputs =
        screenInputs(grabbed(1920, 1080, [](double x, double) { return x < 0.5 ? 0xFFFFFFU : 0xFFU; }), {1920, 1080});
    inputs.screen.cut = CGRect{640, 300, 640, 480}; // white on its left half
    const QImage frame = outputOf(inputs, 640, 480);
    // (160, -60, 1600, 1200) of 1920 x 1080, drawn into (0, 60, 640, 360)
    EXPECT_EQ(areaOf(frame, black), (CGRect{0, 0, 640, 480}));
    EXPECT_TRUE(onlyContains(frame, {0, 0, 640, 60}, black));
    EXPECT_TRUE(onlyContains(frame, {0, 420, 640, 60}, black));
    EXPECT_TRUE(onlyContains(frame, {0, 60, 53, 360}, black));
    EXPECT_TRUE(onlyContains(frame, {587, 60, 53, 360}, black));
    EXPECT_TRUE(onlyContains(frame, {53, 60, 266, 360}, 0xFFFFFFFF));
    EXPECT_TRUE(onlyContains(frame, {321, 60, 266, 360}, 0xFF0000FF));
}

TEST(Compositor, FollowCursorRectangleBeyondTheScreenIsBlackThere)
{
    FrameInputs inputs = whiteScreen(1440, 900);
    inputs.screen.cut = CGRect{0, -21.8182F, 640, 480};
    // fitted to 1216 x 912 at (112, -6) of 1440 x 900: 1.9 screen pixels a pixel, its lowest 41.45 - 6 rows empty
    const QImage frame = outputOf(inputs, 1440, 900);
    const CGRect white = areaOf(frame, 0xFFFFFFFF);
    EXPECT_EQ(white, (CGRect{112, 35, 1216, 865}));
    EXPECT_TRUE(onlyContains(frame, {0, 865, 1440, 35}, black));
    inputs.screen.cut = CGRect{5000, 5000, 640, 480};
    EXPECT_TRUE(onlyContains(outputOf(inputs, 1440, 900), {0, 0, 1440, 900}, black));
    inputs.screen.cut = CGRect{0, 0, 0, 480}; // without width there is no canvas either
    EXPECT_TRUE(onlyContains(outputOf(inputs, 1440, 900), {0, 0, 1440, 900}, nothing));
}

TEST(Compositor, SourcesAndTheirConditions)
{
    const QRgb screen = qRgb(0, 0, 200);
    const QRgb camera = qRgb(0, 200, 0);
    struct Case {
        int primary;
        int secondary;
        bool cameraFrame;
        QRgb large;
        QRgb small;
    };
    const Case cases[] = {
        {1, 0, true, screen, screen},    {1, 0, false, screen, screen},  {2, 0, true, camera, camera},
        {2, 0, false, nothing, nothing}, {1, 1, true, screen, camera},   {1, 7, false, screen, screen},
        {2, 1, true, camera, screen},    {2, 1, false, nothing, screen}, {0, 1, true, nothing, nothing},
        {3, 1, true, nothing, nothing},
    };
    for (const Case& c : cases) {
        FrameInputs inputs = screenInputs(flat(192, 108, screen), {192, 108});
        inputs.i_Video_Source_Primary = c.primary;
        inputs.i_Show_Secondary = c.secondary;
        if (c.cameraFrame)
            inputs.camera = {flat(64, 36, camera), 1};
        const QImage frame = outputOf(inputs, 192, 108);
        EXPECT_EQ(frame.pixel(96, 54), c.large) << c.primary << c.secondary << c.cameraFrame;
        EXPECT_EQ(frame.pixel(170, 90), c.small) << c.primary << c.secondary << c.cameraFrame;
        const QImage preview = Compositor().previewPass(inputs, {192, 108}, {192, 108});
        EXPECT_EQ(preview.pixel(96, 54), c.large | black) << c.primary << c.secondary << c.cameraFrame;
        EXPECT_EQ(preview.pixel(170, 90), c.small | black) << c.primary << c.secondary << c.cameraFrame;
    }
}

TEST(Compositor, PositionsOfSecondaryPicturesAndOverlay)
{
    for (int code = 0; code <= 8; ++code) {
        FrameInputs inputs = whiteScreen(1920, 1080);
        inputs.i_Show_Secondary = 1;
        inputs.camera = {flat(320, 240, Qt::green), 1};
        inputs.i_Position_Camera_Secondary = code;
        const QImage frame = outputOf(inputs, 1920, 1080);
        EXPECT_EQ(areaOf(frame, 0xFF00FF00), cameraSecondaryRect({1920, 1080}, 1, code, 0)) << code;
        inputs.i_Video_Source_Primary = 2;
        inputs.i_Position_Screen_Secondary = code;
        inputs.bOverlay = true;
        inputs.imgOverlay = {flat(200, 100, Qt::red, QImage::Format_ARGB32), 1};
        inputs.i_Position_Overlay = 8 - code;
        const QImage other = outputOf(inputs, 1920, 1080);
        EXPECT_EQ(areaOf(other, 0xFFFF0000), overlayRect({1920, 1080}, 300, 8 - code, {200, 100})) << code;
        if (code != 4) { // there the overlay lies on it
            EXPECT_EQ(areaOf(other, 0xFFFFFFFF), screenSecondaryRect({1920, 1080}, 1, code, {1920, 1080})) << code;
        }
    }
}

TEST(Compositor, OverlayCoversTheSecondaryPictureAndKeepsItsTransparency)
{
    FrameInputs inputs = whiteScreen(1920, 1080);
    inputs.i_Show_Secondary = 1;
    inputs.camera = {flat(320, 240, QColor(0, 200, 0)), 1};
    inputs.bOverlay = true;
    inputs.imgOverlay = {flat(200, 100, QColor(255, 0, 0, 128), QImage::Format_ARGB32), 1};
    const QImage frame = outputOf(inputs, 1920, 1080);
    EXPECT_EQ(frame.pixel(1700, 1000), qRgb(128, 100, 0)); // over the camera
    EXPECT_EQ(frame.pixel(1450, 1000), qRgb(0, 200, 0));
    inputs.i_Video_Source_Primary = 2;
    inputs.i_Show_Secondary = 0;
    inputs.camera = {};
    const QImage alone = outputOf(inputs, 1920, 1080); // over nothing: translucent, and zeros around it
    EXPECT_EQ(alone.pixel(1700, 1000), qRgba(255, 0, 0, 128));
    EXPECT_EQ(alone.pixel(10, 10), nothing);
    inputs.bOverlay = false;
    EXPECT_TRUE(onlyContains(outputOf(inputs, 64, 64), {0, 0, 64, 64}, nothing));
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

TEST(Compositor, CursorStandsOnItsLowerLeftCorner)
{
    FrameInputs inputs = whiteScreen(640, 480);
    const QRgb pink = 0xFFFF00FF;
    const auto cursorAt = [&](double x, double y) {
        inputs.screen.cursor = CGPoint{x, y};
        return areaOf(outputOf(inputs, 640, 480), pink);
    };
    EXPECT_EQ(cursorAt(100, 50), (CGRect{100, 50, 16, 16}));
    EXPECT_EQ(cursorAt(0, 0), (CGRect{0, 0, 16, 16}));
    EXPECT_EQ(cursorAt(-6, -9), (CGRect{0, 0, 10, 7})); // cut at the screen's edges
    EXPECT_EQ(cursorAt(639, 479), (CGRect{639, 479, 1, 1}));
    EXPECT_EQ(cursorAt(-16, 5), CGRect{});
    inputs.screen.cut = CGRect{105, 0, 200, 100};
    EXPECT_GT(cursorAt(100, 50).width, 0); // half of it is in the cut
    EXPECT_EQ(cursorAt(80, 50), CGRect{});
    EXPECT_EQ(cursorAt(400, 50), CGRect{});
    inputs.screen.cut.reset();
    inputs.screen.imgScreenCapture = {}; // before the first grab
    EXPECT_EQ(cursorAt(100, 50), (CGRect{100, 50, 16, 16}));
}

TEST(Compositor, PreviewFillsTheViewWhenTheOutputFollowsTheSource)
{
    FrameInputs inputs = whiteScreen(1440, 900);
    const auto preview = [&inputs] { return Compositor().previewPass(inputs, {200, 100}, {200, 100}); };
    EXPECT_EQ(areaOf(preview(), 0xFFFFFFFF), (CGRect{0, 0, 200, 100}));
    inputs.index_size_Video_Output = 3;
    EXPECT_EQ(areaOf(preview(), 0xFFFFFFFF).height, 100);
    EXPECT_EQ(areaOf(preview(), 0xFFFFFFFF).width, 160);
    inputs.index_size_Video_Output = 0;
    inputs.i_Video_Source_Primary = 2;
    inputs.camera = {flat(64, 64, Qt::white), 1};
    EXPECT_EQ(areaOf(preview(), 0xFFFFFFFF), (CGRect{0, 0, 200, 100}));
    inputs.i_Show_Secondary = 1; // now the camera is fitted, whatever the index
    EXPECT_EQ(preview().pixel(3, 50), black);
}

TEST(Compositor, PreviewLayoutCountsUnitsAndPaintsPixels)
{
    FrameInputs inputs = whiteScreen(1920, 1080);
    inputs.bOverlay = true;
    inputs.imgOverlay = {flat(200, 100, Qt::red, QImage::Format_ARGB32), 1};
    const QImage preview = Compositor().previewPass(inputs, {800, 450}, {400, 225});
    ASSERT_EQ(preview.size(), QSize(800, 450));
    EXPECT_EQ(preview.format(), QImage::Format_RGB32);
    EXPECT_EQ(areaOf(preview, 0xFFFF0000), (CGRect{727, 13, 60, 30}));
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
    EXPECT_TRUE(onlyContains(outputOf(screenInputs({}, {}), 20, 20), {0, 0, 20, 20}, nothing));
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

TEST(Compositor, OneResamplingAgreesWithDrawingStepByStep)
{
    const std::optional<CGRect> cuts[] = {std::nullopt, CGRect{33, 21, 320, 240}, CGRect{0, -14.2F, 320, 240},
                                          CGRect{200, 100, 400, 300}, CGRect{50.4, 60.7, 97, 301}};
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
                for (const FramePass pass : {FramePass::Output, FramePass::Preview}) {
                    const QImage frame =
                        pass == FramePass::Output
                            ? outputOf(inputs, size.width(), size.height())
                            : Compositor().previewPass(inputs, size, {double(size.width()), double(size.height())});
                    expectAgreement(frame.convertToFormat(QImage::Format_ARGB32_Premultiplied),
                                    conceptualFrame(inputs, pass, size), edges ? 2 : 1, 6,
                                    "cut " + std::to_string(c) + " width " + std::to_string(size.width()));
                }
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
