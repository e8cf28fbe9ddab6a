// SPDX-License-Identifier: GPL-3.0-or-later
#include "recording/RecordedFiles.h"

#include "recording/RecordingText.h"

#include <QFile>
#include <QFileInfo>
#include <QtEndian>

#include <algorithm>
#include <optional>
#include <unistd.h>

namespace lumavex {

namespace {

struct Box {
    QByteArray type;
    std::int64_t headerBytes = 8;
    std::int64_t bytes = 0; ///< including the header
};

/// The box at the file's position; std::nullopt when no valid box is there.
std::optional<Box> readBox(QFile& file, std::int64_t bytesLeft)
{
    const QByteArray header = file.read(8);
    const auto isLetter = [](char c) { return c >= ' ' && c <= '~'; };
    if (header.size() < 8 || !std::all_of(header.begin() + 4, header.end(), isLetter))
        return {}; // truncated, or zeros left by a power failure
    Box box{header.mid(4), 8, qFromBigEndian<quint32>(header.constData())};
    if (box.bytes == 0) { // the box extends to the end of the file
        box.bytes = bytesLeft;
    } else if (box.bytes == 1) {
        const QByteArray large = file.read(8);
        if (large.size() < 8)
            return {};
        box.headerBytes = 16;
        box.bytes = qFromBigEndian<qint64>(large.constData());
    }
    if (box.bytes < box.headerBytes)
        return {};
    return box;
}

/// Positions of the lengths in a WAV file and their correct values.
struct SoundLayout {
    std::int64_t dataAt = 0; ///< position of the first sample
    quint32 riffBytes = 0;   ///< value in the header
    quint32 dataBytes = 0;   ///< value in the header
    qint64 blockAlign = 4;
    quint32 samplesPerSecond = 44100;
};

std::optional<SoundLayout> readSoundLayout(QFile& file)
{
    const QByteArray riff = file.read(12);
    if (riff.size() < 12 || !riff.startsWith("RIFF") || riff.mid(8) != "WAVE")
        return {};
    SoundLayout layout;
    layout.riffBytes = qFromLittleEndian<quint32>(riff.constData() + 4);
    for (;;) {
        const QByteArray chunk = file.read(8);
        if (chunk.size() < 8)
            return {};
        const quint32 bytes = qFromLittleEndian<quint32>(chunk.constData() + 4);
        if (chunk.startsWith("data")) {
            layout.dataAt = file.pos();
            layout.dataBytes = bytes;
            return layout;
        }
        const std::int64_t next = file.pos() + bytes + (bytes & 1U);
        if (chunk.startsWith("fmt ") && bytes >= 16) {
            const QByteArray format = file.read(16);
            if (format.size() < 16)
                return {};
            layout.samplesPerSecond = std::max(1U, qFromLittleEndian<quint32>(format.constData() + 4));
            layout.blockAlign = std::max<qint64>(1, qFromLittleEndian<quint16>(format.constData() + 12));
        }
        if (!file.seek(next))
            return {};
    }
}

/// A length as stored in a WAV header; the largest value means "up to the end" in files of more than 4 GiB.
quint32 asHeaderLength(std::int64_t bytes)
{
    return static_cast<quint32>(std::min<std::int64_t>(bytes, 0xFFFFFFFF));
}

bool writeLength(QFile& file, std::int64_t at, quint32 length)
{
    char bytes[4];
    qToLittleEndian(length, bytes);
    return file.seek(at) && file.write(bytes, sizeof bytes) == sizeof bytes;
}

} // namespace

bool movieHoldsFrames(const QString& path)
{
    const QFileInfo about(path);
    QFile file(path);
    if (!about.isFile() || about.size() == 0)
        return false;
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        return true;
    const std::int64_t size = file.size();
    std::int64_t position = 0;
    while (position < size) {
        const std::optional<Box> box = file.seek(position) ? readBox(file, size - position) : std::nullopt;
        if (!box || (position == 0 && box->type != "ftyp"))
            return true;
        if (box->type == "moof" || (box->type == "mdat" && std::min(box->bytes, size - position) > box->headerBytes))
            return true;
        // A truncated box ends the walk; its content was never complete.
        position = box->bytes > size - position ? size : position + box->bytes;
    }
    return false;
}

bool soundHoldsSamples(const QString& path)
{
    return soundSeconds(path).value_or(0) > 0;
}

std::optional<double> soundSeconds(const QString& path)
{
    const QFileInfo about(path);
    QFile file(path);
    if (about.isSymLink() || !about.isFile() || !file.open(QIODevice::ReadOnly))
        return {};
    const std::optional<SoundLayout> layout = readSoundLayout(file);
    if (!layout)
        return {};
    const std::int64_t samples = std::max<std::int64_t>(0, file.size() - layout->dataAt) / layout->blockAlign;
    return static_cast<double>(samples) / layout->samplesPerSecond;
}

QString repairSoundHeader(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadWrite | QIODevice::Unbuffered | QIODevice::ExistingOnly))
        return RecordingText::tr("The sound file “%1” cannot be opened: %2.").arg(path, file.errorString());
    const std::optional<SoundLayout> layout = readSoundLayout(file);
    if (!layout)
        return RecordingText::tr("The sound file “%1” has no readable header.").arg(path);

    const std::int64_t held = file.size() - layout->dataAt;
    const std::int64_t data = held - held % layout->blockAlign;
    // When the outer length covers the file, other chunks follow the samples and the header is correct.
    const bool complete = layout->dataBytes <= held && layout->riffBytes + std::int64_t{8} >= layout->dataAt + held;
    if (complete)
        return {};
    if (!writeLength(file, layout->dataAt - 4, asHeaderLength(data))
        || !writeLength(file, 4, asHeaderLength(layout->dataAt - 8 + data)) || ::fsync(file.handle()) != 0)
        return RecordingText::tr("The header of the sound file “%1” cannot be repaired: %2.")
            .arg(path, file.errorString());
    return {};
}

} // namespace lumavex
