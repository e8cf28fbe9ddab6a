// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

namespace lumavex {

/// The rate whose reciprocal is the step of the presentation clock for the coming second.
///
/// `nominal` is i_fps_of_Recording, `appended` the number of frames appended in the last second. The clock follows the
/// number of frames counted, so that the movie plays in real time; fewer than an eighth of the nominal rate (a machine
/// that has just resumed, a preview that has just appeared) are not significant, and the nominal rate applies.
/// Always positive: when the rule would yield 0, `previous` is kept, since the caller uses the reciprocal.
std::int32_t adaptedRate(std::int32_t nominal, std::int64_t appended, std::int32_t previous);

} // namespace lumavex
