// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/AppDelegate.h"

#include "app/ChosenWindow.h"
#include "app/RecordingSummary.h"
#include "app/Window_Main.h"

#include <cmath>

namespace lumavex {

namespace {

/// Lower-case description of the capture type, for use within a sentence.
QString screenText(const CaptureState& capture, bool holds)
{
    switch (capture.i_Type_Screen_Capture) {
    case FollowCursor:
        return RecordingSummary::tr("rectangle around the cursor");
    case Region:
        return RecordingSummary::tr("region of the screen");
    case WindowExclusive: {
        if (!capture.sWindowExclusive)
            return RecordingSummary::tr("window");
        const bool gone = capture.sWindowExclusive == capture.sWindowExclusive_Missed;
        const QString text = !gone   ? RecordingSummary::tr("window %1")
                             : holds ? RecordingSummary::tr("last picture of %1")
                                     : RecordingSummary::tr("all windows while %1 is away");
        return text.arg(*capture.sWindowExclusive);
    }
    default:
        return RecordingSummary::tr("entire screen");
    }
}

QString pictureText(const CaptureState& capture, const ComposeState& compose, bool holds)
{
    const QString screen = screenText(capture, holds);
    const bool cameraLarge = compose.cameraIsPrimary();
    const bool both = compose.showsBoth();
    QString text = cameraLarge
                       ? both ? RecordingSummary::tr("camera with %1").arg(screen) : RecordingSummary::tr("camera")
                   : both ? RecordingSummary::tr("%1 with camera").arg(screen)
                          : screen;
    if (compose.bOverlay && !compose.imgOverlay.isNull())
        text = RecordingSummary::tr("%1, overlay").arg(text);
    return text.left(1).toUpper() + text.mid(1);
}

} // namespace

void AppDelegate::showSummary()
{
    const bool exists = recording.m_RecordStatus != Idle;
    const CGSize size = exists ? recording.size_Movie : compose.size_Video_Output;
    SummaryFacts facts;
    facts.picture = pictureText(capture, compose, chosenWindow_->isHeld());
    facts.width = int(std::lround(size.width));
    facts.height = int(std::lround(size.height));
    facts.rate = recording.i_fps_of_Recording;
    facts.sound = recording.b_Record_Include_Audio == 1;
    if (exists)
        facts.frames = recording.i_Frames_Appended;
    window_.summary->show(facts);
}

} // namespace lumavex
