// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/CameraSource.h"
#include "platform/RunLoop.h"

#include <functional>

namespace lumavex {

/// Returns the names of the cameras as soon as `suffices` is true for them, otherwise those listed after five seconds:
/// soon after the machine's start a program may run before its cameras are listed. Does not wait when the machine
/// cannot have a camera. Serves the run loop meanwhile. Main thread.
QStringList awaitCameras(CameraSource& cameras, RunLoop& runLoop,
                         const std::function<bool(const QStringList& names)>& suffices);

} // namespace lumavex
