// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/LevelMeter.h"
#include "app/SettingsTable.h"
#include "tests/unit/app/Program.h"

#include <gmock/gmock.h>

#include <QTest>

using namespace lumavex;
using testing::ElementsAre;

constexpr int somePolls = 250; // ms

namespace {

/// Counts how often it is drawn.
struct Draws final : QObject {
    explicit Draws(QWidget& widget) { widget.installEventFilter(this); }
    bool eventFilter(QObject*, QEvent* event) override
    {
        count += event->type() == QEvent::UpdateRequest || event->type() == QEvent::Paint ? 1 : 0;
        return false;
    }
    int count = 0;
};

} // namespace

TEST(LevelMeter, RisesAtOnceAndSinksSlowlyToNothing)
{
    LevelMeter meter;
    meter.take({1, 0.01F}, 0.1);
    EXPECT_THAT(meter.lit(), ElementsAre(12, 4));
    EXPECT_EQ(meter.accessibleDescription(), QStringLiteral("Sound arrives"));
    meter.take({}, 0.5);
    EXPECT_THAT(meter.lit(), ElementsAre(10, 2)) << "10 dB in half a second";
    meter.take({0.9F, 0}, 0.5);
    EXPECT_THAT(meter.lit(), ElementsAre(12, 0));
    meter.take({}, 3);
    EXPECT_THAT(meter.lit(), ElementsAre(0, 0));
    EXPECT_EQ(meter.accessibleDescription(), QStringLiteral("No sound"));
}

TEST(LevelMeter, IsDrawnAgainOnlyWhenASegmentChanges)
{
    LevelMeter meter;
    meter.take({0.5F, 0.5F}, 0.1);
    meter.show();
    ASSERT_TRUE(QTest::qWaitFor([&meter] { return meter.isVisible(); }));
    QCoreApplication::processEvents();
    Draws draws(meter);
    for (const float peak : {0.5F, 0.49F, 0.47F, 0.5F}) {
        meter.take({peak, 0.5F}, 0.1);
        QCoreApplication::processEvents();
    }
    EXPECT_EQ(draws.count, 0);
    meter.take({1, 1}, 0.1);
    EXPECT_TRUE(QTest::qWaitFor([&draws] { return draws.count > 0; }));
}

TEST_F(Program, ASoundLibraryThatIsSlowToComeDoesNotDelayWhatIsRecorded)
{
    platform.createSoundRecorder = [this, make = platform.createSoundRecorder](const QString& path, auto onEvent) {
        clock.time += std::chrono::milliseconds(300);
        return make(path, onEvent);
    };
    store->texts.insert(settingKey("i_Screen_Capture_FPS"), QStringLiteral("30"));
    ASSERT_TRUE(launch());
    app->recording.b_Record_Include_Audio = 1;
    app->OnToolbarRecord();
    ASSERT_EQ(sound->recordings.size(), 1U);
    const Nanoseconds firstFrame = clock.time + Nanoseconds(std::chrono::seconds(1)) / 30;
    EXPECT_EQ(sound->recordings.front()->calls.front().time, firstFrame);
    EXPECT_EQ(loop->nextDeadline(app->application.timerVideoRefresh), firstFrame);
    app->OnToolbarStop();
}

struct SoundProgram : Program {
    void SetUp() override
    {
        store->texts.insert(settingKey("b_Record_Include_Audio"), QStringLiteral("1"));
        ASSERT_TRUE(launch());
        app->recording.b_Record_Include_Audio = 1;
        app->OnToolbarRecord();
        ASSERT_EQ(sound->recordings.size(), 1u);
    }
    FakeSound::Recording& heard() { return *sound->recordings.back(); }
};

TEST_F(SoundProgram, MeterShowsWhatTheRecorderHearsWhileItRecords)
{
    EXPECT_TRUE(window->levelMeter->isVisible());
    heard().peaks = {0.5F, 0.1F};
    EXPECT_TRUE(QTest::qWaitFor([this] { return window->levelMeter->lit()[0] == 11; }));
    app->OnToolbarPause();
    EXPECT_TRUE(window->levelMeter->isVisible());
    EXPECT_EQ(window->levelMeter->lit()[0], 0);
    heard().peaks = {0.5F, 0.1F};
    QTest::qWait(somePolls);
    EXPECT_EQ(heard().peaks.left, 0.5F) << "not asked while paused";
    app->OnToolbarRecord();
    heard().peaks = {0.09F, 0.09F};
    EXPECT_TRUE(QTest::qWaitFor([this] { return window->levelMeter->lit()[0] == 8; }));
    app->OnToolbarStop();
    EXPECT_FALSE(window->levelMeter->isVisible());
}

TEST_F(SoundProgram, EventsAreToldWithTheInputsName)
{
    heard().onEvent(SoundEvent::Lost, QStringLiteral("The server ended."));
    EXPECT_EQ(message(), QStringLiteral("The recording goes on without sound. The server ended."));
    heard().onEvent(SoundEvent::Back, {});
    EXPECT_TRUE(message().contains(QStringLiteral("The sound is back.")));
    heard().onEvent(SoundEvent::Silent, QStringLiteral("Headset"));
    EXPECT_TRUE(message().startsWith(QStringLiteral("No sound arrives from \u201cHeadset\u201d. Check")));
    heard().onEvent(SoundEvent::Muted, {});
    EXPECT_TRUE(message().startsWith(QStringLiteral("No sound arrives from the sound input, because it is muted.")));
    heard().onEvent(SoundEvent::Heard, {});
    EXPECT_EQ(message(), QString());
    heard().onEvent(SoundEvent::Lost, QStringLiteral("The server ended."));
    loop->advance(std::chrono::seconds(3));
    heard().onEvent(SoundEvent::Back, {});
    app->OnToolbarStop();
    EXPECT_EQ(message(), QString()) << "the recording was discarded";
}
