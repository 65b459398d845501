#include "matrix/tridiagonal.h"

#include "core/block.h"
#include "core/break_check.h"

#include <algorithm>

namespace qmml::matrix {
namespace {

constexpr int s_panel = 32; // rows eliminated before the rest of the matrix is brought up to date
constexpr int s_group = 24; // reflections that are multiplied into q at once

// What a panel's reflections u do to the matrix: a - sum(u w' + w u').
struct Panel {
    double* columns;    // u and w in turn
    double* transposed; // w and u in turn, as rows
    std::ptrdiff_t ld;
    static constexpr int s_depth = 2 * s_panel;
};

class Reduction {
public:
    Reduction(double* z, int n, std::ptrdiff_t ld, double* d, double* e, double* h, const Panel& panel,
              double* vector) noexcept
        : m_kernels(*s_tridiagonal_kernels), m_z(z), m_n(n), m_ld(ld), m_d(d), m_e(e), m_h(h), m_panel(panel),
          m_vector(vector)
    {
    }

    Status run() noexcept;

private:
    void eliminate(int i, int done) noexcept;
    void update(int columns) noexcept;

    const TridiagonalKernels& m_kernels;
    double* const m_z;
    const int m_n;
    const std::ptrdiff_t m_ld;
    double *const m_d, *const m_e, *const m_h;
    const Panel m_panel;
    double* const m_vector;
};

// Row i, after done others of its panel.
void Reduction::eliminate(int i, int done) noexcept
{
    double* const u = m_z + i * m_ld;
    const int rows_with_diagonal = padded(i + 1);
    m_kernels.multiply(m_vector, m_panel.columns, m_panel.ld, rows_with_diagonal, 2 * done,
                       m_panel.transposed + static_cast<std::ptrdiff_t>(i) * Panel::s_depth);
    m_kernels.subtract(u, m_vector, rows_with_diagonal);
    m_d[i] = u[i];
    if (i == 0)
        return;

    // The reflection stays in its column, and pads it with zeros.
    const Reflection reflection = make_reflection(u, i);
    m_e[i] = reflection.off_diagonal;
    m_h[i] = reflection.h;
    double* const panel_u = m_panel.columns + 2 * m_panel.ld * done;
    double* const w = panel_u + m_panel.ld;
    const int rows = padded(i);
    if (reflection.h == 0) // its columns and rows of the panel stay zero
        return;
    double products[Panel::s_depth] = {};
    m_kernels.multiply_symmetric(w, m_z, m_ld, rows, u);
    m_kernels.multiply(products, m_panel.transposed, Panel::s_depth, padded(2 * done), i, u);
    m_kernels.multiply(m_vector, m_panel.columns, m_panel.ld, rows, 2 * done, products);
    m_kernels.subtract(w, m_vector, rows);
    m_kernels.correct(w, u, i, reflection.h);

    std::copy_n(u, rows, panel_u);
    double* place = m_panel.transposed + 2 * static_cast<std::ptrdiff_t>(done);
    for (int k = 0; k < i; ++k, place += Panel::s_depth) {
        place[0] = w[k];
        place[1] = u[k];
    }
}

// The panel's work on the columns before it, in the blocks on and above the diagonal.
void Reduction::update(int columns) noexcept
{
    for (int j = 0; j < columns; j += 8)
        m_kernels.subtract_product(m_z + j * m_ld, m_ld, j + 8, 8, m_panel.columns, m_panel.ld,
                                   m_panel.transposed + static_cast<std::ptrdiff_t>(j) * Panel::s_depth, Panel::s_depth,
                                   Panel::s_depth);
}

Status Reduction::run() noexcept
{
    for (int end = m_n; end > 0;) {
        const int begin = (end - 1) / s_panel * s_panel;
        std::fill_n(m_panel.columns, Panel::s_depth * m_panel.ld, 0.0);
        std::fill_n(m_panel.transposed, Panel::s_depth * static_cast<std::ptrdiff_t>(padded(end)), 0.0);
        for (int i = end - 1; i >= begin; --i) {
            if (i > 0 && break_requested())
                return Status::stopped;
            eliminate(i, end - 1 - i);
        }
        update(begin);
        end = begin;
    }
    return Status::success;
}

// q = ... (I - u2 u2' / h2) (I - u1 u1' / h1), where u(i) stands in column i of z: the leading block of q grows as the
// reflections are multiplied into it, a group of them as I - v t v'.
class Accumulation {
public:
    Accumulation(double* z, int n, std::ptrdiff_t ld, const double* h, double* v, double* transposed,
                 double* product) noexcept
        : m_kernels(*s_tridiagonal_kernels), m_z(z), m_n(n), m_ld(ld), m_h(h), m_v(v), m_transposed(transposed),
          m_product(product)
    {
    }

