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

    /// Appends interleaved frames. On a full disk they are kept, half a minute of them at most, and written with the
    /// next append that finds room; after any other error nothing more is written. What is there stays readable.
    void append(std::span<const std::int16_t> samples);
    /// Whether there are frames that wait for room; an append of nothing tries again.
    bool mayBeWrittenLater() const { return !unwritten_.empty(); }
    /// Takes away what is beyond so many frames.
    void truncate(std::int64_t frames);
    /// Closes the file; an error of the last writes is found here at the latest.
    void close();
    /// Empty while all is in the file, or the first thing that went wrong, in the user's words.
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
