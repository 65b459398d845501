// The elimination for the determinant of a small matrix: each step leaves one that is a row and a column smaller. Where
// the pivot stands is computed, not branched upon, since it cannot be guessed.
#pragma once

#include "matrix/elimination_kernels.h"
#include "matrix/status.h"

#include <bit>
#include <cmath>
#include <cstdint>

namespace qmml::matrix {

template <int N>
class SmallDeterminant {
public:
    // The matrix of all rows and columns that are left, by columns.
    double elements[N * N];

    // Hands each pivot to the product, until that says stop.
    template <class Product>
    Status eliminate(Product& product) const noexcept
    {
        const Pivot pivot = search();
        const Status status = product.add(pivot);
        if constexpr (N > 1)
            return status == Status::success ? step(pivot).eliminate(product) : status;
        else
            return status;
    }

private:
    // Magnitudes compare like their bits, and a compiler selects integers without a jump.
    struct Candidate {
        std::uint64_t magnitude;
        unsigned place; // row and column
    };

    static constexpr std::uint64_t s_all_but_sign = ~std::uint64_t{0} >> 1;
    static constexpr std::uint64_t s_infinity = std::uint64_t{0x7ff} << 52;

    static Candidate better(const Candidate& a, const Candidate& b) noexcept
    {
        const bool second = b.magnitude >= a.magnitude;
        return {second ? b.magnitude : a.magnitude, second ? b.place : a.place};
    }

    template <int First, int Count>
    Candidate best() const noexcept
    {
        if constexpr (Count == 1) {
            constexpr int row = First / N, column = First % N; // in the order of the search
            return {std::bit_cast<std::uint64_t>(elements[column * N + row]) & s_all_but_sign, row * 8u + column};
        } else
            return better(best<First, Count / 2>(), best<First + Count / 2, Count - Count / 2>());
    }

    // The last largest element in the order of rows, then columns.
    Pivot search() const noexcept
    {
        const Candidate found = best<0, N * N>();
        if (found.magnitude > s_infinity) [[unlikely]]
            return search_among_nans();
        const int row = static_cast<int>(found.place / 8), column = static_cast<int>(found.place % 8);
        return {row, column, elements[column * N + row]};
    }

    Pivot search_among_nans() const noexcept
    {
        Pivot pivot = {-1, -1, 0.0};
        for (int i = 0; i < N; ++i)
            for (int j = 0; j < N; ++j)
                if (std::fabs(elements[j * N + i]) >= std::fabs(pivot.value))
                    pivot = {i, j, elements[j * N + i]};
        return pivot;
    }

    SmallDeterminant<N - 1> step(const Pivot& pivot) const noexcept
    {
        const int r = pivot.row, c = pivot.column;
        const double* const pivot_column = elements + c * N;
        SmallDeterminant<N - 1> rest;
        int rows[N - 1];
        double multiples[N - 1];
        for (int p = 0; p < N - 1; ++p) {
            const int i = p < c ? p : p + 1;
            rows[p] = i == r ? c : i; // the exchange
            multiples[p] = pivot_column[rows[p]];
        }
        for (int q = 0; q < N - 1; ++q) {
            const double* const from = elements + (q < c ? q : q + 1) * N;
            const double factor = from[r] / pivot.value;
            for (int p = 0; p < N - 1; ++p)
                rest.elements[q * (N - 1) + p] = from[rows[p]] - factor * multiples[p];
        }
        return rest;
    }
};

} // namespace qmml::matrix
