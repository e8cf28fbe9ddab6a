// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Geometry.h"

#include <QString>

namespace lumavex {

/// Why a movie of this size would not show the picture that is to fill it, in the user's words; empty when it does. The
/// fit goes in steps of a tenth of the movie's size (compose/FrameLayout.h), the last of which may leave nothing. A
/// picture of no size is not known yet and no problem.
QString vanishingProblem(const CGSize& picture, const CGSize& movie);

} // namespace lumavex
