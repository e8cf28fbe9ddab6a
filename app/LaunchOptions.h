// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Geometry.h"

#include <QString>

#include <cstdint>
#include <optional>

namespace lumavex {

/// What the command line asks for. Settings named here hold for this run and are not stored.
struct LaunchOptions {
    std::optional<double> recordSeconds; ///< record this long without a user, then end
    QString output;                      ///< where the movie goes
    enum class Existing { Refuse, Overwrite } existing = Existing::Refuse;
    enum class Load { Refuse, Ignore } load = Load::Refuse; ///< what an overloaded machine does to a recording

    std::optional<std::int64_t> framesPerSecond;
    std::optional<CGSize> size; ///< output size; 0 x 0 for the screen's
    std::optional<bool> sound;
    std::optional<bool> cursor;
    bool hideOwnWindows = false;
};

} // namespace lumavex
