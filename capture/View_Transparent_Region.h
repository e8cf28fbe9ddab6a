// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "capture/FrameDimension.h"

#include <QWidget>

#include <vector>

namespace lumavex {

/// Draws the region with its handles over the screen. The interface uses device pixels, whatever the desktop's scale
/// factor; only this class deals with Qt's logical pixels.
class View_Transparent_Region final : public QWidget {
    Q_OBJECT
public:
    explicit View_Transparent_Region(QWidget* parent = nullptr);

    /// Sets what to draw: the five handles, on a screen of this size. The handles are read at each redraw and must
    /// outlive the view.
    void setHandles(const std::vector<FrameDimension>& handles, const CGSize& screen);

    /// Marks the pixels drawn last, and those to be drawn now, for redraw.
    void setNeedsDisplay();

    /// The device pixels that a redraw would touch now, counted from the upper-left corner, y downward.
    QRegion drawnPixels() const;

    /// Converts to screen coordinates: a position in the view as in events, or a device pixel counted from the
    /// upper-left corner. As for the mouse location, a pixel stands for its lower-left corner.
    CGPoint locationOf(const QPointF& logicalPosition) const;
    CGPoint locationOf(const QPoint& devicePixel) const;

Q_SIGNALS:
    /// Emitted by each redraw, before anything is painted.
    void setRect_Screen_Region(const CGRect& region);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void drawRect(QPainter& painter, const CGRect& region) const;
    QRegion logicalRegion(const QRegion& devicePixels) const;

    const std::vector<FrameDimension>* handles_ = nullptr; ///< null until setHandles
    CGSize screen_;
    QRegion shown_; ///< device pixels of the latest redraw
};

} // namespace lumavex
