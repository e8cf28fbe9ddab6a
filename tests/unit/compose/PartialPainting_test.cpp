// SPDX-License-Identifier: GPL-3.0-or-later
#include "compose/Compositor.h"
#include "compose/Resampler.h"

#include <gmock/gmock.h>

#include <QPainter>

#include <algorithm>
#include <deque>
#include <functional>
#include <random>

// Painting only what changed gives the pixels that painting everything gives.

namespace {

using namespace lumavex;

class Dice {
public:
    explicit Dice(unsigned seed) : random_(seed) {}
    int below(int limit) { return int(random_() % unsigned(limit)); }
    bool once(int in) { return below(in) == 0; }
    std::uint32_t word() { return random_(); }

private:
    std::mt19937 random_;
};

void scribble(QImage& image, const QRect& rect, Dice& dice)
{
    for (int y = rect.top(); y <= rect.bottom(); ++y)
        for (int x = rect.left(); x <= rect.right(); ++x)
            reinterpret_cast<QRgb*>(image.scanLine(y))[x] = dice.word();
}

QImage noise(const QSize& size, Dice& dice, QImage::Format format = QImage::Format_RGB32)
{
    QImage image(size, QImage::Format_ARGB32);
    scribble(image, image.rect(), dice);
    return format == QImage::Format_RGB32 ? std::move(image).convertToFormat(format)
                                          : image.convertToFormat(QImage::Format_ARGB32_Premultiplied);
}

/// Inputs that change as on a desk: mostly a little of the screen and the pointer, sometimes everything.
class Desk {
public:
    Desk(const QSize& grab, const CGSize& size_Screen, unsigned seed) : dice_(seed)
    {
        inputs.screen.size_Screen = size_Screen;
        inputs.screen.imgMouseCursor = noise({16, 16}, dice_, QImage::Format_ARGB32_Premultiplied);
        inputs.screen.imgScreenCapture = {noise(grab, dice_), ++serial_};
        inputs.screen.changes.add(serial_, {});
        inputs.camera = {noise({40, 30}, dice_), ++serial_};
        inputs.imgOverlay = {noise({20, 12}, dice_, QImage::Format_ARGB32_Premultiplied), ++serial_};
        inputs.i_Size_Overlay = 3;
        inputs.index_size_Video_Output = dice_.below(2);
    }

    void change()
    {
        if (dice_.below(4))
            changeScreen();
        if (dice_.once(3))
            moveCursor();
        if (dice_.once(8))
            inputs.camera = {noise({40, 30}, dice_), ++serial_};
        if (dice_.once(40))
            inputs.imgOverlay = {noise({20, 12}, dice_, QImage::Format_ARGB32_Premultiplied), ++serial_};
        if (dice_.once(10))
            changeLayout();
    }

    FrameInputs inputs;

private:
    void changeScreen()
    {
        NumberedImage& screen = inputs.screen.imgScreenCapture;
        screen.image = screen.image.copy(); // pictures handed out are not changed
        ChangedArea changed;
        for (int i = dice_.below(4); i > 0; --i) {
            const QRect part = QRect(dice_.below(screen.image.width()), dice_.below(screen.image.height()),
                                     1 + dice_.below(20), 1 + dice_.below(20))
                               & screen.image.rect();
            scribble(screen.image, part, dice_);
            changed.add(part);
        }
        screen.serial = ++serial_;
        if (dice_.once(25)) { // another kind of grab: nothing is known
            screen.image = noise(screen.image.size(), dice_);
            inputs.screen.changes.clear();
        }
        inputs.screen.changes.add(serial_, changed);
    }
    void moveCursor()
    {
        const CGSize& size = inputs.screen.size_Screen;
        inputs.screen.cursor =
            CGPoint{dice_.below(int(size.width) + 40) - 20.0, dice_.below(int(size.height) + 40) - 20.0};
        if (following_)
            inputs.screen.cut = CGRect{inputs.screen.cursor->x - 30, inputs.screen.cursor->y - 17.3, 60, 40};
        if (dice_.once(10))
            inputs.screen.cursor.reset();
        if (dice_.once(15))
            inputs.screen.imgMouseCursor = noise({16, 16}, dice_, QImage::Format_ARGB32_Premultiplied);
    }
    void changeLayout()
    {
        inputs.i_Video_Source_Primary = dice_.once(4) ? 2 : 1;
        inputs.i_Show_Secondary = dice_.below(2);
        inputs.i_Position_Camera_Secondary = dice_.below(9);
        inputs.i_Position_Screen_Secondary = dice_.below(9);
        inputs.i_Size_Camera_Secondary = dice_.below(4);
        inputs.bOverlay = dice_.below(2);
        inputs.i_Position_Overlay = dice_.below(9);
        following_ = dice_.once(4);
        inputs.screen.cut.reset();
        if (dice_.once(4))
            inputs.screen.cut = CGRect{double(dice_.below(60)), double(dice_.below(60)), 70.5, 50};
    }

