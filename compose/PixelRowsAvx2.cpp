// SPDX-License-Identifier: GPL-3.0-or-later
#include "compose/PixelRows.h"

// Only functions marked LUMAVEX_AVX2 may use AVX2, so that the program also starts on processors without it.
#if defined(__x86_64__)

#include <immintrin.h>

#define LUMAVEX_AVX2 __attribute__((target("avx2")))

namespace lumavex {

namespace {

struct StoreMasks {
    __m256i shuffle;
    __m256i opaque;
};

LUMAVEX_AVX2 StoreMasks masksOf(PixelStore store)
{
    const bool alphaFirst = store.order == PixelOrder::AlphaFirst;
    const __m256i same = _mm256_setr_epi8(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 0, 1, 2, 3, 4, 5, 6, 7,
                                          8, 9, 10, 11, 12, 13, 14, 15);
    const __m256i reversed = _mm256_setr_epi8(3, 2, 1, 0, 7, 6, 5, 4, 11, 10, 9, 8, 15, 14, 13, 12, 3, 2, 1, 0, 7, 6, 5,
                                              4, 11, 10, 9, 8, 15, 14, 13, 12);
    const int alphaByte = store.alpha == AlphaUse::Kept ? 0 : alphaFirst ? 0xFF : int(0xFF000000U);
    return {alphaFirst ? reversed : same, _mm256_set1_epi32(alphaByte)};
}

LUMAVEX_AVX2 __m256i load(const void* from)
{
    return _mm256_loadu_si256(static_cast<const __m256i*>(from));
}

LUMAVEX_AVX2 void put(void* to, __m256i value)
{
    _mm256_storeu_si256(static_cast<__m256i*>(to), value);
}

LUMAVEX_AVX2 __m256i stored(__m256i pixels, const StoreMasks& masks)
{
    return _mm256_or_si256(_mm256_shuffle_epi8(pixels, masks.shuffle), masks.opaque);
}

LUMAVEX_AVX2 void copy(std::uint32_t* to, const std::uint32_t* from, std::size_t pixels, PixelStore store)
{
    const StoreMasks masks = masksOf(store);
    std::size_t i = 0;
    for (; i + 16 <= pixels; i += 16) {
        put(to + i, stored(load(from + i), masks));
        put(to + i + 8, stored(load(from + i + 8), masks));
    }
    plainRowFunctions().copy(to + i, from + i, pixels - i, store);
}

// The multiplication takes one unsigned and one signed operand. The pixels become signed, by subtracting 128, because
// the weights need the full range; weights that add up to a power of two preserve the 128.

LUMAVEX_AVX2 void mix(std::uint32_t* to, const std::uint32_t* upper, const std::uint32_t* lower, std::size_t pixels,
                      int lowerWeight)
{
    const __m256i weights = _mm256_set1_epi16(short(lowerWeight << 8 | (256 - lowerWeight)));
    const __m256i half = _mm256_set1_epi16(128);
    const __m256i sign = _mm256_set1_epi8(char(0x80));
    std::size_t i = 0;
    for (; i + 8 <= pixels; i += 8) {
        const __m256i a = _mm256_xor_si256(load(upper + i), sign);
        const __m256i b = _mm256_xor_si256(load(lower + i), sign);
        __m256i low = _mm256_maddubs_epi16(weights, _mm256_unpacklo_epi8(a, b));
        __m256i high = _mm256_maddubs_epi16(weights, _mm256_unpackhi_epi8(a, b));
        low = _mm256_srai_epi16(_mm256_add_epi16(low, half), 8);
        high = _mm256_srai_epi16(_mm256_add_epi16(high, half), 8);
        put(to + i, _mm256_xor_si256(_mm256_packs_epi16(low, high), sign));
    }
    plainRowFunctions().mix(to + i, upper + i, lower + i, pixels - i, lowerWeight);
}

/// Two pixels and their right neighbours.
LUMAVEX_AVX2 __m128i pairs(const std::uint32_t* row, const std::int32_t* first)
{
    const __m128i left = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(row + first[0]));
    const __m128i right = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(row + first[1]));
    return _mm_unpacklo_epi64(left, right);
}

