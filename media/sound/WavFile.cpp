// SPDX-License-Identifier: GPL-3.0-or-later
#include "media/sound/WavFile.h"

#include "platform/PlatformText.h"

#include <QFile>

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace lumavex {
namespace {

static_assert(std::endian::native == std::endian::little, "samples are written in memory order");

constexpr std::uint64_t kRiffOverhead = kWavHeaderSize - 8; // the part of the RIFF size besides the data

template <typename T>
std::uint8_t* put(std::uint8_t* to, T value)
{
    std::memcpy(to, &value, sizeof value);
    return to + sizeof value;
}

std::uint8_t* putName(std::uint8_t* to, const char* name)
{
    std::memcpy(to, name, 4);
    return to + 4;
}

/// Writes all bytes at the offset. Returns 0 or errno; `done` is the number of bytes written.
int writeAll(int file, const std::uint8_t* bytes, std::size_t size, std::uint64_t offset, std::size_t& done)
{
    done = 0;
    while (done < size) {
        const ssize_t written = ::pwrite(file, bytes + done, size - done, static_cast<off_t>(offset + done));
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return written == 0 ? ENOSPC : errno;
        done += static_cast<std::size_t>(written);
    }
    return 0;
}

} // namespace

std::array<std::uint8_t, kWavHeaderSize> wavHeader(std::uint64_t dataBytes)
{
    constexpr std::uint64_t unknown = 0xFFFFFFFF;
    const bool fits = dataBytes + kRiffOverhead < unknown;
    std::array<std::uint8_t, kWavHeaderSize> header{};
    std::uint8_t* at = putName(header.data(), "RIFF");
    at = put(at, static_cast<std::uint32_t>(fits ? dataBytes + kRiffOverhead : unknown));
    at = putName(at, "WAVE");
    at = putName(at, "fmt ");
    at = put(at, std::uint32_t{16}); // size of the fields up to "data"
    at = put(at, std::uint16_t{1});  // WAVE_FORMAT_PCM
    at = put(at, static_cast<std::uint16_t>(kSoundChannels));
    at = put(at, static_cast<std::uint32_t>(kSoundRate));
    at = put(at, static_cast<std::uint32_t>(kSoundRate * kBytesPerSoundFrame));
    at = put(at, static_cast<std::uint16_t>(kBytesPerSoundFrame));
    at = put(at, std::uint16_t{16}); // bits per sample
    at = putName(at, "data");
    put(at, static_cast<std::uint32_t>(fits ? dataBytes : unknown));
    return header;
}

WavFile::WavFile(const QString& path) : path_(path)
{
    const QByteArray name = QFile::encodeName(path);
    // Creates a new file instead of truncating an old one, so that the mode is ours and a link is not followed.
    ::unlink(name.constData());
    file_ = ::open(name.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (file_ < 0)
        fail(errno);
    else
        writeHeader();
}

WavFile::~WavFile()
{
    close();
}

void WavFile::append(std::span<const std::int16_t> samples)
{
    if (file_ < 0 || (!error_.isEmpty() && unwritten_.empty()))
        return;
    unwritten_.insert(unwritten_.end(), samples.begin(), samples.end());
    if (unwritten_.empty())
        return;
    std::size_t done = 0;
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(unwritten_.data());
    const std::size_t size = unwritten_.size() * sizeof(std::int16_t);
    const int trouble = writeAll(file_, bytes, size, kWavHeaderSize + dataBytes_, done);
    done -= done % kBytesPerSoundFrame;
    dataBytes_ += done;
    unwritten_.erase(unwritten_.begin(), unwritten_.begin() + static_cast<std::ptrdiff_t>(done / sizeof(std::int16_t)));
    if (!trouble)
        error_.clear();
    writeHeader();
    if (!trouble)
        return;
    fail(trouble);
    const bool mayPass = trouble == ENOSPC || trouble == EDQUOT;
    if (!mayPass || unwritten_.size() > kMostUnwritten)
        unwritten_.clear(); // sound after a gap would be misplaced, so nothing more is written
}

void WavFile::truncate(std::int64_t frames)
{
    if (file_ < 0 || frames >= this->frames())
        return;
    dataBytes_ = static_cast<std::uint64_t>(frames) * kBytesPerSoundFrame;
    writeHeader();
    if (::ftruncate(file_, static_cast<off_t>(kWavHeaderSize + dataBytes_)) != 0)
        fail(errno);
}

void WavFile::close()
{
    if (file_ < 0)
        return;
    // A torn frame that cannot be removed stays after the data, where readers skip it.
    if (!error_.isEmpty() && ::ftruncate(file_, static_cast<off_t>(kWavHeaderSize + dataBytes_)) != 0)
        fail(errno);
    if (::close(file_) != 0)
        fail(errno);
    file_ = -1;
}

void WavFile::writeHeader()
{
    const auto header = wavHeader(dataBytes_);
    std::size_t done = 0;
    if (const int trouble = writeAll(file_, header.data(), header.size(), 0, done))
        fail(trouble);
}

void WavFile::fail(int errorNumber)
{
    if (error_.isEmpty())
        error_ = PlatformText::tr("The sound file %1 could not be written: %2.")
                     .arg(path_, QString::fromLocal8Bit(std::strerror(errorNumber)));
}

} // namespace lumavex
