// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <cstdint>
#include <optional>

namespace lumavex {

enum class SoundInRecording { Absent, Present };

/// What a running recording takes up, in bytes.
struct RecordingSize {
    std::int64_t movieBytes = 0;
    std::int64_t soundBytes = 0;
    std::int64_t frames = 0;
    SoundInRecording sound = SoundInRecording::Absent;
};

/// Kept free beside what finishing needs: some seconds of frames at any size, and room for the desktop to go on.
inline constexpr std::int64_t kReserveBytes = std::int64_t{128} << 20;

/// Bytes the user may still write on the file system that holds the path. Nothing when the path does not exist or the
/// file system does not tell. Any thread.
std::optional<std::int64_t> freeBytes(const QString& path);

/// Free bytes below which a recording must be ended, so that finishing it still finds the space it needs: the movie's
/// frame table, with sound the joined copy of all that is recorded so far, and the reserve.
std::int64_t bytesToFinish(const RecordingSize& recording);

/// Whether the recording whose files lie in `folder` must be ended now. Never when the free space is not known.
bool mustEndRecording(const QString& folder, const RecordingSize& recording);

} // namespace lumavex
