// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/MovieWriter.h"

namespace lumavex {

/// A MovieReader for ISO/IEC 14496-12 files. Of the pictures it reads the ends of some, evenly spread, the first and
/// the last among them: where a copy was cut short or a block was never written, the marks of JPEG are missing.
MovieFacts readMovie(const QString& path);

} // namespace lumavex
