// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QFile>

namespace lumavex {

/// The content of a whole file; empty when it cannot be read.
inline QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace lumavex
