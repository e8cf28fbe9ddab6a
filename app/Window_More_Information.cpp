// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/Window_More_Information.h"

#include "ui_Window_More_Information.h"

#include <QAbstractTextDocumentLayout>
#include <QCloseEvent>
#include <QKeyEvent>
#include <QScreen>
#include <QTextBlock>
#include <QtMath>

#include <algorithm>
#include <limits>

namespace lumavex {

Window_More_Information::Window_More_Information(QWidget* owner)
    : QWidget(owner, Qt::Dialog), ui_(std::make_unique<Ui::Window_More_Information>())
{
    ui_->setupUi(this);
    setAttribute(Qt::WA_ShowWithoutActivating);
    ui_->textView->viewport()->setAutoFillBackground(false); // marks the text as read-only
    windowDidLoad();
}

Window_More_Information::~Window_More_Information() = default;

void Window_More_Information::windowDidLoad()
{
    ui_->textView->setPlainText(QStringLiteral(
        "Lumavex is above the CPU usage limit.\n\nIf recording stop.\n\nOpen Lumavex settings.\n\nSet screen capture "
        "frame-rate to 1.\n\nDisconnect camera.\n\nClick OK.\n\nIf you need the camera on video then set camera "
        "resolution to 320x240.\n\nSet camera capture frame-rate to 24 and connect it.\n\nClick OK.\n\n"));
    fitToText();
}

void Window_More_Information::fitToText()
{
    // Shows all text without scrolling in every font; a spare line avoids the scroll bar, which would reduce the width.
    const QPlainTextEdit* text = ui_->textView;
    const QTextDocument* document = text->document();
    const double line = document->documentLayout()->blockBoundingRect(document->begin()).height();
    const int around = 2 * qCeil(document->documentMargin()) + 2 * text->frameWidth() + 2;
    const int width = text->fontMetrics().size(0, text->toPlainText()).width();
    ui_->textView->setMinimumSize(QSize(width, qCeil(line * (document->blockCount() + 1))) + QSize(around, around));
    adjustSize();
}

void Window_More_Information::placeBesideOwner()
{
    // The window is always in front of its owner and must leave the Stop controls visible: of the places above, below
    // and beside the owner, moved onto the screen, the one that covers least wins.
    constexpr int frame = 32; // approximate size of title bar and borders
    const QRect owner = parentWidget()->frameGeometry();
    const QRect room = parentWidget()->screen()->availableGeometry();
    const QSize needed = size() + QSize(frame, frame);
    const QPoint places[] = {owner.topLeft() - QPoint(0, needed.height()), owner.bottomLeft() + QPoint(0, 1),
                             owner.topRight() + QPoint(1, 0), owner.topLeft() - QPoint(needed.width(), 0)};
    int leastCovered = std::numeric_limits<int>::max();
    for (const QPoint& wanted : places) {
        const QPoint place(std::max(room.left(), std::min(wanted.x(), room.right() + 1 - needed.width())),
                           std::max(room.top(), std::min(wanted.y(), room.bottom() + 1 - needed.height())));
        const QRect covered = QRect(place, needed) & owner;
        if (covered.width() * covered.height() >= leastCovered)
            continue;
        leastCovered = covered.width() * covered.height();
        move(place);
    }
}

void Window_More_Information::showWindow()
{
    if (!isVisible())
        placeBesideOwner();
    show();
    raise();
}

void Window_More_Information::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Escape)
        close();
    else
        QWidget::keyPressEvent(event);
}

void Window_More_Information::closeEvent(QCloseEvent* event)
{
    event->accept();
    Q_EMIT windowWillClose();
}

} // namespace lumavex
