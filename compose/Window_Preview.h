// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Geometry.h"
#include "compose/View_Preview.h"

#include <QPointer>
#include <QWidget>

#include <memory>
#include <optional>

namespace Ui {
class Window_Preview;
}

namespace lumavex {

/// The small window beside the main window that shows the frame live. The user chooses its width; its height follows
/// the output's shape. Opens iw_minimum wide. Moves with the main window, and stays below one that grows or shrinks.
/// Created and destroyed by the application delegate; sizes are those of the area inside the window frame.
class Window_Preview : public QWidget {
    Q_OBJECT
public:
    /// `mainWindow` may be null; otherwise it owns this window, too. `fwVideoOutputRatio` is read again at every resize
    /// and must outlive the window. `lowerLeft` is the corner of an earlier preview window, see lowerLeft();
    /// std::nullopt: beside the main window.
    Window_Preview(QWidget* mainWindow, const float& fwVideoOutputRatio, std::optional<QPoint> lowerLeft = {});
    ~Window_Preview() override;

    View_Preview* viewPreview() const;

    float iw_minimum = 200; ///< smallest width in window units
    float ih_minimum = 0;   ///< 200 / fwVideoOutputRatio when the window was loaded: its first height

    /// The size of the window when the user requests `proposed`: at least iw_minimum wide; the ratio determines the
    /// height.
    CGSize windowWillResize_toSize(const CGSize& proposed) const;

    /// The corner for the next preview window, in desktop units downward from the screen's top left corner.
    QPoint lowerLeft() const;

Q_SIGNALS:
    /// The user closed the window; it is hidden and keeps its place and size.
    void windowShouldClose();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void windowDidLoad(const std::optional<QPoint>& lowerLeft);
    int heightForWindowWidth(int width) const;

    const float& fwVideoOutputRatio_;
    const QPointer<QWidget> mainWindow_;
    std::unique_ptr<Ui::Window_Preview> ui_;
};

} // namespace lumavex
