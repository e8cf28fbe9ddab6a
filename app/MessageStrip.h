// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QFrame>

class QLabel;
class QToolButton;

namespace lumavex {

/// A line below the toolbar that tells the user something at once, without stopping the work. Stays until it is closed
/// or the next message replaces it; takes no room while there is none.
class MessageStrip final : public QFrame {
    Q_OBJECT
public:
    explicit MessageStrip(QWidget* parent = nullptr);

    void showMessage(const QString& text);
    void clear();

Q_SIGNALS:
    void roomChanged();

protected:
    void changeEvent(QEvent* event) override;

private:
    void colourButton();

    QLabel* icon_;
    QLabel* text_;
    QToolButton* close_;
};

} // namespace lumavex
