// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Geometry.h"

#include <cstdint>
#include <vector>

namespace lumavex {

/// An entry of the frame-size catalogue, in pixels; also used as a point, for a handle of the region selector.
struct FrameDimension {
    CGSize sizeDimension;
};

/// The catalogue of frame sizes, 30 entries. The order is fixed and not sorted: stored settings are indexes into it.
std::vector<FrameDimension> frameResolutionCatalogue();

/// Number of entries offered on a screen of this size: all up to the first that is wider or higher.
std::size_t offeredFrameResolutions(const std::vector<FrameDimension>& catalogue, const CGSize& screen);

/// Valid indexes from stored ones: an index outside the catalogue is replaced by the setting's first-run value.
std::int64_t usableOutputIndex(std::int64_t index_size_Video_Output);        ///< 0, or 2 to 31
std::int64_t usableFollowCursorIndex(std::int64_t index_size_Follow_Cursor); ///< 0 to 29
std::int64_t usableRegionIndex(std::int64_t index_size_Region);              ///< 0 to 29

} // namespace lumavex
