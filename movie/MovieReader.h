// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/MovieWriter.h"

namespace lumavex {

/// A MovieReader for ISO/IEC 14496-12 files. Checks the ends of some pictures, evenly spread, including the first and
/// the last: the JPEG markers are missing when a copy was cut short or a block was never written.
MovieFacts readMovie(const QString& path);

} // namespace lumavex
