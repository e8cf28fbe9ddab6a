// SPDX-License-Identifier: GPL-3.0-or-later
// Programs that record in real time and are killed: what they had appended must be in their files, but for 1.5 s.
#include "tests/unit/platform_movie/MovieTools.h"

#include "platform/movie/JpegMovieWriter.h"

#include <QCoreApplication>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <random>
#include <thread>

namespace lumavex {
namespace {

using namespace std::chrono_literals;

constexpr int kWidth = 640;
constexpr int kHeight = 480;

/// The killed program: appends frames at a rate for ever and prints, for each, the time at which it lies, in
/// milliseconds.
int record(const QString& path, int rate)
{
    const auto writer = createJpegMovieWriter(path, {kWidth, kHeight});
    if (!writer->startWriting().isEmpty())
        return 1;
    const CVPixelBufferRef pictures[] = {pixelBufferOf(testPicture(kWidth, kHeight, 0)),
                                         pixelBufferOf(testPicture(kWidth, kHeight, 1))};
    const auto start = std::chrono::steady_clock::now();
    for (std::int64_t frame = 0;; ++frame) {
        std::this_thread::sleep_until(start + frame * 1000000us / rate);
        const CMTime time = CMTimeMake(frame, rate);
        const bool accepted =
            frame % 3 == 2 ? repeatWhenReady(*writer, time) : appendWhenReady(*writer, pictures[frame % 2], time);
        if (!accepted)
            return 1;
        std::printf("%lld\n", static_cast<long long>(frame * 1000 / rate));
        std::fflush(stdout);
    }
}

TEST(KilledRecording, LacksAtMostTheLastSecondAndAHalf)
{
    constexpr int kPrograms = 12;
    const unsigned seed = std::random_device{}();
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    QTemporaryDir folder;
    for (int i = 0; i < kPrograms; i += 2) {
        struct Recording {
            QString path;
            pid_t process = -1;
        };
        std::array<Recording, 2> recordings; // two at a time, so that they do not wait for a processor
        for (Recording& recording : recordings) {
            recording.path = folder.filePath(QStringLiteral("%1.mov").arg(i + (&recording - recordings.data())));
            const int rate = &recording == recordings.data() ? 30 : 1 + i / 2;
            recording.process =
                startProgram({QCoreApplication::applicationFilePath(), QStringLiteral("--record"), recording.path,
                              QString::number(rate)},
                             recording.path + QStringLiteral(".out"), recording.path + QStringLiteral(".err"));
            ASSERT_GT(recording.process, 0);
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1600 + random() % 2000));
        for (Recording& recording : recordings) {
            SCOPED_TRACE(i + (&recording - recordings.data()));
            ASSERT_EQ(kill(recording.process, SIGKILL), 0);
            EXPECT_EQ(waitForProgram(recording.process), -1);
            const auto lines = contentOf(recording.path + QStringLiteral(".out")).trimmed().split('\n');
            const double appended = lines.back().toDouble() / 1000;
            ASSERT_GT(appended, 0.9) << "the program did not record";
            const auto packets = packetsOf(recording.path);
            ASSERT_FALSE(packets.empty());
            EXPECT_EQ(framesDecodedFrom(recording.path), int(packets.size()));
            const double kept = double(packets.back().time) / 90000;
            EXPECT_LE(appended - kept, 1.5);
            EXPECT_EQ(repairMovie(recording.path), QString());
            EXPECT_EQ(packetsOf(recording.path).size(), packets.size());
        }
    }
}

} // namespace
} // namespace lumavex

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() == 4 && arguments[1] == QStringLiteral("--record"))
        return lumavex::record(arguments[2], arguments[3].toInt());
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
