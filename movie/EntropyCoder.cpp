// SPDX-License-Identifier: GPL-3.0-or-later
#include "movie/EntropyCoder.h"

#include <bit>
#include <cstdlib>
#include <cstring>
#include <stdexcept>

// Counting and shifting bits is most of the work, and takes half as many instructions where the processor has these.
#if defined(__x86_64__)
#define LUMAVEX_BMI __attribute__((target("bmi,bmi2")))
#define LUMAVEX_BMI_LAMBDA __attribute__((target("bmi,bmi2"), always_inline))
#define LUMAVEX_BMI_INLINE LUMAVEX_BMI_LAMBDA inline
#else
#define LUMAVEX_BMI
#define LUMAVEX_BMI_LAMBDA
#define LUMAVEX_BMI_INLINE inline
#endif

namespace lumavex {

namespace {

// What 64 bits leave behind 7 that are left over and two values.
constexpr std::uint32_t kLongestEnd = 64 - 7 - 2 * 23;

// Of a value: how many bits it has, and which: F.1.2.1, negative values less one.
unsigned int sizeOf(int value)
{
    return static_cast<unsigned int>(std::bit_width(static_cast<unsigned int>(std::abs(value))));
}
std::uint32_t bitsOf(int value, unsigned int size)
{
    return static_cast<std::uint32_t>(value < 0 ? value - 1 : value) & ((1U << size) - 1);
}

BlockWords::Word withBits(BlockWords::Word word, int value)
{
    const unsigned int size = sizeOf(value);
    return {word.bits() << size | bitsOf(value, size), word.length() + size};
}

std::array<BlockWords::Word, 256> wordsOf(const HuffmanCode& code)
{
    std::array<BlockWords::Word, 256> words{};
    std::uint32_t next = 0;
    auto value = code.values.begin();
    for (std::uint32_t length = 1; length <= code.counts.size(); ++length, next <<= 1) {
        for (int i = 0; i < code.counts[length - 1]; ++i)
            words[*value++] = {next++, length};
    }
    return words;
}

} // namespace

BlockWords::BlockWords(const ComponentCodes& codes) : symbols_(wordsOf(codes.frequencies))
{
    if (endOfBlock().length() > kLongestEnd)
        throw std::invalid_argument("a code in which blocks end with too many bits");
    const auto means = wordsOf(codes.means);
    for (int difference = -kLargestDifference; difference <= kLargestDifference; ++difference)
        means_[static_cast<std::size_t>(difference + kLargestDifference)] =
            withBits(means[sizeOf(difference)], difference);
    for (std::size_t step = 1; step <= 16; ++step) {
        for (int value = -128; value <= 127; ++value) {
            if (value != 0)
                values_[step << 8 | static_cast<std::uint8_t>(value)] =
                    withBits(symbols_[(step - 1) << 4 | sizeOf(value)], value);
        }
    }
}

bool EntropyCoder::isUsable()
{
#if defined(__x86_64__)
    return __builtin_cpu_supports("bmi") && __builtin_cpu_supports("bmi2");
#else
    return true;
#endif
}

LUMAVEX_BMI_INLINE void EntropyCoder::put(BlockWords::Word word)
{
    bits_ = bits_ << word.length() | word.bits();
    count_ += word.length();
}

// There must be a bit at least, so never twice in a row. Without a branch: how many bytes are full is chance.
LUMAVEX_BMI_INLINE void EntropyCoder::flush()
{
    std::uint64_t bytes = bits_ << (64 - count_);
    if constexpr (std::endian::native == std::endian::little)
        bytes = __builtin_bswap64(bytes);
    std::memcpy(to_, &bytes, sizeof bytes);
    to_ += count_ >> 3;
    count_ &= 7;
}

void EntropyCoder::begin(std::uint8_t* to)
{
    begin_ = to;
    to_ = to;
    bits_ = 0;
    count_ = 0;
}

// Between flushes lie no more than 64 bits: 7 left over, then a mean's 24 and a value's 23, or the 23 of each of two
// values and the end of a block.
LUMAVEX_BMI void EntropyCoder::write(const QuantisedBlock& block, const BlockWords& words, int& mean)
{
    const int newMean = block.values[0];
    put(words.mean(newMean - mean));
    mean = newMean;
    if (block.saturated) {
        writeWide(block, words);
        return;
    }
    EntropyCoder local = *this; // whose address nothing takes, so that it lies in registers
    std::uint64_t left = block.nonZero & ~std::uint64_t{1};
    std::size_t previous = 0;
    const auto putNext = [&]() LUMAVEX_BMI_LAMBDA {
        const auto at = static_cast<std::size_t>(std::countr_zero(left));
        left &= left - 1;
        std::size_t step = at - previous;
        previous = at;
        for (; step > 16; step -= 16) {
            local.put(words.sixteenZeros());
            local.flush();
        }
        local.put(words.value(step, static_cast<std::uint8_t>(block.values[at])));
    };
    while (left != 0) {
        putNext();
        if (left == 0)
            break;
        local.flush();
        putNext();
    }
    if (previous != kBlockSize - 1)
        local.put(words.endOfBlock());
    local.flush();
    *this = local;
}

LUMAVEX_BMI void EntropyCoder::writeWide(const QuantisedBlock& block, const BlockWords& words)
{
    std::size_t step = 0;
    for (std::size_t k = 1; k < kBlockSize; ++k) {
        ++step;
        const int value = block.wide[kCodingOrder[k]];
        if (value == 0)
            continue;
        for (; step > 16; step -= 16) {
            flush();
            put(words.sixteenZeros());
        }
        flush();
        put(withBits(words.symbol((step - 1) << 4 | sizeOf(value)), value));
        step = 0;
    }
    if (step != 0) {
        flush();
        put(words.endOfBlock());
    }
    flush();
}

LUMAVEX_BMI void EntropyCoder::writeFiller(const BlockWords& words)
{
    put(words.mean(0));
    put(words.endOfBlock());
    flush();
}

LUMAVEX_BMI std::span<const std::uint8_t> EntropyCoder::end()
{
    put({0x7F, 7U});
    flush();
    return {begin_, to_};
}

std::uint8_t* copyWithZeros(std::span<const std::uint8_t> segment, std::uint8_t* to)
{
    const std::uint8_t* from = segment.data();
    const std::uint8_t* const end = from + segment.size();
    while (end - from >= 8) {
        std::uint64_t eight = 0;
        std::memcpy(&eight, from, sizeof eight);
        // A byte of its complement is zero where, and only where, the lowest borrow sets the byte's top bit anew.
        if (((~eight - 0x0101010101010101U) & eight & 0x8080808080808080U) == 0) {
            std::memcpy(to, &eight, sizeof eight);
            from += 8;
            to += 8;
            continue;
        }
        for (int i = 0; i < 8; ++i) {
            *to++ = *from;
            if (*from++ == 0xFF)
                *to++ = 0;
        }
    }
    while (from != end) {
        *to++ = *from;
        if (*from++ == 0xFF)
            *to++ = 0;
    }
    return to;
}

} // namespace lumavex
