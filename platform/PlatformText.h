// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QCoreApplication>
#include <QString>

namespace lumavex {

/// Translates messages to the user in the backends. Any thread.
struct PlatformText {
    Q_DECLARE_TR_FUNCTIONS(Platform)
};

} // namespace lumavex
