// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "compose/FrameInputs.h"
#include "platform/MovieWriter.h"

#include <QImage>

#include <memory>

namespace lumavex {

/// Draws frames. Independent of widgets, windows and timers; main thread only, except that pixel buffers may be
/// released on any thread. Pixel buffers and pictures may outlive the compositor. Once it runs it allocates no memory.
///
/// Every pixel is resampled once, from the grab, the camera picture or the overlay directly to its place; at equal size
/// it is copied. Frames come from a pool and return to it after their last use. A frame is painted into memory that
/// still holds an earlier one, and only where it differs from that one.
class Compositor {
public:
    enum class Painting {
        Changes,
        Whole, ///< every frame completely, which gives the same pixels
    };
    explicit Compositor(Painting painting = Painting::Changes);
    ~Compositor();

    /// Returns the picture for the preview view. `pixels` is the view's size in device pixels and `units` in view units
    /// (the overlay's width counts view units). Format_RGB32; black where nothing is drawn. Null when there is no
    /// memory or the size is empty.
    QImage previewPass(const FrameInputs& inputs, const QSize& pixels, const CGSize& units);

    /// Returns the output frame as a pixel buffer in the order alpha, red, green, blue, rows without gaps; colours are
    /// premultiplied, transparent black where nothing is drawn. Null when there is no memory or the size is empty.
    CVPixelBufferRef outputPass(const FrameInputs& inputs, const CGSize& size_Video_Output);

    /// Areas in which the latest frame of each pass may differ from earlier frames of the pass, by frame number;
    /// `latest` is the latest frame's number. Frames of another size are not known.
    const ChangeHistory& previewChanges() const;
    const ChangeHistory& outputChanges() const;

private:
    class Pass;
    struct Memory;
    std::unique_ptr<Memory> memory_;
    std::unique_ptr<Pass> preview_;
    std::unique_ptr<Pass> output_;
};

/// Copies the pixels of an output frame to a picture, Format_ARGB32.
QImage imageFromPixelBuffer(const CVPixelBuffer& buffer);

/// Releases the memory of a frame, which is the release context. Any thread.
void ReleaseCVPixelBufferForCVPixelBufferCreateWithBytes(void* releaseRefCon, const void* baseAddress);

} // namespace lumavex
