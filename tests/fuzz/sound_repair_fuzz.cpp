// SPDX-License-Identifier: GPL-3.0-or-later
// Sound files that a killed run left.
#include "recording/RecordedFiles.h"
#include "tests/fuzz/Fuzzing.h"

using namespace lumavex;

namespace {

/// How many bytes differ; all of them when the sizes do.
qsizetype changedBytes(const QByteArray& one, const QByteArray& other)
{
    if (one.size() != other.size())
        return one.size();
    qsizetype changed = 0;
    for (qsizetype i = 0; i < one.size(); ++i)
        changed += one[i] != other[i] ? 1 : 0;
    return changed;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray bytes = Input(data, size).restAsText();
    const MemoryFile file(bytes);
    const bool holdsSamples = soundHoldsSamples(file.path());
    if (!repairSoundHeader(file.path()).isEmpty()) {
        require(file.content() == bytes, "a file whose header cannot be read is not touched");
        require(!holdsSamples, "what holds samples can be repaired");
        return 0;
    }
    const QByteArray repaired = file.content();
    require(changedBytes(bytes, repaired) <= 8, "two lengths of four bytes change, and nothing else");
    require(soundHoldsSamples(file.path()) == holdsSamples, "a repair neither makes nor loses samples");
    require(repairSoundHeader(file.path()).isEmpty() && file.content() == repaired, "repairing again changes nothing");
    return 0;
}
