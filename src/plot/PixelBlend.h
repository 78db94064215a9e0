#pragma once

#include <cstdint>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif
#if defined(__x86_64__) && (defined(__GNUC__) || defined(__clang__))
#include <immintrin.h>
#define TESSALY_PIXELBLEND_AVX2 1
#endif

namespace Tessaly {

// The raster painter's source-over on premultiplied 32-bit pixels, to the bit, for rows of pixels.
// Every channel is x * a / 255 rounded as (t + (t >> 8) + 0x80) >> 8 with t = x * a, and a pixel
// becomes src + dst * (255 - alpha of src). The same formula covers the painter's shortcuts: a
// transparent source leaves the pixel as it is, an opaque one replaces it.
namespace PixelBlend {

inline std::uint32_t byteMul(std::uint32_t x, std::uint32_t a)
{
    std::uint32_t t = (x & 0xff00ffu) * a;
    t = (t + ((t >> 8) & 0xff00ffu) + 0x800080u) >> 8;
    t &= 0xff00ffu;
    x = ((x >> 8) & 0xff00ffu) * a;
    x = x + ((x >> 8) & 0xff00ffu) + 0x800080u;
    x &= 0xff00ff00u;
    return x | t;
}

inline std::uint32_t over(std::uint32_t src, std::uint32_t dst)
{
    return src + byteMul(dst, 255u - (src >> 24));
}

#if defined(__SSE2__)
// Two pixels as eight 16-bit channels.
inline __m128i byteMul16(__m128i x, __m128i a)
{
    __m128i t = _mm_mullo_epi16(x, a);
    t = _mm_add_epi16(t, _mm_srli_epi16(t, 8));
    t = _mm_add_epi16(t, _mm_set1_epi16(0x80));
    return _mm_srli_epi16(t, 8);
}

inline __m128i alphaOf16(__m128i pixels)
{
    return _mm_shufflehi_epi16(_mm_shufflelo_epi16(pixels, 0xff), 0xff);
}

inline __m128i over16(__m128i src, __m128i dst)
{
    const __m128i inverse = _mm_sub_epi16(_mm_set1_epi16(0xff), alphaOf16(src));
    return _mm_add_epi16(src, byteMul16(dst, inverse));
}
#endif

// dst[i] = src[i] over dst[i] for n pixels.
inline void overRow(std::uint32_t* dst, const std::uint32_t* src, int n)
{
    int i = 0;
#if defined(__SSE2__)
    const __m128i zero = _mm_setzero_si128();
    for (; i + 4 <= n; i += 4) {
        const __m128i s = _mm_loadu_si128(reinterpret_cast<const __m128i*>(src + i));
        const __m128i d = _mm_loadu_si128(reinterpret_cast<const __m128i*>(dst + i));
        const __m128i low = over16(_mm_unpacklo_epi8(s, zero), _mm_unpacklo_epi8(d, zero));
        const __m128i high = over16(_mm_unpackhi_epi8(s, zero), _mm_unpackhi_epi8(d, zero));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(dst + i), _mm_packus_epi16(low, high));
    }
#endif
    for (; i < n; ++i)
        dst[i] = over(src[i], dst[i]);
}

// dst[i] = (color scaled by coverage[i] / 255) over dst[i] for n pixels; color is premultiplied.
inline void coverageOverRow(std::uint32_t* dst, const std::uint8_t* coverage, std::uint32_t color, int n)
{
    int i = 0;
#if defined(__SSE2__)
    const __m128i zero = _mm_setzero_si128();
    const __m128i color16 = _mm_unpacklo_epi8(_mm_set1_epi32(static_cast<int>(color)), zero);
    for (; i + 4 <= n; i += 4) {
        std::int32_t four = 0;
        std::memcpy(&four, coverage + i, sizeof four);
        const __m128i c16 = _mm_unpacklo_epi8(_mm_cvtsi32_si128(four), zero);
        const __m128i c32 = _mm_unpacklo_epi16(c16, c16);
        const __m128i d = _mm_loadu_si128(reinterpret_cast<const __m128i*>(dst + i));
        const __m128i low
            = over16(byteMul16(color16, _mm_unpacklo_epi32(c32, c32)), _mm_unpacklo_epi8(d, zero));
        const __m128i high
            = over16(byteMul16(color16, _mm_unpackhi_epi32(c32, c32)), _mm_unpackhi_epi8(d, zero));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(dst + i), _mm_packus_epi16(low, high));
    }
#endif
    for (; i < n; ++i)
        dst[i] = over(byteMul(color, coverage[i]), dst[i]);
}

