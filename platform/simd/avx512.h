// Lanes of AVX-512 (F and DQ): eight numbers. Include only where the compiler is told to use it.
#pragma once

#include <cstdint>
#include <immintrin.h>

namespace qmml::platform {

struct Avx512Lane {
    using D = __m512d;
    using M = __mmask8;
    using I [[gnu::vector_size(64)]] = std::uint64_t; // unsigned: sums may wrap
    static constexpr int width = 8;

    static D load(const double* p) noexcept { return _mm512_loadu_pd(p); }
    static void store(double* p, D v) noexcept { _mm512_storeu_pd(p, v); }
    static void stream(double* p, D v) noexcept { _mm512_stream_pd(p, v); } // p on a cache line; past the caches
    static D set(double v) noexcept { return _mm512_set1_pd(v); }
    static I bits(std::uint64_t v) noexcept { return I{} + v; }

    static M less(D a, D b) noexcept { return _mm512_cmp_pd_mask(a, b, _CMP_LT_OQ); }
    static M less_equal(D a, D b) noexcept { return _mm512_cmp_pd_mask(a, b, _CMP_LE_OQ); }
    static M differ(D a, D b) noexcept { return _mm512_cmp_pd_mask(a, b, _CMP_NEQ_OQ); }
    static M both(M a, M b) noexcept { return static_cast<M>(a & b); }
    static M either(M a, M b) noexcept { return static_cast<M>(a | b); }
    static M negate(M a) noexcept { return static_cast<M>(~a); }
    static bool any(M a) noexcept { return a != 0; }
    static M any_bit(I v) noexcept
    {
        return _mm512_test_epi64_mask(reinterpret_cast<__m512i>(v), reinterpret_cast<__m512i>(v));
    }

    static M irregular(D v) noexcept { return _mm512_fpclass_pd_mask(v, 0x38); } // both infinities, denormals

    static D select(M m, D a, D b) noexcept { return _mm512_mask_blend_pd(m, b, a); }
    static I as_bits(D v) noexcept { return reinterpret_cast<I>(v); }
    static D as_number(I v) noexcept { return reinterpret_cast<D>(v); }
    template <int K>
    static I shift_left(I v) noexcept
    {
        return v << K;
    }
    template <int K>
    static I shift_right(I v) noexcept
    {
        return v >> K;
    }
    static D gather(const double* table, I index) noexcept
    {
        return _mm512_i64gather_pd(reinterpret_cast<__m512i>(index), table, 8);
    }
    static D sqrt(D v) noexcept { return _mm512_sqrt_pd(v); }

    // With a mask of all lanes: GCC 12 warns about what its headers make of the forms without.
    static D larger(D a, D b) noexcept { return _mm512_maskz_max_pd(0xff, a, b); }
    static double largest_of(D v) noexcept
    {
        const __m256d four =
            _mm256_max_pd(_mm512_maskz_extractf64x4_pd(0xff, v, 0), _mm512_maskz_extractf64x4_pd(0xff, v, 1));
        const __m128d two = _mm_max_pd(_mm256_castpd256_pd128(four), _mm256_extractf128_pd(four, 1));
        return _mm_cvtsd_f64(_mm_max_sd(two, _mm_unpackhi_pd(two, two)));
    }
    static int last_of(M m) noexcept { return any(m) ? 31 - __builtin_clz(m) : -1; }

    static D load_first(const double* p, int count) noexcept
    {
        return _mm512_mask_loadu_pd(set(*p), static_cast<M>((1u << count) - 1), p);
    }
    static void store_first(double* p, D v, int count) noexcept
    {
        _mm512_mask_storeu_pd(p, static_cast<M>((1u << count) - 1), v);
    }

    static void transpose(D (&rows)[width]) noexcept
    {
        D pairs[width], quads[width];
        for (int i = 0; i < width; i += 2) { // 128-bit parts hold two numbers of one column
            pairs[i] = _mm512_unpacklo_pd(rows[i], rows[i + 1]);
            pairs[i + 1] = _mm512_unpackhi_pd(rows[i], rows[i + 1]);
        }
        for (int i = 0; i < width; i += 4)
            for (int k = 0; k < 2; ++k) { // columns k, k + 4 and k + 2, k + 6 of four rows
                quads[i + k] = _mm512_shuffle_f64x2(pairs[i + k], pairs[i + k + 2], 0x88);
                quads[i + k + 2] = _mm512_shuffle_f64x2(pairs[i + k], pairs[i + k + 2], 0xdd);
            }
        for (int k = 0; k < 4; ++k) {
            rows[k] = _mm512_shuffle_f64x2(quads[k], quads[k + 4], 0x88);
            rows[k + 4] = _mm512_shuffle_f64x2(quads[k], quads[k + 4], 0xdd);
        }
    }

    // The lanes of index, those of high counted from 8 on.
    static D pick(D low, D high, I index) noexcept
    {
        return _mm512_permutex2var_pd(low, reinterpret_cast<__m512i>(index), high);
    }
};

} // namespace qmml::platform
