// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/SettingsTable.h"
#include "tests/unit/app/SourceControls.h"

#include <QAction>
#include <QApplication>
#include <QMenu>
#include <QTimer>

using namespace lumavex;
using namespace std::chrono_literals;

namespace {

// In the order of the states below.
constexpr Control captureControls[] = {&Window_Main::toolbarEntireScreen,    &Window_Main::menuEntireScreen,
                                       &Window_Main::toolbarFollowCursor,    &Window_Main::menuFollowCursor,
                                       &Window_Main::toolbarRegion,          &Window_Main::menuRegion,
                                       &Window_Main::toolbarWindowExclusive, &Window_Main::menuWindowExclusive};
constexpr Control cameraControls[] = {&Window_Main::menuCameraAlone, &Window_Main::menuBothScreenPrimary,
                                      &Window_Main::menuBothCameraPrimary};
constexpr Control sourceControls[] = {&Window_Main::toolbarScreenOnly, &Window_Main::toolbarCameraOnly,
                                      &Window_Main::toolbarBothScreenAndCamera, &Window_Main::menuScreenAlone};

/// Result of a command: another source, or another capture type.
struct Command {
    Control control;
    const char* captureStates;
    int type; ///< -1: it changes the source
    int primary = 0, secondary = 0;
    const char* alert = nullptr; ///< null: needs no camera
};
constexpr Command commands[] = {
    {&Window_Main::toolbarScreenOnly, "11111111", -1, 1, 0},
    {&Window_Main::menuScreenAlone, "11111111", -1, 1, 0},
    {&Window_Main::toolbarCameraOnly, "00000000", -1, 2, 0, "Connect a Camera."},
    {&Window_Main::menuCameraAlone, "00000000", -1, 2, 0, "Connect a Camera."},
    {&Window_Main::toolbarBothScreenAndCamera, "11111111", -1, 1, 1, "Connect a Camera."},
    {&Window_Main::menuBothScreenPrimary, "11111111", -1, 1, 1, "Connect a camera."},
    {&Window_Main::menuBothCameraPrimary, "11111111", -1, 2, 1, "Connect a camera."},
    {&Window_Main::toolbarEntireScreen, "00111111", EntireScreen},
    {&Window_Main::menuEntireScreen, "00111111", EntireScreen},
    {&Window_Main::toolbarFollowCursor, "11001111", FollowCursor},
    {&Window_Main::menuFollowCursor, "11001111", FollowCursor},
    {&Window_Main::toolbarRegion, "11111011", Region},
    {&Window_Main::menuRegion, "11111011", Region},
    {&Window_Main::toolbarWindowExclusive, "11111100", WindowExclusive},
    {&Window_Main::menuWindowExclusive, "11111100", WindowExclusive},
};

/// The source commands, each after every other one.
struct Sources : SourceControls {
    /// Gives every command after every other one and compares what must come of it.
    void walkThroughAllPairs(Camera which);
    void giveAndCompare(const Command& command, Camera which);
    /// Starts with this camera and these settings, as after an earlier run.
    bool launchWith(const FakeCamera& camera, const std::vector<std::pair<const char*, const char*>>& settings)
    {
        if (!launch())
            return false;
        cameras->add(camera);
        store->texts[settingKey("s_Camera_Name")] = camera.name;
        for (const auto& [name, value] : settings)
            store->texts[settingKey(name)] = QLatin1String(value);
        return launch();
    }

