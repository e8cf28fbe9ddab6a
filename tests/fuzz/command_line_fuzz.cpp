// SPDX-License-Identifier: GPL-3.0-or-later
// The command line: one argument a line.
#include "app/options/CommandLine.h"
#include "tests/fuzz/Fuzzing.h"

using namespace lumavex;

namespace {

bool inRange(const LaunchOptions& options)
{
    const auto side = [](double pixels) { return pixels >= 1 && pixels <= 99999; };
    const double seconds = options.recordSeconds.value_or(1);
    const std::int64_t rate = options.framesPerSecond.value_or(1);
    const CGSize follow = options.follow.value_or(CGSize{1, 1});
    const CGSize size = options.size.value_or(CGSize{});
    const std::int64_t cameraSize = options.cameraSize.value_or(0);
    const auto region = options.region.value_or(LaunchOptions::Rectangle{0, 0, 1, 1});
    const bool ownSize = size.width >= 16 && size.width <= 16384 && size.height >= 16 && size.height <= 16384;
    return seconds > 0 && seconds <= 1e6 && rate >= 1 && rate <= 120 && side(follow.width) && side(follow.height)
           && (ownSize || (size.width == 0 && size.height == 0)) && cameraSize >= 0 && cameraSize <= 7 && region.x >= 0
           && region.y >= 0 && side(region.width) && side(region.height);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QString text = QString::fromUtf8(Input(data, size).restAsText());
    const CommandLine result = parseCommandLine(text.isEmpty() ? QStringList() : text.split(u'\n'));
    require(result.exitStatus.has_value() == !result.text.isEmpty(), "who ends says why, and who goes on says nothing");
    if (result.exitStatus) {
        require(*result.exitStatus == 0 || *result.exitStatus == 2, "a command line ends with 0 or 2");
        return 0;
    }
    require(inRange(result.options), "options that are accepted are in their ranges");
    require(result.options.recordSeconds.has_value() == !result.options.output.isEmpty(),
            "a recording without a user has a file to go to");
    return 0;
}
