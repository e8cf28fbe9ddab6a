// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/Message.h"

#include <QList>
#include <QWidget>

class QVBoxLayout;

namespace lumavex {

class MessageRow;

/// Lines below the toolbar that report events to the user without interrupting the work: one per topic, the newest on
/// top. A message stays until it is closed, withdrawn or replaced by the next one of its topic. Only the newest three
/// are shown; older ones reappear as those go. Takes no space while empty.
class MessageStrip final : public QWidget {
    Q_OBJECT
public:
    explicit MessageStrip(QWidget* parent = nullptr);

    void add(MessageTopic topic, const Message& message);
    void withdraw(MessageTopic topic);
    void clear();

    /// Text of the newest message; empty when there is none.
    QString newestText() const;
    /// Text of the topic's shown message; empty when there is none.
    QString text(MessageTopic topic) const;
    /// Moves the keyboard focus to the newest message's first button.
    void takeFocus();

Q_SIGNALS:
    void roomChanged();

private:
    MessageRow* rowOf(MessageTopic topic) const;
    void remove(MessageRow* row);
    void arrange();

    QList<MessageRow*> rows_; ///< newest first; children of this widget
    QVBoxLayout* layout_;
};

} // namespace lumavex
