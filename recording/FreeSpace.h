// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <cstdint>
#include <optional>

namespace lumavex {

enum class SoundInRecording { Absent, Present };

/// Size of a running recording in bytes.
struct RecordingSize {
    std::int64_t movieBytes = 0;
    std::int64_t soundBytes = 0;
    std::int64_t frames = 0;
    SoundInRecording sound = SoundInRecording::Absent;
};

/// Kept free in addition to the space for finishing: some seconds of frames of any size, and room for the desktop.
inline constexpr std::int64_t kReserveBytes = std::int64_t{128} << 20;

/// Bytes that the user may still write on the file system of the path. std::nullopt when the path does not exist or the
/// file system does not report it. Any thread.
std::optional<std::int64_t> freeBytes(const QString& path);

/// Free bytes below which a recording must end, so that enough space remains to finish it: the movie's frame table,
/// with sound the joined copy of everything recorded so far, and the reserve.
std::int64_t bytesToFinish(const RecordingSize& recording);

/// True when the recording whose files are in `folder` must end now. False when the free space is unknown.
bool mustEndRecording(const QString& folder, const RecordingSize& recording);

} // namespace lumavex
