// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/ProcessorUsage.h"
#include "app/Window_More_Information.h"
#include "tests/unit/app/Program.h"

#include <QAction>
#include <QDir>
#include <QPlainTextEdit>
#include <QScrollBar>
#include <QSignalSpy>

#include <array>
#include <climits>

using namespace lumavex;
using namespace std::chrono_literals;

namespace {

using Ticks = std::vector<std::int32_t>;

/// Counters of these processors, the first of them busy, after a while.
Ticks ticksOf(int processors, int busyOnes)
{
    Ticks ticks;
    for (int i = 0; i < processors; ++i)
        for (const std::int32_t count : i < busyOnes ? std::array{150, 90, 0, 60} : std::array{0, 0, 300, 0})
            ticks.push_back(count);
    return ticks;
}

/// The program on a machine whose load the test makes.
struct ProcessorLoadTest : Program {
    void spend(const Ticks& ticks)
    {
        for (std::size_t i = 0; i < ticks.size(); ++i)
            load->counters[i] = static_cast<std::int32_t>(static_cast<std::uint32_t>(load->counters[i])
                                                          + static_cast<std::uint32_t>(ticks[i]));
        loop->advance(3s);
    }
    bool isWindowShown() const
    {
        const auto* information = app->application.p_Window_Can_Not_Record.get();
        return information && information->isVisible();
    }
};

} // namespace

TEST(ProcessorUsage, IsTheSumOfBusyFractionsOverHalfTheProcessors)
{
    const auto usage = [](int processors, int busyOnes) {
        const Ticks before(static_cast<std::size_t>(4 * processors), 0);
        return processorUsage(ticksOf(processors, busyOnes), before, static_cast<std::uint32_t>(processors));
    };
    EXPECT_EQ(usage(1, 1), 2.0F);
    EXPECT_EQ(usage(3, 1), 1.0F) << "half of three processors is one";
    EXPECT_EQ(usage(8, 8), 2.0F);
    // Counters that wrap, and a sample with fewer processors than counted at start-up.
    EXPECT_EQ(processorUsage({INT32_MIN + 9, 0, 10, 0}, {INT32_MAX, 0, 0, 0}, 2), 0.5F);
    // A processor that came only after the previous sample.
    EXPECT_EQ(processorUsage({10, 0, 10, 0, 5, 0, 15, 0}, {0, 0, 0, 0}, 2), 0.75F);
    // No tick at all since the sample before.
    EXPECT_EQ(processorUsage({5, 5, 5, 5}, {5, 5, 5, 5}, 1), 0.0F);
}

TEST_F(ProcessorLoadTest, EachMeasurementAloneShowsOrClosesTheWindow)
{
    const struct {
        int processors, busyBefore, busy;
        float figure;
        bool shown;
    } cases[] = {{8, 0, 4, 1.0F, true}, {8, 8, 3, 0.75F, false}, {1, 0, 1, 2.0F, true}, {1, 1, 0, 0.0F, false}};
    for (const auto& [processors, busyBefore, busy, figure, shown] : cases) {
        SCOPED_TRACE(testing::Message() << busy << " of " << processors << " busy");
        // The counters pass their largest value between the samples.
        load->counters.assign(static_cast<std::size_t>(4 * processors), INT32_MAX - 310);
        ASSERT_TRUE(launch());
        spend(ticksOf(processors, busyBefore));
        spend(ticksOf(processors, busy));
        EXPECT_EQ(app->application.fCPUUsage, figure);
        EXPECT_EQ(isWindowShown(), shown);
    }
}

TEST_F(ProcessorLoadTest, TheFirstMeasurementIsOfTheTimeSinceTheMachineStarted)
{
    load->counters = {900, 0, 100, 0, 900, 0, 100, 0};
    ASSERT_TRUE(launch());
    loop->advance(2999ms);
    EXPECT_EQ(app->application.fCPUUsage, 0.0F);
    loop->advance(1ms);
    EXPECT_FLOAT_EQ(app->application.fCPUUsage, 1.8F);
    EXPECT_TRUE(isWindowShown());

    ASSERT_TRUE(launch());
    window->btnRecord->trigger();
    EXPECT_EQ(app->recording.m_RecordStatus, Recording) << "nothing is known of the load yet";
}

TEST_F(ProcessorLoadTest, AnOverloadedMachineIsRefusedUntilTheLoadEnds)
{
    ASSERT_TRUE(launch());
    spend(ticksOf(2, 0));
    spend(ticksOf(2, 1));
    const auto* text = app->application.p_Window_Can_Not_Record->findChild<QPlainTextEdit*>();
    QApplication::processEvents();
    EXPECT_EQ(text->verticalScrollBar()->maximum(), 0) << "it is read without scrolling";
    EXPECT_EQ(text->horizontalScrollBar()->maximum(), 0);
    app->application.p_Window_Can_Not_Record->close();
    window->btnRecord->trigger();
    EXPECT_EQ(app->recording.m_RecordStatus, Idle);
    EXPECT_TRUE(QDir(videoFolder()).isEmpty());
    EXPECT_TRUE(isWindowShown());
    const auto* open = app->application.p_Window_Can_Not_Record.get();
    spend(ticksOf(2, 1));
    EXPECT_EQ(app->application.p_Window_Can_Not_Record.get(), open) << "a window that is open stays";
    spend(ticksOf(2, 0));
    EXPECT_FALSE(isWindowShown());
    window->btnRecord->trigger();
    EXPECT_EQ(app->recording.m_RecordStatus, Recording);
    // A recording under way goes on; the window tells.
    spend(ticksOf(2, 1));
    EXPECT_TRUE(isWindowShown());
    EXPECT_EQ(app->recording.m_RecordStatus, Recording);
}

TEST_F(ProcessorLoadTest, AnUnattendedRecordingIsRefusedInWordsUnlessTheLoadIsIgnored)
{
    options.recordSeconds = 1;
    ASSERT_TRUE(launch());
    spend(ticksOf(2, 0));
    spend(ticksOf(2, 1));
    QSignalSpy finished(app.get(), &AppDelegate::recordingFinished);
    app->OnToolbarRecord();
    EXPECT_EQ(app->recording.m_RecordStatus, Idle);
    ASSERT_EQ(finished.size(), 1);
    EXPECT_TRUE(finished[0][0].toString().isEmpty());
    EXPECT_TRUE(finished[0][1].toString().contains(QLatin1String("--ignore-load")));
    EXPECT_EQ(app->application.p_Window_Can_Not_Record, nullptr) << "nobody would read it";

    options.load = LaunchOptions::Load::Ignore;
    ASSERT_TRUE(launch());
    spend(ticksOf(2, 0));
    spend(ticksOf(2, 2));
    EXPECT_EQ(app->application.fCPUUsage, 2.0F);
    app->OnToolbarRecord();
    EXPECT_EQ(app->recording.m_RecordStatus, Recording);
}

TEST_F(ProcessorLoadTest, WithoutCountersTheProgramEnds)
{
    struct RefusingLoad final : ProcessorLoad {
        std::uint32_t processorCount() const override { return 1; }
        std::optional<std::vector<std::int32_t>> sample() override { return std::nullopt; }
    };
    platform.processorLoad = std::make_unique<RefusingLoad>();
    ASSERT_TRUE(launch());
    EXPECT_EXIT(loop->advance(3s), testing::ExitedWithCode(0), "Error!");
}
