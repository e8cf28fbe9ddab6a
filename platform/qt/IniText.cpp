// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/qt/IniText.h"

#include <QList>

#include <algorithm>
#include <cctype>

namespace lumavex {

namespace {

/// Reads the digits at the position as one code unit and moves the position behind them.
QChar escapedUnit(const QString& text, qsizetype& position, int base)
{
    char16_t unit = 0;
    for (; position < text.size(); ++position) {
        bool isDigit = false;
        const int digit = text.sliced(position, 1).toInt(&isDigit, base);
        if (!isDigit)
            break;
        unit = static_cast<char16_t>(unit * base + digit);
    }
    return QChar(unit);
}

/// The character that a backslash before `name` produces.
QChar named(QChar name)
{
    switch (name.unicode()) {
    case u'n':
        return u'\n';
    case u'r':
        return u'\r';
    case u't':
        return u'\t';
    default:
        return name;
    }
}

QString unescaped(const QString& written)
{
    const QString text = written.trimmed();
    const bool quoted = text.startsWith(u'"');
    QString value;
    for (qsizetype i = quoted ? 1 : 0; i < text.size();) {
        const QChar character = text[i++];
        if (quoted && character == u'"')
            break;
        if (character != u'\\' || i == text.size()) {
            value += character;
        } else if (text[i] == u'x') {
            value += escapedUnit(text, ++i, 16);
        } else if (text[i] >= u'0' && text[i] <= u'7') {
            value += escapedUnit(text, i, 8);
        } else {
            value += named(text[i++]);
        }
    }
    // QSettings doubles an at sign at the front, since a single one introduces a value that is not a text.
    return value.startsWith(QLatin1String("@@")) ? value.sliced(1) : value;
}

bool isHexDigit(QChar character)
{
    return character.unicode() < 128 && std::isxdigit(character.unicode());
}

QString escaped(const QString& value)
{
    QString written;
    bool afterNumber = false; // the next digit would continue that number
    for (const QChar character : value.startsWith(u'@') ? u'@' + value : value) {
        // An unpaired surrogate cannot be written in UTF-8.
        const bool byNumber = character.unicode() < 0x20 || character.unicode() == 0x7F || character.isSurrogate()
                              || (afterNumber && isHexDigit(character));
        if (byNumber)
            written += QStringLiteral("\\x") + QString::number(character.unicode(), 16);
        else if (character == u'"' || character == u'\\')
            written += QStringLiteral("\\") + character;
        else
            written += character;
        afterNumber = byNumber;
    }
    const auto needsQuotes = [](QChar character) { return QStringLiteral(";,=\"").contains(character); };
    const bool quoted = value.trimmed() != value || std::any_of(value.begin(), value.end(), needsQuotes);
    return quoted ? u'"' + written + u'"' : written;
}

} // namespace

IniText readIni(const QByteArray& bytes)
{
    IniText ini;
    ini.damaged = bytes.contains('\0');
    bool general = true;
    const QList<QByteArray> lines = bytes.split('\n');
    for (const QByteArray& each : lines) {
        const QByteArray line = each.trimmed();
        if (line.isEmpty() || line.startsWith(';') || line.startsWith('#'))
            continue;
        const qsizetype equals = line.indexOf('=');
        if (line.startsWith('[') && line.endsWith(']')) {
            general = line == "[General]";
        } else if (equals <= 0) {
            ini.damaged = true;
        } else if (general) {
            const QString key = QString::fromUtf8(line.first(equals)).trimmed();
            ini.values.insert(key, unescaped(QString::fromUtf8(line.sliced(equals + 1))));
        }
    }
    return ini;
}

QByteArray writeIni(const IniValues& values)
{
    QString text = QStringLiteral("[General]\n");
    for (auto it = values.begin(); it != values.end(); ++it)
        text += it.key() + u'=' + escaped(it.value()) + u'\n';
    return text.toUtf8();
}

} // namespace lumavex
