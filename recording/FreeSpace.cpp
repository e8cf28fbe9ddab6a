// SPDX-License-Identifier: GPL-3.0-or-later
#include "recording/FreeSpace.h"

#include <QFile>

#include <sys/statvfs.h>

namespace lumavex {

namespace {

/// Worst-case share of one frame in the sample tables (ISO/IEC 14496-12): duration 8, size 4, chunk 12, chunk offset 8.
constexpr std::int64_t kTableBytesPerFrame = 32;

} // namespace

std::optional<std::int64_t> freeBytes(const QString& path)
{
    struct statvfs about = {};
    if (::statvfs(QFile::encodeName(path).constData(), &about) != 0 || about.f_blocks == 0)
        return {};
    return static_cast<std::int64_t>(about.f_bavail) * static_cast<std::int64_t>(about.f_frsize);
}

std::int64_t bytesToFinish(const RecordingSize& recording)
{
    const std::int64_t tables = recording.frames * kTableBytesPerFrame;
    if (recording.sound == SoundInRecording::Absent)
        return tables + kReserveBytes;
    // The encoder's file has its own tables of about the same size.
    return tables + recording.movieBytes + recording.soundBytes + tables + kReserveBytes;
}

bool mustEndRecording(const QString& folder, const RecordingSize& recording)
{
    const std::optional<std::int64_t> free = freeBytes(folder);
    return free && *free < bytesToFinish(recording);
}

} // namespace lumavex
