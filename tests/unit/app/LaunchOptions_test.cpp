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
