// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <optional>

namespace lumavex {

/// The per-user preferences: texts by key. Main thread only. A write is on disk when the call returns.
class UserDefaults {
public:
    virtual ~UserDefaults() = default;
    /// The stored text; std::nullopt for an absent key.
    virtual std::optional<QString> stringForKey(const QString& key) const = 0;
    virtual void setObject_forKey(const QString& text, const QString& key) = 0;
    /// Reason why the stored preferences could not be read, as text for the user; empty when there is none.
    virtual QString trouble() const = 0;
    /// Reason why the latest write failed, as text for the user; empty when it succeeded. A failed write is still read
    /// back as long as this object lives.
    virtual QString writeTrouble() const = 0;
};

} // namespace lumavex
