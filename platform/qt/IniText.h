// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QMap>
#include <QString>

namespace lumavex {

using IniValues = QMap<QString, QString>;

struct IniText {
    IniValues values;
    bool damaged = false; ///< a line is not an INI file's; the values of the others are read
};

/// Reads the texts of the section "General", in the format that QSettings writes. QSettings itself is not used for
/// reading: it makes objects of the type that a value names ("@Variant(…)"), and a damaged value can request all
/// memory. A value edited by hand needs no quotes. Never fails.
IniText readIni(const QByteArray& bytes);

/// The INI file of one section "General", which QSettings can read. Keys are letters, digits and underscores.
QByteArray writeIni(const IniValues& values);

} // namespace lumavex
