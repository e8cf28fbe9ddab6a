// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/UserDefaults.h"

#include <QSettings>

#include <memory>

namespace lumavex {

/// The preferences as an INI file, replaced atomically at each write. A file that is no INI file is kept beside the new
/// one with ".damaged" added to its name; what can still be read of it is taken over.
class IniUserDefaults final : public UserDefaults {
public:
    explicit IniUserDefaults(const QString& path);

    std::optional<QString> stringForKey(const QString& key) const override;
    void setObject_forKey(const QString& text, const QString& key) override;
    QString trouble() const override { return trouble_; }

private:
    void salvage();

    QString path_;
    std::unique_ptr<QSettings> settings_;
    QString trouble_;
};

/// Where the preferences are: lumavex/lumavex.ini in the XDG configuration folder.
QString userDefaultsPath();

} // namespace lumavex
