// Keys in lanes of AVX2: four of them. Include only where the compiler is told to use it.
#pragma once

#include "platform/simd/key_arrangements.h"

#include <cstdint>
#include <immintrin.h>

namespace qmml::platform {

struct Avx2Keys {
    using V = __m256i;
    using M = __m256i;
    using Arrangement = __m256i;
    static constexpr int width = 4;

    static V load(const double* p) noexcept { return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p)); }
    static void store(double* p, V v) noexcept { _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), v); }
    static V load_first(const double* p, std::int64_t count, V fill) noexcept
    {
        return select(first(count), _mm256_maskload_epi64(reinterpret_cast<const long long*>(p), first(count)), fill);
    }
    static void store_first(double* p, V v, std::int64_t count) noexcept
    {
        _mm256_maskstore_epi64(reinterpret_cast<long long*>(p), first(count), v);
    }

    static V set(std::int64_t v) noexcept { return _mm256_set1_epi64x(v); }
    static V sum(V a, V b) noexcept { return _mm256_add_epi64(a, b); }
    static V difference(V a, V b) noexcept { return _mm256_sub_epi64(a, b); }
    static V exclusive(V a, V b) noexcept { return _mm256_xor_si256(a, b); }
    static V reflect(V v) noexcept { return _mm256_xor_si256(v, _mm256_srli_epi64(less(v, set(0)), 1)); }

    static unsigned present(V v) noexcept // the bits without their sign are at most infinity's
    {
        const V magnitude = _mm256_srli_epi64(_mm256_slli_epi64(v, 1), 1);
        return bits(less(magnitude, set(0x7FF0000000000001)));
    }

    static V lesser(V a, V b) noexcept { return select(less(b, a), b, a); }
    static V greater(V a, V b) noexcept { return select(less(b, a), a, b); }
    static M less(V a, V b) noexcept { return _mm256_cmpgt_epi64(b, a); }
    static M differ(V a, V b) noexcept { return exclusive(_mm256_cmpeq_epi64(a, b), set(-1)); }
    static V select(M m, V a, V b) noexcept { return _mm256_blendv_epi8(b, a, m); }

    static unsigned bits(M m) noexcept { return static_cast<unsigned>(_mm256_movemask_pd(_mm256_castsi256_pd(m))); }
    static int count(unsigned bits) noexcept { return __builtin_popcount(bits); }
    static Arrangement front(unsigned bits) noexcept
    {
        return _mm256_cvtepu8_epi32(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(s_front.parts[bits])));
    }
    static V arrange(V v, Arrangement lanes) noexcept { return _mm256_permutevar8x32_epi32(v, lanes); }

    // Lanes c and c ^ X change places.
    template <int X>
    static V cross(V v) noexcept
    {
        return _mm256_permute4x64_epi64(v, _MM_SHUFFLE(3 ^ X, 2 ^ X, 1 ^ X, 0 ^ X));
    }
    // The lower one of each pair of lanes that cross<X> exchanges from low, the upper one from high.
    template <int X>
    static V weave(V low, V high) noexcept
    {
        return _mm256_blend_epi32(low, high, X >= 2 ? 0xF0 : 0xCC);
    }

    static void transpose(V* row) noexcept
    {
        const V low0 = _mm256_unpacklo_epi64(row[0], row[1]), high0 = _mm256_unpackhi_epi64(row[0], row[1]);
        const V low2 = _mm256_unpacklo_epi64(row[2], row[3]), high2 = _mm256_unpackhi_epi64(row[2], row[3]);
        row[0] = _mm256_permute2x128_si256(low0, low2, 0x20);
        row[1] = _mm256_permute2x128_si256(high0, high2, 0x20);
        row[2] = _mm256_permute2x128_si256(low0, low2, 0x31);
        row[3] = _mm256_permute2x128_si256(high0, high2, 0x31);
    }

private:
    static constexpr FrontLanes<4, 2> s_front = {};

    static M first(std::int64_t count) noexcept { return less(_mm256_setr_epi64x(0, 1, 2, 3), set(count)); }
};

} // namespace qmml::platform
