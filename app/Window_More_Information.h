// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

#include <memory>

namespace Ui {
class Window_More_Information;
}

namespace lumavex {

/// Tells the user how to lower the processor load.
class Window_More_Information final : public QWidget {
    Q_OBJECT
public:
    /// Stays in front of `owner`, which may float above all other windows, and opens beside it.
    explicit Window_More_Information(QWidget* owner);
    ~Window_More_Information() override;

    /// Shows the window in front of the others without taking the keyboard focus.
    void showWindow();

Q_SIGNALS:
    /// The user closes the window.
    void windowWillClose();

protected:
    void keyPressEvent(QKeyEvent* event) override; ///< Escape closes the window
    void closeEvent(QCloseEvent* event) override;

private:
    void windowDidLoad();
    void fitToText();
    void placeBesideOwner();

    std::unique_ptr<Ui::Window_More_Information> ui_;
};

} // namespace lumavex
