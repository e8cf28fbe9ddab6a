// SPDX-License-Identifier: GPL-3.0-or-later
// Icons that other programs' windows offer, after the size that is wanted.
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
    std::memcpy(words.data(), input.rest().data(), words.size() * 4);
    const QImage icon = iconOfWords(words, wanted);
    require(icon.isNull() || std::size_t(icon.width()) * std::size_t(icon.height()) + 2 <= words.size(),
            "an icon is made of pixels that are there");
    return 0;
}
