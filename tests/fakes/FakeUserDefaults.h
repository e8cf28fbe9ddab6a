// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/UserDefaults.h"

#include <QMap>
#include <QStringList>

namespace lumavex {

/// Preferences in memory that record the order of writes.
class FakeUserDefaults final : public UserDefaults {
public:
    std::optional<QString> stringForKey(const QString& key) const override
    {
        const auto it = texts.constFind(key);
        return it == texts.constEnd() ? std::nullopt : std::optional(*it);
    }
    void setObject_forKey(const QString& text, const QString& key) override
    {
        texts.insert(key, text);
        written.append(key);
    }
    QString trouble() const override { return unread; }
    QString writeTrouble() const override { return unstored; }

    QMap<QString, QString> texts;
    QStringList written;
    QString unread;   ///< result of trouble
    QString unstored; ///< result of writeTrouble
};

} // namespace lumavex
