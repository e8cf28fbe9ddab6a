// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Geometry.h"

#include <QString>

namespace lumavex {

/// The reason why a movie of this size would not show the picture that fills it, as text for the user; empty when it
/// does. The fit shrinks in steps of a tenth of the movie's size (compose/FrameLayout.h), and the last step may leave
/// nothing. A picture of size zero is not known yet and causes no problem.
QString vanishingProblem(const CGSize& picture, const CGSize& movie);

} // namespace lumavex
