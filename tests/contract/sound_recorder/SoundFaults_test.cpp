// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/contract/sound_recorder/SoundFixture.h"

#include <csignal>

namespace lumavex {
namespace {

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
