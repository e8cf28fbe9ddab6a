// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "media/sound/SoundFormat.h"

#include <QString>

#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace lumavex {

inline constexpr std::size_t kWavHeaderSize = 44;

/// The RIFF/WAVE header of a linear PCM file in the recorder's format. The size fields have 32 bits: from 4 GiB on
/// (after 6 hours and 45 minutes) they contain 0xFFFFFFFF, which readers interpret as "up to the end of the file".
std::array<std::uint8_t, kWavHeaderSize> wavHeader(std::uint64_t dataBytes);

/// A growing WAV file that is readable at every moment: each append ends with an up-to-date header. One thread.
class WavFile {
public:
    /// Creates the file with mode 0600 and replaces an existing one. See error().
    explicit WavFile(const QString& path);
    ~WavFile();
    WavFile(const WavFile&) = delete;
    WavFile& operator=(const WavFile&) = delete;

    /// Appends interleaved frames. On a full disk it keeps them, at most half a minute, and writes them with the next
    /// append that finds space; after any other error it writes nothing more. The existing content stays readable.
    void append(std::span<const std::int16_t> samples);
    /// True when frames wait for disk space; an append of nothing tries again.
    bool mayBeWrittenLater() const { return !unwritten_.empty(); }
    /// Removes everything after this many frames.
    void truncate(std::int64_t frames);
    /// Closes the file, which reports errors of the last writes at the latest.
    void close();
    /// Empty while everything is in the file; else the first error as text for the user.
    const QString& error() const { return error_; }
    /// Whole frames in the file.
    std::int64_t frames() const { return static_cast<std::int64_t>(dataBytes_ / kBytesPerSoundFrame); }

private:
    static constexpr std::size_t kMostUnwritten = std::size_t{30} * kSoundRate * kSoundChannels;

    void writeHeader();
    void fail(int errorNumber);

    QString path_;
    int file_ = -1;
    std::uint64_t dataBytes_ = 0;
    QString error_;
    std::vector<std::int16_t> unwritten_; ///< interleaved; whole frames
};

} // namespace lumavex
