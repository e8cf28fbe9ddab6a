// SPDX-License-Identifier: GPL-3.0-or-later
#include "compose/FrameChanges.h"

#include "compose/Resampler.h"

#include <algorithm>

namespace lumavex {

namespace {

/// Adds the area in which a step that both frames contain paints something else.
void addChangesOf(const FrameStep& step, const FrameContents& before, const FrameContents& now,
                  const ChangeHistory& screenChanges, ChangedArea& area)
{
    const auto addIf = [&](bool changed) {
        if (changed)
            area.add(step.clip);
    };
    switch (step.picture) {
    case FramePicture::None:
        break;
    case FramePicture::Camera:
        addIf(before.camera != now.camera);
        break;
    case FramePicture::Cursor:
        addIf(before.cursor != now.cursor);
        break;
    case FramePicture::Overlay:
        addIf(before.overlay != now.overlay);
        break;
    case FramePicture::Screen:
        if (before.screen == now.screen)
            break;
        if (const auto parts = screenChanges.since(before.screen)) {
            for (const QRect& part : *parts)
                area.add(Resampler::reached(step.source, step.target, part) & step.clip);
        } else {
            area.add(step.clip);
        }
        break;
    }
}

} // namespace

FrameContents FrameContents::of(const FrameInputs& inputs, const FrameTarget& target)
{
    return {planFrame(inputs, target), inputs.screen.imgScreenCapture.serial, inputs.camera.serial,
            static_cast<std::uint64_t>(inputs.screen.imgMouseCursor.cacheKey()), inputs.imgOverlay.serial};
}

/// Distinguishes the steps that both frames contain, in the same order, from the others. A pixel that none of the
/// others touches is made by the same steps in both, so it differs only where one of these paints something else.
ChangedArea frameChanges(const FrameContents& before, const FrameContents& now, const ChangeHistory& screenChanges)
{
    ChangedArea area;
    const FrameStep* old = before.plan.begin();
    for (const FrameStep& step : now.plan) {
        const FrameStep* const same = std::find(old, before.plan.end(), step);
        if (same == before.plan.end()) {
            area.add(step.clip);
            continue;
        }
        for (; old != same; ++old)
            area.add(old->clip);
        addChangesOf(step, before, now, screenChanges, area);
        ++old;
    }
    for (; old != before.plan.end(); ++old)
        area.add(old->clip);
    return area;
}

} // namespace lumavex
