// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/x11/DamageTracker.h"
#include "platform/x11/GrabSeries.h"

#include <chrono>

namespace lumavex {

/// Series of pictures of the main display. Reads only the damaged parts, and the whole display once a second: some
/// programs change the screen without damage that the server reports. While such changes are found, every picture is
/// read in full. A picture is made by takeDamage(), read() and finish(), optionally with patch() before finish(), or
/// dropped by abandon(). Main thread.
class DisplaySeries {
public:
    /// The arguments must outlive this object.
    DisplaySeries(const XcbConnection& connection, SharedImagePool& pool, const PixelLayout& layout);

    /// Fetches the damage of the display, without the region `except` (in root coordinates) if given, which must exist
    /// until finish(). One round trip.
    void takeDamage(xcb_xfixes_region_t except = XCB_NONE);
    /// Reads the display, a rectangle of the root window. `changedToo` is an area that changed without damage. In other
    /// rows that are read as well, every change is reported. False when the display cannot be read.
    bool read(const QRect& display, const ChangedArea& changedToo = {}, const ReadToo& too = {});
    /// Replaces the screen's pixels at `places` by `pixels`.
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
    ChangedArea told_; ///< damage since the last picture
    QRect otherRows_;  ///< in the next picture
    bool checking_ = false;
    Clock::time_point wholeDue_{}; ///< time of the next full read
    Clock::time_point untoldUntil_{};
};

} // namespace lumavex
