// Included by one source per instruction set: nothing in here may be instantiated for a type that two of them share.
#pragma once

#include "matrix/bidiagonal_kernels.h"

namespace qmml::matrix {

// Eight numbers in as many registers as that takes.
template <class L>
struct Eight {
    using D = typename L::D;
    static constexpr int s_registers = s_parts / L::width;

    D part[s_registers];

    static Eight load(const double* p) noexcept
    {
        Eight r;
        for (int i = 0; i < s_registers; ++i)
            r.part[i] = L::load(p + i * L::width);
        return r;
    }
    static Eight set(double v) noexcept
    {
        Eight r;
        for (int i = 0; i < s_registers; ++i)
            r.part[i] = L::set(v);
        return r;
    }
    void store(double* p) const noexcept
    {
        for (int i = 0; i < s_registers; ++i)
            L::store(p + i * L::width, part[i]);
    }
    Eight operator+(const Eight& o) const noexcept
    {
        Eight r;
        for (int i = 0; i < s_registers; ++i)
            r.part[i] = part[i] + o.part[i];
        return r;
    }
    Eight operator-(const Eight& o) const noexcept
    {
        Eight r;
        for (int i = 0; i < s_registers; ++i)
            r.part[i] = part[i] - o.part[i];
        return r;
    }
    Eight operator*(const Eight& o) const noexcept
    {
        Eight r;
        for (int i = 0; i < s_registers; ++i)
            r.part[i] = part[i] * o.part[i];
        return r;
    }
    Eight operator/(const Eight& o) const noexcept
    {
        Eight r;
        for (int i = 0; i < s_registers; ++i)
            r.part[i] = part[i] / o.part[i];
        return r;
    }
    Eight magnitude() const noexcept
    {
        Eight r;
        for (int i = 0; i < s_registers; ++i)
            r.part[i] = L::as_number(L::as_bits(part[i]) & L::bits(0x7fffffffffffffffu));
        return r;
    }
    double sum() const noexcept
    {
        double s[s_parts];
        store(s);
        return ((s[0] + s[4]) + (s[2] + s[6])) + ((s[1] + s[5]) + (s[3] + s[7]));
    }
};

template <class L>
struct Bidiagonal {
    using E = Eight<L>;

    static constexpr int whole(int i) noexcept { return i & ~(s_parts - 1); }

    static double square_root(double v) noexcept
    {
        double s[s_parts];
        E root = E::set(v);
        root.part[0] = L::sqrt(root.part[0]);
        root.store(s);
        return s[0];
    }

    static double sum_of_squares(const double* v, int first, int rows) noexcept
    {
        E sum = E::set(0.0);
        for (int i = whole(first); i < rows; i += s_parts) {
            const E x = E::load(v + i);
            sum = sum + x * x;
        }
        return sum.sum();
    }

    // Makes a reflecting vector of v[first..rows), what precedes first being zero, and returns what takes the place of
    // v[first]. The reflection is 1 + v v' * inverse. Nothing is to be reflected when first is also the last element.
    static double reflector(double* v, int first, int last, int rows, double& scale, double& inverse) noexcept
    {
        scale = 1;
        if (first == last) {
            const double kept = v[first];
            v[first] = 0;
            inverse = 0;
            return kept;
        }
        double square = sum_of_squares(v, first, rows);
        if (!(square > 0x1p-900 && square < 0x1p900)) [[unlikely]] {
            E sum = E::set(0.0);
            for (int i = whole(first); i < rows; i += s_parts)
                sum = sum + E::load(v + i).magnitude();
            scale = sum.sum();
            const bool zero = scale < 0x1p-1070; // to the tolerance of all comparisons
            for (int i = whole(first); i < rows; i += s_parts)
                (zero ? E::set(0.0) : E::load(v + i) / E::set(scale)).store(v + i);
            if (zero) {
                scale = 1;
                inverse = 0;
                return 0;
            }
            square = sum_of_squares(v, first, rows);
        }
        const double root = square_root(square);
        const double f = v[first], g = f >= 0 ? -root : root;
        v[first] = f - g;
        inverse = 1 / (f * g - square);
        return scale * g;
    }

