// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QImage>
#include <QString>

#include <cstdint>

namespace lumavex {

/// The most pixels a picture file may have: a photograph of any camera, and no more memory than a machine has to spare.
inline constexpr std::int64_t kMostPicturePixels = 64 << 20;

/// Reads a picture a user chose: BMP, GIF (its first picture), JPEG, PNG or TIFF, told by what is in it and not by its
/// name, turned upright as the file says. Null when it is none of these, is damaged, or is larger than memory and
/// patience allow, which is found out before either is spent. Any thread.
QImage readPictureFile(const QString& path);

} // namespace lumavex
