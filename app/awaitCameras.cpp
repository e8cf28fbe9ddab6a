// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/awaitCameras.h"

namespace lumavex {

QStringList awaitCameras(CameraSource& cameras, RunLoop& runLoop,
                         const std::function<bool(const QStringList& names)>& suffices)
{
    constexpr std::chrono::seconds patience{5};
    QStringList names = cameras.names();
    if (suffices(names) || !cameras.trouble().isEmpty())
        return names;
    const Nanoseconds deadline = runLoop.now() + patience;
    const TimerId wakeUp = runLoop.scheduleRepeating({1, 5}, RunLoopMode::Common, [](const TimerFiring&) {});
    runLoop.runUntil([&] {
        names = cameras.names();
        return suffices(names) || runLoop.now() > deadline;
    });
    runLoop.invalidate(wakeUp);
    return names;
}

} // namespace lumavex
