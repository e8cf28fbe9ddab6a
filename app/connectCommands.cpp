// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/connectCommands.h"

#include "app/AppDelegate.h"
#include "app/Window_Main.h"

#include <QAction>

namespace lumavex {

void connectCommands(Window_Main& window, AppDelegate& app)
{
    const struct {
        QAction* action;
        void (AppDelegate::*command)();
    } commands[] = {
        {window.btnRecord, &AppDelegate::OnToolbarRecord},
        {window.btnPause, &AppDelegate::OnToolbarPause},
        {window.btnStop, &AppDelegate::OnToolbarStop},
        {window.menuRecord, &AppDelegate::OnMenuVideoRecord},
        {window.menuPause, &AppDelegate::OnMenuVideoPause},
        {window.menuStop, &AppDelegate::OnMenuVideoStop},
        {window.menuQuit, &AppDelegate::OnMenuQuit},
        {window.menuitemVideoOutputScreenResolution, &AppDelegate::OnMenuVideoOutputScreenResolution},
        {window.menuRefreshListOfWindows, &AppDelegate::OnMenuRefreshListOfWindows},
        {window.menuPreviewShowHide, &AppDelegate::OnMenuPreviewUp},
    };
    for (const auto& [action, command] : commands)
        QObject::connect(action, &QAction::triggered, &app, [&app, command = command] { (app.*command)(); });
}

} // namespace lumavex
