// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

namespace lumavex {

/// The rate whose reciprocal is the step of the presentation clock for the coming second.
///
/// `nominal` is i_fps_of_Recording, `appended` the number of frames appended in the last second. The clock goes by the
/// frames that were really counted, so that the movie plays in real time; fewer than an eighth of the nominal rate
/// (a machine that just woke up, a preview that just appeared) tells nothing, and the nominal rate applies.
/// Always positive: where the rule would give 0, `previous` is kept, since its reciprocal is about to be taken.
std::int32_t adaptedRate(std::int32_t nominal, std::int64_t appended, std::int32_t previous);

} // namespace lumavex
