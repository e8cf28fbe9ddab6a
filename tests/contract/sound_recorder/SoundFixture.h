// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

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

#include <chrono>
#include <cmath>

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

    QByteArray outer_;
    QString socket_;
    QProcess server_;
};

} // namespace lumavex
