// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/gstreamer/SoundFormat.h"

#include <QString>

#include <array>
#include <cstdint>
#include <span>

namespace lumavex {

inline constexpr std::size_t kWavHeaderSize = 44;

/// The RIFF/WAVE header of a file of linear PCM in the recorder's format. The size fields have 32 bits: from 4 GiB on
/// (after 6 hours and 45 minutes) they say 0xFFFFFFFF, which readers take for "up to the end of the file".
std::array<std::uint8_t, kWavHeaderSize> wavHeader(std::uint64_t dataBytes);

/// A WAV file that grows and can be read at every moment: each append ends with an up-to-date header. One thread.
class WavFile {
public:
    /// Creates the file, mode 0600; an existing one is replaced. See error().
    explicit WavFile(const QString& path);
    ~WavFile();
    WavFile(const WavFile&) = delete;
    WavFile& operator=(const WavFile&) = delete;

    /// Appends interleaved frames. After an error nothing more is written; what is there stays readable.
    void append(std::span<const std::int16_t> samples);
    /// Takes away what is beyond so many frames.
    void truncate(std::int64_t frames);
    /// Closes the file; an error of the last writes is found here at the latest.
    void close();
    /// Empty, or the first thing that went wrong, in the user's words.
    const QString& error() const { return error_; }
    /// Whole frames in the file.
    std::int64_t frames() const { return static_cast<std::int64_t>(dataBytes_ / kBytesPerSoundFrame); }

private:
    void writeHeader();
    void fail(int errorNumber);

    QString path_;
    int file_ = -1;
    std::uint64_t dataBytes_ = 0;
    QString error_;
};

} // namespace lumavex
