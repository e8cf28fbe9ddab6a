// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "movie/BlockTransform.h"
#include "movie/JpegTables.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace lumavex {

/// Code words of one kind of component, ready to be written: each includes the bits of the value that follow it.
class BlockWords {
public:
    explicit BlockWords(const ComponentCodes& codes);

    /// A code word of up to 24 bits.
    class Word {
    public:
        constexpr Word() = default;
        constexpr Word(std::uint32_t bits, std::uint32_t length) : word_(bits << 8 | length) {}
        constexpr std::uint32_t bits() const { return word_ >> 8; }
        constexpr std::uint32_t length() const { return word_ & 0xFF; }

    private:
        std::uint32_t word_ = 0;
    };

    /// For a DC coefficient that exceeds the previous block's by `difference`.
    Word mean(int difference) const { return means_[static_cast<std::size_t>(difference + kLargestDifference)]; }
    /// For an AC coefficient `step` places after the previous one, 1 to 16. `value` is a signed byte, not zero.
    Word value(std::size_t step, std::uint8_t value) const { return values_[step << 8 | value]; }
    /// Without value bits. A symbol is the run of zeros, times 16, plus the magnitude category.
    Word symbol(std::size_t symbol) const { return symbols_[symbol]; }
    Word endOfBlock() const { return symbols_[0x00]; }
    Word sixteenZeros() const { return symbols_[0xF0]; }

private:
    static constexpr int kLargestDifference = 255;

    std::array<Word, 17 << 8> values_{};
    std::array<Word, 2 * kLargestDifference + 1> means_{};
    std::array<Word, 256> symbols_{};
};

/// Writes blocks as an entropy-coded segment (ISO/IEC 10918-1, F.1.2). One thread at a time.
class EntropyCoder {
public:
    /// The most bytes that one block takes, and the bytes that must be free behind the last block.
    static constexpr std::size_t kMostBlockBytes = 256;
    static constexpr std::size_t kSlack = 8;

    /// True when the processor has the instructions that this code uses.
    static bool isUsable();

    /// Begins a segment at `to`.
    void begin(std::uint8_t* to);
    /// `mean` is the DC coefficient of the component's previous block (0 before the first) and is set to this block's.
    void write(const QuantisedBlock& block, const BlockWords& words, int& mean);
    /// Writes a block that fills a macroblock beyond the picture's edge: the previous DC coefficient, no AC
    /// coefficients.
    void writeFiller(const BlockWords& words);
    /// Fills the last byte. Returns the segment's bytes, without a zero after each 0xFF (see copyWithZeros()).
    std::span<const std::uint8_t> end();

private:
    void put(BlockWords::Word word);
    void flush();
    void writeWide(const QuantisedBlock& block, const BlockWords& words);

    std::uint64_t bits_ = 0; ///< the lowest `count_` bits are not yet written
    unsigned int count_ = 0;
    std::uint8_t* begin_ = nullptr;
    std::uint8_t* to_ = nullptr;
};

/// Copies a segment and adds a zero after each 0xFF. Returns the end. There must be room for twice its size.
std::uint8_t* copyWithZeros(std::span<const std::uint8_t> segment, std::uint8_t* to);

} // namespace lumavex
