// Lanes of AVX2: four numbers. Include only where the compiler is told to use it.
#pragma once

#include <cstdint>
#include <immintrin.h>

namespace qmml::platform {

struct Avx2Lane {
    using D = __m256d;
    using M = __m256d;
    using I [[gnu::vector_size(32)]] = std::uint64_t; // unsigned: sums may wrap
    static constexpr int width = 4;

    static D load(const double* p) noexcept { return _mm256_loadu_pd(p); }
    static void store(double* p, D v) noexcept { _mm256_storeu_pd(p, v); }
    static void stream(double* p, D v) noexcept { _mm256_stream_pd(p, v); }
    static D set(double v) noexcept { return _mm256_set1_pd(v); }
    static I bits(std::uint64_t v) noexcept { return I{} + v; }

    static M less(D a, D b) noexcept { return _mm256_cmp_pd(a, b, _CMP_LT_OQ); }
    static M less_equal(D a, D b) noexcept { return _mm256_cmp_pd(a, b, _CMP_LE_OQ); }
    static M differ(D a, D b) noexcept { return _mm256_cmp_pd(a, b, _CMP_NEQ_OQ); }
    static M both(M a, M b) noexcept { return _mm256_and_pd(a, b); }
    static M either(M a, M b) noexcept { return _mm256_or_pd(a, b); }
    static M negate(M a) noexcept { return _mm256_xor_pd(a, _mm256_castsi256_pd(_mm256_set1_epi32(-1))); }
    static bool any(M a) noexcept { return _mm256_movemask_pd(a) != 0; }
    static M any_bit(I v) noexcept
    {
        return negate(_mm256_castsi256_pd(_mm256_cmpeq_epi64(reinterpret_cast<__m256i>(v), _mm256_setzero_si256())));
    }

    static M irregular(D v) noexcept
    {
        const D magnitude = _mm256_andnot_pd(set(-0.0), v);
        const auto infinite = _mm256_cmp_pd(magnitude, reinterpret_cast<D>(bits(0x7ff0000000000000u)), _CMP_EQ_OQ);
        return either(infinite, both(less(magnitude, set(0x1p-1022)), differ(magnitude, set(0.0))));
    }

    static D select(M m, D a, D b) noexcept { return _mm256_blendv_pd(b, a, m); }
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
        return _mm256_i64gather_pd(table, reinterpret_cast<__m256i>(index), 8);
    }
    static D sqrt(D v) noexcept { return _mm256_sqrt_pd(v); }

    static D larger(D a, D b) noexcept { return _mm256_max_pd(a, b); }
    static double largest_of(D v) noexcept
    {
        const __m128d two = _mm_max_pd(_mm256_castpd256_pd128(v), _mm256_extractf128_pd(v, 1));
        return _mm_cvtsd_f64(_mm_max_sd(two, _mm_unpackhi_pd(two, two)));
    }
    static int last_of(M m) noexcept
    {
        return any(m) ? 31 - __builtin_clz(static_cast<unsigned>(_mm256_movemask_pd(m))) : -1;
    }

    static D load_first(const double* p, int count) noexcept
    {
        const auto there = _mm256_cmpgt_epi64(_mm256_set1_epi64x(count), _mm256_setr_epi64x(0, 1, 2, 3));
        return _mm256_blendv_pd(set(*p), _mm256_maskload_pd(p, there), _mm256_castsi256_pd(there));
    }
    static void store_first(double* p, D v, int count) noexcept // masked stores are slow on some processors
    {
        if (count == width)
            return store(p, v);
        __m128d half = _mm256_castpd256_pd128(v);
        if (count & 2) {
            _mm_storeu_pd(p, half);
            half = _mm256_extractf128_pd(v, 1);
        }
        if (count & 1)
            _mm_store_sd(p + (count & 2), half);
    }

    static void transpose(D (&rows)[width]) noexcept
    {
        const D a = _mm256_unpacklo_pd(rows[0], rows[1]), b = _mm256_unpackhi_pd(rows[0], rows[1]);
        const D c = _mm256_unpacklo_pd(rows[2], rows[3]), d = _mm256_unpackhi_pd(rows[2], rows[3]);
        rows[0] = _mm256_permute2f128_pd(a, c, 0x20);
        rows[1] = _mm256_permute2f128_pd(b, d, 0x20);
        rows[2] = _mm256_permute2f128_pd(a, c, 0x31);
        rows[3] = _mm256_permute2f128_pd(b, d, 0x31);
    }
};

} // namespace qmml::platform
