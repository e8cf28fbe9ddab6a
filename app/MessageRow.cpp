// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/MessageRow.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QEvent>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QStyle>
#include <QToolButton>

namespace lumavex {

namespace {

/// A row's role is that of an alert; the role of its base class, a frame, is not announced.
QAccessibleInterface* accessibleRow(const QString&, QObject* object)
{
    auto* row = qobject_cast<MessageRow*>(object);
    return row ? new QAccessibleWidget(row, QAccessible::AlertMessage) : nullptr;
}

} // namespace

MessageRow::MessageRow(MessageTopic topic, const Message& message, QWidget* parent)
    : QFrame(parent), topic_(topic), text_(new QLabel(message.text, this))
{
    static const bool installed = (QAccessible::installFactory(accessibleRow), true);
    Q_UNUSED(installed)
    const auto picture =
        message.kind == Message::Kind::Warning ? QStyle::SP_MessageBoxWarning : QStyle::SP_MessageBoxInformation;
    auto* icon = new QLabel(this);
    icon->setPixmap(style()->standardIcon(picture).pixmap(style()->pixelMetric(QStyle::PM_SmallIconSize)));
    text_->setTextFormat(Qt::PlainText);
    text_->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    text_->setWordWrap(true); // after the policy, to which it adds that the height follows the width
    text_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    text_->setForegroundRole(QPalette::ToolTipText);

    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(10, 4, 6, 4);
    layout->setSpacing(8);
    layout->addWidget(icon, 0, Qt::AlignVCenter);
    layout->addWidget(text_, 1);
    for (const MessageAction& action : message.actions) {
        auto* button = new QPushButton(action.text, this);
        button->setAutoDefault(false);
        connect(button, &QPushButton::clicked, this, [this, run = action.run] { Q_EMIT chosen(run); });
        layout->addWidget(button, 0, Qt::AlignVCenter);
    }
    close_ = new QToolButton(this); // after the actions, which the Tab key then reaches first
    close_->setAutoRaise(true);
    close_->setFocusPolicy(Qt::TabFocus);
    close_->setText(QStringLiteral("\u00d7")); // the style's own picture is dark on dark
    QFont large = close_->font();
    large.setPointSizeF(large.pointSizeF() * 1.3);
    close_->setFont(large);
    close_->setToolTip(tr("Close this message (Esc)"));
    close_->setAccessibleName(tr("Close this message"));
    connect(close_, &QToolButton::clicked, this, &MessageRow::closed);
    layout->addWidget(close_, 0, Qt::AlignVCenter);

    setAutoFillBackground(true);
    setBackgroundRole(QPalette::ToolTipBase);
    setAccessibleName(message.text);
    colourCloseButton();
}

QString MessageRow::text() const
{
    return text_->text();
}

void MessageRow::changeEvent(QEvent* event)
{
    QFrame::changeEvent(event);
    if (event->type() == QEvent::PaletteChange)
        colourCloseButton();
}

void MessageRow::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Escape)
        Q_EMIT closed();
    else
        QFrame::keyPressEvent(event);
}

/// Styles draw a tool button's text in the colour of buttons, which need not be seen on the colour of the row.
void MessageRow::colourCloseButton()
{
    QPalette colours = close_->palette();
    colours.setColor(QPalette::ButtonText, palette().color(QPalette::ToolTipText));
    close_->setPalette(colours);
}

} // namespace lumavex
