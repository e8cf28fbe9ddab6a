// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/CameraSource.h"

#include <memory>

namespace lumavex {

/// The cameras of V4L2, PipeWire and libcamera. Needs a running event loop for the presence handler and for reopening a
/// lost camera.
std::unique_ptr<CameraSource> createGstCameraSource();

} // namespace lumavex
