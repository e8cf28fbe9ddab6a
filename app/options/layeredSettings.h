// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/SettingsTable.h"
#include "app/options/LaunchOptions.h"

#include <QStringList>

#include <functional>
#include <memory>

namespace lumavex {

/// The stored settings, overridden for this run by those of the command line. `stored` must outlive the result;
/// `cameraNames` is called when a camera is needed and none is named.
std::unique_ptr<LayeredUserDefaults> layeredSettings(UserDefaults& stored, const LaunchOptions& options,
                                                     const std::function<QStringList()>& cameraNames);

/// The stored choices outside the settings, overridden by those of the command line in the same way.
std::unique_ptr<LayeredUserDefaults> layeredChoices(UserDefaults& stored, const LaunchOptions& options);

} // namespace lumavex
