// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>

#include <memory>

namespace Ui {
class Window_Progress;
}

namespace lumavex {

/// The sheet over the main window that shows how far finishing a recording is. It blocks the main window alone, and
/// only the program takes it away, by hiding or destroying it: neither Escape nor the window manager closes it. Work
/// that can be given up has a Cancel button, which only asks the program to.
class Window_Progress : public QDialog {
    Q_OBJECT
public:
    explicit Window_Progress(QWidget* mainWindow);
    ~Window_Progress() override;

    void setDescription(const QString& text);
    /// Percent; values outside 0 to 100 show as the nearest of these. Drawn at once, since the main thread is often
    /// about to be blocked.
    void setProgress(float percentage);

    enum class Cancelling { Impossible, Offered };
    void setCancelling(Cancelling cancelling); ///< at first impossible

    void reject() override;

Q_SIGNALS:
    void cancelled(); ///< the button was pressed; once, until cancelling is offered again

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void showPercentage();

    std::unique_ptr<Ui::Window_Progress> ui_;
};

} // namespace lumavex