LUMAVEX_AVX2 void scaleColumns(std::uint32_t* to, const std::uint32_t* row, const ColumnTaps& taps, std::size_t pixels,
                               PixelStore store)
{
    const StoreMasks masks = masksOf(store);
    const __m256i interleave =
        _mm256_broadcastsi128_si256(_mm_setr_epi8(0, 4, 1, 5, 2, 6, 3, 7, 8, 12, 9, 13, 10, 14, 11, 15));
    const __m256i spreadLow = _mm256_setr_epi8(0, 1, 0, 1, 0, 1, 0, 1, 2, 3, 2, 3, 2, 3, 2, 3, 8, 9, 8, 9, 8, 9, 8, 9,
                                               10, 11, 10, 11, 10, 11, 10, 11);
    const __m256i spreadHigh = _mm256_add_epi8(spreadLow, _mm256_set1_epi8(4));
    const __m256i half = _mm256_set1_epi16(64);
    const __m256i sign = _mm256_set1_epi8(char(0x80));
    std::size_t i = 0;
    for (; i + 8 <= pixels; i += 8) {
        const std::int32_t* first = taps.first + i;
        // 128-bit lanes: pixels 0, 1 beside 4, 5, then 2, 3 beside 6, 7; packing restores the order.
        __m256i a = _mm256_inserti128_si256(_mm256_castsi128_si256(pairs(row, first)), pairs(row, first + 4), 1);
        __m256i b = _mm256_inserti128_si256(_mm256_castsi128_si256(pairs(row, first + 2)), pairs(row, first + 6), 1);
        const __m256i weights =
            _mm256_broadcastsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(taps.weights + i)));
        a = _mm256_xor_si256(_mm256_shuffle_epi8(a, interleave), sign);
        b = _mm256_xor_si256(_mm256_shuffle_epi8(b, interleave), sign);
        a = _mm256_maddubs_epi16(_mm256_shuffle_epi8(weights, spreadLow), a);
        b = _mm256_maddubs_epi16(_mm256_shuffle_epi8(weights, spreadHigh), b);
        a = _mm256_srai_epi16(_mm256_add_epi16(a, half), 7);
        b = _mm256_srai_epi16(_mm256_add_epi16(b, half), 7);
        put(to + i, stored(_mm256_xor_si256(_mm256_packs_epi16(a, b), sign), masks));
    }
    plainRowFunctions().scaleColumns(to + i, row, {taps.first + i, taps.weights + i}, pixels - i, store);
}

LUMAVEX_AVX2 void addToSums(std::uint64_t* sums, const std::uint32_t* row, std::size_t pixels)
{
    std::size_t i = 0;
    for (; i + 8 <= pixels; i += 8) {
        for (std::size_t k = i; k < i + 8; k += 4) {
            const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(row + k));
            put(sums + k, _mm256_add_epi16(load(sums + k), _mm256_cvtepu8_epi16(bytes)));
        }
    }
    plainRowFunctions().addToSums(sums + i, row + i, pixels - i);
}

LUMAVEX_AVX2 void addPairsToSums(std::uint64_t* sums, const std::uint32_t* row, std::size_t sumCount)
{
    const __m256i interleave =
        _mm256_broadcastsi128_si256(_mm_setr_epi8(0, 4, 1, 5, 2, 6, 3, 7, 8, 12, 9, 13, 10, 14, 11, 15));
    const __m256i ones = _mm256_set1_epi8(1);
    std::size_t i = 0;
    for (; i + 8 <= sumCount; i += 8) {
        for (std::size_t k = i; k < i + 8; k += 4) {
            const __m256i added = _mm256_maddubs_epi16(_mm256_shuffle_epi8(load(row + 2 * k), interleave), ones);
            put(sums + k, _mm256_add_epi16(load(sums + k), added));
        }
    }
    plainRowFunctions().addPairsToSums(sums + i, row + 2 * i, sumCount - i);
}

LUMAVEX_AVX2 void addPairs(std::uint64_t* sums, std::size_t pixels)
{
    std::size_t i = 0;
    for (; i + 4 <= pixels; i += 4) {
        const __m256i a = load(sums + 2 * i);
        const __m256i b = load(sums + 2 * i + 4);
        const __m256i added = _mm256_add_epi16(_mm256_unpacklo_epi64(a, b), _mm256_unpackhi_epi64(a, b));
        put(sums + i, _mm256_permute4x64_epi64(added, 0xD8)); // 0 2 1 3
    }
    for (; i < pixels; ++i)
        sums[i] = sums[2 * i] + sums[2 * i + 1];
}