    void run() noexcept
    {
        for (int begin = 0; begin < m_n; begin += s_group) {
            const int end = std::min(begin + s_group, m_n);
            take_reflections(begin, end);
            make_product(begin, end);
            multiply(end);
        }
    }

private:
    void take_reflections(int begin, int end) noexcept;
    void make_product(int begin, int end) noexcept;
    void multiply(int end) noexcept;

    const TridiagonalKernels& m_kernels;
    double* const m_z;
    const int m_n;
    const std::ptrdiff_t m_ld;
    const double* const m_h;
    double *const m_v, *const m_transposed, *const m_product; // v, v', -t v'
};

// Moves the group's reflections out of z, where the identity takes their place.
void Accumulation::take_reflections(int begin, int end) noexcept
{
    std::fill_n(m_v, s_group * m_ld, 0.0);
    std::fill_n(m_transposed, static_cast<std::ptrdiff_t>(s_group) * padded(end), 0.0);
    for (int i = begin; i < end; ++i) {
        double* const column = m_z + i * m_ld;
        double* const u = m_v + (i - begin) * m_ld;
        if (i > 0 && m_h[i] != 0) {
            std::copy_n(column, i, u);
            for (std::ptrdiff_t k = 0; k < i; ++k)
                m_transposed[k * s_group + i - begin] = u[k];
        }
        std::fill_n(column, end, 0.0);
        column[i] = 1;
    }
    for (int j = 0; j < begin; ++j)
        std::fill(m_z + j * m_ld + begin, m_z + j * m_ld + end, 0.0);
}

void Accumulation::make_product(int begin, int end) noexcept
{
    double gram[s_group * s_group] = {}, t[s_group * s_group] = {};
    m_kernels.subtract_product(gram, s_group, s_group, s_group, m_transposed, s_group, m_v, m_ld, end);
    for (int c = 0; c < end - begin; ++c) {
        const double h = begin + c > 0 ? m_h[begin + c] : 0;
        if (h == 0)
            continue;
        t[c * s_group + c] = 1 / h;
        for (int j = 0; j < c; ++j) {
            double sum = 0; // gram holds -v'v
            for (int k = j; k < c; ++k)
                sum += gram[k * s_group + c] * t[j * s_group + k];
            t[j * s_group + c] = sum / h;
        }
    }
    std::fill_n(m_product, static_cast<std::ptrdiff_t>(s_group) * padded(end), 0.0);
    m_kernels.subtract_product(m_product, s_group, s_group, padded(end), t, s_group, m_transposed, s_group, s_group);
}

void Accumulation::multiply(int end) noexcept
{
    for (int j = 0; j < end; j += 8) {
        double* const columns = m_z + j * m_ld;
        double product[s_group * 8] = {};
        m_kernels.subtract_product(product, s_group, s_group, 8, m_product, s_group, columns, m_ld, end);
        m_kernels.subtract_product(columns, m_ld, padded(end), 8, m_v, m_ld, product, s_group, s_group);
    }
}

} // namespace

Status reduce_in_blocks(double* z, int n, std::ptrdiff_t ld, double* d, double* e) noexcept
{
    static_assert(s_panel % 8 == 0 && s_group % 8 == 0 && 2 * s_group <= Panel::s_depth);
    const std::ptrdiff_t rows = padded(n);
    // The accumulation takes over the panel's room.
    Block<double> work(Panel::s_depth * (ld + rows) + rows + n);
    if (!work)
        return Status::out_of_memory;
    double* const columns = work.data();
    double* const transposed = columns + Panel::s_depth * ld;
    double* const vector = transposed + Panel::s_depth * rows;
    double* const h = vector + rows;
    const Status status =
        Reduction(z, n, ld, d, e, h, {.columns = columns, .transposed = transposed, .ld = ld}, vector).run();
    if (status == Status::success)
        Accumulation(z, n, ld, h, columns, transposed, transposed + s_group * rows).run();
    return status;
}

} // namespace qmml::matrix
