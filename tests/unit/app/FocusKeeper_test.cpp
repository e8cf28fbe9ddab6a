// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/unit/app/Program.h"

#include <QAction>
#include <QTest>
#include <QToolBar>

using namespace lumavex;

TEST_F(Program, TheSpaceBarGoesOnWithTheRecordingAndNeverPressesWhatComesNext)
{
    ASSERT_TRUE(launch());
    ASSERT_TRUE(QTest::qWaitForWindowActive(window.get()));
    const auto button = [this](QAction* action) { return window->toolBar->widgetForAction(action); };
    const auto press = [this] {
        if (QWidget* focused = window->focusWidget()) // which has the focus once the window is active again
            QTest::keyClick(focused, Qt::Key_Space);
    };
    const auto status = [this] { return app->recording.m_RecordStatus; };
    app->compose.i_Show_Secondary = 1; // which Screen Only would change
    button(window->btnRecord)->setFocus(Qt::TabFocusReason);
    for (const RecordStatus expected : {Recording, Paused, Recording}) {
        press();
        EXPECT_EQ(status(), expected);
    }
    button(window->btnStop)->setFocus(Qt::TabFocusReason);
    press();
    EXPECT_EQ(status(), Idle);
    EXPECT_EQ(window->focusWidget(), button(window->btnRecord));
    window->menuRecord->trigger(); // as Ctrl+R
    EXPECT_EQ(window->focusWidget(), button(window->btnPause));
    window->menuStop->trigger();

    button(window->toolbarFollowCursor)->setFocus(Qt::TabFocusReason);
    press();
    press();
    EXPECT_EQ(app->capture.i_Type_Screen_Capture, FollowCursor) << "the next button is Region";
    button(window->toolbarPreferences)->setFocus(Qt::TabFocusReason);
    window->menuRecord->trigger();
    EXPECT_EQ(window->focusWidget(), nullptr);
    EXPECT_EQ(app->compose.i_Show_Secondary, 1);
    window->menuStop->trigger();
}
