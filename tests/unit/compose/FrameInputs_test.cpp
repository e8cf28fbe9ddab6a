// SPDX-License-Identifier: GPL-3.0-or-later
#include "compose/FrameInputs.h"

#include <gmock/gmock.h>

#include <functional>

namespace {

using namespace lumavex;

TEST(FrameInputs, EqualityFollowsWhatIsSeen)
{
    FrameInputs inputs;
    inputs.screen.imgScreenCapture = {QImage(64, 48, QImage::Format_RGB32), 1};
    inputs.screen.size_Screen = {64, 48};
    FrameInputs other = inputs;
    EXPECT_EQ(inputs, other);
    other.screen.imgScreenCapture.image.detach(); // the same pixels elsewhere
    EXPECT_EQ(inputs, other);
    const std::function<void(FrameInputs&)> changes[] = {
        [](FrameInputs& f) { f.screen.imgScreenCapture.serial++; },
        [](FrameInputs& f) { f.screen.cursor = CGPoint{}; },
        [](FrameInputs& f) { f.screen.cut = CGRect{}; },
        [](FrameInputs& f) { f.screen.size_Screen.width++; },
        [](FrameInputs& f) { f.camera.serial++; },
        [](FrameInputs& f) { f.imgOverlay.serial++; },
        [](FrameInputs& f) { f.bOverlay = true; },
        [](FrameInputs& f) { f.i_Position_Overlay = 0; },
        [](FrameInputs& f) { f.i_Show_Secondary = 1; },
    };
    for (const auto& change : changes) {
        FrameInputs changed = inputs;
        change(changed);
        EXPECT_FALSE(changed == inputs);
    }
}

} // namespace
