// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/x11/GrabSeries.h"
#include "platform/x11/WindowPainter.h"

namespace lumavex {

/// Pictures of chosen windows, every pixel of which is painted. Main thread.
class WindowComposite {
public:
    /// The arguments outlive this.
    WindowComposite(WindowPainter& painter, SharedImagePool& pool) : painter_(painter), series_(pool, PixelLayout()) {}

    /// The request is for the whole canvas. Retry when no window of it can be read at the moment.
    Grab compose(const PaintRequest& request);
    void forget() { series_.forget(); }

private:
    WindowPainter& painter_;
    GrabSeries series_; ///< of the canvas
};

} // namespace lumavex
