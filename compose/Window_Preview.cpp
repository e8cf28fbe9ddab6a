// SPDX-License-Identifier: GPL-3.0-or-later
#include "compose/Window_Preview.h"

#include "ui_Window_Preview.h"

#include <QCloseEvent>
#include <QKeyEvent>
#include <QMoveEvent>
#include <QScreen>

#include <algorithm>
#include <cmath>

namespace lumavex {

namespace {

/// No maximise button, since the shape is the frame's, and no minimise button, since the window follows the main
/// window.
constexpr Qt::WindowFlags frameFlags =
    Qt::Tool | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowSystemMenuHint | Qt::WindowCloseButtonHint;

/// Space for a window's frame, whose size is unknown before the window manager has drawn it.
constexpr int roomForFrame = 32;

/// The first position for a window of this size that is inside the screen: below the main window, beside it, above it;
/// else the screen's lower right corner.
QRect placeBeside(const QRect& main, const QSize& size, const QRect& screen)
{
    const QPoint places[] = {
        {main.left(), main.bottom() + 1 + roomForFrame},
        {main.right() + 1 + roomForFrame / 4, main.top() + roomForFrame},
        {main.left() - size.width() - roomForFrame / 4, main.top() + roomForFrame},
        {main.left(), main.top() - size.height() - roomForFrame / 4},
    };
    const auto framed = [&size](const QPoint& corner) { return QRect(corner, size).adjusted(0, -roomForFrame, 0, 0); };
    const auto* place = std::find_if(std::begin(places), std::end(places),
                                     [&](const QPoint& corner) { return screen.contains(framed(corner)); });
    if (place != std::end(places))
        return {*place, size};
    const QPoint margin(roomForFrame / 4, roomForFrame / 4);
    return {screen.bottomRight() - QPoint(size.width(), size.height()) - margin, size};
}

} // namespace

Window_Preview::Window_Preview(QWidget* mainWindow, const float& fwVideoOutputRatio, std::optional<QPoint> lowerLeft)
    : QWidget(mainWindow, frameFlags), fwVideoOutputRatio_(fwVideoOutputRatio), mainWindow_(mainWindow),
      ui_(std::make_unique<Ui::Window_Preview>())
{
    ui_->setupUi(this);
    windowDidLoad(lowerLeft);
}

Window_Preview::~Window_Preview() = default;

View_Preview* Window_Preview::viewPreview() const
{
    return ui_->viewPreview;
}

void Window_Preview::windowDidLoad(const std::optional<QPoint>& lowerLeft)
{
    iw_minimum = 200;
    ih_minimum = 200 / fwVideoOutputRatio_;
    const int width = int(std::lround(iw_minimum));
    const QSize size(width, heightForWindowWidth(width));
    setMinimumWidth(width);
    setFixedHeight(size.height());
    if (lowerLeft) {
        setGeometry(QRect(*lowerLeft - QPoint(0, size.height()), size));
    } else if (mainWindow_) {
        setGeometry(placeBeside(mainWindow_->frameGeometry(), size, mainWindow_->screen()->availableGeometry()));
    } else {
        resize(size);
    }
    if (mainWindow_)
        mainWindow_->installEventFilter(this);
}

CGSize Window_Preview::windowWillResize_toSize(const CGSize& proposed) const
{
    const double width = std::max<double>(iw_minimum, proposed.width);
    return {width, width / fwVideoOutputRatio_};
}

int Window_Preview::heightForWindowWidth(int width) const
{
    const double wanted = windowWillResize_toSize({double(width), 0}).height;
    return std::isfinite(wanted) ? int(std::lround(std::clamp(wanted, 1.0, double(QWIDGETSIZE_MAX)))) : this->height();
}

QPoint Window_Preview::lowerLeft() const
{
    return geometry().topLeft() + QPoint(0, height());
}

bool Window_Preview::eventFilter(QObject* watched, QEvent* event)
{
    const QWidget* main = mainWindow_;
    // Before it is shown, the main window is only being positioned.
    if (!main || watched != main || !main->isVisible() || main->isMinimized())
        return QWidget::eventFilter(watched, event);
    if (event->type() == QEvent::Move) {
        const auto* moved = static_cast<QMoveEvent*>(event);
        move(pos() + moved->pos() - moved->oldPos());
    } else if (event->type() == QEvent::Resize) {
        // A window below a main window that grows for a message must not cover the message.
        const auto* resized = static_cast<QResizeEvent*>(event);
        if (geometry().top() >= main->geometry().top() + resized->oldSize().height())
            move(pos() + QPoint(0, resized->size().height() - resized->oldSize().height()));
    }
    return QWidget::eventFilter(watched, event);
}

void Window_Preview::closeEvent(QCloseEvent* event)
{
    hide();
    event->accept();
    Q_EMIT windowShouldClose();
}

void Window_Preview::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Escape)
        close();
    else
        QWidget::keyPressEvent(event);
}

/// The height is not the user's choice, so it is fixed to the width divided by the ratio: the window manager then
/// offers no other, and setting it here again has no effect once it is right.
void Window_Preview::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    const int wanted = heightForWindowWidth(event->size().width());
    if (minimumHeight() != wanted || maximumHeight() != wanted)
        setFixedHeight(wanted);
}

} // namespace lumavex
