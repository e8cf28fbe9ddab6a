// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/UserDefaults.h"
#include "platform/qt/IniText.h"

namespace lumavex {

/// The preferences as an INI file, replaced atomically at each write. A file that is no INI file is kept beside the new
/// one with ".damaged" added to its name; what can still be read of it is taken over. Settings are replaced at once,
/// choices when the next one is made, and so is a file that cannot be opened.
class IniUserDefaults final : public UserDefaults {
public:
    /// What the file is to the user, which decides the words that trouble is told with.
    enum class Holds { Settings, Choices };

    explicit IniUserDefaults(const QString& path, Holds what = Holds::Settings);

    std::optional<QString> stringForKey(const QString& key) const override;
    void setObject_forKey(const QString& text, const QString& key) override;
    QString trouble() const override { return trouble_; }
    QString writeTrouble() const override { return writeTrouble_; }

private:
    QString unreadChoices() const; ///< in the user's words
    QString pathAside() const;
    bool putAside() const;
    void keepDamaged();
    QString save() const; ///< empty, or why not

    QString path_;
    Holds what_;
    IniValues values_;
    QString trouble_;
    QString writeTrouble_;
    bool isUnread_ = false; ///< the file is there, but could not be read in full, and holds what is nowhere else
};

/// Where the preferences are: lumavex/lumavex.ini in the XDG configuration folder.
QString userDefaultsPath();
/// Beside them, the choices that the settings dialog does not hold: lumavex/more.ini.
QString moreSettingsPath();

} // namespace lumavex
