// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/ScreenGrabber.h"
#include "platform/x11/PixelLayout.h"
#include "platform/x11/SharedImagePool.h"

#include <QRect>

namespace lumavex {

/// The pictures of something that changes, one after the other. Each is memory that still holds an earlier one, brought
/// up to date by reading the rows that changed since; with two or three in turn that is what changed in the latest two
/// or three. Main thread.
class GrabSeries {
public:
    /// `pool` outlives this. `layout` is that of the drawables.
    GrabSeries(SharedImagePool& pool, const PixelLayout& layout);

    /// The picture of a rectangle of the drawable, drawn to within `changed`, relative to the rectangle's corner, since
    /// the last call. The last grab again when that changed no pixel. Retry when it cannot be read.
    Grab next(xcb_drawable_t drawable, const QRect& rect, const ChangedArea& changed);
    const QRect& rect() const { return rect_; } ///< of the last call

    /// The next picture has nothing to do with those before: it is read whole.
    void forget();

private:
    SharedImagePool& pool_;
    const PixelLayout layout_;
    QRect rect_;
    QImage raw_; ///< the last picture as it was read
    Grab last_;  ///< serial 0 when there is none
};

} // namespace lumavex
