// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <cstdint>

namespace lumavex {

/// Hours, minutes and seconds as "01:02:03", in Latin digits in every locale. Hours do not wrap: 100 hours are
/// "100:00:00".
QString timeFormatted(std::int32_t seconds);

} // namespace lumavex
