// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/Message.h"

#include <QFrame>
#include <QList>

class QLabel;
class QPushButton;
class QToolButton;

namespace lumavex {

/// One message with its buttons and a close button. The buttons are beside the text, or below it when they would leave
/// it too little room. Screen readers announce it as an alert.
class MessageRow final : public QFrame {
    Q_OBJECT
public:
    MessageRow(MessageTopic topic, const Message& message, QWidget* parent);

    MessageTopic topic() const { return topic_; }
    QString text() const;
    QSize sizeHint() const override { return minimumSizeHint(); }
    QSize minimumSizeHint() const override; ///< wide enough for each of its buttons
    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override { return arrange(width, Arrange::Measure); }

Q_SIGNALS:
    /// The user closed the message.
    void closed();
    /// The user pressed a button; `run` carries out its command.
    void chosen(std::function<void()> run);

protected:
    bool event(QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    enum class Arrange { Measure, Place };
    /// Returns the height that a row of this width needs.
    int arrange(int width, Arrange what) const;
    void colourCloseButton();

    MessageTopic topic_;
    QLabel* icon_;
    QLabel* text_;
    QList<QPushButton*> buttons_;
    QToolButton* close_ = nullptr;
};

} // namespace lumavex
