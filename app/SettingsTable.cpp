// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/SettingsTable.h"

#include <limits>

namespace lumavex {

QString settingKey(const char* name)
{
    return QStringLiteral("Orbelkin_") + QLatin1String(name) + QStringLiteral("_02");
}

std::int64_t integerValue(const QString& text)
{
    qsizetype i = 0;
    while (i < text.size() && text[i].isSpace())
        ++i;
    bool negative = false;
    if (i < text.size() && (text[i] == u'-' || text[i] == u'+'))
        negative = text[i++] == u'-';

    constexpr auto largest = std::numeric_limits<std::int64_t>::max();
    std::int64_t value = 0;
    for (; i < text.size() && text[i] >= u'0' && text[i] <= u'9'; ++i) {
        const int digit = text[i].unicode() - u'0';
        if (value > (largest - digit) / 10)
            return negative ? std::numeric_limits<std::int64_t>::min() : largest;
        value = value * 10 + digit;
    }
    return negative ? -value : value;
}

std::int64_t readInteger(UserDefaults& store, const char* name, ReadRule rule)
{
    const QString key = settingKey(name);
    const QString text = store.stringForKey(key).value_or(QString());
    if (text.isEmpty() && rule == ReadRule::Defaulting) {
        store.setObject_forKey(QStringLiteral("1"), key);
        return 1;
    }
    return integerValue(text);
}

} // namespace lumavex
