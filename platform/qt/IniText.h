// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QMap>
#include <QString>

namespace lumavex {

using IniValues = QMap<QString, QString>;

struct IniText {
    IniValues values;
    bool damaged = false; ///< some line is none of an INI file's; the values of the others are there
};

/// Reads the texts of the section "General", in the way that QSettings writes them. QSettings itself is not used to
/// read: it makes objects of whatever a value says it holds ("@Variant(…)"), and a damaged one can ask for all memory
/// there is. A value edited by hand needs no quotes. Never fails.
IniText readIni(const QByteArray& bytes);

/// The INI file of one section "General"; QSettings reads it too. Keys are letters, digits and underscores.
QByteArray writeIni(const IniValues& values);

} // namespace lumavex
