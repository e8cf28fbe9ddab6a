// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/Window_More_Information.h"

#include "ui_Window_More_Information.h"

#include <QCloseEvent>

namespace lumavex {

Window_More_Information::Window_More_Information() : ui_(std::make_unique<Ui::Window_More_Information>())
{
    ui_->setupUi(this);
    setAttribute(Qt::WA_ShowWithoutActivating);
    windowDidLoad();
}

Window_More_Information::~Window_More_Information() = default;

void Window_More_Information::windowDidLoad()
{
    ui_->textView->setPlainText(QStringLiteral(
        "Lumavex is above the CPU usage limit.\n\nIf recording stop.\n\nOpen Lumavex settings.\n\nSet screen capture "
        "frame-rate to 1.\n\nDisconnect camera.\n\nClick OK.\n\nIf you need the camera on video then set camera "
        "resolution to 320x240.\n\nSet camera capture frame-rate to 24 and connect it.\n\nClick OK.\n\n"));
}

void Window_More_Information::showWindow()
{
    show();
    raise();
}

void Window_More_Information::closeEvent(QCloseEvent* event)
{
    event->accept();
    Q_EMIT windowWillClose();
}

} // namespace lumavex