void addTriples(std::uint64_t* sums, std::size_t pixels)
{
    plainRowFunctions().addTriples(sums, pixels);
}

/// Division of 16-bit values: first by a power of two, then by 1, 3 or 9 as a multiplication.
struct Divider {
    __m256i half;
    __m128i shift;
    __m256i factor;
    __m128i shiftAfter;
    bool multiplies;
};

LUMAVEX_AVX2 Divider dividerBy(int divisor)
{
    int shift = 0;
    for (int rest = divisor; rest % 2 == 0; rest /= 2)
        ++shift;
    const int rest = divisor >> shift;
    const int factor = rest == 3 ? 0xAAAB : 0xE38F; // 2^17 / 3 and 2^19 / 9, rounded up: exact for 16 bits
    return {_mm256_set1_epi16(short(divisor / 2)), _mm_cvtsi32_si128(shift), _mm256_set1_epi16(short(factor)),
            _mm_cvtsi32_si128(rest == 3 ? 1 : 3), rest > 1};
}

LUMAVEX_AVX2 __m256i divided(__m256i sums, const Divider& by)
{
    const __m256i halved = _mm256_srl_epi16(_mm256_add_epi16(sums, by.half), by.shift);
    return by.multiplies ? _mm256_srl_epi16(_mm256_mulhi_epu16(halved, by.factor), by.shiftAfter) : halved;
}

LUMAVEX_AVX2 void divideSums(std::uint32_t* to, const std::uint64_t* sums, std::size_t pixels, int divisor)
{
    const Divider by = dividerBy(divisor);
    std::size_t i = 0;
    for (; i + 8 <= pixels; i += 8) {
        const __m256i a = divided(load(sums + i), by);
        const __m256i b = divided(load(sums + i + 4), by);
        put(to + i, _mm256_permute4x64_epi64(_mm256_packus_epi16(a, b), 0xD8)); // 0 2 1 3
    }
    plainRowFunctions().divideSums(to + i, sums + i, pixels - i, divisor);
}

LUMAVEX_AVX2 __m256i timesRest(__m256i words, __m256i rest)
{
    const __m256i product = _mm256_add_epi16(_mm256_mullo_epi16(words, rest), _mm256_set1_epi16(128));
    return _mm256_srli_epi16(_mm256_add_epi16(product, _mm256_srli_epi16(product, 8)), 8);
}

LUMAVEX_AVX2 void blend(std::uint32_t* to, const std::uint32_t* over, std::size_t pixels, PixelOrder order)
{
    const __m256i alphaEverywhere =
        _mm256_add_epi8(_mm256_setr_epi8(0, 0, 0, 0, 4, 4, 4, 4, 8, 8, 8, 8, 12, 12, 12, 12, 0, 0, 0, 0, 4, 4, 4, 4, 8,
                                         8, 8, 8, 12, 12, 12, 12),
                        _mm256_set1_epi8(order == PixelOrder::BlueFirst ? 3 : 0));
    const __m256i zero = _mm256_setzero_si256();
    std::size_t i = 0;
    for (; i + 8 <= pixels; i += 8) {
        const __m256i above = load(over + i);
        const __m256i below = load(to + i);
        const __m256i rest = _mm256_xor_si256(_mm256_shuffle_epi8(above, alphaEverywhere), _mm256_set1_epi8(-1));
        const __m256i low = timesRest(_mm256_unpacklo_epi8(below, zero), _mm256_unpacklo_epi8(rest, zero));
        const __m256i high = timesRest(_mm256_unpackhi_epi8(below, zero), _mm256_unpackhi_epi8(rest, zero));
        put(to + i, _mm256_add_epi8(above, _mm256_packus_epi16(low, high)));
    }
    plainRowFunctions().blend(to + i, over + i, pixels - i, order);
}

constexpr RowFunctions avx2{copy,     mix,        scaleColumns, addToSums, addPairsToSums,
                            addPairs, addTriples, divideSums,   blend};

} // namespace

const RowFunctions* avx2RowFunctions()
{
    return __builtin_cpu_supports("avx2") ? &avx2 : nullptr;
}

} // namespace lumavex

#else

const lumavex::RowFunctions* lumavex::avx2RowFunctions()
{
    return nullptr;
}

#endif
