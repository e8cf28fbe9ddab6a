// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/UserDefaults.h"
#include "platform/qt/IniText.h"

namespace lumavex {

/// The preferences as an INI file, replaced atomically at each write. A file that is no INI file is kept beside the new
/// one with ".damaged" added to its name; what can still be read of it is taken over. So is one that cannot be opened,
/// once the first write comes to replace it.
class IniUserDefaults final : public UserDefaults {
public:
    explicit IniUserDefaults(const QString& path);

    std::optional<QString> stringForKey(const QString& key) const override;
    void setObject_forKey(const QString& text, const QString& key) override;
    QString trouble() const override { return trouble_; }
    QString writeTrouble() const override { return writeTrouble_; }

private:
    QString pathAside() const;
    bool putAside() const;
    void keepDamaged();
    QString save() const; ///< empty, or why not

    QString path_;
    IniValues values_;
    QString trouble_;
    QString writeTrouble_;
    bool isUnread_ = false; ///< the file is there, but could not be read, and holds what is nowhere else
};

/// Where the preferences are: lumavex/lumavex.ini in the XDG configuration folder.
QString userDefaultsPath();
/// Beside them, the choices that the settings dialog does not hold: lumavex/more.ini.
QString moreSettingsPath();

} // namespace lumavex
