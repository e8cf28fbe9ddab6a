// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/PictureFile.h"

#include <QFile>
#include <QFileInfo>
#include <QImageReader>

#include <algorithm>
#include <array>

namespace lumavex {

namespace {

/// The largest file of that many pixels: uncompressed, with some room for headers and metadata.
constexpr qint64 kMostFileBytes = kMostPicturePixels * 4 + (16 << 20);

/// Leaves out other formats that Qt reads: a drawing may refer to other files, and each further decoder is one more
/// that may be faulty.
bool isPictureFormat(const QByteArray& format)
{
    constexpr std::array known{"bmp", "gif", "jpeg", "jpg", "png", "tif", "tiff"};
    return std::any_of(known.begin(), known.end(), [&format](const char* name) { return format == name; });
}

} // namespace

QImage readPictureFile(const QString& path)
{
    // Reading a pipe or a device might never end.
    const QFileInfo about(path);
    if (!about.isFile() || about.size() > kMostFileBytes)
        return {};
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    QImageReader reader(&file);
    reader.setDecideFormatFromContent(true);
    reader.setAutoTransform(true);
    const QSize size = isPictureFormat(reader.format()) ? reader.size() : QSize();
    if (size.isEmpty() || std::int64_t(size.width()) * size.height() > kMostPicturePixels)
        return {};
    return reader.read();
}

} // namespace lumavex
