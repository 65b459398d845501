// Lanes: numeric kernels are templates over one of these policies, so that one text serves a single number and a vector
// register, and every instruction set performs the same operations on each element: the same bits everywhere. The
// policies of the vector units stand in platform/simd.
#pragma once

#include <bit>
#include <cmath>
#include <cstdint>

namespace qmml {

// A policy offers D (numbers), M (masks), I (their bits as 64-bit integers), the operators of the language on D, + - &
// | ^ on I, and these functions. A NaN compares false; the scalar comparisons raise no fault, the vector
// ones may, and run where faults are masked.
struct ScalarLane {
    using D = double;
    using M = bool;
    using I = std::uint64_t;
    static constexpr int width = 1;

    static D load(const double* p) noexcept { return *p; }
    static void store(double* p, D v) noexcept { *p = v; }
    static void stream(double* p, D v) noexcept { *p = v; }
    static D set(double v) noexcept { return v; }
    static I bits(std::uint64_t v) noexcept { return v; }

    static M less(D a, D b) noexcept { return std::isless(a, b); }
    static M less_equal(D a, D b) noexcept { return std::islessequal(a, b); }
    static M differ(D a, D b) noexcept { return std::islessgreater(a, b); } // ordered and not equal
    static M both(M a, M b) noexcept { return a && b; }
    static M either(M a, M b) noexcept { return a || b; }
    static M negate(M a) noexcept { return !a; }
    static bool any(M a) noexcept { return a; }
    static M any_bit(I v) noexcept { return v != 0; }

    static M irregular(D v) noexcept // infinite or denormal
    {
        const I magnitude = as_bits(v) << 1;
        return magnitude == 0x7ff0000000000000u << 1 || magnitude - 1 < (0x0010000000000000u << 1) - 1;
    }

    static D select(M m, D a, D b) noexcept { return m ? a : b; }
    static I as_bits(D v) noexcept { return std::bit_cast<I>(v); }
    static D as_number(I v) noexcept { return std::bit_cast<D>(v); }
    template <int K>
    static I shift_left(I v) noexcept
    {
        return v << K;
    }
    template <int K>
    static I shift_right(I v) noexcept // logical
    {
        return v >> K;
    }
    static D gather(const double* table, I index) noexcept { return table[index]; }
    static D sqrt(D v) noexcept { return std::sqrt(v); }

    static D larger(D a, D b) noexcept { return a > b ? a : b; } // b where one is a NaN
    static double largest_of(D v) noexcept { return v; }         // none is a NaN
    static int last_of(M m) noexcept { return m ? 0 : -1; }      // the last lane where it holds, or -1

    // The count numbers, at least one and at most width, that are there. What is loaded beyond them repeats the first,
    // so that it raises no fault of its own.
    static D load_first(const double* p, int) noexcept { return *p; }
    static void store_first(double* p, D v, int) noexcept { *p = v; }

    static void transpose(D (&)[width]) noexcept {} // rows become columns
};

} // namespace qmml
