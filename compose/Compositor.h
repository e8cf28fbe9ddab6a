// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "compose/FrameInputs.h"
#include "platform/MovieWriter.h"

#include <QImage>

#include <memory>

namespace lumavex {

/// Draws frames. Knows no widget, no window and no timer; main thread only, but for the release of pixel buffers, which
/// may happen on any thread. Pixel buffers and pictures may outlive the compositor. Once it runs it asks for no memory.
///
/// Every pixel is resampled once, from the grab, the camera picture or the overlay straight to its place; where sizes
/// agree it is copied. Frames come from a pool and go back to it when their last user lets go; a frame is painted into
/// memory that still holds an earlier one, and only where it differs from that.
class Compositor {
public:
    enum class Painting {
        Changes,
        Whole, ///< every frame from nothing, which gives the same pixels
    };
    explicit Compositor(Painting painting = Painting::Changes);
    ~Compositor();

    /// The picture for the preview view, `pixels` being the view's size in device pixels and `units` in view units (the
    /// overlay's width counts view units). Format_RGB32; black where nothing is drawn. Null when no memory is to be had
    /// or the size is empty.
    QImage previewPass(const FrameInputs& inputs, const QSize& pixels, const CGSize& units);

    /// The output frame as a pixel buffer in the order alpha, red, green, blue, rows without gaps; colours are
    /// premultiplied, transparent black where nothing is drawn. Null when no memory is to be had or the size is empty.
    CVPixelBufferRef outputPass(const FrameInputs& inputs, const CGSize& size_Video_Output);

    /// Where the latest frame of each pass may differ from earlier ones of it, by their numbers; `latest` is that
    /// frame's. Frames of another size are not known.
    const ChangeHistory& previewChanges() const;
    const ChangeHistory& outputChanges() const;

private:
    class Pass;
    struct Memory;
    std::unique_ptr<Memory> memory_;
    std::unique_ptr<Pass> preview_;
    std::unique_ptr<Pass> output_;
};

/// The pixels of an output frame as a picture of their own, Format_ARGB32.
QImage imageFromPixelBuffer(const CVPixelBuffer& buffer);

/// Releases the frame's memory, which is its release context. Any thread.
void ReleaseCVPixelBufferForCVPixelBufferCreateWithBytes(void* releaseRefCon, const void* baseAddress);

} // namespace lumavex
