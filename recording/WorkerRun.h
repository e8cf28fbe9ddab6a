// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/RunLoop.h"

#include <functional>

namespace lumavex {

/// Does slow work (copying, flushing to disk) on a thread of its own and returns when it is done; meanwhile the run
/// loop serves events and the default mode, so that windows stay alive and a recording goes on. Main thread.
void runOnWorker(RunLoop& runLoop, const std::function<void()>& work);

} // namespace lumavex
