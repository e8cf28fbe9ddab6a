// SPDX-License-Identifier: GPL-3.0-or-later
#include "compose/Compositor.h"

#include "compose/BlendedLayer.h"
#include "compose/Canvas.h"
#include "compose/FrameChanges.h"
#include "compose/PixelPool.h"
#include "compose/PreviewPool.h"
#include "compose/RecyclingAllocator.h"
#include "compose/Resampler.h"

#include <cmath>
#include <utility>

namespace lumavex {

namespace {

/// Far larger than any display or catalogue size; keeps the number of bytes within an int.
constexpr double largestEdge = 16384;

QSize wholePixels(const CGSize& size)
{
    if (!(size.width > 0 && size.width <= largestEdge && size.height > 0 && size.height <= largestEdge))
        return {};
    return {int(std::lround(size.width)), int(std::lround(size.height))};
}

} // namespace

/// State that one of the two passes keeps from frame to frame.
class Compositor::Pass {
public:
    explicit Pass(Painting painting) : painting_(painting) {}

    /// Sets the frame that is painted next.
    void beginFrame(const FrameInputs& inputs, const FrameTarget& target)
    {
        const FrameContents before = std::exchange(contents_, FrameContents::of(inputs, target));
        if (std::exchange(size_, target.pixels) != target.pixels || painting_ == Painting::Whole)
            changes_.clear();
        changes_.add(++lastFrame_, frameChanges(before, contents_, inputs.screen.changes));
    }

    /// Paints the frame that beginFrame() set, from the same inputs. The canvas has the frame's size and holds the
    /// earlier frame `held`, or 0 for none. Returns the number of the frame that it holds afterwards.
    std::uint64_t paint(const FrameInputs& inputs, const Canvas& canvas, std::uint64_t held)
    {
        const ChangedArea whole(QRect(QPoint(), size_));
        for (const QRect& rect : changes_.since(held).value_or(whole))
            paint(inputs, rect, canvas);
        return changes_.latest();
    }

    const ChangeHistory& changes() const { return changes_; }

private:
    /// Writes every pixel of the rectangle, so that rectangles may be painted again.
    void paint(const FrameInputs& inputs, const QRect& rect, const Canvas& canvas)
    {
        for (const FrameStep& step : contents_.plan) {
            const QRect part = step.clip & rect;
            if (!part.isEmpty())
                paint(inputs, step, part, canvas);
        }
    }

    void paint(const FrameInputs& inputs, const FrameStep& step, const QRect& part, const Canvas& canvas)
    {
        switch (step.kind) {
        case FrameStep::Kind::Clear:
            // On screen nothing is behind a transparent pixel.
            canvas.order == PixelOrder::AlphaFirst ? canvas.fillTransparent(part) : canvas.fillBlack(part);
            break;
        case FrameStep::Kind::Black:
            canvas.fillBlack(part);
            break;
        case FrameStep::Kind::Opaque:
            opaque_.draw(step.picture == FramePicture::Screen ? inputs.screen.imgScreenCapture.image
                                                              : inputs.camera.image,
                         step.source, step.target, part, canvas, AlphaUse::Opaque);
            break;
        case FrameStep::Kind::Blended:
            if (step.picture == FramePicture::Cursor)
                cursor_.draw(inputs.screen.imgMouseCursor, contents_.cursor, step.target, step.clip, part, canvas);
            else
                overlay_.draw(inputs.imgOverlay.image, contents_.overlay, step.target, step.clip, part, canvas);
            break;
        }
    }

    const Painting painting_;
    Resampler opaque_;
    BlendedLayer cursor_;
    BlendedLayer overlay_;
    FrameContents contents_; ///< of the latest frame
    QSize size_;             ///< of the latest frame
    std::uint64_t lastFrame_ = 0;
    ChangeHistory changes_; ///< of frames of this size
};

/// Memory of the frames that the passes return.
struct Compositor::Memory {
    PreviewPool previews;
    std::shared_ptr<PixelPool> frames = PixelPool::create();
    std::shared_ptr<MemoryBin> buffers = std::make_shared<MemoryBin>();
};

Compositor::Compositor(Painting painting)
    : memory_(std::make_unique<Memory>()), preview_(std::make_unique<Pass>(painting)),
      output_(std::make_unique<Pass>(painting))
{
}

Compositor::~Compositor() = default;

const ChangeHistory& Compositor::previewChanges() const
{
    return preview_->changes();
}

const ChangeHistory& Compositor::outputChanges() const
{
    return output_->changes();
}

QImage Compositor::previewPass(const FrameInputs& inputs, const QSize& pixels, const CGSize& units)
{
    const QSize size = wholePixels({double(pixels.width()), double(pixels.height())});
    if (size.isEmpty())
        return {};
    preview_->beginFrame(inputs, {FramePass::Preview, size, units});
    PreviewPool::Picture* const picture = memory_->previews.take(size);
    if (!picture)
        return {};
    const Canvas canvas{reinterpret_cast<std::uint32_t*>(picture->image.bits()), size, size.width(),
                        PixelOrder::BlueFirst};
    picture->frame = preview_->paint(inputs, canvas, picture->frame);
    return picture->image;
}

CVPixelBufferRef Compositor::outputPass(const FrameInputs& inputs, const CGSize& size_Video_Output)
{
    const QSize size = wholePixels(size_Video_Output);
    if (size.isEmpty())
        return nullptr;
    output_->beginFrame(inputs, {FramePass::Output, size, size_Video_Output});
    PixelPool::Block* const block = memory_->frames->take(std::size_t(size.width()) * std::size_t(size.height()));
    if (!block)
        return nullptr;
    const Canvas canvas{PixelPool::pixelsOf(block), size, size.width(), PixelOrder::AlphaFirst};
    PixelPool::setFrame(block, output_->paint(inputs, canvas, PixelPool::frameOf(block)));
    return std::allocate_shared<const CVPixelBuffer>(
        RecyclingAllocator<CVPixelBuffer>(memory_->buffers), size.width(), size.height(), kCVPixelFormatType_32ARGB,
        reinterpret_cast<const std::uint8_t*>(PixelPool::pixelsOf(block)), size.width() * 4,
        ReleaseCVPixelBufferForCVPixelBufferCreateWithBytes, block);
}

QImage imageFromPixelBuffer(const CVPixelBuffer& buffer)
{
    QImage picture(buffer.width, buffer.height, QImage::Format_ARGB32_Premultiplied);
    for (int y = 0; y < picture.height(); ++y) {
        const auto* row =
            reinterpret_cast<const std::uint32_t*>(buffer.baseAddress + std::ptrdiff_t(y) * buffer.bytesPerRow);
        // Reversing the bytes of a pixel converts in both directions.
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
