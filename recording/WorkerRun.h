// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/RunLoop.h"

#include <functional>

namespace lumavex {

/// Runs slow work (copying, flushing to disk) on its own thread and returns when it is done; meanwhile the run loop
/// serves events and the default mode, so that windows respond and a recording continues. Main thread.
void runOnWorker(RunLoop& runLoop, const std::function<void()>& work);

} // namespace lumavex
