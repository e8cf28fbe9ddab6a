// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/connectCommands.h"

#include "app/AppDelegate.h"
#include "app/RecordingSummary.h"
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
        {window.toolbarTakePicture, &AppDelegate::OnToolbarTakePicture},
        {window.menuTakePicture, &AppDelegate::OnMenuTakePicture},
        {window.menuQuit, &AppDelegate::OnMenuQuit},
        {window.toolbarScreenOnly, &AppDelegate::OnToolbarScreenOnly},
        {window.toolbarCameraOnly, &AppDelegate::OnToolbarCameraOnly},
        {window.toolbarBothScreenAndCamera, &AppDelegate::OnToolbarScreenAndCamera},
        {window.menuScreenAlone, &AppDelegate::OnMenuScreenOnly},
        {window.menuCameraAlone, &AppDelegate::OnMenuCameraOnly},
        {window.menuBothScreenPrimary, &AppDelegate::OnMenuBothScreenPrimary},
        {window.menuBothCameraPrimary, &AppDelegate::OnMenuBothCameraPrimary},
        {window.toolbarEntireScreen, &AppDelegate::OnToolbarEntireScreen},
        {window.toolbarFollowCursor, &AppDelegate::OnToolbarFollowCursor},
        {window.toolbarRegion, &AppDelegate::OnToolbarRegion},
        {window.toolbarWindowExclusive, &AppDelegate::OnToolbarWindowExclusive},
        {window.menuEntireScreen, &AppDelegate::OnMenuEntireScreen},
        {window.menuFollowCursor, &AppDelegate::OnMenuFollowCursor},
        {window.menuRegion, &AppDelegate::OnMenuRegion},
        {window.menuWindowExclusive, &AppDelegate::OnMenuWindowExclusive},
        {window.toolbarHelp, &AppDelegate::OnToolbarHelp},
        {window.menuHelp, &AppDelegate::OnToolbarHelp},
        {window.menuAppHomePage, &AppDelegate::OnMenuAppHomePage},
        {window.menuCompanyHomePage, &AppDelegate::OnMenuCompanyHomePage},
        {window.menuPrivacyPolicy, &AppDelegate::OnMenuPrivacyPolicy},
        {window.menuSupportTicket, &AppDelegate::OnMenuSupportTicket},
        {window.menuitemVideoOutputScreenResolution, &AppDelegate::OnMenuVideoOutputScreenResolution},
        {window.menuRefreshListOfWindows, &AppDelegate::OnMenuRefreshListOfWindows},
        {window.toolbarPreferences, &AppDelegate::OnToolbarSettings},
        {window.menuPreferences, &AppDelegate::OnMenuPreferences},
        {window.menuPreviewShowHide, &AppDelegate::OnMenuPreviewUp},
    };
    for (const auto& [action, command] : commands)
        QObject::connect(action, &QAction::triggered, &app, [&app, command = command] {
            (app.*command)();
            app.showSummary();
        });
    QObject::connect(window.summary, &RecordingSummary::settingsWanted, &app, [&] {
        if (app.validateToolbarItem(*window.toolbarPreferences))
            app.OnToolbarSettings();
    });
}

} // namespace lumavex
