// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/MessageStrip.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QStyle>
#include <QToolButton>

namespace lumavex {

MessageStrip::MessageStrip(QWidget* parent)
    : QFrame(parent), icon_(new QLabel(this)), text_(new QLabel(this)), close_(new QToolButton(this))
{
    text_->setWordWrap(true);
    text_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    text_->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    close_->setAutoRaise(true);
    close_->setText(QStringLiteral("\u00d7")); // the style's own picture is dark on dark
    QFont large = close_->font();
    large.setPointSizeF(large.pointSizeF() * 1.3);
    close_->setFont(large);
    close_->setToolTip(tr("Close this message"));
    close_->setAccessibleName(close_->toolTip());
    connect(close_, &QToolButton::clicked, this, &MessageStrip::clear);

    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(10, 4, 6, 4);
    layout->setSpacing(8);
    layout->addWidget(icon_, 0, Qt::AlignVCenter);
    layout->addWidget(text_, 1);
    layout->addWidget(close_, 0, Qt::AlignVCenter);
    setAutoFillBackground(true);
    setBackgroundRole(QPalette::ToolTipBase);
    text_->setForegroundRole(QPalette::ToolTipText);
    colourButton();
    hide();
}

void MessageStrip::showMessage(const QString& text)
{
    if (icon_->pixmap().isNull()) { // not before, since it is looked for among the desktop's themes
        const int size = style()->pixelMetric(QStyle::PM_SmallIconSize);
        icon_->setPixmap(style()->standardIcon(QStyle::SP_MessageBoxWarning).pixmap(size));
    }
    text_->setText(text);
    setAccessibleName(text);
    show();
    Q_EMIT roomChanged();
}

void MessageStrip::clear()
{
    hide();
    Q_EMIT roomChanged();
}

void MessageStrip::changeEvent(QEvent* event)
{
    QFrame::changeEvent(event);
    if (event->type() == QEvent::PaletteChange)
        colourButton();
}

/// Styles draw a tool button's text in the colour of buttons, which need not be seen on the colour of the strip.
void MessageStrip::colourButton()
{
    QPalette colours = close_->palette();
    colours.setColor(QPalette::ButtonText, palette().color(QPalette::ToolTipText));
    close_->setPalette(colours);
}

} // namespace lumavex
