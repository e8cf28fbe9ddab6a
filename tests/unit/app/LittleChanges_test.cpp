// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/unit/app/Program.h"

#include <QAction>
#include <QPainter>

#include <gmock/gmock.h>

#include <chrono>
#include <random>

// Changes that are reported on the way from the screen to the movie.

namespace {

using namespace lumavex;
using namespace std::chrono_literals;

struct LittleChanges : Program {
    std::mt19937 random{11};
    QImage desk{640, 480, QImage::Format_RGB32};

    int below(int limit) { return int(random() % unsigned(limit)); }
    void scribble()
    {
        QPainter(&desk).fillRect(below(640), below(480), 1 + below(30), 1 + below(20), QColor::fromRgb(random()));
        screen->setScreen(desk);
    }
    /// Records at ten frames a second, the screen as it is and without its cursor.
    void record()
    {
        app->capture.m_i_Screen_Capture_FPS = 10;
        app->recording.i_fps_of_Recording = app->nominalRate();
        app->createRefreshTimers();
        app->capture.b_Screen_Include_Mouse = 0;
        app->setVideoOutputSize({640, 480});
        window->btnRecord->trigger();
        ASSERT_EQ(app->recording.m_RecordStatus, Recording);
    }
};

TEST_F(LittleChanges, TheMovieIsWhatWasOnTheScreenAndIsToldOnlyTheRowsThatChanged)
{
    desk.fill(Qt::darkGreen);
    screen->setScreen(desk);
    ASSERT_TRUE(launch());
    loop->advance(500ms);
    for (int recordings = 0; recordings < 2; ++recordings) { // nothing is known from one to the next
        record();
        loop->advance(40ms);
        std::vector<QImage> expected{desk};
        for (int frame = 0; frame < 60; ++frame) {
            if (below(4))
                scribble();
            if (!below(10))
                app->OnToolbarTakePicture();
            if (!below(12)) {
                window->btnPause->trigger();
                for (int unseen = below(12); unseen > 0; --unseen) {
                    scribble();
                    if (below(2))
                        app->OnToolbarTakePicture(); // composed, but not appended
                    loop->advance(100ms);
                }
                window->btnRecord->trigger();
            }
            loop->advance(100ms);
            expected.push_back(desk);
        }
        window->btnStop->trigger();
        const auto appends = movie->appends();
        ASSERT_EQ(appends.size(), expected.size());
        QImage shown;
        int few = 0;
        for (std::size_t i = 0; i < appends.size(); ++i) {
            if (!appends[i].repeated)
                shown = appends[i].picture.convertToFormat(QImage::Format_RGB32);
            ASSERT_EQ(shown, expected[i].convertToFormat(QImage::Format_RGB32)) << recordings << ' ' << i;
            few += appends[i].rows > 0 && appends[i].rows < 50;
        }
        EXPECT_EQ(appends.front().rows, 480);
        EXPECT_GT(few, 25);
    }
}

TEST_F(LittleChanges, WhatIsNotOnTheFrameIsARepetition)
{
    ASSERT_TRUE(launch());
    loop->advance(500ms);
    app->capture.b_Screen_Include_Mouse = 0;
    app->capture.i_Type_Screen_Capture = Region;
    app->capture.rect_Screen_Region = {0, 240, 320, 240}; // the upper left quarter
    record();
    loop->advance(240ms);
    const auto before = movie->appends().size();
    desk = QImage(640, 480, QImage::Format_RGB32);
    desk.fill(Qt::red);
    QPainter(&desk).fillRect(500, 400, 20, 20, Qt::blue);
    screen->setScreen(desk);
    loop->advance(200ms);
    const auto appends = movie->appends();
    ASSERT_EQ(appends.size(), before + 2);
    EXPECT_TRUE(appends[before].repeated);
    EXPECT_TRUE(appends[before + 1].repeated);
}

TEST_F(LittleChanges, WindowsAreEnumeratedOnlyWhenTheyChanged)
{
    ASSERT_TRUE(launch());
    loop->advance(2s);
    const int before = screen->windowEnumerations();
    for (int i = 0; i < 20; ++i) {
        scribble();
        loop->advance(100ms);
    }
    EXPECT_EQ(screen->windowEnumerations(), before);
    FakeScreenGrabber::Window other;
    other.description.ownerName = QStringLiteral("Editor");
    other.description.number = 42;
    other.picture = QImage(10, 10, QImage::Format_RGB32);
    screen->setWindows({other});
    loop->advance(2s);
    EXPECT_EQ(screen->windowEnumerations(), before + 1);
    ASSERT_EQ(app->capture.arrayController.size(), 2);
    EXPECT_EQ(app->capture.arrayWindowsMinusLumavex, app->capture.arrayController);
}

} // namespace
