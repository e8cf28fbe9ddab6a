// SPDX-License-Identifier: GPL-3.0-or-later
// Sound that is lost while recording and comes back, on PulseAudio and on PipeWire.
#include "tests/contract/sound_recorder/SoundFixture.h"

#include <gmock/gmock.h>

#include <csignal>

namespace lumavex {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;

class SoundReturnsTest : public SoundServerTroubleTest {
protected:
    void SetUp() override
    {
        SoundServerTroubleTest::SetUp();
        startServer(Devices::Sink);
    }

    /// Tolerance for a few milliseconds on a busy machine. PipeWire tells a player a clock that runs away from the
    /// sound by percents, so there the player does not know better than this when its sound is heard.
    double fewMs() const { return isPipeWire_ ? 200 : 20; }

    /// Covers the time from begin to end, with a little to spare at both.
    bool isSilentBetween(const RecordedSound& sound, Nanoseconds from, Nanoseconds begin, Nanoseconds end) const
    {
        const Nanoseconds spare = isPipeWire_ ? 200ms : slowness() * 50ms; // what takes a device away is a process
        return sound.isSilent(framesIn(begin + spare - from), framesIn(end - spare - from));
    }

    const std::vector<std::int16_t> played_ = noise(20 * kRate);
};

TEST_F(SoundReturnsTest, ServerThatDiesAndRestartsLeavesEverythingInItsPlace)
{
    auto player = std::make_unique<SoundPlayer>(played_);
    spin(300ms);
    const Nanoseconds from = record();
    spin(1500ms);
    const Nanoseconds firstHeard = player->steadyFirstFrameHeardAt();
    const Nanoseconds killed = now();
    killServer();
    player.reset();
    EXPECT_TRUE(spinUntilTrouble(2s));
    spin(1200ms);
    startServer(Devices::Sink);
    player = std::make_unique<SoundPlayer>(played_);
    const Nanoseconds back = now();
    spin(3500ms);
    const Nanoseconds secondHeard = player->steadyFirstFrameHeardAt();
    const RecordedSound sound = stopAndRead(from, 2s);

    EXPECT_THAT(eventKinds(), ElementsAre(SoundEvent::Lost, SoundEvent::Back));
    for (const Nanoseconds time : {from + 700ms, killed - 150ms})
        EXPECT_NEAR(lateness(sound, from, time, played_, firstHeard), 0, fewMs());
    EXPECT_TRUE(isSilentBetween(sound, from, killed, secondHeard));
    for (const Nanoseconds time : {back + 2s, back + 3s})
        EXPECT_NEAR(lateness(sound, from, time, played_, secondHeard), 0, fewMs());
}

TEST_F(SoundReturnsTest, ServerThatHangsForAWhileIsHeardAgain)
{
    const SoundPlayer player(played_);
    spin(300ms);
    const Nanoseconds from = record();
    spin(1s);
    const Nanoseconds stopped = now();
    ::kill(static_cast<pid_t>(server_.processId()), SIGSTOP);
    EXPECT_TRUE(spinUntilTrouble(5s));
    ::kill(static_cast<pid_t>(server_.processId()), SIGCONT);
    spin(2s);
    const RecordedSound sound = stopAndRead(from, 2s);
    EXPECT_THAT(eventKinds(), ElementsAre(SoundEvent::Lost, SoundEvent::Back));
    EXPECT_FALSE(sound.isSilent(framesIn(stopped - from) - kRate / 5, framesIn(stopped - from) - kRate / 10));
    EXPECT_FALSE(sound.isSilent(sound.frames() - kRate / 5, sound.frames()));
}

/// Two inputs, the monitors of sinks a and b, which play the same noise; a's is the current one.
class SoundSwitchTest : public SoundReturnsTest {
protected:
    void SetUp() override
    {
        SoundReturnsTest::SetUp();
        outerSource_ = QString::fromUtf8(ask({"get-default-source"}).trimmed());
        for (const QString& name : {QStringLiteral("a"), QStringLiteral("b")})
            control(
                {"load-module", "module-null-sink", "sink_name=" + name, "rate=44100", "channels=2", "norewinds=1"});
        if (isPipeWire_)
            spin(500ms); // a session manager still busy with new nodes forgets the defaults it is given
        makeCurrent("a.monitor");
        playerA_ = std::make_unique<SoundPlayer>(played_, "a");
        playerB_ = std::make_unique<SoundPlayer>(played_, "b");
        spin(300ms);
    }

    void TearDown() override
    {
        playerA_.reset();
        playerB_.reset();
        control({"set-default-source", outerSource_});
        SoundReturnsTest::TearDown();
    }

    void makeCurrent(const QString& source)
    {
        for (int i = 0; i < 20 && ask({"get-default-source"}).trimmed() != source.toUtf8(); ++i) {
            control({"set-default-source", source});
            spin(100ms);
        }
    }

