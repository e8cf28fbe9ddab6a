// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <cstdint>
#include <optional>

// Readers of option values. Each takes the value into the target and returns nothing, or leaves the target alone and
// returns what is wrong in words that follow the option's name. The ranges are those of the settings dialog's controls.

namespace lumavex {

/// Of nine places, 0 to 8.
QString readPosition(const QString& value, std::optional<std::int64_t>& target);
/// Size code of a secondary picture, 0 to 4.
QString readSecondarySize(const QString& value, std::optional<std::int64_t>& target);
/// Width of the overlay in tens of the movie's pixels: at most that of the largest movie.
QString readOverlaySize(const QString& value, std::optional<std::int64_t>& target);

// Colour controls, each ten times its value.
QString readSaturation(const QString& value, std::optional<float>& target);
QString readBrightness(const QString& value, std::optional<float>& target);
QString readContrast(const QString& value, std::optional<float>& target);

/// A movie's file: with the ending of a kind that can be made, or without one.
QString readMoviePath(const QString& value, QString& target);
/// A picture's file: without an ending, or with that of PNG.
QString readPicturePath(const QString& value, QString& target);

} // namespace lumavex
