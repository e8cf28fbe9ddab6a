// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "movie/BlockTransform.h"
#include "movie/JpegTables.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace lumavex {

/// A kind of components' code words, ready to be written: each with the bits of the value that follow it.
class BlockWords {
public:
    explicit BlockWords(const ComponentCodes& codes);

    /// Up to 24 bits.
    class Word {
    public:
        constexpr Word() = default;
        constexpr Word(std::uint32_t bits, std::uint32_t length) : word_(bits << 8 | length) {}
        constexpr std::uint32_t bits() const { return word_ >> 8; }
        constexpr std::uint32_t length() const { return word_ & 0xFF; }

    private:
        std::uint32_t word_ = 0;
    };

    /// For a mean that is so much above the one before.
    Word mean(int difference) const { return means_[static_cast<std::size_t>(difference + kLargestDifference)]; }
    /// For a value `step` places behind the one before, 1 to 16. The value is the byte's as a signed number, not zero.
    Word value(std::size_t step, std::uint8_t value) const { return values_[step << 8 | value]; }
    /// Without any value's bits: a symbol is a run of zeros, times 16, and how many bits its value has.
    Word symbol(std::size_t symbol) const { return symbols_[symbol]; }
    Word endOfBlock() const { return symbols_[0x00]; }
    Word sixteenZeros() const { return symbols_[0xF0]; }

private:
    static constexpr int kLargestDifference = 255;

    std::array<Word, 17 << 8> values_{};
    std::array<Word, 2 * kLargestDifference + 1> means_{};
    std::array<Word, 256> symbols_{};
};

/// Writes blocks as the codes of an entropy-coded segment, ISO/IEC 10918-1, F.1.2. One thread at a time.
class EntropyCoder {
public:
    /// The most that a block can take, and what must be free behind the last.
    static constexpr std::size_t kMostBlockBytes = 256;
    static constexpr std::size_t kSlack = 8;

    /// Whether this processor has the instructions that the code is made of.
    static bool isUsable();

    /// Begins a segment.
    void begin(std::uint8_t* to);
    /// `mean` is the mean of the component's block before, 0 in front of the first, and becomes this block's.
    void write(const QuantisedBlock& block, const BlockWords& words, int& mean);
    /// A block that fills up a macroblock beyond the picture's edge: as even as the block before.
    void writeFiller(const BlockWords& words);
    /// Fills the last byte. The segment's bytes, still without a zero behind each 0xFF.
    std::span<const std::uint8_t> end();

private:
    void put(BlockWords::Word word);
    void flush();
    void writeWide(const QuantisedBlock& block, const BlockWords& words);

    std::uint64_t bits_ = 0; ///< the last `count_` are still to be written
    unsigned int count_ = 0;
    std::uint8_t* begin_ = nullptr;
    std::uint8_t* to_ = nullptr;
};

/// Copies a segment with a zero behind each 0xFF; returns the end. There must be room for twice its size.
std::uint8_t* copyWithZeros(std::span<const std::uint8_t> segment, std::uint8_t* to);

} // namespace lumavex
