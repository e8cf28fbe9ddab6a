// SPDX-License-Identifier: GPL-3.0-or-later
#include "settings_dialog/FramePlaces.h"

#include <QPainter>

namespace lumavex {

FramePlaces::FramePlaces(QWidget* parent) : QFrame(parent)
{
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void FramePlaces::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    QColor line = palette().color(QPalette::WindowText);
    line.setAlphaF(0.35F);
    painter.setPen(QPen(line, 1));
    painter.setBrush(palette().color(QPalette::Base));
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), 5, 5);
}

} // namespace lumavex
