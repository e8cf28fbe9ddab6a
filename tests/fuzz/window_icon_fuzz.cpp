// SPDX-License-Identifier: GPL-3.0-or-later
// Reads the icons of other programs' windows; the first byte is the wanted size.
#include "platform/x11/WindowLooks.h"
#include "tests/fuzz/Fuzzing.h"

#include <cstring>
#include <vector>

using namespace lumavex;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Input input(data, size);
    const int wanted = input.byte();
    std::vector<std::uint32_t> words(input.rest().size() / 4);
    if (!words.empty())
        std::memcpy(words.data(), input.rest().data(), words.size() * 4);
    const QImage icon = iconOfWords(words, wanted);
    require(icon.isNull() || std::size_t(icon.width()) * std::size_t(icon.height()) + 2 <= words.size(),
            "an icon is made of pixels that are there");
    return 0;
}
