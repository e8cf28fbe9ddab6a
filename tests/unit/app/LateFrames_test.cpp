// SPDX-License-Identifier: GPL-3.0-or-later
// A machine that cannot make every frame: the movie, and the preview, show what there was time for.
#include "tests/unit/app/Program.h"

#include <QAction>

#include <algorithm>

using namespace lumavex;
using namespace std::chrono_literals;

namespace {

struct LateFrames : Program {
    enum class Screen { Moves, Rests };

    /// Thirty frames a second of a small screen, whose every grab takes that long and gives a picture of its own.
    void launchWithGrabsOf(Nanoseconds duration, Screen scene = Screen::Moves)
    {
        draw();
        ASSERT_TRUE(launch());
        app->recording.i_fps_of_Recording = 30;
        app->createRefreshTimers();
        app->capture.b_Screen_Include_Mouse = 0;
        app->setVideoOutputSize({64, 48});
        screen->setWork([this, duration, scene] {
            clock.time += duration;
            if (scene == Screen::Moves)
                draw();
        });
    }
    void draw()
    {
        QImage picture(64, 48, QImage::Format_RGB32);
        picture.fill(QColor::fromRgb(static_cast<QRgb>(++drawn_ * 0x010305)));
        screen->setScreen(picture);
        screen->setDesktop(picture); // which is all that a composite shows
    }
    void record(Nanoseconds duration)
    {
        window->btnRecord->trigger();
        ASSERT_EQ(app->recording.m_RecordStatus, Recording);
        drawn_ = 0;
        begun_ = clock.time;
        while (clock.time < begun_ + duration)
            loop->advance(begun_ + duration - clock.time);
    }
    std::int64_t newPictures() const
    {
        const auto appends = movie->appends();
        return std::ranges::count(appends, false, &FakeMovie::Append::repeated);
    }

    int drawn_ = 0;
    Nanoseconds begun_{0};
};

} // namespace

TEST_F(LateFrames, WhateverWasGrabbedIsSeenHoweverLongItTook)
{
    for (const Nanoseconds duration : {20ms, 45ms, 90ms, 700ms}) {
        launchWithGrabsOf(duration);
        record(6s);
        EXPECT_EQ(newPictures(), drawn_) << duration / 1ms;
        EXPECT_GT(newPictures(), std::min<std::int64_t>(179, 5800ms / duration) * 2 / 3) << duration / 1ms;
        const std::int64_t frames = app->recording.i_Frames_Appended;
        EXPECT_NEAR(double(frames), (clock.time - begun_) / 1s * 30.0, 21 + 30) << "the rate is the nominal one";
        EXPECT_EQ(app->recording.frameCounts.composed + app->recording.frameCounts.late, frames);
        window->btnStop->trigger();
    }
}

TEST_F(LateFrames, TheUserIsToldOnceThatHalfOfThePicturesAreMissingAndAgainWhenTheMovieIsSaved)
{
    launchWithGrabsOf(45ms);
    record(4s); // two of three frames are new
    EXPECT_EQ(message(), QString());

    launchWithGrabsOf(90ms, Screen::Rests);
    record(4s); // nothing is missed
    EXPECT_EQ(message(), QString());

    launchWithGrabsOf(90ms);
    app->capture.b_Lumavex_Invisible_To_Capture = true;
    record(1500ms); // one second may be a hiccup
    EXPECT_EQ(message(), QString());
    loop->advance(1s);
    EXPECT_TRUE(message().contains(QStringLiteral("11 of 30 frames"))) << qPrintable(message());
    EXPECT_TRUE(message().contains(QStringLiteral("own windows"))) << qPrintable(message());
    window->findChild<MessageStrip*>()->withdraw(MessageTopic::Rate);
    loop->advance(2s);
    EXPECT_EQ(message(), QString());
    dialogs->savePaths = {home.filePath(QStringLiteral("saved.mov"))};
    window->btnStop->trigger();
    EXPECT_TRUE(message().contains(QStringLiteral("in 4 of 5 seconds"))) << qPrintable(message());
}

TEST_F(LateFrames, ThePreviewShowsTheGrabOfItsOwnTick)
{
    launchWithGrabsOf(0ms);
    loop->advance(1s);
    ASSERT_TRUE(app->compose.windowPreview && app->compose.windowPreview->isVisible());
    for (int tick = 0; tick < 30; ++tick) {
        loop->advance(Nanoseconds(1s) / 30 + 2ns);
        ASSERT_TRUE(app->compose.previewShown);
        EXPECT_EQ(app->compose.previewShown->inputs.screen.imgScreenCapture.serial, app->capture.serialScreen) << tick;
    }
}

TEST_F(LateFrames, PauseAndStopTakeTheFramesThatAreDueAndLeaveAWindowThatIsDueToLater)
{
    launchWithGrabsOf(0ms);
    std::size_t framesWhenOpened = 0;
    const auto openSoon = [&] {
        framesWhenOpened = 0;
        loop->scheduleOnce({1, 10}, [&](const TimerFiring&) {
            framesWhenOpened = movie->appends().size();
            loop->advance(2s); // while the user looks at it
            EXPECT_EQ(movie->appends().size(), framesWhenOpened);
        });
    };
    record(1s);
    openSoon();
    clock.time += 500ms;
    window->btnPause->trigger();
    EXPECT_EQ(movie->appends().size(), 45U);
    EXPECT_EQ(framesWhenOpened, 0U);
    loop->advance(1ms);
    EXPECT_EQ(framesWhenOpened, 45U);

    window->btnRecord->trigger();
    loop->advance(505ms);
    openSoon();
    clock.time += 500ms;
    window->btnStop->trigger();
    loop->advance(1ms);
    EXPECT_EQ(framesWhenOpened, 75U);
}
