// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/x11/DisplaySeries.h"
#include "platform/x11/MendingPlan.h"
#include "platform/x11/WindowPainter.h"

#include <chrono>
#include <functional>
#include <optional>
#include <vector>

namespace lumavex {

/// Pictures of the screen without some of its windows: the screen's pixels, and in the places of those windows what
/// lies behind them, which alone is painted. Main thread.
class MendedDisplay {
public:
    /// The arguments outlive this.
    MendedDisplay(const XcbConnection& connection, SharedImagePool& pool, WindowPainter& painter,
                  const PixelLayout& layout);

    /// The screen as it is. `listen` takes notice of events, when all earlier ones are here, and says where to read.
    Grab grabAsItIs(const std::function<QRect()>& listen);

    enum class Obstacle {
        None,
        TooMuch, ///< to be mended: it is better to paint everything
        Moved,   ///< the request was out of date before all was read
    };
    struct Result {
        Obstacle obstacle = Obstacle::None;
        Grab grab; ///< Retry when something cannot be read
    };
    /// `stillTrue` tells after the reading whether the request still was true during it.
    Result grab(const MendingRequest& request, const QSize& rootSize, const std::function<bool()>& stillTrue);

private:
    using Clock = std::chrono::steady_clock;
    /// Where a window that is left out was seen.
    struct Trace {
        QRect rect;
        Clock::time_point seen;
    };

    enum class Reading {
        Complete,
        Incomplete, ///< read, but the places are not painted
        Failed,
    };

    QRegion traces(const MendingRequest& request);
    ChangedArea usePlaces(const ChangedArea& places, const QRect& canvas, bool direct);
    Reading readPainted(const QRect& canvas, ChangedArea changed, bool prepared);
    Reading readDirectly(const QRect& canvas, ChangedArea changed, bool prepared);

    const XcbConnection& connection_;
    SharedImagePool& pool_;
    WindowPainter& painter_;
    DisplaySeries series_;
    std::vector<Trace> traces_;
    ChangedArea places_; ///< in the canvas, mended in the last picture
    QRect canvas_;
    bool direct_ = false;            ///< the place is read from the picture of the window that fills it
    SharedImagePool::Memory pixels_; ///< of the places, one behind the other
    RegionHandle region_;            ///< the places in root coordinates
};

} // namespace lumavex
