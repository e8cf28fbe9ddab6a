// SPDX-License-Identifier: GPL-3.0-or-later
#include "compose/Compositor.h"

#include "compose/BlendedLayer.h"
#include "compose/Canvas.h"
#include "compose/FramePlan.h"
#include "compose/PixelPool.h"
#include "compose/Resampler.h"

#include <cmath>

namespace lumavex {

namespace {

/// Far more than any display or catalogue size; keeps the number of bytes within an int.
constexpr double largestEdge = 16384;

QSize wholePixels(const CGSize& size)
{
    if (!(size.width > 0 && size.width <= largestEdge && size.height > 0 && size.height <= largestEdge))
        return {};
    return {int(std::lround(size.width)), int(std::lround(size.height))};
}

} // namespace

/// What one of the two passes keeps from frame to frame.
class Compositor::Pass {
public:
    /// The frame painted into memory of the pool; null when there is none or the size is empty.
    PixelPool::Block* paint(const FrameInputs& inputs, const FrameTarget& target, PixelOrder order)
    {
        if (target.pixels.isEmpty())
            return nullptr;
        const auto width = std::size_t(target.pixels.width());
        PixelPool::Block* block = pool_->take(width * std::size_t(target.pixels.height()));
        if (block) {
            const Canvas canvas{PixelPool::pixelsOf(block), target.pixels, target.pixels.width(), order};
            for (const FrameStep& step : planFrame(inputs, target))
                paint(inputs, step, canvas);
        }
        return block;
    }

private:
    void paint(const FrameInputs& inputs, const FrameStep& step, const Canvas& canvas)
    {
        switch (step.kind) {
        case FrameStep::Kind::Clear:
            // On screen there is nothing to see through to.
            canvas.order == PixelOrder::AlphaFirst ? canvas.fillTransparent(step.clip) : canvas.fillBlack(step.clip);
            break;
        case FrameStep::Kind::Black:
            canvas.fillBlack(step.clip);
            break;
        case FrameStep::Kind::Opaque:
            opaque_.draw(step.picture == FramePicture::Screen ? inputs.screen.imgScreenCapture.image
                                                              : inputs.camera.image,
                         step.source, step.target, step.clip, canvas, AlphaUse::Opaque);
            break;
        case FrameStep::Kind::Blended:
            if (step.picture == FramePicture::Cursor) {
                const QImage& cursor = inputs.screen.imgMouseCursor;
                cursor_.draw(cursor, std::uint64_t(cursor.cacheKey()), step.target, step.clip, canvas);
            } else {
                overlay_.draw(inputs.imgOverlay.image, inputs.imgOverlay.serial, step.target, step.clip, canvas);
            }
            break;
        }
    }

    std::shared_ptr<PixelPool> pool_ = PixelPool::create();
    Resampler opaque_;
    BlendedLayer cursor_;
    BlendedLayer overlay_;
};

Compositor::Compositor() : preview_(std::make_unique<Pass>()), output_(std::make_unique<Pass>()) {}

Compositor::~Compositor() = default;

QImage Compositor::previewPass(const FrameInputs& inputs, const QSize& pixels, const CGSize& units)
{
    const QSize size = wholePixels({double(pixels.width()), double(pixels.height())});
    PixelPool::Block* block = preview_->paint(inputs, {FramePass::Preview, size, units}, PixelOrder::BlueFirst);
    if (!block)
        return {};
    const auto letGo = [](void* released) { PixelPool::release(static_cast<PixelPool::Block*>(released)); };
    return {reinterpret_cast<uchar*>(PixelPool::pixelsOf(block)),
            size.width(),
            size.height(),
            qsizetype(size.width()) * 4,
            QImage::Format_RGB32,
            letGo,
            block};
}

CVPixelBufferRef Compositor::outputPass(const FrameInputs& inputs, const CGSize& size_Video_Output)
{
    const QSize size = wholePixels(size_Video_Output);
    PixelPool::Block* block =
        output_->paint(inputs, {FramePass::Output, size, size_Video_Output}, PixelOrder::AlphaFirst);
    if (!block)
        return nullptr;
    return std::make_shared<const CVPixelBuffer>(size.width(), size.height(), kCVPixelFormatType_32ARGB,
                                                 reinterpret_cast<const std::uint8_t*>(PixelPool::pixelsOf(block)),
                                                 size.width() * 4, ReleaseCVPixelBufferForCVPixelBufferCreateWithBytes,
                                                 block);
}

QImage imageFromPixelBuffer(const CVPixelBuffer& buffer)
{
    QImage picture(buffer.width, buffer.height, QImage::Format_ARGB32_Premultiplied);
    for (int y = 0; y < picture.height(); ++y) {
        const auto* row =
            reinterpret_cast<const std::uint32_t*>(buffer.baseAddress + std::ptrdiff_t(y) * buffer.bytesPerRow);
        // Turning the bytes of a pixel round works both ways.
        rowFunctions().copy(reinterpret_cast<std::uint32_t*>(picture.scanLine(y)), row, std::size_t(buffer.width),
                            {PixelOrder::AlphaFirst, AlphaUse::Kept});
    }
    return std::move(picture).convertToFormat(QImage::Format_ARGB32);
}

void ReleaseCVPixelBufferForCVPixelBufferCreateWithBytes(void* releaseRefCon, const void* /*baseAddress*/)
{
    PixelPool::release(static_cast<PixelPool::Block*>(releaseRefCon));
}

} // namespace lumavex