    // Brings Columns columns up to date, reflects their pivot row, and adds them up with that row's elements as
    // factors.
    template <int Columns>
    static void reflect_columns(Reduction& r, int k, int j) noexcept
    {
        const double* const left = r.a + k * r.stride;
        const double* const left_before = k > 0 ? left - r.stride : left;
        double* column[Columns];
        E left_factor[Columns], right_factor[Columns], sum[Columns];
        for (int c = 0; c < Columns; ++c) {
            column[c] = r.a + (j + c) * r.stride;
            left_factor[c] = E::set(r.left_factor[j + c]);
            right_factor[c] = E::set(r.right_factor[j + c]);
            sum[c] = E::set(0.0);
        }
        for (int i = whole(k); i < r.rows; i += s_parts) {
            const E u = E::load(left + i), before = E::load(left_before + i), x = E::load(r.right_before + i);
            for (int c = 0; c < Columns; ++c) {
                const E a = (E::load(column[c] + i) + before * left_factor[c]) + x * right_factor[c];
                a.store(column[c] + i);
                sum[c] = sum[c] + a * u;
            }
        }
        E pivot[Columns];
        for (int c = 0; c < Columns; ++c) {
            const double factor = sum[c].sum() * r.left_inverse[k];
            const double element = (column[c][k] + left[k] * factor) * r.scale;
            r.left_factor[j + c] = factor;
            r.pivot_row[j + c] = element;
            pivot[c] = E::set(element);
        }
        for (int i = whole(k); i < r.rows; i += s_parts) {
            E p = E::load(r.product + i);
            for (int c = 0; c < Columns; ++c)
                p = p + E::load(column[c] + i) * pivot[c];
            p.store(r.product + i);
        }
    }

    static void reduce_column(Reduction& r, int k) noexcept
    {
        double* const left = r.a + k * r.stride;
        if (k > 0) {
            const E left_factor = E::set(r.left_factor[k]), right_factor = E::set(r.right_factor[k]);
            for (int i = whole(k); i < r.rows; i += s_parts)
                ((E::load(left + i) + E::load(left - r.stride + i) * left_factor) +
                 E::load(r.right_before + i) * right_factor)
                    .store(left + i);
        }
        for (int i = whole(k) >= s_parts ? whole(k) - s_parts : 0; i < k; ++i)
            left[i] = 0;
        double scale;
        r.diagonal[k] = reflector(left, k, r.last_row, r.rows, scale, r.left_inverse[k]);
        if (k + 1 == r.cols)
            return;

        int j = k + 1;
        for (; j + s_tile <= r.cols; j += s_tile)
            reflect_columns<s_tile>(r, k, j);
        for (; j < r.cols; ++j)
            reflect_columns<1>(r, k, j);
        reflect_row(r, k);
    }

    static void reflect_row(Reduction& r, int k) noexcept
    {
        const int padded_cols = whole(r.cols + s_parts - 1), first = k + 1;
        const double* const left = r.a + k * r.stride;
        double* const row = r.pivot_row;
        row[k] = 0;
        E sum = E::set(0.0);
        for (int j = whole(first); j < padded_cols; j += s_parts)
            sum = sum + E::load(row + j) * E::load(r.left_factor + j);
        double scale;
        const double kept = reflector(row, first, r.cols - 1, padded_cols, scale, r.right_inverse[k]);
        r.super[first] = kept * r.unscale;
        E::set(0.0).store(r.right_factor + whole(k));
        for (int j = whole(first); j < padded_cols; j += s_parts)
            E::load(row + j).store(r.right_factor + j);

        // The product was taken with the row as it was; the reflecting vector is that row less kept in its first
        // element, both divided by scale.
        const E of_left = E::set(sum.sum() - kept * r.left_factor[first]), of_first = E::set(kept);
        const E inverse = E::set(r.right_inverse[k]);
        const double* const next = left + r.stride;
        for (int i = whole(k); i < r.rows; i += s_parts) {
            const E x = (E::load(r.product + i) + E::load(left + i) * of_left) - E::load(next + i) * of_first;
            ((scale == 1.0 ? x : x / E::set(scale)) * inverse).store(r.right_before + i);
            E::set(0.0).store(r.product + i);
        }
        for (int i = whole(k); i <= k; ++i)
            r.right_before[i] = 0;
        if (r.right == nullptr)
            return;
        double* const kept_vector = r.right + k * r.right_stride;
        for (int j = whole(first) >= s_parts ? whole(first) - s_parts : 0; j < whole(first); ++j)
            kept_vector[j] = 0;
        for (int j = whole(first); j < padded_cols; j += s_parts)
            E::load(row + j).store(kept_vector + j);
    }