    struct Expected {
        std::string captureStates = "11111111"; // also the current type's
        int primary = 1, secondary = 0, type = 0;
        CGSize output = screenSize;
    } expected;
    bool outputIsHeld = false;
};

void Sources::giveAndCompare(const Command& command, Camera which)
{
    dialogs->alerts.clear();
    store->written.clear();
    const bool enabled = (window.get()->*command.control)->isEnabled();
    const bool refused = command.alert && which == Camera::None;
    EXPECT_EQ(give(command.control), enabled && command.type == Region ? 1 : 0);
    ASSERT_EQ(dialogs->alerts.size(), enabled && refused ? 1U : 0U);
    if (enabled && refused) {
        EXPECT_EQ(dialogs->alerts[0].messageText, QLatin1String(command.alert));
        EXPECT_EQ(dialogs->alerts[0].informativeText,
                  QStringLiteral("No camera connected. Go to settings and connect a camera."));
    }
    if (!enabled || refused || command.type >= 0) {
        EXPECT_TRUE(store->written.isEmpty()) << "the capture type is not stored";
    }
    if (!enabled || refused)
        return;
    expected.captureStates = command.captureStates;
    if (command.type >= 0) {
        expected.type = command.type;
        return;
    }
    expected.primary = command.primary;
    expected.secondary = command.secondary;
    if (!outputIsHeld)
        expected.output = command.primary == 1 ? screenSize : cameraSize;
    EXPECT_EQ(store->written, QStringList({settingKey("i_Show_Secondary"), settingKey("i_Video_Source_Primary")}));
    EXPECT_EQ(stored("i_Show_Secondary"), std::to_string(command.secondary));
    EXPECT_EQ(stored("i_Video_Source_Primary"), std::to_string(command.primary));
}

void Sources::walkThroughAllPairs(Camera which)
{
    const auto compare = [&](Control first, Control second) {
        const auto name = [this](Control control) { return (window.get()->*control)->objectName().toStdString(); };
        SCOPED_TRACE(name(second) + " after " + name(first));
        EXPECT_EQ(states(captureControls), expected.captureStates);
        EXPECT_EQ(states(cameraControls), which == Camera::Running ? "111" : "000");
        EXPECT_EQ(states(sourceControls), "1111");
        EXPECT_EQ(app->compose.i_Video_Source_Primary, expected.primary);
        EXPECT_EQ(app->compose.i_Show_Secondary, expected.secondary);
        EXPECT_EQ(app->capture.i_Type_Screen_Capture, expected.type);
        EXPECT_EQ(app->compose.size_Video_Output, expected.output);
        EXPECT_EQ(app->compose.fwVideoOutputRatio, float(expected.output.width) / float(expected.output.height));
        return !HasFailure();
    };
    ASSERT_TRUE(compare(&Window_Main::btnRecord, &Window_Main::btnStop)) << "before the first command";
    for (const Command& first : commands)
        for (const Command& second : commands) {
            giveAndCompare(first, which);
            giveAndCompare(second, which);
            ASSERT_TRUE(compare(first.control, second.control));
        }
}

} // namespace

TEST_F(Sources, EveryCommandAfterEveryOtherWithACamera)
{
    ASSERT_TRUE(start(Camera::Running));
    walkThroughAllPairs(Camera::Running);
}

TEST_F(Sources, EveryCommandAfterEveryOtherWithoutACamera)
{
    ASSERT_TRUE(start(Camera::None));
    walkThroughAllPairs(Camera::None);
}

TEST_F(Sources, CommandsAreObeyedWhileRecordingAndPausedAndTheOutputSizeIsHeld)
{
    ASSERT_TRUE(start(Camera::Running));
    loop->advance(1s); // the preview opens, without which there are no frames
    window->btnRecord->trigger();
    ASSERT_EQ(app->recording.m_RecordStatus, Recording);
    outputIsHeld = true;
    walkThroughAllPairs(Camera::Running);
    window->btnPause->trigger();
    walkThroughAllPairs(Camera::Running);
    window->btnRecord->trigger();
    loop->advance(1s);
    window->btnStop->trigger();
    outputIsHeld = false;
    giveAndCompare(commands[2], Camera::Running);
    EXPECT_EQ(app->compose.size_Video_Output, cameraSize);
}

TEST_F(Sources, AFixedOutputSizeIsHeldToo)
{
    ASSERT_TRUE(start(Camera::Running));
    QAction* item = window->submenuVideoOutputFrame->actions().at(2);
    ASSERT_EQ(item->text(), QStringLiteral("160x120"));
    item->trigger();
    outputIsHeld = true;
    expected.output = {160, 120};
    walkThroughAllPairs(Camera::Running);

    options.size = CGSize{200, 150}; // which the menu does not offer
    store->texts[settingKey("i_Video_Source_Primary")] = QStringLiteral("1");
    store->texts[settingKey("i_Show_Secondary")] = QStringLiteral("0");
    ASSERT_TRUE(start(Camera::Running));
    EXPECT_FALSE(window->menuitemVideoOutputScreenResolution->isChecked());
    expected = {};
    expected.output = *options.size;
    walkThroughAllPairs(Camera::Running);
}

