// SPDX-License-Identifier: GPL-3.0-or-later
// Picture files that a user chooses as overlay.
#include "base/PictureFile.h"
#include "tests/fuzz/Fuzzing.h"

using namespace lumavex;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const MemoryFile file(Input(data, size).restAsText());
    const QImage picture = readPictureFile(file.path());
    if (picture.isNull())
        return 0;
    require(std::int64_t(picture.width()) * picture.height() <= kMostPicturePixels, "no picture is beyond the limit");
    require(picture.pixelColor(picture.width() - 1, picture.height() - 1).isValid(), "the last pixel can be read");
    return 0;
}
