// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/UserDefaults.h"
#include "platform/qt/IniText.h"

namespace lumavex {

/// The preferences as an INI file, replaced atomically at each write. A file that is not an INI file is kept beside the
/// new one with ".damaged" added to its name; its readable values are used. Settings are replaced at once; choices, and
/// a file that cannot be opened, at the next write.
class IniUserDefaults final : public UserDefaults {
public:
    /// The file's contents, which decide the text of `trouble`.
    enum class Holds { Settings, Choices };

    explicit IniUserDefaults(const QString& path, Holds what = Holds::Settings);

    std::optional<QString> stringForKey(const QString& key) const override;
    void setObject_forKey(const QString& text, const QString& key) override;
    QString trouble() const override { return trouble_; }
    QString writeTrouble() const override { return writeTrouble_; }

private:
    QString unreadChoices() const; ///< as text for the user
    QString pathAside() const;
    bool putAside() const;
    void keepDamaged();
    QString save() const; ///< empty, or the reason for a failure

    QString path_;
    Holds what_;
    IniValues values_;
    QString trouble_;
    QString writeTrouble_;
    bool isUnread_ = false; ///< the file exists but could not be read in full, and contains the only copy of its values
};

/// Path of the preferences: lumavex/lumavex.ini in the XDG configuration folder.
QString userDefaultsPath();
/// Path of the choices that the settings dialog does not contain, beside them: lumavex/more.ini.
QString moreSettingsPath();

} // namespace lumavex
