// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/ScreenGrabber.h"
#include "platform/x11/PixelLayout.h"
#include "platform/x11/SharedImagePool.h"

#include <QRect>

namespace lumavex {

/// Rows of a picture that are read from another drawable than the others.
struct OtherRows {
    QRect rows; ///< of the picture, whole
    xcb_drawable_t drawable;
    QPoint corner; ///< of the picture in the drawable
};

/// What is read in the same round trip. Null: none.
struct ReadToo {
    const SharedImagePool::Reading* beside = nullptr;
    const OtherRows* otherRows = nullptr;
};

/// The pictures of something that changes, one after the other. Each is memory that still holds an earlier one, brought
/// up to date by reading the rows that changed since; with two or three in turn that is what changed in the latest two
/// or three. A picture is made by read(), patch() where needed, compare() and finish(), or dropped by abandon(). Main
/// thread.
class GrabSeries {
public:
    /// `pool` outlives this. `layout` is that of the drawables.
    GrabSeries(SharedImagePool& pool, const PixelLayout& layout);

    /// Reads what is out of date in the next picture, that of a rectangle of the drawable, drawn to within `changed`,
    /// relative to the rectangle's corner, since the last call. Nothing when nothing changed. False when it cannot be
    /// read: the series begins anew then.
    bool read(xcb_drawable_t drawable, const QRect& rect, const ChangedArea& changed, const ReadToo& too = {});
    /// Puts other pixels, read into their turn, over what was read there.
    void patch(const ChangedArea& places, const uchar* pixels);
    /// Where the picture differs from the one before: everywhere for the first one.
    const ChangedArea& compare();
    /// Whether it differs from the one before anywhere else.
    bool differsOutside(const ChangedArea& area) const;
    /// The picture; the last grab again when no pixel differs. Retry when there is none.
    Grab finish();
    /// Drops the picture, which is wrong. The next one reads what this one was to.
    void abandon();

    const QRect& rect() const { return rect_; } ///< of the last call
    /// The next picture has nothing to do with those before: it is read whole.
    void forget();

private:
    bool readRows(xcb_drawable_t drawable, const ReadToo& too);

    SharedImagePool& pool_;
    const PixelLayout layout_;
    QRect rect_;
    QImage raw_;                     ///< the last picture as it was read
    Grab last_;                      ///< serial 0 when there is none
    SharedImagePool::Memory memory_; ///< the next picture; none: it is the last one
    ChangedArea changed_;            ///< drawn to since the last picture
    ChangedArea rows_;               ///< read into the memory
    ChangedArea difference_;
};

} // namespace lumavex
