// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/UserDefaults.h"

#include <QHash>
#include <QString>

#include <cstdint>
#include <functional>
#include <utility>

namespace lumavex {

/// The key under which a setting is stored: "Orbelkin_" + name + "_02".
QString settingKey(const char* name);

/// The number at the beginning of a text: white space, a sign and digits up to the first other character; 0 when there
/// is none. A number that exceeds 64 bits is clamped to the nearest one.
std::int64_t integerValue(const QString& text);

/// Meaning of an absent or empty text.
enum class ReadRule {
    Plain,      ///< 0; writes nothing
    Defaulting, ///< 1; writes "1" at once
};

std::int64_t readInteger(UserDefaults& store, const char* name, ReadRule rule);

/// Settings given for this run override the stored ones: they are read instead, and the stored values stay.
///
/// While the program starts, a write to an overridden setting reaches the store only when nothing is stored yet, so
/// that a first run is complete. Later writes come from the user: a write of the overriding text leaves the override in
/// place; any other text is a choice, which is stored and applies.
class LayeredUserDefaults final : public UserDefaults {
public:
    explicit LayeredUserDefaults(UserDefaults& stored) : stored_(stored) {}

    void lay(const QString& text, const QString& key) { layer_.insert(key, text); }
    /// All later writes come from the user.
    void startingIsOver() { starting_ = false; }

    std::optional<QString> stringForKey(const QString& key) const override
    {
        const auto it = layer_.constFind(key);
        return it != layer_.constEnd() ? std::optional(*it) : stored_.stringForKey(key);
    }
    void setObject_forKey(const QString& text, const QString& key) override
    {
        const auto over = layer_.constFind(key);
        if (over != layer_.constEnd()) {
            if ((starting_ || *over == text) && stored_.stringForKey(key))
                return;
            if (!starting_ && *over != text)
                layer_.erase(over);
        }
        stored_.setObject_forKey(text, key);
        if (written_)
            written_();
    }
    QString trouble() const override { return stored_.trouble(); }
    QString writeTrouble() const override { return stored_.writeTrouble(); }
    /// Called after every write to the store; may be null.
    void setWriteHandler(std::function<void()> handler) { written_ = std::move(handler); }

private:
    UserDefaults& stored_;
    QHash<QString, QString> layer_;
    bool starting_ = true;
    std::function<void()> written_;
};

} // namespace lumavex
