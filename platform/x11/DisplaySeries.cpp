// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/x11/DisplaySeries.h"

#include <utility>

namespace lumavex {

namespace {

using namespace std::chrono_literals;

/// Longest interval between full reads, which cost 0.1 to 0.3 % of a processor while the screen is still.
constexpr auto kWholeReadInterval = 1s;
/// Period of full reads after an unreported change. Longer than the interval, so that a program that continues to draw
/// is always detected again.
constexpr auto kUntoldChangesLast = 2s;

} // namespace

DisplaySeries::DisplaySeries(const XcbConnection& connection, SharedImagePool& pool, const PixelLayout& layout)
    : connection_(connection), damage_(connection), series_(pool, layout)
{
}

void DisplaySeries::takeDamage(xcb_xfixes_region_t except)
{
    except_ = except;
    told_.add(damage_.takeChanges(series_.rect(), except));
}

bool DisplaySeries::read(const QRect& display, const ChangedArea& changedToo, const ReadToo& too)
{
    const ChangedArea whole(QRect(QPoint(0, 0), display.size()));
    told_.add(display == series_.rect() ? changedToo : whole);
    checking_ = Clock::now() >= wholeDue_;
    otherRows_ = too.otherRows ? too.otherRows->rows : QRect();
    return series_.read(connection_.root(), display, checking_ ? whole : told_, too);
}

Grab DisplaySeries::finish()
{
    const bool differs = !series_.compare().isEmpty();
    ChangedArea later;
    if (std::exchange(checking_, false)) {
        if (differs)
            later = lookForUntoldChanges();
        const auto now = Clock::now();
        wholeDue_ = now < untoldUntil_ ? now : now + kWholeReadInterval;
    }
    told_ = later;
    return series_.finish();
}

/// Damage between the damage request and the reading has been reported by now. It is returned, since it may also have
/// occurred after the reading.
ChangedArea DisplaySeries::lookForUntoldChanges()
{
    const ChangedArea later = damage_.takeChanges(series_.rect(), except_);
    ChangedArea told = told_;
    told.add(later);
    told.add(otherRows_); // their later damage has not been requested
    if (series_.differsOutside(told))
        untoldUntil_ = Clock::now() + kUntoldChangesLast;
    return later;
}

} // namespace lumavex
