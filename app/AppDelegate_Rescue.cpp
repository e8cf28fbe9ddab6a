// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/AppDelegate.h"

#include "app/Window_Main.h"

#include <utility>

namespace lumavex {

void AppDelegate::finishRescue()
{
    if (rescued_.empty())
        return;
    const std::vector<RescuedRecording> recordings = std::exchange(rescued_, {});
    // Not modal to the main window, so that the next recording can begin meanwhile; shown only when the work takes
    // long.
    Window_Progress progress(&window_);
    progress.setWindowModality(Qt::NonModal);
    progress.setAttribute(Qt::WA_ShowWithoutActivating);
    progress.setDescription(tr("Completing what was recorded before Lumavex was closed…"));
    progress.setCancelling(Window_Progress::Cancelling::Offered);
    connect(&progress, &Window_Progress::cancelled, this, &AppDelegate::cancelRescue);
    const TimerId show = platform_.runLoop->scheduleOnce({1, 1}, [this, &progress](const TimerFiring&) {
        if (window_.isVisible())
            progress.show();
    });
    const auto notes = completeRescued(recordings,
                                       {platform_.repairMovie,
                                        platform_.readMovie,
                                        platform_.createChildProcess,
                                        application.sffmpegPath,
                                        {[&progress](float percentage) { progress.setProgress(percentage); },
                                         [this] { return rescueCancelled_; }, options_.patience()}},
                                       *platform_.runLoop);
    platform_.runLoop->invalidate(show);
    progress.hide();
    const QString trouble = tellWithFolder(
        *platform_.dialogs, {tr("A recording was recovered"), rescueMessage(notes), {}}, notes.front().path);
    if (!trouble.isEmpty())
        window_.showMessage(trouble);
    forgetRescued(recordings);
}

} // namespace lumavex
