// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/Window_Main.h"

#include "app/Icons.h"
#include "app/LevelMeter.h"
#include "app/MessageStrip.h"
#include "app/RecordingSummary.h"
#include "app/WindowPlaces.h"

#include <QCloseEvent>
#include <QFontDatabase>
#include <QHBoxLayout>
#include <QLabel>
#include <QShortcut>
#include <QTimer>
#include <QToolButton>
#include <QWindow>

namespace lumavex {

Window_Main::Window_Main() : messages_(new MessageStrip)
{
    setupUi(this);
    setContextMenuPolicy(Qt::NoContextMenu); // the toolbar must not be hidden by accident
    summary = new RecordingSummary(centralArea);
    centralArea->layout()->addWidget(summary);
    centralArea->layout()->addWidget(messages_);
    connect(messages_, &MessageStrip::roomChanged, this, &Window_Main::fitSize);
    connect(summary, &RecordingSummary::roomChanged, this, &Window_Main::fitSize);
    auto* toMessages = new QShortcut(QKeySequence(Qt::Key_F6), this);
    connect(toMessages, &QShortcut::activated, messages_, &MessageStrip::takeFocus);

    auto* place = new QWidget(toolBar);
    textDurationTime = new QLabel(QStringLiteral("00:00:00"), place);
    QFont digits = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    digits.setPointSizeF(font().pointSizeF() * 1.15);
    textDurationTime->setFont(digits);
    textDurationTime->setAccessibleName(tr("Recorded time"));
    QSizePolicy policy = textDurationTime->sizePolicy();
    policy.setRetainSizeWhenHidden(true);
    textDurationTime->setSizePolicy(policy);
    auto* layout = new QHBoxLayout(place);
    layout->setContentsMargins(8, 0, 8, 0);
    layout->addWidget(textDurationTime, 0, Qt::AlignCenter);
    levelMeter = new LevelMeter(place);
    policy = levelMeter->sizePolicy();
    policy.setRetainSizeWhenHidden(true);
    levelMeter->setSizePolicy(policy);
    layout->addWidget(levelMeter, 0, Qt::AlignCenter);
    toolBar->insertWidget(toolBar->actions().at(3), place);
    textDurationTime->hide();
    levelMeter->hide();

    const auto tools = toolBar->findChildren<QToolButton*>();
    for (QToolButton* button : tools) {
        button->setFocusPolicy(Qt::TabFocus);
        if (button->defaultAction())
            button->setAccessibleName(button->defaultAction()->text());
    }
    setIcons();
    fitSize();
}

void Window_Main::setIcons()
{
    const int size = std::max(22, fontMetrics().height() + 6);
    toolBar->setIconSize({size, size});
    const auto actions = findChildren<QAction*>();
    for (QAction* action : actions) {
        const QString name = action->property("iconName").toString();
        if (!name.isEmpty())
            action->setIcon(themedIcon(name));
    }
}

void Window_Main::fitSize()
{
    // The window is as high as its bars and messages, and at least as wide as its toolbar and summary, as far as the
    // screen has room.
    QTimer::singleShot(0, this, [this] {
        if (isMaximized() || isFullScreen())
            return;
        const QRect area = screen()->availableGeometry();
        const int readable = std::min(summary->sizeHint().width(), area.width() * 9 / 10);
        const int widest = std::max(minimumWidth(), area.width() - (frameGeometry().width() - width()));
        const int wanted = std::min(widest, std::max({width(), minimumWidth(), toolBar->sizeHint().width(), readable}));
        const QSize before = size();
        resize(wanted, std::max(minimumHeight(), heightFor(wanted)));
        // Keeps a new message and its buttons on the screen.
        const QPoint place = movedInside(frameGeometry(), area).topLeft();
        if (isVisible() && size() != before && place != frameGeometry().topLeft())
            move(place);
    });
}

int Window_Main::heightFor(int width) const
{
    return Ui::Window_Main::menuBar->height() + toolBar->sizeHint().height()
           + std::max(summary->sizeHint().height(), summary->heightForWidth(width))
           + (messages_->isVisible() ? messages_->heightForWidth(width) : 0);
}

void Window_Main::resizeEvent(QResizeEvent* event)
{
    QMainWindow::resizeEvent(event);
    // The texts of a narrower window need more lines. Queued, since the user may still be resizing.
    if (event->size().width() != event->oldSize().width())
        QTimer::singleShot(0, this, [this] {
            if (const int needed = heightFor(width()); height() < needed && !isMaximized() && !isFullScreen())
                resize(width(), needed);
        });
}

void Window_Main::moveCheckMark(QAction*& from, QAction* to)
{
    if (from)
        from->setChecked(false);
    to->setChecked(true);
    from = to;
}

void Window_Main::setLevel(Level level)
{
    const bool floating = level == Level::Floating;
    if (windowFlags().testFlag(Qt::WindowStaysOnTopHint) == floating)
        return;
    if (!windowHandle()) {
        setWindowFlag(Qt::WindowStaysOnTopHint, floating);
        return;
    }
    // Asks the window manager to change the state of the native window. Setting the widget's flag would replace the
    // native window, and the windows kept above the old one would lose their place.
    overrideWindowFlags(windowFlags().setFlag(Qt::WindowStaysOnTopHint, floating));
    windowHandle()->setFlag(Qt::WindowStaysOnTopHint, floating);
}

void Window_Main::showMessage(MessageTopic topic, const Message& message)
{
    messages_->add(topic, message);
}

bool Window_Main::showsMessage(MessageTopic topic) const
{
    return !messages_->text(topic).isEmpty();
}

void Window_Main::withdrawMessage(MessageTopic topic)
{
    messages_->withdraw(topic);
}

void Window_Main::closeEvent(QCloseEvent* event)
{
    event->ignore();
    Q_EMIT windowShouldClose();
}

void Window_Main::changeEvent(QEvent* event)
{
    QMainWindow::changeEvent(event);
    if (event->type() == QEvent::PaletteChange)
        toolBar->update();
}

} // namespace lumavex
