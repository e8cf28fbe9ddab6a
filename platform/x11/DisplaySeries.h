// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/x11/DamageTracker.h"
#include "platform/x11/GrabSeries.h"

#include <chrono>

namespace lumavex {

/// The pictures of the main display, of which only what was drawn to is read, and once a second everything: some
/// programs change the screen without damage that the server tells of. While such changes are found every picture is
/// read whole. A picture is made by takeDamage(), read() and finish(), with patch() before the last, or dropped by
/// abandon(). Main thread.
class DisplaySeries {
public:
    /// The arguments outlive this.
    DisplaySeries(const XcbConnection& connection, SharedImagePool& pool, const PixelLayout& layout);

    /// Learns where the display was drawn to, outside the region `except` (in root coordinates) if there is one, which
    /// must be there until finish(). One round trip.
    void takeDamage(xcb_xfixes_region_t except = XCB_NONE);
    /// The display is a rectangle of the root window. `changedToo` was not told of by damage. Of other rows that are
    /// read with it every change is told. False when it cannot be read.
    bool read(const QRect& display, const ChangedArea& changedToo = {}, const ReadToo& too = {});
    /// `pixels` stand at `places` instead of those of the screen.
    void patch(const ChangedArea& places, const uchar* pixels) { series_.patch(places, pixels); }
    Grab finish();
    void abandon() { series_.abandon(); }

private:
    using Clock = std::chrono::steady_clock;

    ChangedArea lookForUntoldChanges();

    const XcbConnection& connection_;
    DamageTracker damage_;
    GrabSeries series_;
    xcb_xfixes_region_t except_ = XCB_NONE;
    ChangedArea told_; ///< drawn to since the last picture
    QRect otherRows_;  ///< of the next picture
    bool checking_ = false;
    Clock::time_point wholeDue_{}; ///< when the next picture is read whole
    Clock::time_point untoldUntil_{};
};

} // namespace lumavex
