// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "capture/CaptureState.h"

#include <QEventLoop>
#include <QWidget>

#include <cstdint>
#include <memory>

namespace Ui {
class Window_Transparent_Region;
}

namespace lumavex {

struct CaughtPointer;
class PointerCatcher;
class ScreenOverlay;

/// The region selector: a transparent window that covers the main display and lets the user drag the corners of the
/// region. A click on the centre, Escape, Return or closing the window ends it. Without a compositing manager only the
/// drawn pixels of the window remain, and an invisible window receives the clicks beside them. Main thread.
class Window_Transparent_Region final : public QWidget {
    Q_OBJECT
public:
    /// Reads size_Region once; fills arrayScreenPointSquare with a region at the centre of the main display and moves
    /// the handles in it, also when the display changes its size; each redraw writes rect_Screen_Region. `state` and
    /// `overlay` must outlive the window.
    Window_Transparent_Region(CaptureState& state, ScreenOverlay& overlay);
    ~Window_Transparent_Region() override;

    /// Shows the window and returns 1 when the user has finished; the window is hidden then. Timers continue to fire.
    int runModal();

    /// The pointer's first button at a location in screen coordinates.
    void mouseDown(const CGPoint& location);
    void mouseDragged(const CGPoint& location);
    void mouseUp(const CGPoint& location);

Q_SIGNALS:
    /// rect_Screen_Region was written.
    void regionChanged(const CGRect& region);

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    void awakeFromNib();
    void windowDidLoad();
    void stopModalWithCode(int code);
    void setRect_Screen_Region(const CGRect& region);
    void followScreen();
    void followDesktop();
    void caught(const CaughtPointer& pointer);
    void moved(const CGPoint& location);
    void showCursorFor(std::int32_t handle);

    CaptureState& state_;
    ScreenOverlay& overlay_;
    std::unique_ptr<Ui::Window_Transparent_Region> ui_;
    QEventLoop session_;
    std::unique_ptr<PointerCatcher> catcher_; ///< null while translucent windows are blended
    QRegion shape_;                           ///< empty while the window is whole
    CGPoint latestLocation_;
    CGSize screen_; ///< size of the main display, to which the handles refer

    std::uint8_t b_Mouse_Down = 0;    ///< 1 while a corner handle is held down
    std::int32_t i_button_index = -1; ///< the HandleIndex last hit
};

} // namespace lumavex
