// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

#include <memory>

namespace Ui {
class Window_More_Information;
}

namespace lumavex {

/// Tells the user how to lower the processor's load.
class Window_More_Information final : public QWidget {
    Q_OBJECT
public:
    Window_More_Information();
    ~Window_More_Information() override;

    /// Shows the window in front of the others, without taking the keyboard from the one in use.
    void showWindow();

Q_SIGNALS:
    /// The user closes the window.
    void windowWillClose();

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void windowDidLoad();

    std::unique_ptr<Ui::Window_More_Information> ui_;
};

} // namespace lumavex
