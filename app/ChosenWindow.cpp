// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/ChosenWindow.h"

#include "app/AppDelegate.h"
#include "app/Window_Main.h"

#include <QAction>
#include <QMenu>
#include <QMenuBar>
#include <QStyle>

#include <cmath>
#include <limits>

namespace lumavex {

namespace {

/// Replacement for a window that was never seen: the rest of the screen must not be shown instead.
Grab blackShot()
{
    QImage picture(16, 16, QImage::Format_RGB32);
    picture.fill(Qt::black);
    return {GrabOutcome::Success, picture, std::numeric_limits<std::uint64_t>::max()};
}

} // namespace

ChosenWindow::ChosenWindow(AppDelegate& app, ScreenGrabber& screen, Window_Main& window, MoreSettings& choices)
    : app_(app), screen_(screen), window_(window), choices_(choices)
{
    window_.submenuWindows->setToolTipsVisible(true);
    QObject::connect(window_.submenuWindows, &QMenu::aboutToShow, &app_, [this] { dressMenu(); });
}

bool ChosenWindow::isHeld() const
{
    return choices_[choices::whenWindowGoes] == WhenWindowGoes::Hold;
}

void ChosenWindow::setHeld(bool held)
{
    choices_.choose(choices::whenWindowGoes, held ? WhenWindowGoes::Hold : WhenWindowGoes::Others);
}

void ChosenWindow::grab()
{
    CaptureState& capture = app_.capture;
    const QString identifier = *capture.sWindowExclusive;
    bool present = capture.numberOfWindowExclusive.has_value();
    const bool held = isHeld();
    const bool lost = !screen_.trouble().isEmpty(); // the grab reports this
    bool good = (present || !held || lost) && app_.createMultiWindowShot(capture.arrayWindowsMinusLumavex);
    if (lost)
        return;
    // A window manager removes the contents of a minimised or closed window from the frame before it removes the frame.
    // Checked after the grab, so that a picture of an empty frame is not kept.
    if (present && held) {
        present = screen_.showsContents(*capture.numberOfWindowExclusive);
        good = good && present;
    }
    tellWhetherItIsThere(identifier, present);
    if (present && good) {
        shot_ = {GrabOutcome::Success, capture.imgScreenCapture, capture.serialScreen, capture.screenChanges};
        shotOf_ = identifier;
    } else if (held) {
        const Grab shot = shotOf_ == identifier ? shot_ : blackShot();
        capture.imgScreenCapture = shot.picture;
        capture.serialScreen = shot.serial;
        capture.screenChanges = shot.changes;
        capture.size_Grab = {};
    }
}

void ChosenWindow::tellWhetherItIsThere(const QString& identifier, bool present)
{
    std::optional<QString>& missed = app_.capture.sWindowExclusive_Missed;
    if (!present && missed != identifier) {
        missed = identifier;
        app_.tell(MessageTopic::Window, goneMessage(identifier));
    } else if (present && missed) {
        if (missed == identifier)
            app_.tell(MessageTopic::Window, {tr("The window %1 is back. %2").arg(identifier, consequence()), actions(),
                                             Message::Kind::Information});
        missed.reset();
    }
}

Message ChosenWindow::goneMessage(const QString& identifier)
{
    const QString text = !isHeld() ? tr("The window %1 is not on the screen. All other windows are recorded until it "
                                        "is back or another one is chosen.")
                         : shotOf_ == identifier
                             ? tr("The window %1 is not on the screen. Its last picture is held until it is back or "
                                  "another one is chosen.")
                             : tr("The window %1 is not on the screen. The picture is black until it is there or "
                                  "another one is chosen.");
    return {text.arg(identifier), actions()};
}

void ChosenWindow::announce()
{
    CaptureState& capture = app_.capture;
    capture.sWindowExclusive_Missed.reset(); // reports it again when the window is missing
    if (!capture.sWindowExclusive) {
        window_.showMessage(MessageTopic::Window, {tr("Choose a window in the menu Frame, Window."),
                                                   {{tr("Choose a Window…"), [this] { chooseAnother(); }}}});
        return;
    }
    const QString text = capture.i_Type_Screen_Capture == WindowExclusive
                             ? tr("The window %1 is recorded.")
                             : tr("The window %1 is chosen. Press Window to record it.");
    window_.showMessage(MessageTopic::Window, {text.arg(nameOf(*capture.sWindowExclusive)) + u' ' + consequence(),
                                               actions(), Message::Kind::Information});
}

/// The identifier and the title under which the user knows the window.
QString ChosenWindow::nameOf(const QString& identifier) const
{
    constexpr qsizetype longest = 60;
    const WindowEntry* entry = windowOfIdentifier(app_.capture.arrayController, identifier);
    if (!entry)
        return identifier;
    QString title = screen_.looksOf({entry->value(kWindowIDKey).toUInt()}, 0).front().title;
    if (title.isEmpty() || identifier.startsWith(title + u' '))
        return identifier;
    if (title.size() > longest)
        title = title.left(longest - 1) + u'…';
    return tr("%1, \"%2\",", "window, its title").arg(identifier, title);
}

QString ChosenWindow::consequence() const
{
    return isHeld() ? tr("If it goes away, its last picture is held.")
                    : tr("If it goes away, all other windows are recorded.");
}

std::vector<MessageAction> ChosenWindow::actions()
{
    const bool held = isHeld();
    return {{tr("Choose Another…"), [this] { chooseAnother(); }},
            {held ? tr("Record the Others") : tr("Hold Its Picture"), [this, held] {
                 setHeld(!held);
                 showState();
             }}};
}

/// Shows the current state again after a button has closed the message.
void ChosenWindow::showState()
{
    if (const auto missed = app_.capture.sWindowExclusive_Missed)
        window_.showMessage(MessageTopic::Window, goneMessage(*missed));
    else
        announce();
}

void ChosenWindow::chooseAnother()
{
    showState(); // its statement still applies unless another window is chosen
    app_.capture.b_Refresh_Menu_Windows = true;
    app_.updateWindowList();
    QMenu& menu = *window_.submenuWindows;
    const QMenuBar& bar = *window_.QMainWindow::menuBar();
    menu.popup(bar.mapToGlobal(bar.actionGeometry(window_.menuFrame->menuAction()).bottomLeft()));
    if (const auto windows = menu.actions().mid(firstWindowItem); !windows.isEmpty())
        menu.setActiveAction(windows.constFirst());
}

/// Sets the titles and icons of the window menu's items to their windows' current ones.
void ChosenWindow::dressMenu()
{
    const QMenu& menu = *window_.submenuWindows;
    const auto items = menu.actions().mid(firstWindowItem);
    std::vector<std::uint32_t> numbers;
    for (const QAction* item : items)
        numbers.push_back(item->property("windowNumber").toUInt());
    const double size = window_.devicePixelRatioF() * menu.style()->pixelMetric(QStyle::PM_SmallIconSize);
    const auto looks = screen_.looksOf(numbers, int(std::ceil(size)));
    for (std::size_t i = 0; i < looks.size(); ++i) {
        QAction* item = items.at(static_cast<qsizetype>(i));
        item->setIcon(QPixmap::fromImage(looks[i].icon));
        // A title may look like markup, which a tool tip would interpret.
        item->setToolTip(QStringLiteral("<span>%1</span>").arg(looks[i].title.toHtmlEscaped()));
    }
}

} // namespace lumavex
