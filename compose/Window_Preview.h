// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "compose/View_Preview.h"
#include "platform/Geometry.h"

#include <QWidget>

#include <memory>

namespace Ui {
class Window_Preview;
}

namespace lumavex {

/// The small window above the main window that shows the frame live. Its width is the user's, its height follows the
/// output's shape. Opens iw_minimum wide. Created and destroyed by the application delegate.
class Window_Preview : public QWidget {
    Q_OBJECT
public:
    /// `fwVideoOutputRatio` is read again at every resize and must outlive the window.
    Window_Preview(QWidget* mainWindow, const float& fwVideoOutputRatio);
    ~Window_Preview() override;

    View_Preview* viewPreview() const;

    float iw_minimum = 200; ///< smallest width in window units
    float ih_minimum = 0;   ///< 200 / fwVideoOutputRatio when the window was loaded: its first height

    /// The size the window takes when the user asks for `proposed`: at least iw_minimum wide, as high as the ratio says.
    CGSize windowWillResize_toSize(const CGSize& proposed) const;

Q_SIGNALS:
    /// The user closed the window; it is hidden and keeps its place and size.
    void windowShouldClose();

protected:
    void closeEvent(QCloseEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void windowDidLoad();

    const float& fwVideoOutputRatio_;
    std::unique_ptr<Ui::Window_Preview> ui_;
};

} // namespace lumavex
