// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QCoreApplication>
#include <QString>

namespace lumavex {

class AppDelegate;
class UserDefaults;
class Window_Main;

/// Tells in the main window that settings or choices could not be read or cannot be stored, and offers the settings of
/// a first run in place of those that could not be read. Main thread only.
class SettingsNotice final {
    Q_DECLARE_TR_FUNCTIONS(lumavex::SettingsNotice)
public:
    /// All must outlive this object and the messages it shows.
    SettingsNotice(AppDelegate& app, Window_Main& window, const UserDefaults& settings, const UserDefaults& choices)
        : app_(app), window_(window), settings_(settings), choices_(choices)
    {
    }

    /// After the start: what could not be read.
    void tellUnread();
    /// After every write. Trouble is told once, and its message goes with the first write that works again.
    void written();

private:
    void show();
    void useFirstRunSettings();
    void applySizes();

    AppDelegate& app_;
    Window_Main& window_;
    const UserDefaults& settings_;
    const UserDefaults& choices_;
    QString unread_;        ///< why settings could not be read, until others are used in their place
    QString unreadChoices_; ///< why choices could not be read, until the next one is made
    QString unstored_;      ///< why the latest write failed; empty when it did not
};

} // namespace lumavex
