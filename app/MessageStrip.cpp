// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/MessageStrip.h"

#include "app/MessageRow.h"

#include <QAbstractButton>
#include <QAccessible>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace lumavex {

namespace {
constexpr qsizetype shownRows = 3;
}

MessageStrip::MessageStrip(QWidget* parent) : QWidget(parent), layout_(new QVBoxLayout(this))
{
    layout_->setContentsMargins(0, 0, 0, 0);
    layout_->setSpacing(1);
    hide();
}

void MessageStrip::add(MessageTopic topic, const Message& message)
{
    if (MessageRow* earlier = rowOf(topic))
        remove(earlier);
    auto* row = new MessageRow(topic, message, this);
    // Queued: the row's deletion also deletes the button that sends the signal.
    connect(
        row, &MessageRow::closed, this, [this, topic] { withdraw(topic); }, Qt::QueuedConnection);
    connect(
        row, &MessageRow::chosen, this,
        [this, topic, row](const std::function<void()>& run) {
            if (rowOf(topic) != row)
                return; // withdrawn since the click
            withdraw(topic);
            run();
        },
        Qt::QueuedConnection);
    rows_.prepend(row);
    layout_->insertWidget(0, row);
    arrange();
    QAccessibleEvent alert(row, QAccessible::Alert);
    QAccessible::updateAccessibility(&alert);
}

void MessageStrip::withdraw(MessageTopic topic)
{
    if (MessageRow* row = rowOf(topic)) {
        remove(row);
        arrange();
    }
}

void MessageStrip::clear()
{
    while (!rows_.isEmpty())
        remove(rows_.constFirst());
    arrange();
}

QString MessageStrip::newestText() const
{
    return rows_.isEmpty() ? QString() : rows_.constFirst()->text();
}

QString MessageStrip::text(MessageTopic topic) const
{
    const MessageRow* row = rowOf(topic);
    return row ? row->text() : QString();
}

void MessageStrip::takeFocus()
{
    if (rows_.isEmpty())
        return;
    if (auto* button = rows_.constFirst()->findChild<QAbstractButton*>())
        button->setFocus(Qt::ShortcutFocusReason);
}

MessageRow* MessageStrip::rowOf(MessageTopic topic) const
{
    const auto found = std::ranges::find(rows_, topic, &MessageRow::topic);
    return found == rows_.cend() ? nullptr : *found;
}

void MessageStrip::remove(MessageRow* row)
{
    // Qt would move the focus to another button, which the next press of the space bar would activate.
    if (QWidget* focused = row->focusWidget(); focused && focused->hasFocus() && row->isAncestorOf(focused))
        focused->clearFocus();
    rows_.removeOne(row);
    layout_->removeWidget(row);
    row->hide();
    row->deleteLater();
}

void MessageStrip::arrange()
{
    for (qsizetype i = 0; i < rows_.size(); ++i)
        rows_.at(i)->setVisible(i < shownRows);
    // The Tab key follows the rows downward, although the newest row was created last.
    QWidget* previous = nullptr;
    for (const MessageRow* row : std::as_const(rows_)) {
        const auto buttons = row->findChildren<QAbstractButton*>();
        for (QAbstractButton* button : buttons) {
            if (previous)
                setTabOrder(previous, button);
            previous = button;
        }
    }
    setVisible(!rows_.isEmpty());
    Q_EMIT roomChanged();
}

} // namespace lumavex
