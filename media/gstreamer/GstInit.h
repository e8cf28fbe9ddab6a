// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace lumavex {

/// Initialises GStreamer at the first call. Empty on success, else the reason as text for the user. Any thread.
QString initGStreamer();

} // namespace lumavex