    static void multiply_out(const Reflectors& h, int first, double* tile) noexcept
    {
        double* column[s_tile];
        for (int c = 0; c < s_tile; ++c) {
            column[c] = tile + c * static_cast<std::ptrdiff_t>(h.rows);
            if (first + c < h.rows)
                column[c][first + c] = 1;
        }
        const int beyond = first + s_tile - h.offset;
        int k = (beyond < h.count ? beyond : h.count) - 1;
        if (k < 0)
            return;
        const double* v = h.vectors + k * h.stride;
        E sum[s_tile];
        for (int c = 0; c < s_tile; ++c)
            sum[c] = E::set(0.0);
        for (int i = whole(k + h.offset); i < h.rows; i += s_parts) {
            const E x = E::load(v + i);
            for (int c = 0; c < s_tile; ++c)
                sum[c] = sum[c] + E::load(column[c] + i) * x;
        }
        // Each reflector is applied in the same pass that takes the products with the next one.
        for (; k > 0; --k) {
            E factor[s_tile];
            for (int c = 0; c < s_tile; ++c) {
                factor[c] = E::set(sum[c].sum() * h.inverse[k]);
                sum[c] = E::set(0.0);
            }
            const double* const next = v - h.stride;
            for (int i = whole(k - 1 + h.offset); i < h.rows; i += s_parts) {
                const E x = E::load(v + i), y = E::load(next + i);
                for (int c = 0; c < s_tile; ++c) {
                    const E t = E::load(column[c] + i) + x * factor[c];
                    t.store(column[c] + i);
                    sum[c] = sum[c] + t * y;
                }
            }
            v = next;
        }
        for (int c = 0; c < s_tile; ++c) {
            const E factor = E::set(sum[c].sum() * h.inverse[0]);
            for (int i = whole(h.offset); i < h.rows; i += s_parts)
                (E::load(column[c] + i) + E::load(v + i) * factor).store(column[c] + i);
        }
    }

    static void rotate_columns(double* z, std::ptrdiff_t stride, int rows, int first, int count,
                               const PlaneRotation* rotations) noexcept
    {
        for (int i = 0; i < rows; i += s_parts) {
            double* p = z + first * stride + i;
            E x = E::load(p);
            for (int q = 0; q < count; ++q, p += stride) {
                const E y = E::load(p + stride), c = E::set(rotations[q].c), s = E::set(rotations[q].s);
                (x * c + y * s).store(p);
                x = y * c - x * s;
            }
            x.store(p);
        }
    }

    static void rotate_columns_apart(double* x, double* y, int rows, PlaneRotation rotation) noexcept
    {
        for (int i = 0; i < rows; i += s_parts) {
            const E a = E::load(x + i), b = E::load(y + i), c = E::set(rotation.c), s = E::set(rotation.s);
            (a * c + b * s).store(x + i);
            (b * c - a * s).store(y + i);
        }
    }
};

template <class L>
constexpr BidiagonalKernels bidiagonal_kernels_of()
{
    return {.reduce_column = Bidiagonal<L>::reduce_column,
            .multiply_out = Bidiagonal<L>::multiply_out,
            .rotate_columns = Bidiagonal<L>::rotate_columns,
            .rotate_columns_apart = Bidiagonal<L>::rotate_columns_apart};
}

} // namespace qmml::matrix
