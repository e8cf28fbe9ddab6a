// SPDX-License-Identifier: GPL-3.0-or-later
#include "recording/Duration.h"

namespace lumavex {

QString timeFormatted(std::int32_t seconds)
{
    return QString::asprintf("%02d:%02d:%02d", seconds / 3600, seconds / 60 % 60, seconds % 60);
}

} // namespace lumavex
