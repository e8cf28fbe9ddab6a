// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <cstdint>
#include <optional>

// Readers of option values. Each stores the value in the target and returns an empty text, or leaves the target
// unchanged and returns an error text that follows the option's name. The ranges are those of the settings dialog's
// controls.

namespace lumavex {

/// One of nine positions, 0 to 8.
QString readPosition(const QString& value, std::optional<std::int64_t>& target);
/// Size code of a secondary picture, 0 to 4.
QString readSecondarySize(const QString& value, std::optional<std::int64_t>& target);
/// Width of the overlay in units of ten pixels of the movie: at most that of the largest movie.
QString readOverlaySize(const QString& value, std::optional<std::int64_t>& target);

// Colour controls, each ten times its value.
QString readSaturation(const QString& value, std::optional<float>& target);
QString readBrightness(const QString& value, std::optional<float>& target);
QString readContrast(const QString& value, std::optional<float>& target);

/// Path of a movie: with the extension of a supported container, or without one.
QString readMoviePath(const QString& value, QString& target);
/// Path of a picture: without an extension, or with that of PNG.
QString readPicturePath(const QString& value, QString& target);

} // namespace lumavex