    Dice dice_;
    std::uint64_t serial_ = 0;
    bool following_ = false;
};

std::vector<std::uint8_t> bytesOf(const CVPixelBuffer& buffer)
{
    return {buffer.baseAddress, buffer.baseAddress + std::ptrdiff_t(buffer.bytesPerRow) * buffer.height};
}

/// The earlier frame with what is told to have changed since taken from the later one.
std::vector<std::uint8_t> updated(std::vector<std::uint8_t> earlier, const CVPixelBuffer& later,
                                  const ChangedArea& changed)
{
    for (const QRect& rect : changed) {
        for (int y = rect.top(); y <= rect.bottom(); ++y) {
            const auto start = std::ptrdiff_t(y) * later.bytesPerRow + rect.x() * 4;
            std::copy_n(later.baseAddress + start, rect.width() * 4, earlier.begin() + start);
        }
    }
    return earlier;
}

TEST(PartialPainting, GivesThePixelsOfWholePainting)
{
    // Against a screen of 160 x 100: reduced by more than 2, between 1 and 2, copied, enlarged; other shapes.
    const QSize outputs[] = {{23, 14}, {64, 40}, {80, 50}, {120, 75}, {160, 100}, {231, 144}, {500, 90}, {53, 200}};
    unsigned seed = 1;
    for (const QSize& size : outputs) {
        for (const QSize& grab : {QSize(160, 100), QSize(131, 117)}) {
            Desk desk(grab, {160, 100}, ++seed);
            Compositor partial;
            Compositor whole(Compositor::Painting::Whole);
            struct Frame {
                CVPixelBufferRef buffer;
                std::uint64_t number;
                std::vector<std::uint8_t> bytes;
            };
            std::deque<Frame> inUse;
            const CGSize units{double(size.width()), double(size.height())};
            QImage shown; // the latest preview, which the view holds
            for (int round = 0; round < 150; ++round) {
                desk.change();
                const CVPixelBufferRef frame = partial.outputPass(desk.inputs, units);
                ASSERT_EQ(bytesOf(*frame), bytesOf(*whole.outputPass(desk.inputs, units)))
                    << size.width() << ' ' << seed << ' ' << round;
                const ChangeHistory& changes = partial.outputChanges();
                for (const Frame& earlier : inUse) {
                    const auto changed = changes.since(earlier.number).value_or(ChangedArea(QRect(QPoint(), size)));
                    ASSERT_EQ(updated(earlier.bytes, *frame, changed), bytesOf(*frame)) << round;
                }
                inUse.push_back({frame, changes.latest(), bytesOf(*frame)});
                if (inUse.size() > std::size_t(1 + seed % 3)) // ages vary
                    inUse.pop_front();
                shown = partial.previewPass(desk.inputs, size, units);
                ASSERT_EQ(shown, whole.previewPass(desk.inputs, size, units)) << size.width() << ' ' << round;
            }
        }
    }
}

TEST(PartialPainting, SmallChangesStaySmall)
{
    Dice dice(9);
    FrameInputs inputs;
    inputs.screen.size_Screen = {1920, 1080};
    inputs.screen.imgScreenCapture = {noise({1920, 1080}, dice), 1};
    inputs.screen.changes.add(1, {});
    inputs.screen.imgMouseCursor = noise({16, 16}, dice, QImage::Format_ARGB32_Premultiplied);
    inputs.screen.cursor = CGPoint{100, 100};
    inputs.i_Show_Secondary = 1;
    inputs.i_Position_Camera_Secondary = 0;
    inputs.camera = {noise({64, 48}, dice), 1};
    inputs.bOverlay = true;
    inputs.imgOverlay = {noise({20, 10}, dice), 1};
    Compositor compositor;
    const auto changedBy = [&](const std::function<void()>& change) {
        compositor.outputPass(inputs, {1280, 720});
        const std::uint64_t before = compositor.outputChanges().latest();
        change();
        compositor.outputPass(inputs, {1280, 720});
        const ChangedArea area = compositor.outputChanges().since(before).value();
        return std::vector<QRect>(area.begin(), area.end());
    };
    EXPECT_THAT(changedBy([] {}), testing::IsEmpty());
    const auto caret = changedBy([&] {
        inputs.screen.imgScreenCapture.serial = 2;
        inputs.screen.changes.add(2, ChangedArea(QRect(900, 600, 3, 18)));
    });
    ASSERT_EQ(caret.size(), 1U);
    EXPECT_TRUE(caret[0].contains(QRect(600, 400, 2, 12)));
    EXPECT_TRUE(QRect(596, 396, 10, 20).contains(caret[0])) << caret[0].height();
    EXPECT_THAT(changedBy([&] {
                    inputs.screen.cursor = CGPoint{700, 880};
                }),
                testing::UnorderedElementsAre(QRect(67, 643, 10, 10), QRect(467, 123, 10, 10)));
    EXPECT_THAT(changedBy([&] { ++inputs.camera.serial; }), testing::ElementsAre(QRect(21, 21, 320, 180)));
    EXPECT_THAT(changedBy([&] { ++inputs.imgOverlay.serial; }), testing::ElementsAre(QRect(959, 549, 300, 150)));
}

TEST(PartialPainting, ReachedPixelsAreThoseThatChange)
{
    Dice dice(4);
    for (int round = 0; round < 3000; ++round) {
        const QRect source(dice.below(5), dice.below(5), 1 + dice.below(70), 1 + dice.below(70));
        const QRect target(dice.below(9) - 4, dice.below(9) - 4, 1 + dice.below(70), 1 + dice.below(70));
        const QRect clip = target & QRect(0, 0, 70, 70);
        if (clip.isEmpty())
            continue;
        QImage picture = noise({80, 80}, dice);
        const auto draw = [&] {
            std::vector<std::uint32_t> pixels(70 * 70);
            Resampler().draw(picture, source, target, clip, {pixels.data(), {70, 70}, 70, PixelOrder::BlueFirst},
                             AlphaUse::Opaque);
            return pixels;
        };
        const auto before = draw();
        const QRect part = QRect(dice.below(75), dice.below(75), 1 + dice.below(4), 1 + dice.below(4)) & picture.rect();
        scribble(picture, part, dice);
        const auto after = draw();
        const QRect reached = Resampler::reached(source, target, part);
        EXPECT_TRUE(reached.isEmpty() || target.contains(reached));
        for (int i = 0; i < 70 * 70; ++i)
            ASSERT_TRUE(before[std::size_t(i)] == after[std::size_t(i)] || reached.contains(i % 70, i / 70)) << round;
    }
}

} // namespace
