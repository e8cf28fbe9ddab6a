// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QCoreApplication>
#include <QString>

namespace lumavex {

/// Translates messages to the user in code that belongs to no QObject. Any thread.
struct RecordingText {
    Q_DECLARE_TR_FUNCTIONS(Recording)
};

} // namespace lumavex
