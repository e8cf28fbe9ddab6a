// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/SettingsTable.h"
#include "tests/unit/app/SourceControls.h"

#include <QAction>
#include <QApplication>
#include <QMenu>

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

struct Source {
    Control control;
    int primary, secondary;
    const char* captureStates;
    const char* alert; ///< null: needs no camera
};
constexpr Source sources[] = {
    {&Window_Main::toolbarScreenOnly, 1, 0, "11111111", nullptr},
    {&Window_Main::menuScreenAlone, 1, 0, "11111111", nullptr},
    {&Window_Main::toolbarCameraOnly, 2, 0, "00000000", "Connect a Camera."},
    {&Window_Main::menuCameraAlone, 2, 0, "00000000", "Connect a Camera."},
    {&Window_Main::toolbarBothScreenAndCamera, 1, 1, "11111111", "Connect a Camera."},
    {&Window_Main::menuBothScreenPrimary, 1, 1, "11111111", "Connect a camera."},
    {&Window_Main::menuBothCameraPrimary, 2, 1, "11111111", "Connect a camera."},
};

struct Type {
    Control control;
    int type;
    const char* captureStates;
};
constexpr Type types[] = {
    {&Window_Main::toolbarEntireScreen, 0, "00111111"},    {&Window_Main::menuEntireScreen, 0, "00111111"},
    {&Window_Main::toolbarFollowCursor, 1, "11001111"},    {&Window_Main::menuFollowCursor, 1, "11001111"},
    {&Window_Main::toolbarRegion, 2, "11111011"},          {&Window_Main::menuRegion, 2, "11111011"},
    {&Window_Main::toolbarWindowExclusive, 3, "11111100"}, {&Window_Main::menuWindowExclusive, 3, "11111100"},
};

/// The source commands, each after every other one.
struct Sources : SourceControls {
    /// Gives every command after every other one and compares what must come of it.
    void walkThroughAllPairs(Camera which);
    void giveAndCompare(const Source& source, Camera which);
    void giveAndCompare(const Type& type);

    struct Expected {
        std::string captureStates = "11111111"; // also the current type's
        int primary = 1, secondary = 0, type = 0;
        CGSize output = screenSize;
    } expected;
    bool outputIsHeld = false;
};

void Sources::giveAndCompare(const Source& source, Camera which)
{
    dialogs->alerts.clear();
    store->written.clear();
    const bool enabled = (window.get()->*source.control)->isEnabled();
    give(source.control);
    if (source.alert && which == Camera::None) {
        ASSERT_EQ(dialogs->alerts.size(), enabled ? 1U : 0U);
        EXPECT_TRUE(store->written.isEmpty());
        if (enabled) {
            EXPECT_EQ(dialogs->alerts[0].messageText, QLatin1String(source.alert));
            EXPECT_EQ(dialogs->alerts[0].informativeText,
                      QStringLiteral("No camera connected. Go to settings and connect a camera."));
            EXPECT_EQ(dialogs->alerts[0].buttons, QStringList{QStringLiteral("Close")});
        }
        return;
    }
    expected.captureStates = source.captureStates;
    expected.primary = source.primary;
    expected.secondary = source.secondary;
    if (!outputIsHeld)
        expected.output = source.primary == 1 ? screenSize : cameraSize;
    EXPECT_TRUE(dialogs->alerts.empty());
    EXPECT_EQ(store->written, QStringList({settingKey("i_Show_Secondary"), settingKey("i_Video_Source_Primary")}));
    EXPECT_EQ(stored("i_Show_Secondary"), std::to_string(source.secondary));
    EXPECT_EQ(stored("i_Video_Source_Primary"), std::to_string(source.primary));
}

