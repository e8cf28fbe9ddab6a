// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/Message.h"

#include <QFrame>

class QLabel;
class QToolButton;

namespace lumavex {

/// One message with its buttons and a button that closes it. Screen readers announce it as an alert.
class MessageRow final : public QFrame {
    Q_OBJECT
public:
    MessageRow(MessageTopic topic, const Message& message, QWidget* parent);

    MessageTopic topic() const { return topic_; }
    QString text() const;

Q_SIGNALS:
    /// The user closed the message.
    void closed();
    /// The user pressed a button; `run` carries out its command.
    void chosen(std::function<void()> run);

protected:
    void changeEvent(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    void colourCloseButton();

    MessageTopic topic_;
    QLabel* text_;
    QToolButton* close_ = nullptr;
};

} // namespace lumavex
