// SPDX-License-Identifier: GPL-3.0-or-later
// The encoder's standard error, in any chunks.
#include "recording/EncoderProgress.h"
#include "tests/fuzz/Fuzzing.h"

using namespace lumavex;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Input input(data, size);
    const std::uint64_t length = input.byte();
    const auto seconds = encoderSeconds(input.restAsText());
    if (!seconds)
        return 0;
    require(*seconds >= 0 && *seconds <= 99 * 3600 + 99 * 60 + 99, "a time is of two digits a part");
    const float percentage = encoderPercentage(static_cast<std::uint64_t>(*seconds), length);
    require(percentage >= 0.0F && percentage <= 100.0F, "a percentage is from 0 to 100");
    return 0;
}
