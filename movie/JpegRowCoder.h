// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "movie/BlockTransform.h"
#include "movie/ColourPlanes.h"
#include "movie/EntropyCoder.h"
#include "movie/JpegBuffer.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace lumavex {

/// Codes rows of macroblocks with vector instructions, from pixels to bits while they are in the processor's cache.
/// With quotients rounded to nearest the result is byte-identical to the JPEG library's for the same planes and tables.
/// One thread at a time.
class JpegRowCoder {
public:
    /// True when the processor has the instructions, which the other functions require.
    static bool isUsable();

    explicit JpegRowCoder(Rounding rounding);

    /// Allocates memory for pictures of this width. False when there is none.
    bool prepare(int width);
    /// Appends the row's entropy-coded segment, without a marker. False when there is no memory.
    bool append(const CVPixelBuffer& pixels, int macroblockRow, JpegBuffer& to);

private:
    struct Means {
        int luma = 0;
        int blue = 0;
        int red = 0;
    };
    void writeLuma(std::size_t macroblock, std::size_t half, bool secondIsFiller, int& mean);
    void writeChroma(std::size_t macroblock, Means& means);

    const TransformBlockPair transform_ = avx2TransformBlockPair();
    const Quantiser quantiser_;
    const BlockWords luma_;
    const BlockWords chroma_;
    ColourPlanes planes_;
    EntropyCoder coder_;
    JpegBuffer segment_;
    std::array<QuantisedBlock, 2> blocks_{};
};

} // namespace lumavex
