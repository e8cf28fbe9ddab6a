// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/CameraSource.h"
#include "platform/RunLoop.h"

#include <functional>

namespace lumavex {

/// The names of the cameras as soon as `suffices` holds for them, else those listed after five seconds: soon after the
/// machine's start a program may run before its cameras are listed. Does not wait where there can be no camera at all.
/// The run loop is served meanwhile. Main thread.
QStringList awaitCameras(CameraSource& cameras, RunLoop& runLoop,
                         const std::function<bool(const QStringList& names)>& suffices);

} // namespace lumavex
