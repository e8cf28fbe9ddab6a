// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/SettingsTable.h"
#include "app/Unattended.h"
#include "tests/unit/app/Program.h"

#include <QAction>
#include <QApplication>
#include <QLabel>
#include <QMenu>

using namespace lumavex;
using namespace std::chrono_literals;

TEST_F(Program, FirstRunWritesAllDefaultsInOrderAndALaterRunOnlyTheDefaultingOnes)
{
    ASSERT_TRUE(launch());
    EXPECT_EQ(store->texts.size(), 22);
    EXPECT_EQ(store->written.first(), settingKey("i_Top_Other_Windows"));
    EXPECT_EQ(store->written.at(16), settingKey("s_Camera_Name"));
    EXPECT_EQ(store->written.last(), settingKey("i_Position_Overlay"));
    EXPECT_EQ(store->texts.value(settingKey("i_Size_Overlay")), QStringLiteral("30"));
    EXPECT_EQ(app->compose.i_Position_Camera_Secondary, 8);
    EXPECT_TRUE(window->windowFlags().testFlag(Qt::WindowStaysOnTopHint));

    store->texts.clear();
    ASSERT_TRUE(launch());
    EXPECT_EQ(store->texts.keys(),
              QStringList({settingKey("b_Screen_Include_Mouse"), settingKey("b_Show_FollowCursor_How_To"),
                           settingKey("b_Show_Select_Region_How_To"), settingKey("b_Show_WindowExclusive_How_To"),
                           settingKey("i_Top_Other_Windows")}));
    EXPECT_EQ(app->recording.i_fps_of_Recording, 1); // a rate of 0 counts as 1
    EXPECT_EQ(app->compose.i_Video_Source_Primary, 1);
}

TEST_F(Program, StoredIndexesOutsideTheCatalogueUseTheDefaultsAndStayStored)
{
    ASSERT_TRUE(launch());
    store->texts[settingKey("index_size_Video_Output")] = QStringLiteral("77");
    store->texts[settingKey("index_size_Follow_Cursor")] = QStringLiteral("-4");
    store->texts[settingKey("index_size_Region")] = QStringLiteral("30");
    ASSERT_TRUE(launch());
    EXPECT_TRUE(window->menuitemVideoOutputScreenResolution->isChecked());
    EXPECT_TRUE(window->submenuFollowCursorFrame->actions().at(3)->isChecked());
    EXPECT_TRUE(window->submenuRegionFrame->actions().at(1)->isChecked());
    EXPECT_EQ(app->compose.size_Video_Output, (CGSize{640, 480}));
    EXPECT_EQ(store->texts.value(settingKey("index_size_Video_Output")), QStringLiteral("77"));
}

TEST_F(Program, SizeMenusOfferWhatFitsAndAClickStoresTheTag)
{
    ASSERT_TRUE(launch());
    const auto items = window->submenuVideoOutputFrame->actions();
    ASSERT_EQ(items.size(), 2 + 4); // 160x120, 320x240, 640x240, 640x480
    EXPECT_EQ(items[5]->text(), QStringLiteral("640x480"));
    EXPECT_TRUE(items[0]->isChecked());
    for (const int clicked : {5, 5, 0}) { // a second click must not uncheck
        items[clicked]->trigger();
        for (const int each : {0, 5})
            EXPECT_EQ(items[each]->isChecked(), each == clicked);
        EXPECT_EQ(store->texts.value(settingKey("index_size_Video_Output")), QString::number(clicked));
    }
}

TEST_F(Program, AScreenThatNoGrabShowsIsToldAndNotRecordedWithoutAUser)
{
    screen->setLimitation(QStringLiteral("Its windows cannot be recorded."));
    ASSERT_TRUE(launch());
    EXPECT_EQ(message(), screen->limitation());
    options.recordSeconds = 1;
    ASSERT_TRUE(launch());
    UnattendedRun(*app, *loop, streams, options, screen->limitation()).begin();
    EXPECT_EQ(app->recording.m_RecordStatus, Idle);
    app->compose.i_Video_Source_Primary = 2; // a camera alone
    UnattendedRun(*app, *loop, streams, options, screen->limitation()).begin();
    EXPECT_EQ(app->recording.m_RecordStatus, Recording);
}

TEST_F(Program, TheWindowMenuListsOtherWindowsOnceHoweverOftenItIsRefreshed)
{
    FakeScreenGrabber::Window own, other;
    own.description.ownerName = QStringLiteral("Lumavex");
    other.description.ownerName = QStringLiteral("R&D");
    other.description.ownerPid = 7;
    other.description.number = 42;
    own.picture = other.picture = QImage(10, 10, QImage::Format_RGB32);
    screen->setWindows({own, other});
    ASSERT_TRUE(launch());
    for (int i = 0; i < 3; ++i) {
        app->OnMenuRefreshListOfWindows();
        QApplication::processEvents();
    }
    const auto items = window->submenuWindows->actions();
    ASSERT_GE(items.size(), 3);
    EXPECT_EQ(app->capture.i_Menu_Windows_Count, items.size() - 2);
    EXPECT_EQ(items[2]->text(), QStringLiteral("R&&D (7) (42)"));
    EXPECT_TRUE(items[2]->isChecked());
    items[2]->trigger();
    EXPECT_EQ(app->capture.sWindowExclusive, QStringLiteral("R&D (7) (42)"));
}

