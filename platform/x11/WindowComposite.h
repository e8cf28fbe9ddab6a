// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/x11/GrabSeries.h"
#include "platform/x11/WindowPainter.h"

namespace lumavex {

/// Pictures of chosen windows in which every pixel is painted. Main thread.
class WindowComposite {
public:
    /// The arguments must outlive this object.
    WindowComposite(WindowPainter& painter, SharedImagePool& pool) : painter_(painter), series_(pool, PixelLayout()) {}

    /// The request must cover the whole canvas. Retry when none of its windows can be read at the moment.
    Grab compose(const PaintRequest& request);
    void forget() { series_.forget(); }

private:
    WindowPainter& painter_;
    GrabSeries series_; ///< of the canvas
};

} // namespace lumavex
