// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "settings_dialog/DialogSettings.h"

#include <QImage>
#include <QWidget>

namespace lumavex {

/// The last composed frame, reduced, with the outlines of the small pictures as currently chosen.
class FrameThumbnail final : public QWidget {
    Q_OBJECT
public:
    explicit FrameThumbnail(QWidget* parent = nullptr);

    /// Width over height of the frame; the thumbnail has that shape.
    void setRatio(double ratio);
    /// Null: no frame yet.
    void setPicture(const QImage& frame);
    QSize pictureSize() const { return frame_.size(); }
    void setOutlines(std::vector<FrameOutline> outlines);

    /// The size of a picture that is displayed pixel for pixel.
    QSize pixelSize() const;
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    double ratio_ = 16.0 / 9;
    QImage frame_;
    std::vector<FrameOutline> outlines_;
};

} // namespace lumavex
