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

/// Pictures of the screen without some of its windows: the screen's pixels, except that the places of those windows
/// show the content behind them. Only this content is painted. Main thread.
class MendedDisplay {
public:
    /// The arguments must outlive this object.
    MendedDisplay(const XcbConnection& connection, SharedImagePool& pool, WindowPainter& painter,
                  const PixelLayout& layout);

    /// Grabs the screen unchanged. `listen` processes events after all earlier ones have arrived, and returns the
    /// rectangle to read.
    Grab grabAsItIs(const std::function<QRect()>& listen);

    enum class Obstacle {
        None,
        TooMuch, ///< too large to mend: painting everything is cheaper
        Moved,   ///< the request was outdated before all was read
    };
    struct Result {
        Obstacle obstacle = Obstacle::None;
        Grab grab; ///< Retry when a part cannot be read
    };
    /// `stillTrue`, called after the reading, returns true when the request was valid during it.
    Result grab(const MendingRequest& request, const QSize& rootSize, const std::function<bool()>& stillTrue);

private:
    using Clock = std::chrono::steady_clock;
    /// Last known place of an excluded window.
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
    ChangedArea places_; ///< places mended in the last picture, in the canvas
    QRect canvas_;
    bool direct_ = false;            ///< the place is read from the picture of the window that fills it
    SharedImagePool::Memory pixels_; ///< of the places, in Turn order
    RegionHandle region_;            ///< the places in root coordinates
};

} // namespace lumavex
