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

/// The main window: menus, toolbar, the duration of the recording and a strip of messages. It executes no commands
/// itself; connectCommands connects its actions to the application delegate's commands.
class Window_Main final : public QMainWindow, public Ui::Window_Main {
    Q_OBJECT
public:
    Window_Main();

    /// Shown while a recording exists; its space in the toolbar stays reserved otherwise.
    QLabel* textDurationTime = nullptr;
    /// Beside textDurationTime, shown while a recording with sound exists.
    LevelMeter* levelMeter = nullptr;

    /// Summary of the coming recording.
    RecordingSummary* summary = nullptr;

    /// Moves the check mark from its item, if any, to another item of the same menu.
    static void moveCheckMark(QAction*& from, QAction* to);

    /// Floating windows stay above those of other applications. An existing window keeps its native window.
    enum class Level { Normal, Floating };
    void setLevel(Level level);

    /// Shows a message in the window at once, without interrupting the work.
    void showMessage(MessageTopic topic, const Message& message);
    void showMessage(const QString& text) { showMessage(MessageTopic::General, {text}); }
    bool showsMessage(MessageTopic topic) const;
    /// Removes the topic's message, whose cause has ended.
    void withdrawMessage(MessageTopic topic);

Q_SIGNALS:
    /// The user asked to close the window, which ends the program. The window stays as it is.
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
