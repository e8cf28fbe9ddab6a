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
    unreadChoices_ = choices_.trouble();
    for (const QString& trouble : {unread_, unreadChoices_})
        if (!trouble.isEmpty())
            qWarning("%s", qUtf8Printable(trouble)); // the window of an unattended recording is not visible
    if (!unread_.isEmpty() || !unreadChoices_.isEmpty())
        show();
}

void SettingsNotice::written()
{
    QString trouble = settings_.writeTrouble();
    if (trouble.isEmpty())
        trouble = choices_.writeTrouble();
    const bool chosenAgain = !unreadChoices_.isEmpty() && choices_.trouble().isEmpty();
    if (chosenAgain)
        unreadChoices_.clear();
    if (std::exchange(unstored_, trouble) != trouble || (chosenAgain && window_.showsMessage(MessageTopic::Settings)))
        show();
}

void SettingsNotice::show()
{
    QStringList texts{unread_, unreadChoices_, unstored_};
    texts.removeAll(QString());
    const QString text = texts.join(u' ');
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
    if (app_.recording.m_RecordStatus != Idle || app_.recording.isEnding()) {
        show(); // settings cannot change during a recording; the offer remains afterwards
        return;
    }
    unread_.clear();
    unstored_.clear(); // so that a failure is reported again
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
