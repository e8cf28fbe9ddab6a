// SPDX-License-Identifier: GPL-3.0-or-later
#include "movie/EntropyCoder.h"

#include <bit>
#include <cstdlib>
#include <cstring>
#include <stdexcept>

// Counting and shifting bits dominates the cost; with BMI it takes half as many instructions.
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

// The bits of 64 that remain after 7 pending bits and two values.
constexpr std::uint32_t kLongestEnd = 64 - 7 - 2 * 23;

// Magnitude category and its bits (ITU-T T.81 F.1.2.1).
unsigned int magnitudeCategory(int value)
{
    return static_cast<unsigned int>(std::bit_width(static_cast<unsigned int>(std::abs(value))));
}
std::uint32_t magnitudeBits(int value, unsigned int category)
{
    return static_cast<std::uint32_t>(value < 0 ? value - 1 : value) & ((1U << category) - 1);
}

BlockWords::Word withBits(BlockWords::Word word, int value)
{
    const unsigned int category = magnitudeCategory(value);
    return {word.bits() << category | magnitudeBits(value, category), word.length() + category};
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
        throw std::invalid_argument("the end-of-block code is too long");
    const auto means = wordsOf(codes.means);
    for (int difference = -kLargestDifference; difference <= kLargestDifference; ++difference)
        means_[static_cast<std::size_t>(difference + kLargestDifference)] =
            withBits(means[magnitudeCategory(difference)], difference);
    for (std::size_t step = 1; step <= 16; ++step) {
        for (int value = -128; value <= 127; ++value) {
            if (value != 0)
                values_[step << 8 | static_cast<std::uint8_t>(value)] =
                    withBits(symbols_[(step - 1) << 4 | magnitudeCategory(value)], value);
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

// Needs at least one bit, so it is never called twice in a row. Free of branches: the number of full bytes is
// unpredictable.
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

// At most 64 bits collect between flushes: 7 pending, then 24 of a DC difference and 23 of an AC coefficient, or 23 for
// each of two AC coefficients and the end of the block.
LUMAVEX_BMI void EntropyCoder::write(const QuantisedBlock& block, const BlockWords& words, int& mean)
{
    const int newMean = block.values[0];
    put(words.mean(newMean - mean));
    mean = newMean;
    if (block.saturated) {
        writeWide(block, words);
        return;
    }
    EntropyCoder local = *this; // stays in registers, since nothing takes its address
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
        put(withBits(words.symbol((step - 1) << 4 | magnitudeCategory(value)), value));
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
        // True when no byte is 0xFF: a zero byte of the complement is where the subtraction newly sets the byte's top
        // bit.
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
