// Lanes of the x86-64 baseline: two numbers.
#pragma once

#include <cstdint>
#include <emmintrin.h>

namespace qmml::platform {

struct Sse2Lane {
    using D = __m128d;
    using M = __m128d;
    using I = __m128i;
    static constexpr int width = 2;

    static D load(const double* p) noexcept { return _mm_loadu_pd(p); }
    static void store(double* p, D v) noexcept { _mm_storeu_pd(p, v); }
    static D set(double v) noexcept { return _mm_set1_pd(v); }
    static I bits(std::uint64_t v) noexcept { return _mm_set1_epi64x(static_cast<long long>(v)); }

    static M less(D a, D b) noexcept { return _mm_cmplt_pd(a, b); }
    static M less_equal(D a, D b) noexcept { return _mm_cmple_pd(a, b); }
    static M differ(D a, D b) noexcept { return _mm_or_pd(_mm_cmplt_pd(a, b), _mm_cmplt_pd(b, a)); }
    static M both(M a, M b) noexcept { return _mm_and_pd(a, b); }
    static M either(M a, M b) noexcept { return _mm_or_pd(a, b); }
    static M negate(M a) noexcept { return _mm_xor_pd(a, _mm_castsi128_pd(_mm_set1_epi32(-1))); }
    static bool any(M a) noexcept { return _mm_movemask_pd(a) != 0; }
    static M any_bit(I v) noexcept // both 32-bit halves equal to zero, or not
    {
        const I zero = _mm_cmpeq_epi32(v, _mm_setzero_si128());
        return negate(_mm_castsi128_pd(_mm_and_si128(zero, _mm_shuffle_epi32(zero, _MM_SHUFFLE(2, 3, 0, 1)))));
    }

    static D select(M m, D a, D b) noexcept { return _mm_or_pd(_mm_and_pd(m, a), _mm_andnot_pd(m, b)); }
    static I as_bits(D v) noexcept { return _mm_castpd_si128(v); }
    static D as_number(I v) noexcept { return _mm_castsi128_pd(v); }
    template <int K>
    static I shift_left(I v) noexcept
    {
        return _mm_slli_epi64(v, K);
    }
    template <int K>
    static I shift_right(I v) noexcept
    {
        return _mm_srli_epi64(v, K);
    }
    static D gather(const double* table, I index) noexcept
    {
        const auto i = _mm_cvtsi128_si64(index), j = _mm_cvtsi128_si64(_mm_unpackhi_epi64(index, index));
        return _mm_set_pd(table[j], table[i]);
    }
    static D sqrt(D v) noexcept { return _mm_sqrt_pd(v); }
};

} // namespace qmml::platform
