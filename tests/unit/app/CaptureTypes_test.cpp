// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/SettingsTable.h"
#include "capture/ModeGuide.h"
#include "tests/unit/app/SourceControls.h"

#include "app/RecordingSummary.h"

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QMenu>
#include <QTimer>

using namespace lumavex;
using namespace std::chrono_literals;

namespace {

struct CaptureTypes : SourceControls {
    /// Presses the button of a message.
    void press(const char* text)
    {
        for (QAbstractButton* button : messages().findChildren<QAbstractButton*>())
            if (button->isVisible() && button->text() == QString::fromUtf8(text)) {
                button->click();
                QApplication::processEvents();
                return;
            }
        FAIL() << "there is no button " << text;
    }
};

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
        app->application.*shown = 1;
        int runs = 0;
        for (const bool ticked : {false, true}) {
            QTimer::singleShot(0, window.get(), [&, ticked] {
                if (auto* guide = qobject_cast<ModeGuide*>(QApplication::activeModalWidget())) {
                    ++runs;
                    EXPECT_EQ(app->capture.i_Type_Screen_Capture, EntireScreen) << "the guide comes first";
                    guide->findChild<QCheckBox*>(QStringLiteral("checkDontShowAgain"))->setChecked(ticked);
                    guide->OnOK();
                }
            });
            give(control);
            EXPECT_EQ(app->capture.i_Type_Screen_Capture, type) << "the type is entered however the guide was left";
            EXPECT_EQ(store->written, ticked ? QStringList(settingKey(setting)) : QStringList());
            give(&Window_Main::toolbarEntireScreen);
        }
        EXPECT_EQ(app->application.*shown, 0);
        EXPECT_EQ(stored(setting), "0");
        give(control);
        EXPECT_EQ(runs, 2) << setting;
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

    // The third one is taken whosever it is; without one the user is asked to choose.
    addWindows({"Editor", "Player", "Lumavex"});
    ASSERT_TRUE(launch());
    QApplication::processEvents();
    give(&Window_Main::toolbarWindowExclusive);
    EXPECT_EQ(app->capture.sWindowExclusive, QStringLiteral("Lumavex (12) (102)"));
    screen->setWindows({});
    ASSERT_TRUE(launch());
    QApplication::processEvents();
    give(&Window_Main::toolbarWindowExclusive);
    EXPECT_EQ(app->capture.sWindowExclusive, std::nullopt);
    EXPECT_FALSE(message().isEmpty());
}

TEST_F(CaptureTypes, ListAndCompositeAreMadeByTheirOptions)
{
    ASSERT_TRUE(start(Camera::None));
    give(&Window_Main::toolbarWindowExclusive);
    app->capture.imageBounds = {0, 0, 10, 480};
    loop->advance(1s);
    EXPECT_EQ(app->capture.imgScreenCapture.size(), QSize(10, 16));
    EXPECT_EQ(app->capture.arrayController.size(), 5);
    addWindows({"Editor", "Player"}, {2000, 0});
    loop->advance(1s);
    EXPECT_EQ(app->capture.arrayController.size(), 1) << "of windows beyond the screen";
    app->capture.listOptions = ListAllWindows;
    addWindows({"Editor", "Player"}, {2000, 0});
    loop->advance(1s);
    EXPECT_EQ(app->capture.arrayController.size(), 3);
}

TEST_F(CaptureTypes, WhileTheChosenWindowIsAwayTheOthersAreShownOrItsLastPictureAndTheLineSaysWhich)
{
    const auto says = [this](const char* text) { return message().contains(QLatin1String(text)); };
    const auto pixel = [this] {
        loop->advance(1s);
        return QColor(app->capture.imgScreenCapture.pixel(8, 8));
    };
    ASSERT_TRUE(start(Camera::None));
    loop->advance(1s); // the preview opens, for which frames are made
    give(&Window_Main::toolbarWindowExclusive);
    EXPECT_TRUE(says("The window Player (12) (102), \"A Film\", is recorded. If it goes away, all other"))
        << message().toStdString();
    EXPECT_EQ(pixel(), Qt::green);
    addWindows(Player::Away);
    EXPECT_EQ(pixel(), Qt::blue);
    EXPECT_TRUE(says("The window Player (12) (102) is not on the screen. All other windows"))
        << message().toStdString();
    EXPECT_TRUE(window->summary->text().contains(QStringLiteral("Player (12) (102)")));

    press("Hold Its Picture");
    EXPECT_EQ(more->texts.value(QStringLiteral("when_window_goes")), QStringLiteral("hold"));
    EXPECT_TRUE(says("Its last picture is held")) << message().toStdString();
    EXPECT_EQ(pixel(), Qt::green);
    addWindows();
    EXPECT_EQ(pixel(), Qt::green);
    EXPECT_TRUE(says("The window Player (12) (102) is back. If it goes away, its last picture"))
        << message().toStdString();
    addWindows(Player::EmptyFrame);
    EXPECT_EQ(pixel(), Qt::green) << "a frame without the window in it is no picture of it";

    // Nothing stands for a window that was never seen, least of all the others.
    press("Choose Another…");
    ASSERT_EQ(QApplication::activePopupWidget(), window->submenuWindows);
    QAction* editor = window->submenuWindows->actions().at(2);
    EXPECT_TRUE(editor->toolTip().contains(QStringLiteral("notes &lt;b&gt;"))) << "no markup of others";
    EXPECT_FALSE(editor->icon().isNull());
    window->submenuWindows->close();
    screen->setWindows({});
    editor->trigger();
    EXPECT_EQ(pixel(), Qt::black);
    press("Record the Others");
    loop->advance(1s);
    EXPECT_EQ(app->capture.imgScreenCapture.size(), QSize(640, 480));
    give(&Window_Main::toolbarEntireScreen);
    EXPECT_EQ(message(), QString());
}
