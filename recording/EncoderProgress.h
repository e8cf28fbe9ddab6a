// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QStringView>

#include <cstdint>
#include <optional>

namespace lumavex {

/// Seconds of a text "HH:MM:SS": the two characters at positions 0, 3 and 6, whatever separates them. A part counts by
/// its leading digits; without digits, and past the end of the text, it is 0 ("N/A bitr" gives 0).
std::int64_t Return_Seconds_From_VOB_Duration_Str(QStringView text);

/// The time the encoder reports in one chunk of its standard error: the eight characters after the last "time=" that
/// has that many behind it, in seconds. Nothing when there is none, or when the chunk alone is not valid UTF-8 (a chunk
/// may end inside a character or a line; the next report is half a second away, so no chunk is kept for the next one).
std::optional<std::int64_t> encoderSeconds(const QByteArray& chunk);

/// Percentage of the recorded length, between 0 and 100, computed in 32-bit floating point. A length of 0 (stopped
/// within the first second) gives 100: what there was to join has been joined when the encoder first reports.
float encoderPercentage(std::uint64_t seconds, std::uint64_t lengthInSeconds);

} // namespace lumavex
