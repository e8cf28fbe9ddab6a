// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/MessageStrip.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QStyle>
#include <QToolButton>

namespace lumavex {

MessageStrip::MessageStrip(QWidget* parent) : QFrame(parent), text_(new QLabel(this))
{
    auto* icon = new QLabel(this);
    const int size = style()->pixelMetric(QStyle::PM_SmallIconSize);
    icon->setPixmap(style()->standardIcon(QStyle::SP_MessageBoxWarning).pixmap(size));
    text_->setWordWrap(true);
    text_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    text_->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    auto* close = new QToolButton(this);
    close->setAutoRaise(true);
    close->setIcon(style()->standardIcon(QStyle::SP_TitleBarCloseButton));
    close->setToolTip(tr("Close this message"));
    close->setAccessibleName(close->toolTip());
    connect(close, &QToolButton::clicked, this, &MessageStrip::clear);

    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(10, 4, 6, 4);
    layout->setSpacing(8);
    layout->addWidget(icon, 0, Qt::AlignTop);
    layout->addWidget(text_, 1);
    layout->addWidget(close, 0, Qt::AlignTop);
    setAutoFillBackground(true);
    setBackgroundRole(QPalette::ToolTipBase);
    text_->setForegroundRole(QPalette::ToolTipText);
    hide();
}

void MessageStrip::showMessage(const QString& text)
{
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

} // namespace lumavex