// overRow for a source that is the same at every dot, prepared once: per pixel its four channels
// as 16-bit values in src16 and 255 minus its alpha, four times, in inverse16.
inline void overRowPrepared(
    std::uint32_t* dst, const std::uint16_t* src16, const std::uint16_t* inverse16, int n)
{
    int i = 0;
#if defined(__SSE2__)
    const __m128i zero = _mm_setzero_si128();
    for (; i + 4 <= n; i += 4) {
        const __m128i d = _mm_loadu_si128(reinterpret_cast<const __m128i*>(dst + i));
        const auto* s = reinterpret_cast<const __m128i*>(src16 + 4 * i);
        const auto* v = reinterpret_cast<const __m128i*>(inverse16 + 4 * i);
        const __m128i low
            = _mm_add_epi16(_mm_loadu_si128(s), byteMul16(_mm_unpacklo_epi8(d, zero), _mm_loadu_si128(v)));
        const __m128i high = _mm_add_epi16(
            _mm_loadu_si128(s + 1), byteMul16(_mm_unpackhi_epi8(d, zero), _mm_loadu_si128(v + 1)));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(dst + i), _mm_packus_epi16(low, high));
    }
#endif
    for (; i < n; ++i) {
        const std::uint16_t* s = src16 + 4 * i;
        const std::uint32_t src = static_cast<std::uint32_t>(s[0]) | static_cast<std::uint32_t>(s[1]) << 8
            | static_cast<std::uint32_t>(s[2]) << 16 | static_cast<std::uint32_t>(s[3]) << 24;
        dst[i] = src + byteMul(dst[i], inverse16[4 * i]);
    }
}

#if defined(TESSALY_PIXELBLEND_AVX2)
// overRowPrepared eight pixels at a time, for processors that have AVX2 (see hasAvx2); n must be a
// multiple of eight.
__attribute__((target("avx2"))) inline void overRowPrepared8(
    std::uint32_t* dst, const std::uint16_t* src16, const std::uint16_t* inverse16, int n)
{
    const __m256i half = _mm256_set1_epi16(0x80);
    const auto mul = [half](__m256i x, __m256i a) __attribute__((target("avx2")))
    {
        __m256i t = _mm256_mullo_epi16(x, a);
        t = _mm256_add_epi16(t, _mm256_srli_epi16(t, 8));
        return _mm256_srli_epi16(_mm256_add_epi16(t, half), 8);
    };
    for (int i = 0; i < n; i += 8) {
        const __m256i low = _mm256_cvtepu8_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(dst + i)));
        const __m256i high
            = _mm256_cvtepu8_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(dst + i + 4)));
        const auto* s = reinterpret_cast<const __m256i*>(src16 + 4 * i);
        const auto* v = reinterpret_cast<const __m256i*>(inverse16 + 4 * i);
        const __m256i resultLow = _mm256_add_epi16(_mm256_loadu_si256(s), mul(low, _mm256_loadu_si256(v)));
        const __m256i resultHigh
            = _mm256_add_epi16(_mm256_loadu_si256(s + 1), mul(high, _mm256_loadu_si256(v + 1)));
        // Packing works within each 128-bit half; the permutation puts the pixels back in order.
        const __m256i packed = _mm256_permute4x64_epi64(_mm256_packus_epi16(resultLow, resultHigh), 0xd8);
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(dst + i), packed);
    }
}

// coverageOverRow eight pixels at a time, for processors that have AVX2 (see hasAvx2), with the
// coverage prepared: per pixel its coverage four times as 16-bit values. n must be a multiple of
// eight. A coverage of zero leaves the pixel as it is, so rows may be padded with it.
__attribute__((target("avx2"))) inline void coverageOverRowPrepared8(
    std::uint32_t* dst, const std::uint16_t* coverage16, std::uint32_t color, int n)
{
    const __m256i half = _mm256_set1_epi16(0x80);
    const __m256i full = _mm256_set1_epi16(0xff);
    const auto mul = [half](__m256i x, __m256i a) __attribute__((target("avx2")))
    {
        __m256i t = _mm256_mullo_epi16(x, a);
        t = _mm256_add_epi16(t, _mm256_srli_epi16(t, 8));
        return _mm256_srli_epi16(_mm256_add_epi16(t, half), 8);
    };
    const auto over = [&mul, full ](__m256i src, __m256i d) __attribute__((target("avx2")))
    {
        const __m256i alpha = _mm256_shufflehi_epi16(_mm256_shufflelo_epi16(src, 0xff), 0xff);
        return _mm256_add_epi16(src, mul(d, _mm256_sub_epi16(full, alpha)));
    };
    const __m256i color16 = _mm256_cvtepu8_epi16(_mm_set1_epi32(static_cast<int>(color)));
    for (int i = 0; i < n; i += 8) {
        const __m256i low = _mm256_cvtepu8_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(dst + i)));
        const __m256i high
            = _mm256_cvtepu8_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(dst + i + 4)));
        const auto* c = reinterpret_cast<const __m256i*>(coverage16 + 4 * i);
        const __m256i resultLow = over(mul(color16, _mm256_loadu_si256(c)), low);
        const __m256i resultHigh = over(mul(color16, _mm256_loadu_si256(c + 1)), high);
        const __m256i packed = _mm256_permute4x64_epi64(_mm256_packus_epi16(resultLow, resultHigh), 0xd8);
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(dst + i), packed);
    }
}

inline bool hasAvx2()
{
    static const bool has = __builtin_cpu_supports("avx2");
    return has;
}
#else
inline bool hasAvx2()
{
    return false;
}
#endif

} // namespace PixelBlend

} // namespace Tessaly
