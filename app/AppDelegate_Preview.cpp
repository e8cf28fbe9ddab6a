// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/AppDelegate.h"

#include "app/ScreenSizeWatch.h"
#include "app/Window_Main.h"
#include "recording/RateRule.h"

#include <QAction>
#include <QStandardPaths>

namespace lumavex {

namespace {
constexpr int keptUpAfter = 30; ///< consecutive seconds without shortage after which the machine counts as fast enough
                                ///< again
}

void AppDelegate::createPreviewWindow(Preview preview)
{
    compose.windowPreview =
        std::make_unique<Window_Preview>(&window_, compose.fwVideoOutputRatio, compose.previewLowerLeft);
    connect(compose.windowPreview.get(), &Window_Preview::windowShouldClose, this, [this] {
        compose.b_windowPreview_Visible = false;
        window_.menuPreviewShowHide->setText(QStringLiteral("Show"));
    });
    compose.previewShown.reset();
    // Opening must not take the keyboard focus from the window in use.
    compose.windowPreview->setAttribute(Qt::WA_ShowWithoutActivating);
    if (preview == Preview::Hidden || options_.isUnattended())
        return;
    compose.windowPreview->show();
    window_.menuPreviewShowHide->setText(QStringLiteral("Hide"));
    compose.b_windowPreview_Visible = true;
}

void AppDelegate::OnMenuPreviewUp()
{
    if (!compose.windowPreview) {
        createPreviewWindow(Preview::Shown);
    } else if (compose.b_windowPreview_Visible) {
        compose.windowPreview->hide();
        window_.menuPreviewShowHide->setText(QStringLiteral("Show"));
        compose.b_windowPreview_Visible = false;
    } else {
        compose.windowPreview->show();
        compose.windowPreview->raise();
        compose.windowPreview->activateWindow();
        window_.menuPreviewShowHide->setText(QStringLiteral("Hide"));
        compose.b_windowPreview_Visible = true;
    }
}

void AppDelegate::Refresh_Preview_Window()
{
    if (!compose.windowPreview) {
        createPreviewWindow(Preview::Shown);
        return;
    }
    compose.previewLowerLeft = compose.windowPreview->lowerLeft();
    compose.windowPreview.reset();
    window_.menuPreviewShowHide->setText(QStringLiteral("Show"));
    compose.b_windowPreview_Visible = false;
    platform_.runLoop->invalidate(compose.timer_Open_Preview_Window);
    compose.timer_Open_Preview_Window =
        platform_.runLoop->scheduleOnce({1, 5}, [this](const TimerFiring&) { Timer_Open_Preview_Window_Routine(); });
}

void AppDelegate::Timer_Open_Preview_Window_Routine()
{
    if (!compose.windowPreview)
        createPreviewWindow(Preview::Shown);
}

bool AppDelegate::isPreviewInSight() const
{
    return compose.windowPreview && compose.windowPreview->isVisible() && !compose.windowPreview->isMinimized();
}

bool AppDelegate::isFrameWanted() const
{
    return compose.windowPreview
           && (recording.m_RecordStatus == Recording || compose.b_Take_Picture || isPreviewInSight());
}

FrameInputs AppDelegate::frameInputs()
{
    FrameInputs inputs;
    inputs.i_Video_Source_Primary = compose.i_Video_Source_Primary;
    inputs.i_Show_Secondary = compose.i_Show_Secondary;
    inputs.index_size_Video_Output = compose.index_size_Video_Output;
    inputs.screen = prepareScreenPicture();
    inputs.camera = {camera.imgDeviceCapture, camera.serialCamera};
    inputs.i_Camera_CRP = camera.i_Camera_CRP;
    inputs.i_Size_Screen_Secondary = compose.i_Size_Screen_Secondary;
    inputs.i_Position_Screen_Secondary = compose.i_Position_Screen_Secondary;
    inputs.i_Size_Camera_Secondary = compose.i_Size_Camera_Secondary;
    inputs.i_Position_Camera_Secondary = compose.i_Position_Camera_Secondary;
    inputs.bOverlay = compose.bOverlay;
    inputs.imgOverlay = {compose.imgOverlay, compose.serialOverlay};
    inputs.i_Size_Overlay = compose.i_Size_Overlay;
    inputs.i_Position_Overlay = compose.i_Position_Overlay;
    return inputs;
}

void AppDelegate::TimerRefreshViewRoutine(const TimerFiring& firing)
{
    makeFrame(FrameStep::View, firing.deadline);
}

void AppDelegate::TimerDebug1SecondRoutine()
{
    if (!isFrameWanted())
        updateWindowList(); // no grab updates the list, but the window menu must be current when it opens
    screenSize_->look();
    showSummary();
    if (application.sffmpegPath.isEmpty()) {
        application.sffmpegPath = QStandardPaths::findExecutable(QStringLiteral("ffmpeg"));
        if (!application.sffmpegPath.isEmpty()) // it has been installed meanwhile
            window_.withdrawMessage(MessageTopic::Encoder);
    }
    if (!compose.windowPreview || recording.m_RecordStatus != Recording || recording.isEnding())
        return;
    recording.i_Actual_FPS_while_Recording = adaptedRate(
        recording.i_fps_of_Recording, recording.i_debug_number_of_view_refresh, recording.i_Actual_FPS_while_Recording);
    recording.frameCounts.endSecond(recording.i_debug_number_of_view_refresh);
    if (const QString shortage = pictureShortage(); !recording.shortageTold && !shortage.isEmpty()) {
        recording.shortageTold = true;
        tell(MessageTopic::Rate, {shortage});
    }
    if (recording.frameCounts.goodSeconds == keptUpAfter)
        window_.withdrawMessage(MessageTopic::Rate);
    recording.i_debug_number_of_view_refresh = 0;
    watchFreeSpace();
    writeStatistics();
}

} // namespace lumavex
