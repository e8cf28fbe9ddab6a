// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace lumavex {

/// Initialises GStreamer at the first call. Empty, or why it cannot be used, in the user's words. Any thread.
QString initGStreamer();

} // namespace lumavex
