// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>

#include <memory>

namespace Ui {
class Window_Progress;
}

namespace lumavex {

/// The sheet over the main window that shows the progress of finishing a recording. It blocks only the main window, and
/// only the program removes it, by hiding or destroying it: neither Escape nor the window manager closes it. Work that
/// can be cancelled has a Cancel button, which only sends a request to the program.
class Window_Progress : public QDialog {
    Q_OBJECT
public:
    explicit Window_Progress(QWidget* mainWindow);
    ~Window_Progress() override;

    void setDescription(const QString& text);
    /// In percent; values are clamped to 0 to 100. Drawn at once, since the main thread is often about to block.
    void setProgress(float percentage);

    enum class Cancelling { Impossible, Offered };
    void setCancelling(Cancelling cancelling); ///< impossible at first

    void reject() override;

Q_SIGNALS:
    void cancelled(); ///< the button was pressed; sent once, until cancelling is offered again

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void showPercentage();

    std::unique_ptr<Ui::Window_Progress> ui_;
};

} // namespace lumavex
