// SPDX-License-Identifier: GPL-3.0-or-later
#include "capture/Window_Transparent_Region.h"

#include "capture/RegionHandles.h"
#include "platform/ScreenOverlay.h"

#include "ui_Window_Transparent_Region.h"

#include <QCloseEvent>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QScreen>
#include <QTimer>

#include <chrono>
#include <utility>

using namespace std::chrono_literals;

namespace lumavex {

Window_Transparent_Region::Window_Transparent_Region(CaptureState& state, ScreenOverlay& overlay)
    : state_(state), overlay_(overlay), ui_(std::make_unique<Ui::Window_Transparent_Region>())
{
    ui_->setupUi(this);
    connect(ui_->viewTransparentRegion, &View_Transparent_Region::setRect_Screen_Region, this,
            &Window_Transparent_Region::setRect_Screen_Region);
    awakeFromNib();
    windowDidLoad();
}

Window_Transparent_Region::~Window_Transparent_Region() = default;

void Window_Transparent_Region::awakeFromNib()
{
    // Not Qt::Tool: some window managers do not give a utility window the whole screen.
    setWindowFlags(Qt::Window | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint);
    setWindowModality(Qt::ApplicationModal);
    setAttribute(Qt::WA_TranslucentBackground);
    setMouseTracking(true);
    QScreen* const display = QGuiApplication::primaryScreen();
    setScreen(display);
    setGeometry(display->geometry());
    screen_ = state_.displaySize();
}

void Window_Transparent_Region::windowDidLoad()
{
    b_Mouse_Down = 0;
    i_button_index = NoHandle;
    state_.arrayScreenPointSquare = centredHandles(state_.size_Region, screen_);
    state_.rect_Screen_Region =
        regionOfHandles(state_.arrayScreenPointSquare); // frames are composed before it is drawn
    state_.height_Marked = screen_.height;
    ui_->viewTransparentRegion->setHandles(state_.arrayScreenPointSquare, screen_);
}

int Window_Transparent_Region::runModal()
{
    // Sets the shape before the window appears, which would otherwise flash as a black screen.
    winId();
    followDesktop();
    showFullScreen();
    activateWindow();
    // A compositing manager that ends causes no redraw, and would leave a black screen.
    QTimer desktopPoll;
    connect(&desktopPoll, &QTimer::timeout, this, [this] {
        followScreen();
        followDesktop();
    });
    desktopPoll.start(250ms);
    const int code = session_.exec();
    catcher_.reset();
    hide();
    return code;
}

void Window_Transparent_Region::stopModalWithCode(int code)
{
    session_.exit(code);
}

void Window_Transparent_Region::setRect_Screen_Region(const CGRect& region)
{
    state_.rect_Screen_Region = region;
    state_.height_Marked = screen_.height;
    followDesktop();
    Q_EMIT regionChanged(region);
}

/// Covers a main display that has changed its size or position, and keeps the region inside it.
void Window_Transparent_Region::followScreen()
{
    QScreen* const display = QGuiApplication::primaryScreen();
    if (!display)
        return; // none for a moment, while another one is switched on
    if (screen() != display)
        setScreen(display);
    if (geometry() != display->geometry())
        setGeometry(display->geometry());
    const CGSize now = state_.displaySize();
    if (now == screen_)
        return;
    b_Mouse_Down = 0; // the pressed handle is elsewhere now
    moveHandlesInside(state_.arrayScreenPointSquare, std::exchange(screen_, now), now);
    catcher_.reset(); // it covers the previous position
    ui_->viewTransparentRegion->setHandles(state_.arrayScreenPointSquare, screen_);
    setRect_Screen_Region(regionOfHandles(state_.arrayScreenPointSquare));
}

/// Adapts shape and catcher to the drawing and to the desktop, whose compositing manager may start or end.
void Window_Transparent_Region::followDesktop()
{
    const bool blended = overlay_.blendsTranslucentWindows();
    const QRegion shape = blended ? QRegion() : ui_->viewTransparentRegion->drawnPixels();
    if (shape != shape_)
        overlay_.setShape(winId(), shape);
    shape_ = shape;
    if (blended == (catcher_ == nullptr))
        return;
    b_Mouse_Down = 0; // the release will not arrive by the same path as the press
    if (blended) {
        catcher_.reset();
    } else {
        // A screen's position on the desktop is in device pixels.
        const QRect area(screen()->geometry().topLeft(), QSizeF(screen_.width, screen_.height).toSize());
        catcher_ = overlay_.catchPointer(area, [this](const CaughtPointer& pointer) { caught(pointer); });
    }
}

void Window_Transparent_Region::mouseDown(const CGPoint& location)
{
    latestLocation_ = location;
    const std::int32_t handle = handleAt(state_.arrayScreenPointSquare, location);
    if (handle == NoHandle)
        return;
    i_button_index = handle;
    if (handle == CentreHandle)
        stopModalWithCode(1);
    else
        b_Mouse_Down = 1;
}

void Window_Transparent_Region::mouseDragged(const CGPoint& location)
{
    latestLocation_ = location;
    if (b_Mouse_Down != 1 || !isCorner(i_button_index))
        return;
    dragHandle(state_.arrayScreenPointSquare, i_button_index, location);
    ui_->viewTransparentRegion->setNeedsDisplay();
}

void Window_Transparent_Region::mouseUp(const CGPoint& location)
{
    // The last motion before the release may have been merged with others.
    if (location != latestLocation_)
        mouseDragged(location);
    b_Mouse_Down = 0;
}

void Window_Transparent_Region::moved(const CGPoint& location)
{
    if (b_Mouse_Down == 0)
        showCursorFor(handleAt(state_.arrayScreenPointSquare, location));
    mouseDragged(location);
}

void Window_Transparent_Region::showCursorFor(std::int32_t handle)
{
    Qt::CursorShape shape = Qt::ArrowCursor;
    if (handle == LowerLeftHandle || handle == UpperRightHandle)
        shape = Qt::SizeBDiagCursor;
    else if (handle == UpperLeftHandle || handle == LowerRightHandle)
        shape = Qt::SizeFDiagCursor;
    else if (handle == CentreHandle)
        shape = Qt::PointingHandCursor;
    if (shape != cursor().shape())
        setCursor(shape);
    if (catcher_)
        catcher_->setCursor(shape);
}

void Window_Transparent_Region::caught(const CaughtPointer& pointer)
{
    const CGPoint location = ui_->viewTransparentRegion->locationOf(pointer.position);
    switch (pointer.kind) {
    case CaughtPointer::Press:
        mouseDown(location);
        break;
    case CaughtPointer::Move:
        moved(location);
        break;
    case CaughtPointer::Release:
        mouseUp(location);
        break;
    }
}

// Qt rounds the position to whole logical pixels for the widget; the scene position is not rounded.

void Window_Transparent_Region::mousePressEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton)
        mouseDown(ui_->viewTransparentRegion->locationOf(event->scenePosition()));
}

void Window_Transparent_Region::mouseMoveEvent(QMouseEvent* event)
{
    moved(ui_->viewTransparentRegion->locationOf(event->scenePosition()));
}

void Window_Transparent_Region::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton)
        mouseUp(ui_->viewTransparentRegion->locationOf(event->scenePosition()));
}

void Window_Transparent_Region::mouseDoubleClickEvent(QMouseEvent* event)
{
    mousePressEvent(event); // a second press soon after the first is an ordinary press
}

void Window_Transparent_Region::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Escape || event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        stopModalWithCode(1);
    else
        QWidget::keyPressEvent(event);
}

void Window_Transparent_Region::closeEvent(QCloseEvent* event)
{
    event->accept();
    stopModalWithCode(1);
}

} // namespace lumavex