TEST_F(Program, RecordingPauseAndResumeShareOneTimeForPictureSoundAndClock)
{
    options.framesPerSecond = 30;
    ASSERT_TRUE(launch());
    app->capture.m_i_Screen_Capture_FPS = 30;
    app->recording.i_fps_of_Recording = app->nominalRate();
    app->createRefreshTimers();
    loop->advance(700ms);
    window->btnRecord->trigger();
    ASSERT_EQ(app->recording.m_RecordStatus, Recording);
    EXPECT_FALSE(window->submenuVideoOutputFrame->isEnabled());
    const Nanoseconds origin = clock.time;

    Nanoseconds recorded{0};
    for (const auto& [record, pause] : {std::pair{1010ms, 777ms}, {333ms, 45ms}, {2222ms, 1500ms}}) {
        loop->advance(record);
        recorded += record;
        window->btnPause->trigger();
        loop->advance(pause);
        window->menuRecord->trigger();
    }
    loop->advance(445ms);
    recorded += 445ms;
    dialogs->savePaths = {home.filePath(QStringLiteral("saved.mov"))};
    window->btnStop->trigger();

    const auto appends = movie->appends();
    // 4.01 seconds: frames at 1/30 s, 2/30 s, ... 4 s.
    ASSERT_EQ(appends.size(), 120U);
    EXPECT_EQ(CMTimeCompare(appends.front().time, CMTimeMake(1, 30)), 0);
    EXPECT_EQ(CMTimeCompare(appends.back().time, CMTimeMake(4, 1)), 0);
    EXPECT_EQ(CMTimeCompare(movie->end(), CMTimeMake(121, 30)), 0);
    ASSERT_EQ(sound->recordings.size(), 1U);
    const Nanoseconds firstFrame = Nanoseconds(1s) / 30; // where picture and sound begin
    EXPECT_EQ(sound->recordings[0]->calls.front().time, origin + firstFrame);
    EXPECT_EQ(sound->recordings[0]->recorded, recorded - firstFrame);
    EXPECT_EQ(sound->recordings[0]->calls.size(), 8U);
}

TEST_F(Program, SoundBeginsWithTheFirstFrameWhateverComesBeforeIt)
{
    ASSERT_TRUE(launch());
    const Nanoseconds firstFrame = Nanoseconds(1s) / 30;
    window->btnRecord->trigger();
    loop->advance(20ms);
    window->btnPause->trigger();
    loop->advance(500ms);
    window->btnRecord->trigger();
    const Nanoseconds resumed = clock.time;
    loop->advance(100ms);
    window->btnStop->trigger();
    EXPECT_EQ(movie->appends().size(), 1U);
    EXPECT_EQ(sound->recordings[0]->calls[2].time, resumed - 20ms + firstFrame);
    EXPECT_EQ(sound->recordings[0]->recorded, 120ms - firstFrame);

    window->btnRecord->trigger();
    loop->advance(20ms);
    window->btnPause->trigger();
    const Nanoseconds stopped = clock.time;
    window->btnStop->trigger(); // before the first frame
    EXPECT_EQ(movie->appends().size(), 1U);
    EXPECT_EQ(sound->recordings[1]->calls[2].time, stopped);
    EXPECT_EQ(sound->recordings[1]->recorded, firstFrame) << "without sound it could not be joined";
}

TEST_F(Program, PausedAndIdleNothingIsAppendedAndControlsFollowTheState)
{
    ASSERT_TRUE(launch());
    const auto states = [&] {
        QString text;
        for (const QAction* action :
             {window->btnRecord, window->menuRecord, window->btnPause, window->menuPause, window->btnStop,
              window->menuStop, window->menuPreferences, window->toolbarPreferences})
            text += action->isEnabled() ? u'1' : u'0';
        return text + (window->textDurationTime->isHidden() ? QStringLiteral(" hidden") : QStringLiteral(" shown"));
    };
    EXPECT_EQ(states(), QStringLiteral("11000011 hidden"));
    loop->advance(1s);
    window->btnRecord->trigger();
    EXPECT_EQ(states(), QStringLiteral("00111100 shown"));
    loop->advance(2s);
    window->btnPause->trigger();
    EXPECT_EQ(states(), QStringLiteral("11001100 shown"));
    const auto frames = movie->appends().size();
    loop->advance(5s);
    EXPECT_EQ(movie->appends().size(), frames);
    EXPECT_EQ(window->textDurationTime->text(), QStringLiteral("00:00:02"));
    window->btnStop->trigger();
    EXPECT_EQ(states(), QStringLiteral("11000011 hidden"));
    EXPECT_EQ(window->textDurationTime->text(), QStringLiteral("00:00:00"));
    EXPECT_TRUE(window->submenuVideoOutputFrame->isEnabled());
}

TEST_F(Program, RecordingNeedsNoPreviewInSightAndWithoutBothTheScreenIsLeftAlone)
{
    ASSERT_TRUE(launch());
    app->compose.windowPreview.reset();
    platform.runLoop->invalidate(app->compose.timer_Open_Preview_Window);
    window->btnRecord->trigger();
    loop->advance(2500ms);
    EXPECT_EQ(movie->appends().size(), 3U); // 1/30 s, then every second
    EXPECT_FALSE(app->compose.windowPreview->isVisible());
    EXPECT_EQ(window->menuPreviewShowHide->text(), QStringLiteral("Show"));
    window->btnStop->trigger();

    paint(Qt::blue);
    const std::uint64_t before = app->capture.serialScreen;
    loop->advance(3s);
    EXPECT_EQ(app->capture.serialScreen, before);
    window->menuPreviewShowHide->trigger();
    loop->advance(1s);
    EXPECT_NE(app->capture.serialScreen, before);

    // Recording begins while the preview is about to come back in another shape.
    window->submenuVideoOutputFrame->actions().at(3)->trigger();
    ASSERT_EQ(app->compose.windowPreview, nullptr);
    window->btnRecord->trigger();
    EXPECT_TRUE(app->compose.windowPreview->isVisible());
}