void Sources::giveAndCompare(const Type& type)
{
    store->written.clear();
    const bool enabled = (window.get()->*type.control)->isEnabled();
    const int selectors = give(type.control);
    EXPECT_EQ(selectors, enabled && type.type == Region ? 1 : 0);
    EXPECT_TRUE(store->written.isEmpty()) << "the capture type is not stored";
    if (!enabled)
        return;
    expected.captureStates = type.captureStates;
    expected.type = type.type;
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
    const auto giveEach = [&](Control first, const auto& second) {
        for (const Source& source : sources)
            if (source.control == first)
                giveAndCompare(source, which);
        for (const Type& type : types)
            if (type.control == first)
                giveAndCompare(type);
        if constexpr (std::is_same_v<std::decay_t<decltype(second)>, Source>)
            giveAndCompare(second, which);
        else
            giveAndCompare(second);
        return compare(first, second.control);
    };
    ASSERT_TRUE(compare(&Window_Main::btnRecord, &Window_Main::btnStop)) << "before the first command";
    std::vector<Control> all;
    for (const Source& source : sources)
        all.push_back(source.control);
    for (const Type& type : types)
        all.push_back(type.control);
    for (const Control first : all) {
        for (const Source& second : sources)
            ASSERT_TRUE(giveEach(first, second));
        for (const Type& second : types)
            ASSERT_TRUE(giveEach(first, second));
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
    giveAndCompare(sources[0], Camera::Running);
    giveAndCompare(types[0]);
    walkThroughAllPairs(Camera::Running);
    window->btnRecord->trigger();
    loop->advance(1s);
    window->btnStop->trigger();
    EXPECT_EQ(movie->appends().back().picture.isNull() || movie->appends().back().picture.size() == QSize(640, 480),
              true);
    outputIsHeld = false;
    giveAndCompare(sources[2], Camera::Running);
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
}

TEST_F(Sources, TheNextStartFindsTheSourceAndFallsBackToTheScreenWithoutItsCamera)
{
    for (const Source& source : sources) {
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
    ASSERT_TRUE(launch());
    FakeCamera busy;
    busy.name = cameraName;
    busy.refusal = QStringLiteral("Another program uses the camera.");
    cameras->add(busy);
    store->texts[settingKey("s_Camera_Name")] = cameraName;
    store->texts[settingKey("i_Camera_Capture_FPS")] = QStringLiteral("30");
    store->texts[settingKey("i_Video_Source_Primary")] = QStringLiteral("2");
    ASSERT_TRUE(launch());
    ASSERT_EQ(dialogs->alerts.size(), 1U);
    EXPECT_EQ(dialogs->alerts[0].messageText, QStringLiteral("Error"));
    EXPECT_EQ(dialogs->alerts[0].informativeText,
              QStringLiteral("Could not start Camera. Change Camera Resolution and try again."));
    EXPECT_EQ(dialogs->alerts[0].buttons, QStringList{QStringLiteral("Close")});
    EXPECT_EQ(message(), busy.refusal);
    EXPECT_EQ(stored("s_Camera_Name"), doNotConnectToCamera.toStdString());
    EXPECT_EQ(stored("i_Camera_Capture_FPS"), "1");
    EXPECT_EQ(app->recording.i_fps_of_Recording, 1);
    walkThroughAllPairs(Camera::None);
}

TEST_F(Sources, TheOutputTakesTheSizeThatWasAskedForWhateverTheCameraSends)
{
    ASSERT_TRUE(launch());
    FakeCamera liar;
    liar.name = cameraName;
    liar.trueSize = QSize(500, 300);
    cameras->add(liar);
    store->texts[settingKey("s_Camera_Name")] = cameraName;
    store->texts[settingKey("i_Camera_CRP")] = QStringLiteral("3");
    store->texts[settingKey("i_Video_Source_Primary")] = QStringLiteral("2"); // and alone
    ASSERT_TRUE(launch());
    ASSERT_TRUE(until([this] { return app->camera.size_Camera.width > 0; }));
    EXPECT_EQ(app->camera.size_Camera, cameraSize);
    EXPECT_EQ(app->compose.size_Video_Output, cameraSize);
    EXPECT_FALSE(app->camera.b_Change_to_Camera_Resolution);
}

TEST_F(Sources, ASizeTheCameraHasNotToldYetIsTakenFromItsFirstFrameUnlessTheSourceChangedMeanwhile)
{
    for (const bool changed : {false, true}) {
        ASSERT_TRUE(launch());
        FakeCamera silent;
        silent.name = cameraName;
        silent.interval.reset();
        cameras->add(silent);
        store->texts[settingKey("s_Camera_Name")] = cameraName;
        ASSERT_TRUE(launch());
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

TEST_F(Sources, AVanishedCameraIsToldOnceAndItsLastPictureStays)
{
    ASSERT_TRUE(start(Camera::Running));
    give(&Window_Main::toolbarCameraOnly);
    loop->advance(1s);
    window->btnRecord->trigger();
    loop->advance(1s);
    cameras->remove(cameraName);
    QApplication::processEvents();
    EXPECT_TRUE(message().contains(cameraName)) << message().toStdString();
    const QString told = message();
    const std::uint64_t last = app->camera.serialCamera;
    loop->advance(3s);
    QApplication::processEvents();
    EXPECT_EQ(app->recording.m_RecordStatus, Recording);
    EXPECT_EQ(app->camera.serialCamera, last);
    EXPECT_FALSE(app->camera.imgDeviceCapture.isNull());
    window->clearMessage();
    loop->advance(3s);
    EXPECT_EQ(message(), QString()) << "it is told once";

    FakeCamera again;
    again.name = cameraName;
    cameras->add(again);
    ASSERT_TRUE(until([&] { return app->camera.serialCamera != last; }));
    EXPECT_TRUE(message().contains(cameraName));
    EXPECT_NE(message(), told);
    window->btnStop->trigger();
    EXPECT_GE(movie->appends().size(), 60U);
}