    QString outerSource_;
    std::unique_ptr<SoundPlayer> playerA_;
    std::unique_ptr<SoundPlayer> playerB_;
};

TEST_F(SoundSwitchTest, AnotherInputMadeTheCurrentOneIsHeard)
{
    const Nanoseconds from = record();
    spin(1500ms);
    const Nanoseconds heardA = playerA_->steadyFirstFrameHeardAt();
    const Nanoseconds switched = now();
    makeCurrent("b.monitor");
    playerA_.reset();
    spin(3s);
    const Nanoseconds heardB = playerB_->steadyFirstFrameHeardAt();
    const RecordedSound sound = stopAndRead(from, 2s);
    EXPECT_THAT(eventKinds(), IsEmpty());
    EXPECT_NEAR(lateness(sound, from, switched - 200ms, played_, heardA), 0, fewMs());
    for (const Nanoseconds time : {switched + 1500ms, switched + 2500ms})
        EXPECT_NEAR(lateness(sound, from, time, played_, heardB), 0, fewMs());
}

/// PipeWire's servers share their devices, so the last one cannot be taken away there.
class SoundServerTest : public SoundReturnsTest {
protected:
    void SetUp() override { SoundServerTroubleTest::SetUp(); }
};

TEST_F(SoundServerTest, OnlyInputIsUnpluggedAndPluggedInAgain)
{
    startServer(Devices::None);
    const QStringList sink{"load-module", "module-null-sink", "sink_name=only",
                           "rate=44100",  "channels=2",       "norewinds=1"};
    const QByteArray module = ask(sink).trimmed();
    const auto played = noise(10 * kRate);
    auto player = std::make_unique<SoundPlayer>(played);
    const Nanoseconds from = record();
    spin(1200ms);
    const Nanoseconds unplugged = now();
    control({"unload-module", QString::fromUtf8(module)});
    const Nanoseconds gone = now(); // the server had some time to carry it out
    EXPECT_TRUE(spinUntilTrouble(2s));
    player.reset();
    spin(2s);
    control(sink);
    player = std::make_unique<SoundPlayer>(played);
    const Nanoseconds back = now();
    spin(2500ms);
    const Nanoseconds heard = player->steadyFirstFrameHeardAt();
    const RecordedSound sound = stopAndRead(from, 2s);
    EXPECT_THAT(eventKinds(), ElementsAre(SoundEvent::Lost, SoundEvent::Back));
    EXPECT_FALSE(sound.isSilent(framesIn(unplugged - from) - kRate / 5, framesIn(unplugged - from)));
    EXPECT_TRUE(isSilentBetween(sound, from, gone, heard));
    EXPECT_NEAR(lateness(sound, from, back + 2s, played, heard), 0, fewMs());
}

TEST_F(SoundServerTest, TenSecondsOfSilenceAreToldWithTheInputsNameAndMuteState)
{
    startServer(Devices::Sink);
    decltype(events_) later;
    const auto second =
        createGstSoundRecorder(folder_.filePath("second.wav"),
                               [&later](SoundEvent event, const QString& name) { later.emplace_back(event, name); });
    record();
    spin(500ms);
    recorder_->pause(now());
    spin(1500ms);
    const Nanoseconds resumed = now();
    recorder_->record(resumed);
    spin(2s);
    second->record(now());

    while (events_.empty() && now() - resumed < 15s)
        spin(20ms);
    EXPECT_GE(now() - resumed, 9500ms) << "paused silence does not count";
    EXPECT_THAT(events_, ElementsAre(Pair(SoundEvent::Silent, QStringLiteral("Monitor of Null Output"))));
    control({"set-source-mute", "out.monitor", "1"});
    while (later.empty() && now() - resumed < 18s)
        spin(20ms);
    EXPECT_THAT(later, ElementsAre(Pair(SoundEvent::Muted, QStringLiteral("Monitor of Null Output"))));
    EXPECT_EQ(events_.size(), 1) << "once a recording";

    control({"set-source-mute", "out.monitor", "0"});
    const SoundPlayer player(std::vector<std::int16_t>(std::size_t{4} * kRate, 8000));
    while (later.size() < 2 && now() - resumed < 24s)
        spin(20ms);
    EXPECT_THAT(events_.back(), Pair(SoundEvent::Heard, QString()));
    EXPECT_THAT(later.back(), Pair(SoundEvent::Heard, QString()));
}

TEST_F(SoundServerTest, PeaksAreThoseOfWhatIsHeard)
{
    startServer(Devices::Sink);
    std::vector<std::int16_t> played;
    for (int i = 0; i < 5 * kRate; ++i) {
        played.push_back(i % 100 < 50 ? 16384 : -16384);
        played.push_back(i % 100 < 50 ? 1638 : -1638);
    }
    const SoundPlayer player(played);
    record();
    spin(800ms);
    recorder_->takePeaks();
    spin(200ms);
    const SoundPeaks peaks = recorder_->takePeaks();
    EXPECT_NEAR(peaks.left, 0.5, 0.01);
    EXPECT_NEAR(peaks.right, 0.05, 0.001);
    EXPECT_EQ(recorder_->takePeaks().left, 0) << "taken";
}

} // namespace
} // namespace lumavex
