// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QImage>
#include <QString>

#include <cstdint>

namespace lumavex {

/// Maximum number of pixels of a picture file: a photograph of any camera, and no more memory than a machine can spare.
inline constexpr std::int64_t kMostPicturePixels = 64 << 20;

/// Reads a picture that the user chose: BMP, GIF (first picture), JPEG, PNG or TIFF, recognised by its content and not
/// by its name, rotated as the file specifies. Null when the file is none of these, is damaged, or is too large, which
/// is checked before it is decoded. Any thread.
QImage readPictureFile(const QString& path);

} // namespace lumavex
