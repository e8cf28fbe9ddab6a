// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QFrame>

namespace lumavex {

/// A small drawing of the movie's frame that contains the buttons of the nine places.
class FramePlaces final : public QFrame {
    Q_OBJECT
public:
    explicit FramePlaces(QWidget* parent = nullptr);

    QSize sizeHint() const override { return {192, 108}; }

protected:
    void paintEvent(QPaintEvent* event) override;
};

} // namespace lumavex
