// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <optional>

namespace lumavex {

/// The per-user preferences: texts by key. Main thread only. A write is on disk when the call returns.
class UserDefaults {
public:
    virtual ~UserDefaults() = default;
    /// The stored text, or nothing for an absent key.
    virtual std::optional<QString> stringForKey(const QString& key) const = 0;
    virtual void setObject_forKey(const QString& text, const QString& key) = 0;
    /// Why the stored preferences could not be read, in the user's words; empty when all is well.
    virtual QString trouble() const = 0;
    /// Why the latest write failed, in the user's words; empty when it did not. What was to be written is read back all
    /// the same, as long as this object lives.
    virtual QString writeTrouble() const = 0;
};

} // namespace lumavex
