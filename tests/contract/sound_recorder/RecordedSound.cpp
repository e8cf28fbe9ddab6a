// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/contract/sound_recorder/RecordedSound.h"

#include <gtest/gtest.h>

#include <QFile>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <random>

namespace lumavex {
namespace {

constexpr qsizetype kHeaderSize = 44;
constexpr std::int64_t kPiece = 882;

template <typename T>
T valueAt(const QByteArray& bytes, qsizetype offset)
{
    T value{};
    std::memcpy(&value, bytes.constData() + offset, sizeof value);
    return value;
}

} // namespace

RecordedSound readWav(const QString& path)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
    const QByteArray bytes = file.readAll();
    RecordedSound sound;
    if (bytes.size() < kHeaderSize) {
        ADD_FAILURE() << "no header";
        return sound;
    }
    EXPECT_EQ(bytes.mid(0, 4), "RIFF");
    EXPECT_EQ(bytes.mid(8, 8), "WAVEfmt ");
    EXPECT_EQ(valueAt<std::uint16_t>(bytes, 20), 1);
    EXPECT_EQ(valueAt<std::uint16_t>(bytes, 22), 2);
    EXPECT_EQ(valueAt<std::uint32_t>(bytes, 24), 44100u);
    EXPECT_EQ(valueAt<std::uint16_t>(bytes, 34), 16);
    EXPECT_EQ(bytes.mid(36, 4), "data");
    sound.headerFrames = valueAt<std::uint32_t>(bytes, 40) / 4;
    sound.samples.resize(static_cast<std::size_t>(bytes.size() - kHeaderSize) / 2);
    std::memcpy(sound.samples.data(), bytes.constData() + kHeaderSize, sound.samples.size() * 2);
    return sound;
}

bool RecordedSound::isSilent(std::int64_t begin, std::int64_t end) const
{
    return std::all_of(samples.begin() + 2 * begin, samples.begin() + 2 * end, [](auto sample) { return sample == 0; });
}

std::vector<std::int16_t> noise(std::int64_t frames)
{
    std::minstd_rand random(1);
    std::vector<std::int16_t> samples(static_cast<std::size_t>(2 * frames));
    for (auto& sample : samples)
        sample = static_cast<std::int16_t>(static_cast<int>(random() % 16001) - 8000);
    return samples;
}

std::optional<std::int64_t> placeInPlayed(const RecordedSound& recorded, std::int64_t frame,
                                          const std::vector<std::int16_t>& played, std::int64_t expected,
                                          std::int64_t range)
{
    const auto playedFrames = static_cast<std::int64_t>(played.size() / 2);
    const std::int64_t first = std::max<std::int64_t>(expected - range, 0);
    const std::int64_t last = std::min(expected + range, playedFrames - kPiece);
    std::optional<std::int64_t> best;
    double bestMatch = 0.5;
    for (std::int64_t place = first; place <= last; ++place) {
        double product = 0;
        double energyA = 1;
        double energyB = 1;
        for (std::int64_t i = 0; i < 2 * kPiece; ++i) { // both channels
            const double a = recorded.samples[static_cast<std::size_t>(2 * frame + i)];
            const double b = played[static_cast<std::size_t>(2 * place + i)];
            product += a * b;
            energyA += a * a;
            energyB += b * b;
        }
        const double match = product / std::sqrt(energyA * energyB);
        if (match > bestMatch) {
            bestMatch = match;
            best = place;
        }
    }
    return best;
}

} // namespace lumavex