TEST_F(Sources, TheNextStartFindsTheSourceAndFallsBackToTheScreenWithoutItsCamera)
{
    for (const Command& source : commands) {
        if (source.type >= 0)
            continue;
        ASSERT_TRUE(start(Camera::Running));
        give(source.control);
        give(&Window_Main::toolbarScreenOnly);
        give(source.control);
        ASSERT_TRUE(launch());
        EXPECT_EQ(app->compose.i_Video_Source_Primary, source.primary);
        EXPECT_EQ(app->compose.i_Show_Secondary, source.secondary);
        EXPECT_EQ(states(captureControls), source.captureStates) << source.primary << source.secondary;
        EXPECT_EQ(app->capture.i_Type_Screen_Capture, EntireScreen);

        store->texts[settingKey("s_Camera_Name")] = doNotConnectToCamera;
        ASSERT_TRUE(launch());
        EXPECT_EQ(app->compose.i_Video_Source_Primary, 1);
        EXPECT_EQ(app->compose.i_Show_Secondary, 0);
        EXPECT_EQ(states(cameraControls), "000");
    }
}

TEST_F(Sources, ACameraThatIsBusyIsToldAndLeftOut)
{
    const QString refusal = QStringLiteral("Another program uses the camera.");
    ASSERT_TRUE(launchWith({.name = cameraName, .refusal = refusal},
                           {{"i_Camera_Capture_FPS", "30"}, {"i_Video_Source_Primary", "2"}}));
    ASSERT_EQ(dialogs->alerts.size(), 1U);
    EXPECT_EQ(message(), refusal);
    EXPECT_EQ(stored("s_Camera_Name"), doNotConnectToCamera.toStdString());
    EXPECT_EQ(stored("i_Camera_Capture_FPS"), "1");
    EXPECT_EQ(app->recording.i_fps_of_Recording, 1);
    walkThroughAllPairs(Camera::None);
}

TEST_F(Sources, WithoutAUserTheCameraIsOpenedIfItIsSeenWaitedForAndNeverForgotten)
{
    ASSERT_TRUE(launchWith({.name = cameraName}, {{"i_Camera_Capture_FPS", "30"}}));
    options.recordSeconds = 1;
    ASSERT_TRUE(launch());
    EXPECT_FALSE(cameras->isRunning()) << "the screen is recorded alone";

    store->texts[settingKey("i_Show_Secondary")] = QStringLiteral("1");
    cameras->remove(cameraName);
    ASSERT_TRUE(launch());
    EXPECT_FALSE(app->camera.b_Camera_Connected);
    EXPECT_EQ(stored("s_Camera_Name"), cameraName.toStdString());
    EXPECT_EQ(stored("i_Camera_Capture_FPS"), "30");

    QTimer::singleShot(10, [this] { cameras->add({.name = cameraName}); });
    ASSERT_TRUE(launch());
    EXPECT_TRUE(app->camera.b_Camera_Connected) << "it was listed a little later";
}

TEST_F(Sources, TheOutputTakesTheSizeThatWasAskedForWhateverTheCameraSends)
{
    ASSERT_TRUE(launchWith({.name = cameraName, .trueSize = QSize(500, 300)},
                           {{"i_Camera_CRP", "3"}, {"i_Video_Source_Primary", "2"}})); // and alone
    ASSERT_TRUE(until([this] { return app->camera.size_Camera.width > 0; }));
    EXPECT_EQ(app->camera.size_Camera, cameraSize);
    EXPECT_EQ(app->compose.size_Video_Output, cameraSize);
    EXPECT_FALSE(app->camera.b_Change_to_Camera_Resolution);
}

TEST_F(Sources, ASizeTheCameraHasNotToldYetIsTakenFromItsFirstFrameUnlessTheSourceChangedMeanwhile)
{
    for (const bool changed : {false, true}) {
        ASSERT_TRUE(launchWith({.name = cameraName, .interval = std::nullopt}, {}));
        give(&Window_Main::menuBothCameraPrimary);
        if (changed)
            give(&Window_Main::toolbarScreenOnly);
        cameras->send(QImage(320, 240, QImage::Format_RGB32));
        ASSERT_TRUE(until([this] { return app->camera.size_Camera == cameraSize; }));
        EXPECT_EQ(app->compose.size_Video_Output, changed ? screenSize : cameraSize);
        app.reset();
        cameras->remove(cameraName);
    }
}

TEST_F(Program, WhyThereCanBeNoCameraIsToldInTheWindowAndInsteadOfThatOneIsMissing)
{
    cameras->noCameras = QStringLiteral("Half of the program is missing.");
    ASSERT_TRUE(launch());
    EXPECT_EQ(message(), QString());
    loop->advance(std::chrono::seconds(1));
    EXPECT_EQ(message(), cameras->noCameras);

    store->texts.insert(settingKey("s_Camera_Name"), QStringLiteral("Camera"));
    ASSERT_TRUE(launch());
    EXPECT_EQ(message(), cameras->noCameras) << "not that there is no camera of that name";
}
