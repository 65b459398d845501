// Lanes of the x86-64 baseline: two numbers.
#pragma once

#include <cstdint>
#include <emmintrin.h>

namespace qmml::platform {

struct Sse2Lane {
    using D = __m128d;
    using M = __m128d;
    using I [[gnu::vector_size(16)]] = std::uint64_t; // unsigned: sums may wrap
    static constexpr int width = 2;

    static D load(const double* p) noexcept { return _mm_loadu_pd(p); }
    static void store(double* p, D v) noexcept { _mm_storeu_pd(p, v); }
    static void stream(double* p, D v) noexcept { _mm_stream_pd(p, v); }
    static D set(double v) noexcept { return _mm_set1_pd(v); }
    static I bits(std::uint64_t v) noexcept { return I{} + v; }

    static M less(D a, D b) noexcept { return _mm_cmplt_pd(a, b); }
    static M less_equal(D a, D b) noexcept { return _mm_cmple_pd(a, b); }
    static M differ(D a, D b) noexcept { return _mm_or_pd(_mm_cmplt_pd(a, b), _mm_cmplt_pd(b, a)); }
    static M both(M a, M b) noexcept { return _mm_and_pd(a, b); }
    static M either(M a, M b) noexcept { return _mm_or_pd(a, b); }
    static M negate(M a) noexcept { return _mm_xor_pd(a, _mm_castsi128_pd(_mm_set1_epi32(-1))); }
    static bool any(M a) noexcept { return _mm_movemask_pd(a) != 0; }
    static M any_bit(I v) noexcept // both 32-bit halves equal to zero, or not
    {
        const auto zero = _mm_cmpeq_epi32(reinterpret_cast<__m128i>(v), _mm_setzero_si128());
        return negate(_mm_castsi128_pd(_mm_and_si128(zero, _mm_shuffle_epi32(zero, _MM_SHUFFLE(2, 3, 0, 1)))));
    }

    static M irregular(D v) noexcept
    {
        const D magnitude = _mm_andnot_pd(set(-0.0), v);
        const auto infinite = _mm_cmpeq_pd(magnitude, reinterpret_cast<D>(bits(0x7ff0000000000000u)));
        return either(infinite, both(less(magnitude, set(0x1p-1022)), less(set(0.0), magnitude)));
    }

    static D select(M m, D a, D b) noexcept { return _mm_or_pd(_mm_and_pd(m, a), _mm_andnot_pd(m, b)); }
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
    static D gather(const double* table, I index) noexcept { return _mm_set_pd(table[index[1]], table[index[0]]); }
    static D sqrt(D v) noexcept { return _mm_sqrt_pd(v); }

    static D larger(D a, D b) noexcept { return _mm_max_pd(a, b); }
    static double largest_of(D v) noexcept { return _mm_cvtsd_f64(_mm_max_sd(v, _mm_unpackhi_pd(v, v))); }
    static int last_of(M m) noexcept
    {
        const int lanes = _mm_movemask_pd(m);
        return lanes > 1 ? 1 : lanes - 1;
    }

    static D load_first(const double* p, int count) noexcept { return count == width ? load(p) : set(*p); }
    static void store_first(double* p, D v, int count) noexcept { count == width ? store(p, v) : _mm_store_sd(p, v); }

    static void transpose(D (&rows)[width]) noexcept
    {
        const D first = _mm_unpacklo_pd(rows[0], rows[1]);
        rows[1] = _mm_unpackhi_pd(rows[0], rows[1]);
        rows[0] = first;
    }
};

} // namespace qmml::platform
