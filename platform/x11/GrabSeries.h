// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/ScreenGrabber.h"
#include "platform/x11/PixelLayout.h"
#include "platform/x11/SharedImagePool.h"

#include <QRect>

namespace lumavex {

/// Rows of a picture that are read from another drawable than the rest.
struct OtherRows {
    QRect rows; ///< whole rows of the picture
    xcb_drawable_t drawable;
    QPoint corner; ///< corner of the picture in the drawable
};

/// Further data that is read in the same round trip. Null: none.
struct ReadToo {
    const SharedImagePool::Reading* beside = nullptr;
    const OtherRows* otherRows = nullptr;
};

/// A series of pictures of changing content. Each picture reuses memory that holds an earlier one and is updated by
/// reading the rows changed since; with two or three buffers in turn these are the changes of the latest two or three
/// pictures. A picture is made by read(), optionally patch(), compare() and finish(), or dropped by abandon(). Main
/// thread.
class GrabSeries {
public:
    /// `pool` must outlive this object. `layout` is that of the drawables.
    GrabSeries(SharedImagePool& pool, const PixelLayout& layout);

    /// Reads the outdated rows of the next picture, which shows the rectangle `rect` of the drawable. `changed` is the
    /// area drawn to since the last call, relative to the rectangle's corner. Reads nothing when nothing changed. False
    /// when the drawable cannot be read: the series then starts anew.
    bool read(xcb_drawable_t drawable, const QRect& rect, const ChangedArea& changed, const ReadToo& too = {});
    /// Overwrites these places with other pixels, which were read in Turn order.
    void patch(const ChangedArea& places, const uchar* pixels);
    /// Area in which the picture differs from the previous one: everything for the first picture.
    const ChangedArea& compare();
    /// True when it differs from the previous picture outside `area`.
    bool differsOutside(const ChangedArea& area) const;
    /// The picture; the last grab again when no pixel differs. Retry when there is none.
    Grab finish();
    /// Drops the picture because it is wrong. The next one reads the same rows again.
    void abandon();

    const QRect& rect() const { return rect_; } ///< rectangle of the last call
    /// The next picture is unrelated to the earlier ones and is read in full.
    void forget();

private:
    bool readRows(xcb_drawable_t drawable, const ReadToo& too);

    SharedImagePool& pool_;
    const PixelLayout layout_;
    QRect rect_;
    QImage raw_;                     ///< last picture as read
    Grab last_;                      ///< serial 0 when there is none
    SharedImagePool::Memory memory_; ///< next picture; none: same as the last picture
    ChangedArea changed_;            ///< damage since the last picture
    ChangedArea rows_;               ///< rows read into the memory
    ChangedArea difference_;
};

} // namespace lumavex
