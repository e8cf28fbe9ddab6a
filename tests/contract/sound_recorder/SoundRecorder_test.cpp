// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/gstreamer/GstSoundRecorder.h"
#include "tests/contract/sound_recorder/RecordedSound.h"
#include "tests/contract/sound_recorder/SoundPlayer.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>
#include <QTimer>

#include <cmath>
#include <csignal>
#include <numbers>

namespace lumavex {
namespace {

using namespace std::chrono_literals;

constexpr std::int64_t kRate = 44100;

Nanoseconds now()
{
    return std::chrono::steady_clock::now().time_since_epoch();
}

std::int64_t framesIn(Nanoseconds time)
{
    return std::llround(static_cast<double>(time.count()) * kRate / 1e9);
}

/// A recorder of a file of its own, on the sound server that PULSE_SERVER names.
class SoundRecorderTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(folder_.isValid());
        recorder_ = make(folder_.filePath("audio.wav"));
    }

    std::unique_ptr<SoundRecorder> make(const QString& path)
    {
        path_ = path;
        return createGstSoundRecorder(path, [this](const QString& reason) {
            EXPECT_EQ(QThread::currentThread(), QCoreApplication::instance()->thread());
            troubles_.append(reason);
        });
    }

    Nanoseconds record()
    {
        const Nanoseconds from = now();
        recorder_->record(from);
        EXPECT_LT(now() - from, 1s) << "record does not wait for the device";
        return from;
    }

    /// Runs the event loop.
    static void spin(Nanoseconds time)
    {
        QEventLoop loop;
        QTimer::singleShot(std::chrono::duration_cast<std::chrono::milliseconds>(time), Qt::PreciseTimer, &loop,
                           &QEventLoop::quit);
        loop.exec();
    }

    bool spinUntilTrouble(Nanoseconds limit)
    {
        for (const Nanoseconds end = now() + limit; troubles_.isEmpty() && now() < end;)
            spin(20ms);
        return !troubles_.isEmpty();
    }

    QTemporaryDir folder_;
    QString path_;
    std::unique_ptr<SoundRecorder> recorder_;
    QStringList troubles_;
};

TEST_F(SoundRecorderTest, KeepsFrequenciesAndChannels)
{
    std::vector<std::int16_t> tones;
    for (int i = 0; i < 4 * kRate; ++i) {
        for (const double hertz : {440.0, 1000.0})
            tones.push_back(static_cast<std::int16_t>(10000 * std::sin(2 * std::numbers::pi * hertz * i / kRate)));
    }
    const SoundPlayer player(tones);
    const Nanoseconds from = record();
    spin(2300ms);
    const Nanoseconds at = now();
    EXPECT_EQ(recorder_->stop(at), QString());

    const RecordedSound sound = readWav(path_);
    EXPECT_EQ(sound.headerFrames, framesIn(at - from));
    ASSERT_EQ(sound.frames(), framesIn(at - from));
    // The device may take a moment to start; from half a second on there are no gaps.
    for (std::int64_t begin = kRate / 2; begin + kRate / 2 <= sound.frames(); begin += kRate / 2) {
        EXPECT_GT(sound.shareAt(440, 0, begin, begin + kRate / 2), 0.95) << begin;
        EXPECT_GT(sound.shareAt(1000, 1, begin, begin + kRate / 2), 0.95) << begin;
    }
    EXPECT_TRUE(troubles_.isEmpty()) << troubles_.join(' ').toStdString();
}

TEST_F(SoundRecorderTest, PutsSoundWhereItWasHeard)
{
    const Nanoseconds from = record();
    spin(700ms);
    const auto played = noise(4 * kRate);
    const SoundPlayer player(played);
    spin(1500ms);
    const Nanoseconds heardAt = player.firstFrameHeardAt();
    const Nanoseconds at = now();
    EXPECT_EQ(recorder_->stop(at), QString());

    const RecordedSound sound = readWav(path_);
    ASSERT_EQ(sound.frames(), framesIn(at - from));
    const std::int64_t onset = framesIn(heardAt - from);
    EXPECT_TRUE(sound.isSilent(0, onset - kRate / 50));
    for (const Nanoseconds after : {30ms, 500ms, 1200ms}) {
        const std::int64_t expected = framesIn(after);
        const auto place = placeInPlayed(sound, onset + expected, played, expected, kRate / 5);
        ASSERT_TRUE(place) << "nothing like the sound played near " << after.count();
        const double lateMs = static_cast<double>(expected - *place) * 1000 / kRate;
        RecordProperty("late_us_after_" + std::to_string(after / 1ms) + "_ms", static_cast<int>(lateMs * 1000));
        std::printf("sound %lld ms after its onset is %.2f ms late in the file\n", static_cast<long long>(after / 1ms),
                    lateMs);
        EXPECT_NEAR(lateMs, 0, 20);
    }
}

