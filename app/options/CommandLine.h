// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/options/LaunchOptions.h"

#include <QStringList>

#include <optional>

namespace lumavex {

/// What the program is to do with its command line.
struct CommandLine {
    LaunchOptions options;
    QString text;                  ///< to print before ending; empty when the program goes on
    std::optional<int> exitStatus; ///< set when the program ends at once: 0 for help and version, 2 for a mistake
    QString note = {};             ///< to tell on standard error before going on; empty when there is nothing to tell
};

/// Reads the arguments, without the program's name. Knows no display: help works everywhere.
CommandLine parseCommandLine(const QStringList& arguments);

/// Why the movie or the picture cannot be written where it is to go, in the user's words; empty when it can. Looks at
/// the file system only.
QString outputProblem(const LaunchOptions& options);

} // namespace lumavex
