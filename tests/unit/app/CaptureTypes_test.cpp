// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/SettingsTable.h"
#include "capture/ModeGuide.h"
#include "tests/unit/app/SourceControls.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QMenu>
#include <QTimer>

using namespace lumavex;
using namespace std::chrono_literals;

namespace {

struct CaptureTypes : SourceControls {};

} // namespace

TEST_F(CaptureTypes, FollowCursorAndRegionTakeTheSizesOfTheirMenus)
{
    ASSERT_TRUE(start(Camera::None));
    give(&Window_Main::toolbarFollowCursor);
    EXPECT_EQ(app->capture.size_Follow_Cursor, (CGSize{640, 480}));
    give(&Window_Main::toolbarRegion);
    EXPECT_EQ(app->capture.size_Region, (CGSize{320, 240}));
    EXPECT_EQ(app->capture.rect_Screen_Region, (CGRect{160, 120, 320, 240}));

    window->submenuFollowCursorFrame->actions().at(0)->trigger();
    EXPECT_EQ(app->capture.size_Follow_Cursor, (CGSize{160, 120}));
    window->submenuRegionFrame->actions().at(0)->trigger();
    EXPECT_EQ(app->capture.rect_Screen_Region, (CGRect{160, 120, 320, 240})) << "until the selector opens anew";
    give(&Window_Main::toolbarRegion);
    EXPECT_EQ(app->capture.rect_Screen_Region, (CGRect{240, 180, 160, 120}));
}

TEST_F(CaptureTypes, GuidesAreShownUntilTheirBoxIsTicked)
{
    const struct {
        Control control;
        const char* setting;
        std::int64_t ApplicationState::*shown;
        int type;
    } guides[] = {
        {&Window_Main::menuFollowCursor, "b_Show_FollowCursor_How_To", &ApplicationState::b_Show_FollowCursor_How_To,
         1},
        {&Window_Main::menuRegion, "b_Show_Select_Region_How_To", &ApplicationState::b_Show_Select_Region_How_To, 2},
        {&Window_Main::menuWindowExclusive, "b_Show_WindowExclusive_How_To",
         &ApplicationState::b_Show_WindowExclusive_How_To, 3},
    };
    for (const auto& [control, setting, shown, type] : guides) {
        ASSERT_TRUE(start(Camera::None));
        int runs = 0;
        const auto giveWithGuide = [&, chosen = control](bool ticked, bool closed) {
            QTimer::singleShot(0, window.get(), [&runs, this, ticked, closed] {
                auto* guide = qobject_cast<ModeGuide*>(QApplication::activeModalWidget());
                if (!guide)
                    return;
                ++runs;
                EXPECT_NE(app->capture.i_Type_Screen_Capture, 1) << "the guide comes first";
                guide->findChild<QCheckBox*>()->setChecked(ticked);
                if (closed)
                    guide->close();
                else
                    guide->OnOK();
            });
            give(chosen);
            EXPECT_EQ(store->written.isEmpty(), !ticked || closed);
            give(&Window_Main::toolbarEntireScreen);
        };
        app->application.*shown = 1;
        giveWithGuide(false, false);
        giveWithGuide(true, true);
        giveWithGuide(true, false);
        EXPECT_EQ(runs, 3) << setting;
        EXPECT_EQ(app->application.*shown, 0);
        EXPECT_EQ(store->written, QStringList(settingKey(setting)));
        EXPECT_EQ(stored(setting), "0");
        give(control);
        EXPECT_EQ(runs, 3);
        EXPECT_EQ(app->capture.i_Type_Screen_Capture, type) << "the type is entered however the guide was left";
    }
}

TEST_F(CaptureTypes, WindowExclusiveTakesTheThirdWindowAndKeepsWhatWasChosen)
{
    ASSERT_TRUE(start(Camera::None));
    give(&Window_Main::toolbarWindowExclusive);
    EXPECT_EQ(app->capture.sWindowExclusive, QStringLiteral("Player (12) (102)"));
    give(&Window_Main::toolbarEntireScreen);
    window->submenuWindows->actions().at(2)->trigger();
    EXPECT_EQ(app->capture.i_Type_Screen_Capture, EntireScreen) << "choosing a window changes no capture type";
    give(&Window_Main::menuWindowExclusive);
    EXPECT_EQ(app->capture.sWindowExclusive, QStringLiteral("Editor (11) (101)"));

    // With nothing but own windows and the desktop the user is asked to choose.
    screen->setWindows({});
    ASSERT_TRUE(launch());
    QApplication::processEvents();
    give(&Window_Main::toolbarWindowExclusive);
    EXPECT_EQ(app->capture.sWindowExclusive, std::nullopt);
    EXPECT_FALSE(message().isEmpty());
}