TEST_F(SoundRecorderTest, PausesCutExactly)
{
    const auto played = noise(8 * kRate);
    const SoundPlayer player(played);
    spin(300ms);
    std::vector<std::pair<Nanoseconds, Nanoseconds>> intervals;
    for (const Nanoseconds pause : {300ms, 470ms, 0ms}) {
        const Nanoseconds from = record();
        spin(700ms);
        intervals.emplace_back(from, now());
        recorder_->pause(intervals.back().second);
        spin(pause);
    }
    const Nanoseconds heardAt = player.firstFrameHeardAt();
    EXPECT_EQ(recorder_->stop(now()), QString());

    const RecordedSound sound = readWav(path_);
    Nanoseconds recorded = 0ns;
    std::optional<std::int64_t> late;
    for (const auto& [from, at] : intervals) {
        // The first interval may begin before the device does. Elsewhere the sound is there from the first frame on.
        const Nanoseconds skip = recorded == 0ns ? 500ms : 0ns;
        for (const Nanoseconds into : {skip, at - from - 25ms}) {
            const std::int64_t expected = framesIn(from + into - heardAt);
            const auto place = placeInPlayed(sound, framesIn(recorded + into), played, expected, kRate / 10);
            ASSERT_TRUE(place);
            // Whatever the latency is reported to be, it must be the same on both sides of every cut, but for the
            // slow correction of drift.
            late = late.value_or(expected - *place);
            EXPECT_NEAR(expected - *place, *late, kRate / 200);
        }
        recorded += at - from;
    }
    EXPECT_EQ(sound.frames(), framesIn(recorded));
    EXPECT_EQ(sound.headerFrames, framesIn(recorded));
}

TEST_F(SoundRecorderTest, IsReadableAllTheTime)
{
    const Nanoseconds from = record();
    spin(1500ms);
    for (int i = 0; i < 5; ++i) {
        spin(130ms);
        const std::int64_t passed = framesIn(now() - from);
        const RecordedSound sound = readWav(path_);
        EXPECT_GE(sound.frames(), passed - 3 * kRate / 2);
        EXPECT_LE(sound.headerFrames, sound.frames());
        EXPECT_GE(sound.headerFrames, sound.frames() - kRate);
    }
    EXPECT_EQ(QFile::permissions(path_) & ~(QFile::ReadUser | QFile::WriteUser), QFile::ReadOwner | QFile::WriteOwner);
    recorder_->stop(now());
}

TEST_F(SoundRecorderTest, PathThatCannotBeWrittenIsToldByBothWays)
{
    recorder_ = make(folder_.filePath("none/audio.wav"));
    record();
    EXPECT_TRUE(spinUntilTrouble(2s));
    EXPECT_NE(recorder_->stop(now()), QString());
    spin(50ms);
    ASSERT_EQ(troubles_.size(), 1);
    EXPECT_TRUE(troubles_.front().contains(path_));
}

/// The same with a server that the test starts, stops and kills.
class SoundServerTroubleTest : public SoundRecorderTest {
protected:
    enum class Devices { None, Sink };

    void SetUp() override
    {
        SoundRecorderTest::SetUp();
        outer_ = qgetenv("PULSE_SERVER");
        socket_ = folder_.filePath("pulse.sock");
        qputenv("PULSE_SERVER", QFile::encodeName("unix:" + socket_));
    }

    void TearDown() override
    {
        recorder_.reset();
        killServer();
        qputenv("PULSE_SERVER", outer_);
    }

