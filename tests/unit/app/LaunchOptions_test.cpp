// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/layeredSettings.h"
#include "tests/unit/app/SourceControls.h"

using namespace lumavex;

namespace {

/// The program as its command line says.
struct LaunchOptionsTest : SourceControls {
    std::unique_ptr<UserDefaults> beneath;

    bool launchWithOptions()
    {
        beneath = std::move(platform.userDefaults);
        platform.userDefaults = layeredSettings(*beneath, options, *cameras);
        return launch();
    }
};

} // namespace

TEST_F(LaunchOptionsTest, HoldForThisRunWhateverSourceIsSmallAndAreNotStored)
{
    options.overlayPosition = 0;
    options.overlaySize = 77;
    options.secondaryPosition = 3;
    options.secondarySize = 2;
    ASSERT_TRUE(launchWithOptions());
    const ComposeState& compose = app->compose;
    EXPECT_EQ(compose.i_Position_Overlay, 0);
    EXPECT_EQ(compose.i_Size_Overlay, 77);
    EXPECT_EQ(compose.i_Position_Screen_Secondary, 3);
    EXPECT_EQ(compose.i_Position_Camera_Secondary, 3);
    EXPECT_EQ(compose.i_Size_Screen_Secondary, 2);
    EXPECT_EQ(compose.i_Size_Camera_Secondary, 2);
    for (const auto& [name, value] : {std::pair{"i_Position_Overlay", "8"},
                                      {"i_Size_Overlay", "30"},
                                      {"i_Position_Screen_Secondary", "8"},
                                      {"i_Position_Camera_Secondary", "8"},
                                      {"i_Size_Screen_Secondary", "1"},
                                      {"i_Size_Camera_Secondary", "1"}})
        EXPECT_EQ(stored(name), value) << "the first run's default is stored";
}

TEST_F(LaunchOptionsTest, AnOverlayIsDrawnAtOnceAndOneThatCannotBeReadIsToldAndNotDrawn)
{
    options.overlay = home.filePath(QStringLiteral("overlay.png"));
    ASSERT_TRUE(launch());
    EXPECT_FALSE(app->compose.bOverlay);
    EXPECT_TRUE(app->launchProblem.contains(options.overlay));
    EXPECT_TRUE(message().contains(options.overlay));

    QImage picture(20, 10, QImage::Format_ARGB32);
    picture.fill(qRgba(0, 0, 255, 128));
    ASSERT_TRUE(picture.save(options.overlay));
    ASSERT_TRUE(launch());
    EXPECT_TRUE(app->launchProblem.isEmpty());
    EXPECT_TRUE(app->compose.bOverlay);
    EXPECT_EQ(app->frameInputs().imgOverlay.image, picture);
}

TEST_F(LaunchOptionsTest, ColoursAreThoseOfTheFirstPictureAlready)
{
    ASSERT_TRUE(launch());
    FakeCamera camera;
    camera.name = cameraName;
    camera.interval = std::nullopt; // it sends what the test sends
    cameras->add(camera);
    store->texts[settingKey("s_Camera_Name")] = cameraName;
    QImage picture(320, 240, QImage::Format_RGB32);
    picture.fill(qRgb(40, 60, 80));
    const auto firstColour = [&] {
        EXPECT_TRUE(launch());
        cameras->send(picture);
        EXPECT_TRUE(until([this] { return !app->camera.imgDeviceCapture.isNull(); }));
        return app->camera.imgDeviceCapture.pixelColor(100, 100);
    };
    EXPECT_EQ(firstColour(), QColor(40, 60, 80));
    options.brightness = 2.0F;
    EXPECT_EQ(firstColour(), QColor(40 + 51, 60 + 51, 80 + 51));
    EXPECT_EQ(app->camera.f_ColorControls_Saturation, 10.0F);
    EXPECT_EQ(app->camera.f_ColorControls_Contrast, 10.0F);
}
