// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/ChangedArea.h"

#include <QImage>
#include <QPaintEvent>
#include <QWidget>

#include <optional>

namespace lumavex {

/// Shows the last composed picture. Composition is driven by the view-refresh timer, never by paint events: an expose
/// only shows the picture again.
class View_Preview : public QWidget {
    Q_OBJECT
public:
    explicit View_Preview(QWidget* parent = nullptr);

    /// Sets the picture to show, of the size pixelSize() for a pixel-for-pixel display; a picture of another size (the
    /// view was resized meanwhile) is stretched. A null picture shows black. `changed` is the area in which it differs
    /// from the previous one; std::nullopt: unknown.
    void setPicture(const QImage& picture, const std::optional<ChangedArea>& changed);
    /// The view's size in device pixels.
    QSize pixelSize() const;
    /// The size of the current picture; empty for none.
    QSize pictureSize() const { return picture_.size(); }

    QSize sizeHint() const override { return {200, 112}; }

protected:
    void paintEvent(QPaintEvent* event) override { drawRect(event->rect()); }

private:
    void drawRect(const QRect& dirty);

    QImage picture_;
};

} // namespace lumavex
