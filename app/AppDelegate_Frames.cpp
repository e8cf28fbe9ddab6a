// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/AppDelegate.h"

namespace lumavex {

void AppDelegate::makeFrame(FrameStep step, Nanoseconds deadline)
{
    if (!isFrameWanted()) {
        compose.previewShown.reset();
        return;
    }
    const Nanoseconds now = platform_.runLoop->now();
    const Nanoseconds interval = Nanoseconds(std::chrono::seconds(1)) / recording.i_fps_of_Recording;
    const bool record = recording.isRecordingAt(deadline);
    // A snapshot and the first frame of a movie each need a new picture.
    const bool mayRepeat = !compose.b_Take_Picture && (!record || compose.lastAppended);
    const bool late = compose.frameTick.isLate(deadline, interval, now) && mayRepeat;

    if (step == FrameStep::Grab) {
        if (record)
            recording.frameCounts.noteLateness(now - deadline);
        if (!late)
            grabScreen();
    } else if (!late) {
        const FrameInputs inputs = frameInputs();
        composePreview(inputs);
        if (record || compose.b_Take_Picture)
            composeOutput(inputs, record);
    } else if (record) {
        // The previous picture is repeated at almost no cost, which keeps the rate constant.
        recording.frameCounts.repeatLate();
        appendFrame(nullptr, {});
    }
}

void AppDelegate::composePreview(const FrameInputs& inputs)
{
    if (!isPreviewInSight()) {
        compose.previewShown.reset();
        return;
    }
    View_Preview* view = compose.windowPreview->viewPreview();
    const QSize pixels = view->pixelSize();
    if (compose.previewShown && compose.previewShown->inputs == inputs && view->pictureSize() == pixels)
        return;
    const QImage picture = compositor_.previewPass(inputs, pixels, {double(view->width()), double(view->height())});
    const ChangeHistory& changes = compositor_.previewChanges();
    view->setPicture(picture, compose.previewShown ? changes.since(compose.previewShown->frame) : std::nullopt);
    compose.previewShown = {inputs, changes.latest()};
}

void AppDelegate::composeOutput(const FrameInputs& inputs, bool record)
{
    FrameCounts& counts = recording.frameCounts;
    if (record && !compose.b_Take_Picture && compose.lastAppended && compose.lastAppended->inputs == inputs) {
        counts.repeatUnchanged();
        appendFrame(nullptr, {}); // equal inputs give equal pixels
        return;
    }
    const CVPixelBufferRef frame =
        compositor_.outputPass(inputs, record ? recording.size_Movie : compose.size_Video_Output);
    if (compose.b_Take_Picture)
        savePicture(frame);
    compose.b_Take_Picture = false;
    if (record && frame) {
        const ChangeHistory& history = compositor_.outputChanges();
        const auto changes = compose.lastAppended ? history.since(compose.lastAppended->frame) : std::nullopt;
        ++counts.composed;
        changes && changes->isEmpty() ? counts.repeatUnchanged() : counts.showChange();
        if (appendFrame(frame, changes))
            compose.lastAppended = {inputs, history.latest()};
    } else if (record) {
        stopBecause(tr("There is not enough memory to compose the movie's frames."));
    }
}

} // namespace lumavex
