// SPDX-License-Identifier: GPL-3.0-or-later
#include "movie/BlockTransform.h"

// Only functions marked LUMAVEX_AVX2 may use AVX2, so that the program also starts on processors without it.
#if defined(__x86_64__)

#include <immintrin.h>

#define LUMAVEX_AVX2 __attribute__((target("avx2")))
#define LUMAVEX_AVX2_INLINE __attribute__((target("avx2"), always_inline)) inline

namespace lumavex {

namespace {

/// Rows or columns of two blocks: the first block in the lower halves of the registers, the second in the upper.
/// Comments below that mention one block apply to both.
using Lines = __m256i[8];

/// Weights of two values, in 8192ths.
struct Weights {
    int first;
    int second;
};

LUMAVEX_AVX2_INLINE __m256i pairOf(Weights weights)
{
    return _mm256_set1_epi32(weights.second * 0x10000 + (weights.first & 0xFFFF));
}

// Loads the samples as columns, extended to 16 bits.
LUMAVEX_AVX2_INLINE void loadColumns(const std::uint8_t* first, const std::uint8_t* second, std::ptrdiff_t stride,
                                     Lines& columns)
{
    Lines rows;
    for (std::size_t i = 0; i < 8; ++i) {
        const std::ptrdiff_t offset = static_cast<std::ptrdiff_t>(i) * stride;
        rows[i] = _mm256_inserti128_si256(
            _mm256_castsi128_si256(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(first + offset))),
            _mm_loadl_epi64(reinterpret_cast<const __m128i*>(second + offset)), 1);
    }
    const __m256i rows01 = _mm256_unpacklo_epi8(rows[0], rows[1]);
    const __m256i rows23 = _mm256_unpacklo_epi8(rows[2], rows[3]);
    const __m256i rows45 = _mm256_unpacklo_epi8(rows[4], rows[5]);
    const __m256i rows67 = _mm256_unpacklo_epi8(rows[6], rows[7]);
    const __m256i upperLeft = _mm256_unpacklo_epi16(rows01, rows23);
    const __m256i upperRight = _mm256_unpackhi_epi16(rows01, rows23);
    const __m256i lowerLeft = _mm256_unpacklo_epi16(rows45, rows67);
    const __m256i lowerRight = _mm256_unpackhi_epi16(rows45, rows67);
    const __m256i twos[4] = {_mm256_unpacklo_epi32(upperLeft, lowerLeft), _mm256_unpackhi_epi32(upperLeft, lowerLeft),
                             _mm256_unpacklo_epi32(upperRight, lowerRight),
                             _mm256_unpackhi_epi32(upperRight, lowerRight)};
    for (std::size_t i = 0; i < 4; ++i) {
        columns[2 * i] = _mm256_unpacklo_epi8(twos[i], _mm256_setzero_si256());
        columns[2 * i + 1] = _mm256_unpackhi_epi8(twos[i], _mm256_setzero_si256());
    }
}

LUMAVEX_AVX2_INLINE void transpose(Lines& lines)
{
    Lines a;
    for (std::size_t i = 0; i < 4; ++i) {
        a[i] = _mm256_unpacklo_epi16(lines[2 * i], lines[2 * i + 1]);
        a[i + 4] = _mm256_unpackhi_epi16(lines[2 * i], lines[2 * i + 1]);
    }
    Lines b;
    for (std::size_t i = 0; i < 8; i += 2) {
        b[i] = _mm256_unpacklo_epi32(a[i], a[i + 1]);
        b[i + 1] = _mm256_unpackhi_epi32(a[i], a[i + 1]);
    }
    for (std::size_t i = 0; i < 2; ++i) {
        lines[4 * i] = _mm256_unpacklo_epi64(b[4 * i], b[4 * i + 2]);
        lines[4 * i + 1] = _mm256_unpackhi_epi64(b[4 * i], b[4 * i + 2]);
        lines[4 * i + 2] = _mm256_unpacklo_epi64(b[4 * i + 1], b[4 * i + 3]);
        lines[4 * i + 3] = _mm256_unpackhi_epi64(b[4 * i + 1], b[4 * i + 3]);
    }
}

enum class Direction { Horizontal, Vertical };

constexpr int kWeightBits = 13;
// Fractional bits kept between the two directions.
constexpr int kFractionBits = 2;

template <Direction direction>
LUMAVEX_AVX2_INLINE __m256i rounded(__m256i low, __m256i high)
{
    constexpr int shift =
        direction == Direction::Horizontal ? kWeightBits - kFractionBits : kWeightBits + kFractionBits;
    const __m256i half = _mm256_set1_epi32(1 << (shift - 1));
    return _mm256_packs_epi32(_mm256_srai_epi32(_mm256_add_epi32(low, half), shift),
                              _mm256_srai_epi32(_mm256_add_epi32(high, half), shift));
}

/// Interleaved values of two lines.
struct Pairs {
    LUMAVEX_AVX2_INLINE Pairs(__m256i first, __m256i second)
        : low(_mm256_unpacklo_epi16(first, second)), high(_mm256_unpackhi_epi16(first, second))
    {
    }
    __m256i low;
    __m256i high;
};

template <Direction direction>
LUMAVEX_AVX2_INLINE __m256i weighted(const Pairs& pairs, Weights weights)
{
    const __m256i both = pairOf(weights);
    return rounded<direction>(_mm256_madd_epi16(pairs.low, both), _mm256_madd_epi16(pairs.high, both));
}

template <Direction direction>
LUMAVEX_AVX2_INLINE __m256i weighted(const Pairs& a, Weights ofA, const Pairs& b, Weights ofB)
{
    const __m256i bothA = pairOf(ofA);
    const __m256i bothB = pairOf(ofB);
    return rounded<direction>(_mm256_add_epi32(_mm256_madd_epi16(a.low, bothA), _mm256_madd_epi16(b.low, bothB)),
                              _mm256_add_epi32(_mm256_madd_epi16(a.high, bothA), _mm256_madd_epi16(b.high, bothB)));
}

// Transforms across the lines. The weights are those of the eleven multiplications, multiplied out, which gives the
// same integers.
template <Direction direction>
LUMAVEX_AVX2_INLINE void transform(Lines& line)
{
    const __m256i sum0 = _mm256_add_epi16(line[0], line[7]);
    const __m256i sum1 = _mm256_add_epi16(line[1], line[6]);
    const __m256i sum2 = _mm256_add_epi16(line[2], line[5]);
    const __m256i sum3 = _mm256_add_epi16(line[3], line[4]);
    const Pairs odd01(_mm256_sub_epi16(line[3], line[4]), _mm256_sub_epi16(line[2], line[5]));
    const Pairs odd23(_mm256_sub_epi16(line[1], line[6]), _mm256_sub_epi16(line[0], line[7]));
    const __m256i even0 = _mm256_add_epi16(sum0, sum3);
    const __m256i even1 = _mm256_add_epi16(sum1, sum2);
    const Pairs even23(_mm256_sub_epi16(sum0, sum3), _mm256_sub_epi16(sum1, sum2));

    if constexpr (direction == Direction::Horizontal) {
        // Centres the samples about zero, which changes only the sum of all samples.
        const __m256i middle = _mm256_set1_epi16((8 * 128) << kFractionBits);
        line[0] = _mm256_sub_epi16(_mm256_slli_epi16(_mm256_add_epi16(even0, even1), kFractionBits), middle);
        line[4] = _mm256_slli_epi16(_mm256_sub_epi16(even0, even1), kFractionBits);
    } else {
        const __m256i half = _mm256_set1_epi16(1 << (kFractionBits - 1));
        line[0] = _mm256_srai_epi16(_mm256_add_epi16(_mm256_add_epi16(even0, even1), half), kFractionBits);
        line[4] = _mm256_srai_epi16(_mm256_add_epi16(_mm256_sub_epi16(even0, even1), half), kFractionBits);
    }
    line[2] = weighted<direction>(even23, {4433 + 6270, 4433});
    line[6] = weighted<direction>(even23, {4433, 4433 - 15137});
    line[1] = weighted<direction>(odd01, {9633 - 7373, 9633 - 3196}, odd23, {9633, 9633 - 7373 - 3196 + 12299});
    line[3] = weighted<direction>(odd01, {9633 - 16069, 9633 - 20995}, odd23, {9633 - 20995 - 16069 + 25172, 9633});
    line[5] = weighted<direction>(odd01, {9633, 9633 - 20995 - 3196 + 16819}, odd23, {9633 - 20995, 9633 - 3196});
    line[7] = weighted<direction>(odd01, {9633 - 7373 - 16069 + 2446, 9633}, odd23, {9633 - 16069, 9633 - 7373});
}

LUMAVEX_AVX2_INLINE __m256i loadRow(const std::array<std::uint16_t, kBlockSize>& values, std::size_t row)
{
    return _mm256_broadcastsi128_si256(_mm_load_si128(reinterpret_cast<const __m128i*>(values.data() + 8 * row)));
}

// Replaces coefficients by quotients. Returns the largest magnitudes of the AC coefficients.
LUMAVEX_AVX2_INLINE __m256i quantise(Lines& rows, const Quantiser& quantiser)
{
    const __m256i noMean = _mm256_setr_epi16(0, -1, -1, -1, -1, -1, -1, -1, 0, -1, -1, -1, -1, -1, -1, -1);
    __m256i largest = _mm256_setzero_si256();
    for (std::size_t i = 0; i < 8; ++i) {
        const __m256i sizes = _mm256_add_epi16(_mm256_abs_epi16(rows[i]), loadRow(quantiser.bias, i));
        const __m256i quotients =
            _mm256_srli_epi16(_mm256_mulhi_epu16(sizes, loadRow(quantiser.reciprocal, i)), Quantiser::kShift);
        largest = _mm256_max_epi16(largest, i == 0 ? _mm256_and_si256(quotients, noMean) : quotients);
        rows[i] = _mm256_sign_epi16(quotients, rows[i]);
    }
    return largest;
}

/// Moves bytes from one quarter of the rows to one quarter of the coding order; `any` is false when none moves.
struct Shuffle {
    alignas(16) std::array<std::int8_t, 16> from{};
    bool any = false;
};

constexpr Shuffle shuffleOf(std::size_t quarter, std::size_t source)
{
    Shuffle shuffle;
    for (std::size_t i = 0; i < 16; ++i) {
        const std::size_t natural = kCodingOrder[16 * quarter + i];
        const bool comes = natural / 16 == source;
        shuffle.from[i] = comes ? static_cast<std::int8_t>(natural % 16) : std::int8_t{-1};
        shuffle.any = shuffle.any || comes;
    }
    return shuffle;
}

template <std::size_t quarter, std::size_t source>
LUMAVEX_AVX2_INLINE void addShuffled(__m256i& sum, __m256i bytes)
{
    static constexpr Shuffle shuffle = shuffleOf(quarter, source);
    if constexpr (shuffle.any) {
        const __m256i from =
            _mm256_broadcastsi128_si256(_mm_load_si128(reinterpret_cast<const __m128i*>(shuffle.from.data())));
        sum = _mm256_or_si256(sum, _mm256_shuffle_epi8(bytes, from));
    }
}

// Writes a quarter of both blocks' values. Returns one bit per zero value, the first block's in the lower half.
template <std::size_t quarter>
LUMAVEX_AVX2_INLINE std::uint32_t storeQuarter(const __m256i (&bytes)[4], std::array<QuantisedBlock, 2>& blocks)
{
    __m256i values = _mm256_setzero_si256();
    addShuffled<quarter, 0>(values, bytes[0]);
    addShuffled<quarter, 1>(values, bytes[1]);
    addShuffled<quarter, 2>(values, bytes[2]);
    addShuffled<quarter, 3>(values, bytes[3]);
    _mm_store_si128(reinterpret_cast<__m128i*>(blocks[0].values.data() + 16 * quarter), _mm256_castsi256_si128(values));
    _mm_store_si128(reinterpret_cast<__m128i*>(blocks[1].values.data() + 16 * quarter),
                    _mm256_extracti128_si256(values, 1));
    return static_cast<std::uint32_t>(_mm256_movemask_epi8(_mm256_cmpeq_epi8(values, _mm256_setzero_si256())));
}

LUMAVEX_AVX2_INLINE void storeWide(const Lines& rows, std::array<QuantisedBlock, 2>& blocks)
{
    for (std::size_t i = 0; i < 8; ++i) {
        _mm_store_si128(reinterpret_cast<__m128i*>(blocks[0].wide.data() + 8 * i), _mm256_castsi256_si128(rows[i]));
        _mm_store_si128(reinterpret_cast<__m128i*>(blocks[1].wide.data() + 8 * i),
                        _mm256_extracti128_si256(rows[i], 1));
    }
}

LUMAVEX_AVX2 void transformPair(const std::uint8_t* first, const std::uint8_t* second, std::ptrdiff_t stride,
                                const Quantiser& quantiser, std::array<QuantisedBlock, 2>& blocks)
{
    Lines lines;
    loadColumns(first, second, stride, lines);
    transform<Direction::Horizontal>(lines);
    transpose(lines);
    transform<Direction::Vertical>(lines);
    const __m256i largest = quantise(lines, quantiser);

    __m256i bytes[4];
    for (std::size_t i = 0; i < 4; ++i)
        bytes[i] = _mm256_packs_epi16(lines[2 * i], lines[2 * i + 1]);
    const std::uint64_t zero0 = storeQuarter<0>(bytes, blocks);
    const std::uint64_t zero1 = storeQuarter<1>(bytes, blocks);
    const std::uint64_t zero2 = storeQuarter<2>(bytes, blocks);
    const std::uint64_t zero3 = storeQuarter<3>(bytes, blocks);
    constexpr std::uint64_t low = 0xFFFF;
    blocks[0].nonZero = ~((zero0 & low) | (zero1 & low) << 16 | (zero2 & low) << 32 | (zero3 & low) << 48);
    blocks[1].nonZero = ~(zero0 >> 16 | zero1 >> 16 << 16 | zero2 >> 16 << 32 | zero3 >> 16 << 48);

    const int large = _mm256_movemask_epi8(_mm256_cmpgt_epi16(largest, _mm256_set1_epi16(127)));
    blocks[0].saturated = (large & 0xFFFF) != 0;
    blocks[1].saturated = (static_cast<std::uint32_t>(large) >> 16) != 0;
    if (large != 0)
        storeWide(lines, blocks);
}

} // namespace

TransformBlockPair avx2TransformBlockPair()
{
    return __builtin_cpu_supports("avx2") ? transformPair : nullptr;
}

} // namespace lumavex

#else

lumavex::TransformBlockPair lumavex::avx2TransformBlockPair()
{
    return nullptr;
}

#endif
