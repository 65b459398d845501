// Keys in lanes of AVX-512 (F and DQ): eight of them. Include only where the compiler is told to use it.
#pragma once

#include "platform/simd/key_arrangements.h"

#include <cstdint>
#include <immintrin.h>

namespace qmml::platform {

struct Avx512Keys {
    using V = __m512i;
    using M = __mmask8;
    using Arrangement = __m512i;
    static constexpr int width = 8;

    static V load(const double* p) noexcept { return _mm512_loadu_si512(p); }
    static void store(double* p, V v) noexcept { _mm512_storeu_si512(p, v); }
    static V load_first(const double* p, std::int64_t count, V fill) noexcept
    {
        return _mm512_mask_loadu_epi64(fill, first(count), p);
    }
    static void store_first(double* p, V v, std::int64_t count) noexcept
    {
        _mm512_mask_storeu_epi64(p, first(count), v);
    }

    static V set(std::int64_t v) noexcept { return _mm512_set1_epi64(v); }
    static V sum(V a, V b) noexcept { return _mm512_add_epi64(a, b); }
    static V difference(V a, V b) noexcept { return _mm512_sub_epi64(a, b); }
    static V exclusive(V a, V b) noexcept { return _mm512_xor_si512(a, b); }
    static V reflect(V v) noexcept { return _mm512_xor_si512(v, _mm512_srli_epi64(_mm512_srai_epi64(v, 63), 1)); }

    static unsigned present(V v) noexcept // not a NaN, quiet or signalling
    {
        return _mm512_fpclass_pd_mask(_mm512_castsi512_pd(v), 0x81) ^ 0xFFu;
    }

    static V lesser(V a, V b) noexcept { return _mm512_min_epi64(a, b); }
    static V greater(V a, V b) noexcept { return _mm512_max_epi64(a, b); }
    static M less(V a, V b) noexcept { return _mm512_cmplt_epi64_mask(a, b); }
    static M differ(V a, V b) noexcept { return _mm512_cmpneq_epi64_mask(a, b); }
    static V select(M m, V a, V b) noexcept { return _mm512_mask_blend_epi64(m, b, a); }

    static unsigned bits(M m) noexcept { return m; }
    static int count(unsigned bits) noexcept { return __builtin_popcount(bits); }
    // Out of a table and not by a compress instruction, which takes the lanes of one kind at a time.
    static Arrangement front(unsigned bits) noexcept
    {
        return _mm512_cvtepu8_epi64(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(s_front.parts[bits])));
    }
    static V arrange(V v, Arrangement lanes) noexcept { return _mm512_permutexvar_epi64(lanes, v); }

    // Lanes c and c ^ X change places.
    template <int X>
    static V cross(V v) noexcept
    {
        if constexpr (X == 1)
            return _mm512_shuffle_epi32(v, _MM_PERM_BADC);
        else if constexpr (X == 2)
            return _mm512_permutex_epi64(v, _MM_SHUFFLE(1, 0, 3, 2));
        else if constexpr (X == 3)
            return _mm512_permutex_epi64(v, _MM_SHUFFLE(0, 1, 2, 3));
        else
            return _mm512_permutexvar_epi64(_mm512_setr_epi64(0 ^ X, 1 ^ X, 2 ^ X, 3 ^ X, 4 ^ X, 5 ^ X, 6 ^ X, 7 ^ X),
                                            v);
    }
    // The lower one of each pair of lanes that cross<X> exchanges from low, the upper one from high.
    template <int X>
    static V weave(V low, V high) noexcept
    {
        return _mm512_mask_blend_epi64(X >= 4 ? 0xF0 : X >= 2 ? 0xCC : 0xAA, low, high);
    }

    static void transpose(V* row) noexcept
    {
        V pair[8], quad[8];
        for (int i = 0; i < 8; i += 2) {
            pair[i] = _mm512_unpacklo_epi64(row[i], row[i + 1]);
            pair[i + 1] = _mm512_unpackhi_epi64(row[i], row[i + 1]);
        }
        for (int i = 0; i < 8; i += 4)
            for (int odd = 0; odd < 2; ++odd) {
                quad[i + odd] = _mm512_shuffle_i64x2(pair[i + odd], pair[i + 2 + odd], _MM_SHUFFLE(2, 0, 2, 0));
                quad[i + 2 + odd] = _mm512_shuffle_i64x2(pair[i + odd], pair[i + 2 + odd], _MM_SHUFFLE(3, 1, 3, 1));
            }
        for (int i = 0; i < 4; ++i) {
            row[i] = _mm512_shuffle_i64x2(quad[i], quad[i + 4], _MM_SHUFFLE(2, 0, 2, 0));
            row[i + 4] = _mm512_shuffle_i64x2(quad[i], quad[i + 4], _MM_SHUFFLE(3, 1, 3, 1));
        }
    }

private:
    static constexpr FrontLanes<8, 1> s_front = {};

    static M first(std::int64_t count) noexcept
    {
        return static_cast<M>(count >= width ? 0xFF : count <= 0 ? 0 : (1 << count) - 1);
    }
};

} // namespace qmml::platform
