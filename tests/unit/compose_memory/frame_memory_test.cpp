// SPDX-License-Identifier: GPL-3.0-or-later
// Memory that composing a frame takes.
#include "compose/Compositor.h"
#include "tests/support/CountingAllocator.h"

#include <gtest/gtest.h>

#include <array>
#include <thread>

namespace lumavex {
namespace {

QImage plain(const QSize& size, QImage::Format format, QRgb colour)
{
    QImage image(size, format);
    image.fill(colour);
    return image;
}

/// A screen, a camera in its corner, a pointer and a translucent picture over everything, each of which moves on.
class FrameMemory : public testing::Test {
protected:
    void SetUp() override
    {
        if (!allocatorIsCounting())
            GTEST_SKIP() << "the sanitizer has an allocator of its own";
        inputs_.i_Show_Secondary = 1;
        inputs_.screen.size_Screen = {640, 480};
        inputs_.screen.imgMouseCursor = plain({16, 16}, QImage::Format_ARGB32_Premultiplied, 0xFFFFFFFFU);
        inputs_.bOverlay = true;
        inputs_.imgOverlay = {plain({40, 20}, QImage::Format_ARGB32_Premultiplied, 0x80400000U), 1};
        for (int i = 0; i < 2; ++i) {
            screens_[std::size_t(i)] = plain({640, 480}, QImage::Format_RGB32, 0xFF002000U * QRgb(i + 1));
            cameras_[std::size_t(i)] = plain({320, 240}, QImage::Format_RGB32, 0xFF000040U * QRgb(i + 1));
        }
        nextScreen(QRect(0, 0, 640, 480));
        nextCamera();
    }
    void nextScreen(const QRect& changed)
    {
        inputs_.screen.imgScreenCapture = {screens_[++pictures_ % 2], serial_ + 1};
        inputs_.screen.changes.add(++serial_, ChangedArea(changed));
    }
    void nextCamera()
    {
        inputs_.camera = {cameras_[++pictures_ / 2 % 2], serial_ + 1};
        ++serial_;
    }
    /// Both passes; the latest frames are still held, as by the encoders and by the view.
    void compose()
    {
        const CGSize size = {480, 360};
        previews_.at(frame_ % previews_.size()) = compositor_.previewPass(inputs_, {320, 240}, {320, 240});
        outputs_.at(frame_ % outputs_.size()) = compositor_.outputPass(inputs_, size);
        EXPECT_FALSE(previews_.at(frame_ % previews_.size()).isNull());
        EXPECT_TRUE(outputs_.at(frame_ % outputs_.size()));
        ++frame_;
    }

    Compositor compositor_;
    FrameInputs inputs_;
    std::array<QImage, 2> screens_;
    std::array<QImage, 2> cameras_;
    std::uint64_t serial_ = 0;
    std::size_t pictures_ = 0;
    std::size_t frame_ = 0;
    std::array<QImage, 2> previews_;
    std::array<CVPixelBufferRef, 5> outputs_;
};

TEST_F(FrameMemory, OnceItRunsAFrameTakesNone)
{
    const auto second = [this] {
        for (int i = 0; i < 60; ++i) {
            if (i % 2 == 0)
                nextScreen({i, i, 50, 40});
            if (i % 10 == 0)
                nextScreen({0, 0, 640, 480});
            if (i % 3 == 0)
                nextCamera();
            inputs_.screen.cursor = CGPoint{double(i * 7), double(i * 5)};
            compose();
            compose(); // and once more with nothing changed
        }
    };
    second();
    const MemoryUse before = memoryUse();
    second();
    EXPECT_EQ(memoryUse().requests - before.requests, 0);
    EXPECT_EQ(memoryUse().bytes, before.bytes);
}

TEST_F(FrameMemory, FramesOutliveWhatMadeThem)
{
    auto compositor = std::make_unique<Compositor>();
    CVPixelBufferRef frame = compositor->outputPass(inputs_, {480, 360});
    const QImage preview = compositor->previewPass(inputs_, {320, 240}, {320, 240});
    const std::uint8_t first = frame->baseAddress[3];
    const QRgb pixel = preview.pixel(0, 0);
    compositor.reset();
    EXPECT_EQ(frame->baseAddress[3], first);
    EXPECT_EQ(preview.pixel(0, 0), pixel);
    std::thread([&frame] { frame.reset(); }).join(); // as the encoders let go of it
}

TEST_F(FrameMemory, APictureThatIsStillHeldIsNotPaintedAnew)
{
    const QImage held = compositor_.previewPass(inputs_, {320, 240}, {320, 240});
    const QImage copy = held.copy();
    nextScreen(QRect(0, 0, 640, 480));
    nextCamera();
    const QImage next = compositor_.previewPass(inputs_, {320, 240}, {320, 240});
    EXPECT_NE(next, held);
    EXPECT_EQ(held, copy);
}

} // namespace
} // namespace lumavex
