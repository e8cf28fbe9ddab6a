// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "media/sound/GstSoundRecorder.h"
#include "tests/contract/sound_recorder/RecordedSound.h"
#include "tests/contract/sound_recorder/SoundPlayer.h"
#include "tests/support/Slowness.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>
#include <QTimer>

#include <chrono>
#include <cmath>
#include <cstdio>

namespace lumavex {

using namespace std::chrono_literals;

inline constexpr std::int64_t kRate = 44100;

inline Nanoseconds now()
{
    return std::chrono::steady_clock::now().time_since_epoch();
}

inline std::int64_t framesIn(Nanoseconds time)
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
        return createGstSoundRecorder(path, [this](SoundEvent event, const QString& detail) {
            EXPECT_EQ(QThread::currentThread(), QCoreApplication::instance()->thread());
            events_.emplace_back(event, detail);
            if (event == SoundEvent::Lost)
                troubles_.append(detail);
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
        for (const Nanoseconds end = now() + slowness() * limit; troubles_.isEmpty() && now() < end;)
            spin(20ms);
        return !troubles_.isEmpty();
    }

    std::vector<SoundEvent> eventKinds() const
    {
        std::vector<SoundEvent> kinds;
        for (const auto& [kind, detail] : events_)
            kinds.push_back(kind);
        return kinds;
    }

    /// By how many milliseconds the piece of noise heard at the time stands late in the file. Fails the test when it is
    /// not there.
    static double lateness(const RecordedSound& sound, Nanoseconds from, Nanoseconds time,
                           const std::vector<std::int16_t>& played, Nanoseconds firstHeardAt)
    {
        const std::int64_t expected = framesIn(time - firstHeardAt);
        const auto place = placeInPlayed(sound, framesIn(time - from), played, expected, kRate / 5);
        if (!place) {
            ADD_FAILURE() << "nothing like what was played at " << (time - from) / 1ms << " ms";
            return 1e9;
        }
        const double late = static_cast<double>(expected - *place) * 1000 / kRate;
        std::printf("sound at %lld ms is %.2f ms late in the file\n", static_cast<long long>((time - from) / 1ms),
                    late);
        return late;
    }

    QTemporaryDir folder_;
    QString path_;
    std::unique_ptr<SoundRecorder> recorder_;
    std::vector<std::pair<SoundEvent, QString>> events_;
    QStringList troubles_; ///< of the losses among them
};

/// The same with a server that the test starts, stops and kills.
class SoundServerTroubleTest : public SoundRecorderTest {
protected:
    enum class Devices { None, Sink };

    void SetUp() override
    {
        SoundRecorderTest::SetUp();
        outer_ = qgetenv("PULSE_SERVER");
        isPipeWire_ = ask({"info"}).contains("PipeWire");
        socket_ = folder_.filePath("native");
        qputenv("PULSE_SERVER", QFile::encodeName("unix:" + socket_));
    }

    void TearDown() override
    {
        recorder_.reset();
        killServer();
        qputenv("PULSE_SERVER", outer_);
    }

    /// PipeWire's is another server of PulseAudio's protocol beside the launcher's, with the launcher's sink.
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
        if (isPipeWire_) {
            QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
            environment.insert("PULSE_RUNTIME_PATH", folder_.path());
            server_.setProcessEnvironment(environment);
            server_.start("pipewire-pulse", {});
        } else {
            server_.start("pulseaudio", arguments);
        }
        for (int i = 0; i < 100; ++i) {
            if (!ask({"info"}).isEmpty())
                return;
            spin(20ms);
        }
        FAIL() << "no server: " << server_.readAll().toStdString();
    }

    /// Output of pactl; nothing when it fails.
    static QByteArray ask(const QStringList& command)
    {
        QProcess pactl;
        pactl.start("pactl", command);
        const bool answered =
            pactl.waitForFinished(5000) && pactl.exitStatus() == QProcess::NormalExit && pactl.exitCode() == 0;
        return answered ? pactl.readAllStandardOutput() : QByteArray();
    }

    static void control(const QStringList& command)
    {
        QProcess pactl;
        pactl.start("pactl", command);
        EXPECT_TRUE(pactl.waitForFinished(5000) && pactl.exitCode() == 0)
            << command.join(' ').toStdString() << pactl.readAllStandardError().toStdString();
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

    bool isPipeWire_ = false;
    QByteArray outer_;
    QString socket_;
    QProcess server_;
};

} // namespace lumavex
