// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QRadioButton>

namespace lumavex {

/// A radio button drawn as one of the nine places of a frame: an outline, filled when it is on.
class PlaceButton final : public QRadioButton {
    Q_OBJECT
public:
    explicit PlaceButton(QWidget* parent = nullptr);

    QSize sizeHint() const override { return {36, 20}; }
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent* event) override;
    bool hitButton(const QPoint& position) const override { return rect().contains(position); }
};

} // namespace lumavex
