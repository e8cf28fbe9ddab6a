// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QStringView>

#include <cstdint>
#include <optional>

namespace lumavex {

/// Seconds of a text "HH:MM:SS": reads the two characters at positions 0, 3 and 6, whatever separates them. The value
/// of a part is its leading digits; without digits, and beyond the end of the text, it is 0 ("N/A bitr" yields 0).
std::int64_t Return_Seconds_From_VOB_Duration_Str(QStringView text);

/// The time that the encoder reports in one chunk of its standard error, in seconds: the eight characters after the
/// last "time=" that has eight characters after it. std::nullopt when there is none, or when the chunk alone is not
/// valid UTF-8 (a chunk may end inside a character or a line; the next report follows half a second later, so no chunk
/// is kept).
std::optional<std::int64_t> encoderSeconds(const QByteArray& chunk);

/// Percentage of the recorded length, between 0 and 100, computed in 32-bit floating point. A length of 0 (stopped
/// within the first second) yields 100: joining is complete when the encoder first reports.
float encoderPercentage(std::uint64_t seconds, std::uint64_t lengthInSeconds);

} // namespace lumavex
