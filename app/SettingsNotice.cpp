// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/SettingsNotice.h"

#include "app/AppDelegate.h"
#include "app/Window_Main.h"

#include <QAction>
#include <QMenu>

#include <utility>

namespace lumavex {

void SettingsNotice::tellUnread()
{
    unread_ = settings_.trouble();
    if (!unread_.isEmpty())
        show();
}

void SettingsNotice::written()
{
    QString trouble = settings_.writeTrouble();
    if (trouble.isEmpty())
        trouble = choices_.writeTrouble();
    if (std::exchange(unstored_, trouble) != trouble)
        show();
}

void SettingsNotice::show()
{
    const QString text = (unread_ + u' ' + unstored_).trimmed();
    if (text.isEmpty()) {
        window_.withdrawMessage(MessageTopic::Settings);
        return;
    }
    Message message{text};
    if (!unread_.isEmpty())
        message.actions.push_back({tr("Use First-Run Settings"), [this] { useFirstRunSettings(); }});
    window_.showMessage(MessageTopic::Settings, message);
}

void SettingsNotice::useFirstRunSettings()
{
    if (app_.recording.m_RecordStatus != Idle || app_.recording.stopping) {
        show(); // settings are not changed during a recording, and the offer stands until after it
        return;
    }
    unread_.clear();
    unstored_.clear(); // so that a failure is told though it was told before
    app_.writeFirstRunDefaults();
    app_.readSettings();
    app_.applySettings();
    applySizes();
    app_.showSummary();
}

void SettingsNotice::applySizes()
{
    app_.FillArrayFrameResolution();
    app_.OnMenuVideoOutputScreenResolution();
    const auto choose = [this](const QMenu& menu, std::int64_t index, void (AppDelegate::*click)(QAction*)) {
        const auto items = menu.actions();
        for (QAction* item : items)
            if (item->data().toLongLong() == index)
                (app_.*click)(item);
    };
    choose(*window_.submenuFollowCursorFrame, app_.capture.index_size_Follow_Cursor,
           &AppDelegate::MenuFollowCursorFrameClick);
    choose(*window_.submenuRegionFrame, app_.capture.index_size_Region, &AppDelegate::MenuRegionFrameClick);
}

} // namespace lumavex
