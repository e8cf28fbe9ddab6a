// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/Message.h"
#include "ui_Window_Main.h"

#include <QMainWindow>

class QLabel;

namespace lumavex {

class LevelMeter;
class MessageStrip;
class RecordingSummary;

/// The main window: menus, toolbar, the duration of the recording and a line for messages. It carries out nothing
/// itself; its actions are connected to the application delegate's commands by connectCommands.
class Window_Main final : public QMainWindow, public Ui::Window_Main {
    Q_OBJECT
public:
    Window_Main();

    /// Shown while a recording exists; its place in the toolbar stays free otherwise.
    QLabel* textDurationTime = nullptr;
    /// Beside it, shown while a recording with sound exists.
    LevelMeter* levelMeter = nullptr;

    /// What will be recorded.
    RecordingSummary* summary = nullptr;

    /// Takes the check mark from the item that has it, if any, and gives it to another one of its menu.
    static void moveCheckMark(QAction*& from, QAction* to);

    /// Floating windows stay above those of other applications. A window that exists stays the same native window.
    enum class Level { Normal, Floating };
    void setLevel(Level level);

    /// Tells the user something in the window, at once and without stopping the work.
    void showMessage(MessageTopic topic, const Message& message);
    void showMessage(const QString& text) { showMessage(MessageTopic::General, {text}); }
    bool showsMessage(MessageTopic topic) const;
    /// The cause of a topic's message has gone, and the message with it.
    void withdrawMessage(MessageTopic topic);

Q_SIGNALS:
    /// The user wants the window closed, which ends the program. The window stays as it is.
    void windowShouldClose();

protected:
    void closeEvent(QCloseEvent* event) override;
    void changeEvent(QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void setIcons();
    void fitSize();
    int heightFor(int width) const; ///< of bars, summary and messages

    MessageStrip* messages_;
};

} // namespace lumavex
