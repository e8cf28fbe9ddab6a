// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/options/LaunchOptions.h"

#include <QStringList>

#include <optional>

namespace lumavex {

/// Result of parsing the command line.
struct CommandLine {
    LaunchOptions options;
    QString text;                  ///< text to print before the program ends; empty when it continues
    std::optional<int> exitStatus; ///< set when the program ends at once: 0 for help and version, 2 for an error
    QString note = {};             ///< text for standard error before the program continues; empty when there is none
};

/// Parses the arguments, without the program's name. Needs no display: help works everywhere.
CommandLine parseCommandLine(const QStringList& arguments);

/// The reason why the movie or the picture cannot be written to its path, as text for the user; empty when it can.
/// Looks at the file system only.
QString outputProblem(const LaunchOptions& options);

} // namespace lumavex
