// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QCoreApplication>
#include <QString>

namespace lumavex {

class AppDelegate;
class UserDefaults;
class Window_Main;

/// Reports in the main window that settings or choices could not be read or stored, and offers the first-run settings
/// in place of unreadable ones. Main thread only.
class SettingsNotice final {
    Q_DECLARE_TR_FUNCTIONS(lumavex::SettingsNotice)
public:
    /// All must outlive this object and the messages it shows.
    SettingsNotice(AppDelegate& app, Window_Main& window, const UserDefaults& settings, const UserDefaults& choices)
        : app_(app), window_(window), settings_(settings), choices_(choices)
    {
    }

    /// Reports read failures after the start.
    void tellUnread();
    /// Called after every write. Reports a failure once and withdraws the message at the next successful write.
    void written();

private:
    void show();
    void useFirstRunSettings();
    void applySizes();

    AppDelegate& app_;
    Window_Main& window_;
    const UserDefaults& settings_;
    const UserDefaults& choices_;
    QString unread_;        ///< reason why settings could not be read, until others replace them
    QString unreadChoices_; ///< reason why choices could not be read, until the next choice
    QString unstored_;      ///< reason why the latest write failed; empty when it succeeded
};

} // namespace lumavex
