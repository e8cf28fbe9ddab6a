// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/SettingsTable.h"
#include "app/options/LaunchOptions.h"

#include <QStringList>

#include <functional>
#include <memory>

namespace lumavex {

/// The stored settings with those of the command line laid over them, for this run. `stored` must outlive the result;
/// `cameraNames` is called when a camera is needed that nobody named.
std::unique_ptr<LayeredUserDefaults> layeredSettings(UserDefaults& stored, const LaunchOptions& options,
                                                     const std::function<QStringList()>& cameraNames);

/// The stored choices beside the settings, with those of the command line laid over them in the same way.
std::unique_ptr<LayeredUserDefaults> layeredChoices(UserDefaults& stored, const LaunchOptions& options);

} // namespace lumavex
