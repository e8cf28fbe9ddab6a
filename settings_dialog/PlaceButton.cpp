// SPDX-License-Identifier: GPL-3.0-or-later
#include "settings_dialog/PlaceButton.h"

#include <QPainter>

namespace lumavex {

PlaceButton::PlaceButton(QWidget* parent) : QRadioButton(parent)
{
    setAttribute(Qt::WA_Hover);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
}

void PlaceButton::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QColor highlight = palette().color(QPalette::Highlight);
    QColor line = palette().color(QPalette::WindowText);
    line.setAlphaF(isEnabled() ? 0.45F : 0.2F);
    QColor fill = highlight;
    fill.setAlphaF(isChecked() ? 1.0F : underMouse() && isEnabled() ? 0.25F : 0.0F);
    const QRectF place = QRectF(rect()).adjusted(3.5, 3.5, -3.5, -3.5);
    painter.setPen(QPen(isChecked() ? highlight : line, 1));
    painter.setBrush(fill);
    painter.drawRoundedRect(place, 2.5, 2.5);
    if (hasFocus()) {
        painter.setPen(QPen(palette().color(QPalette::WindowText), 1.5));
        painter.setBrush(Qt::NoBrush);
        painter.drawRoundedRect(QRectF(rect()).adjusted(1, 1, -1, -1), 4, 4);
    }
}

} // namespace lumavex
