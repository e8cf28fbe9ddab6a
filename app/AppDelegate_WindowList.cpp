// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/AppDelegate.h"

#include "app/ChosenWindow.h"
#include "app/Window_Main.h"

#include <QAction>
#include <QApplication>
#include <QMenu>

namespace lumavex {

void AppDelegate::updateWindowList()
{
    // Read before the windows, so that a change in between is detected the next time.
    const std::uint64_t serial = platform_.screen->windowsSerial();
    if (capture.windowsSerial != serial) {
        capture.windowListData = std::make_unique<WindowListApplierData>(std::make_shared<QList<WindowEntry>>());
        for (const WindowDescription& window : platform_.screen->windowDescriptions(capture.listOptions))
            WindowListApplierFunction(window, *capture.windowListData);
        capture.arrayController = *capture.windowListData->outputArray;
        capture.windowsSerial = serial;
    }

    // An open menu must not change under the user's pointer; the flag stays set for the next enumeration.
    if (capture.b_Refresh_Menu_Windows && !QApplication::activePopupWidget()) {
        FillMenuWindows();
        capture.b_Refresh_Menu_Windows = false;
    }
}

void AppDelegate::FillMenuWindows()
{
    QMenu& menu = *window_.submenuWindows;
    for (; capture.i_Menu_Windows_Count > 0; --capture.i_Menu_Windows_Count)
        delete menu.actions().at(firstWindowItem);
    capture.mi_last_Window_Exclusive = nullptr;

    for (const WindowEntry& entry : std::as_const(capture.arrayController)) {
        if (belongsToLumavex(entry))
            continue;
        const QString identifier = Return_Window_Identifier_String(entry);
        // Escapes "&", which would mark a mnemonic.
        QAction* item = menu.addAction(QString(identifier).replace(u'&', QStringLiteral("&&")));
        item->setCheckable(true);
        item->setProperty("tag", QVariant::fromValue<qlonglong>(capture.i_Menu_Windows_Count + firstWindowItem));
        item->setData(identifier);
        item->setProperty("windowNumber", entry.value(kWindowIDKey));
        connect(item, &QAction::triggered, this, [this, item] { MenuWindowClick(item); });
        if (capture.i_Menu_Windows_Count == 0)
            Window_Main::moveCheckMark(capture.mi_last_Window_Exclusive, item);
        ++capture.i_Menu_Windows_Count;
    }
}

void AppDelegate::MenuWindowClick(QAction* item)
{
    Window_Main::moveCheckMark(capture.mi_last_Window_Exclusive, item);
    capture.sWindowExclusive = item->data().toString();
    chosenWindow_->announce();
}

void AppDelegate::OnMenuRefreshListOfWindows()
{
    capture.b_Refresh_Menu_Windows = true;
    QMetaObject::invokeMethod(this, &AppDelegate::refreshWindowList, Qt::QueuedConnection);
}

} // namespace lumavex
