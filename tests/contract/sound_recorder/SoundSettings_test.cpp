// SPDX-License-Identifier: GPL-3.0-or-later
#include "media/sound/SoundServer.h"
#include "tests/contract/sound_recorder/SoundFixture.h"

#include <csignal>

namespace lumavex {
namespace {

/// A server's answers about its input; ALSA is left out, since the machine may have a card.
using SoundSettingsTest = SoundServerTroubleTest;

TEST_F(SoundSettingsTest, InputIsNamedInTheServersWordsWithItsMuteState)
{
    startServer(Devices::Sink);
    auto input = askSoundServer(2s);
    ASSERT_TRUE(input);
    EXPECT_EQ(input->name.toStdString(), "Monitor of Null Output");
    EXPECT_FALSE(input->isMuted);

    control({"load-module", "module-remap-source", "master=out.monitor", "source_name=mic",
             "source_properties=device.description=Räusper-Mikrofon"});
    control({"set-default-source", "mic"});
    control({"set-source-mute", "mic", "1"});
    input = askSoundServer(2s);
    ASSERT_TRUE(input);
    EXPECT_EQ(input->name.toStdString(), "Räusper-Mikrofon");
    EXPECT_TRUE(input->isMuted);
}

TEST_F(SoundSettingsTest, NothingIsNamedWhereThereIsNothing)
{
    EXPECT_FALSE(askSoundServer(2s)) << "no server";
    startServer(Devices::None);
    EXPECT_FALSE(askSoundServer(2s)) << "no input";
}

TEST_F(SoundSettingsTest, ServerThatHangsIsNotWaitedFor)
{
    startServer(Devices::Sink);
    ::kill(static_cast<pid_t>(server_.processId()), SIGSTOP);
    const Nanoseconds begin = now();
    EXPECT_FALSE(askSoundServer(300ms));
    EXPECT_GE(now() - begin, 300ms);
    EXPECT_LT(now() - begin, 3s) << "the bound is the caller's, on a busy machine too";
}

} // namespace
} // namespace lumavex
