// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QCoreApplication>
#include <QString>

#include <system_error>

namespace lumavex {

/// Messages of the movie code to the user, translated. Any thread.
struct MovieText {
    Q_DECLARE_TR_FUNCTIONS(MovieWriter)
public:
    static QString cannotWrite(const std::error_code& error)
    {
        return tr("The movie cannot be written: %1.").arg(QString::fromLocal8Bit(error.message().c_str()));
    }
};

} // namespace lumavex