    void startServer(Devices devices)
    {
        QStringList arguments{"-n",
                              "--daemonize=no",
                              "--exit-idle-time=-1",
                              "--use-pid-file=no",
                              "-L",
                              "module-native-protocol-unix auth-anonymous=1 socket=" + socket_};
        if (devices == Devices::Sink)
            arguments << "-L"
                      << "module-null-sink sink_name=out rate=44100 channels=2 norewinds=1";
        server_.setProcessChannelMode(QProcess::MergedChannels);
        server_.start("pulseaudio", arguments);
        QProcess asked;
        for (int i = 0; i < 100; ++i) {
            asked.start("pactl", {"info"});
            asked.waitForFinished(2000);
            if (asked.exitStatus() == QProcess::NormalExit && asked.exitCode() == 0)
                return;
            spin(20ms);
        }
        FAIL() << "no server: " << server_.readAll().toStdString();
    }

    void killServer()
    {
        server_.kill();
        server_.waitForFinished(3000);
        QFile::remove(socket_);
    }

    /// Stops in good time, with a file of the recorded length; gives it back.
    RecordedSound stopAndRead(Nanoseconds from, Nanoseconds limit)
    {
        const Nanoseconds at = now();
        EXPECT_EQ(recorder_->stop(at), QString());
        EXPECT_LT(now() - at, limit);
        const RecordedSound sound = readWav(path_);
        EXPECT_EQ(sound.frames(), framesIn(at - from));
        EXPECT_EQ(sound.headerFrames, sound.frames());
        return sound;
    }

    QByteArray outer_;
    QString socket_;
    QProcess server_;
};

TEST_F(SoundServerTroubleTest, NoServerGivesSilence)
{
    const Nanoseconds from = record();
    EXPECT_TRUE(spinUntilTrouble(1s));
    spin(2500ms); // attempts go on, in silence
    const RecordedSound sound = stopAndRead(from, 2s);
    EXPECT_TRUE(sound.isSilent(0, sound.frames()));
    EXPECT_EQ(troubles_.size(), 1) << troubles_.join(' ').toStdString();
}

TEST_F(SoundServerTroubleTest, NoInputDeviceIsSaidSo)
{
    startServer(Devices::None);
    const Nanoseconds from = record();
    EXPECT_TRUE(spinUntilTrouble(2s));
    const RecordedSound sound = stopAndRead(from, 2s);
    EXPECT_TRUE(sound.isSilent(0, sound.frames()));
    ASSERT_EQ(troubles_.size(), 1);
    EXPECT_TRUE(troubles_.front().contains("no sound input")) << troubles_.front().toStdString();
}

TEST_F(SoundServerTroubleTest, SoundComesBackWithTheServer)
{
    startServer(Devices::Sink);
    const auto played = noise(10 * kRate);
    auto player = std::make_unique<SoundPlayer>(played);
    const Nanoseconds from = record();
    spin(1s);
    killServer();
    const Nanoseconds killed = now();
    EXPECT_TRUE(spinUntilTrouble(2s));
    player.reset();
    startServer(Devices::Sink);
    const Nanoseconds back = now();
    player = std::make_unique<SoundPlayer>(played);
    spin(2500ms);
    const RecordedSound sound = stopAndRead(from, 2s);
    EXPECT_EQ(troubles_.size(), 1) << troubles_.join(' ').toStdString();

    EXPECT_FALSE(sound.isSilent(framesIn(killed - from) - kRate / 3, framesIn(killed - from)));
    EXPECT_TRUE(sound.isSilent(framesIn(killed - from) + kRate / 10, framesIn(back - from)));
    EXPECT_FALSE(sound.isSilent(framesIn(back - from) + 2 * kRate, sound.frames()));
}

TEST_F(SoundServerTroubleTest, ServerThatHangsHoldsUpNobody)
{
    startServer(Devices::Sink);
    ::kill(static_cast<pid_t>(server_.processId()), SIGSTOP);
    const Nanoseconds from = record();
    EXPECT_TRUE(spinUntilTrouble(5s));
    const RecordedSound sound = stopAndRead(from, 2s);
    EXPECT_TRUE(sound.isSilent(0, sound.frames()));
    EXPECT_EQ(troubles_.size(), 1);
}

TEST_F(SoundServerTroubleTest, DeviceIsLetGoAtStop)
{
    startServer(Devices::Sink);
    record();
    spin(500ms);
    QProcess asked;
    const auto recordingClients = [&asked] {
        asked.start("pactl", {"list", "short", "source-outputs"});
        asked.waitForFinished(2000);
        return asked.readAllStandardOutput().count('\n');
    };
    EXPECT_EQ(recordingClients(), 1);
    recorder_->stop(now());
    EXPECT_EQ(recordingClients(), 0);
}

} // namespace
} // namespace lumavex
