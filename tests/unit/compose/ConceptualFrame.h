// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "compose/FrameInputs.h"
#include "compose/FramePlan.h"

#include <QImage>

namespace lumavex {

/// The frame drawn step by step as it is defined: every canvas on the way exists, every drawing is a painter's.
/// The geometry counts units, of which the frame is `size` pixels.
QImage conceptualFrame(const FrameInputs& inputs, FramePass pass, const QSize& size, const CGSize& units);

} // namespace lumavex
