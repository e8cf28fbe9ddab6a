// SPDX-License-Identifier: GPL-3.0-or-later
#include "capture/FrameDimension.h"

#include <algorithm>

namespace lumavex {

namespace {
constexpr std::int64_t catalogueSize = 30;
}

std::vector<FrameDimension> frameResolutionCatalogue()
{
    return {
        {{160, 120}},   {{320, 240}},   {{640, 240}},   {{640, 480}},  {{720, 240}},   {{720, 480}},
        {{800, 600}},   {{1024, 768}},  {{1088, 612}},  {{1176, 664}}, {{1152, 864}},  {{1280, 600}},
        {{1280, 720}},  {{1280, 768}},  {{1280, 800}},  {{1280, 854}}, {{1280, 960}},  {{1280, 1024}},
        {{1360, 768}},  {{1366, 768}},  {{1400, 1050}}, {{1440, 900}}, {{1440, 960}},  {{1600, 900}},
        {{1600, 1200}}, {{1680, 1024}}, {{1680, 1050}}, {{1768, 992}}, {{1920, 1080}}, {{1920, 1200}},
    };
}

std::size_t offeredFrameResolutions(const std::vector<FrameDimension>& catalogue, const CGSize& screen)
{
    const auto tooLarge = std::ranges::find_if(catalogue, [&](const FrameDimension& entry) {
        return entry.sizeDimension.width > screen.width || entry.sizeDimension.height > screen.height;
    });
    return static_cast<std::size_t>(tooLarge - catalogue.begin());
}

std::int64_t usableOutputIndex(std::int64_t index)
{
    return index >= 2 && index < catalogueSize + 2 ? index : 0;
}

std::int64_t usableFollowCursorIndex(std::int64_t index)
{
    return index >= 0 && index < catalogueSize ? index : 3;
}

std::int64_t usableRegionIndex(std::int64_t index)
{
    return index >= 0 && index < catalogueSize ? index : 1;
}

} // namespace lumavex
