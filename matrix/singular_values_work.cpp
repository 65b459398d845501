#include "matrix/singular_values_work.h"

#include "matrix/bidiagonal_iteration.h"
#include "matrix/rotations.h"

#include <algorithm>
#include <cstring>
#include <limits>

namespace qmml::matrix {

static constexpr int padded(int n) noexcept
{
    return static_cast<int>((static_cast<std::int64_t>(n) + s_parts - 1) / s_parts * s_parts);
}

// Columns a power of two apart would all compete for the same few lines of the caches.
static constexpr std::ptrdiff_t stride_of(int padded_rows) noexcept
{
    return std::ptrdiff_t{padded_rows} + (padded_rows % 128 == 0 ? s_parts : 0);
}

SingularValuesWork::SingularValuesWork(int rows, int cols, Result result) noexcept
    : m_vectors(result == Result::vectors), m_rows(rows), m_cols(cols), m_padded_rows(padded(std::max(rows, cols))),
      m_padded_cols(padded(cols)), m_left_stride(stride_of(m_padded_rows)), m_right_stride(stride_of(m_padded_cols))
{
}

// Sets the addresses and returns the size of everything.
std::ptrdiff_t SingularValuesWork::lay_out(double* memory) noexcept
{
    std::ptrdiff_t size = 0;
    const auto take = [&](double*& part, std::ptrdiff_t count) {
        part = memory == nullptr ? nullptr : memory + size;
        size += count;
    };
    take(m_left, m_left_stride * m_cols);
    take(m_right_before, m_padded_rows);
    take(m_product, m_padded_rows);
    take(m_left_factor, m_padded_cols);
    take(m_right_factor, m_padded_cols);
    take(m_pivot_row, m_padded_cols);
    take(m_diagonal, m_padded_cols);
    take(m_super, m_padded_cols);
    take(m_left_inverse, m_padded_cols);
    take(m_right_inverse, m_padded_cols);
    take(m_sign, m_padded_cols);
    if (m_vectors) {
        take(m_tile, static_cast<std::ptrdiff_t>(s_tile) * m_padded_rows);
        take(m_right, m_right_stride * m_cols);
    }
    return size;
}

bool SingularValuesWork::take_memory() noexcept
{
    // Beyond these, counts and sizes might not fit their types; the memory would not be there anyway.
    const std::int64_t longer = std::max(m_rows, m_cols);
    if (longer > std::numeric_limits<int>::max() - 64 || longer * m_cols > std::int64_t{1} << 59)
        return false;
    m_right = nullptr;
    const std::ptrdiff_t size = lay_out(nullptr);
    if (small()) {
        lay_out(m_stack);
        m_order = m_stack_order;
        const std::ptrdiff_t cleared = m_vectors ? m_tile - m_stack : size;
        std::memset(m_stack, 0, sizeof(double) * static_cast<std::size_t>(cleared));
        return true;
    }
    if (!m_heap.allocate(size + s_line) || !m_heap_order.allocate(m_cols))
        return false;
    const auto address = reinterpret_cast<std::uintptr_t>(m_heap.data());
    constexpr std::uintptr_t line = sizeof(double) * s_line;
    lay_out(m_heap.data() + (line - address % line) % line / sizeof(double));
    m_order = m_heap_order.data();
    return true;
}

Status SingularValuesWork::decompose(const double* a) noexcept
{
    if (!take_memory())
        return Status::out_of_memory;
    for (std::ptrdiff_t k = 0; k < m_cols; ++k)
        std::memcpy(m_left + k * m_left_stride, a + k * m_rows, sizeof(double) * static_cast<std::size_t>(m_rows));
    std::fill_n(m_sign, m_cols, 1.0);
    Reduction reduction{.a = m_left,
                        .stride = m_left_stride,
                        .rows = m_padded_rows,
                        .cols = m_cols,
                        .last_row = std::max(m_rows, m_cols) - 1,
                        .diagonal = m_diagonal,
                        .super = m_super,
                        .left_inverse = m_left_inverse,
                        .right_inverse = m_right_inverse,
                        .right = m_right,
                        .right_stride = m_right_stride,
                        .right_before = m_right_before,
                        .product = m_product,
                        .left_factor = m_left_factor,
                        .right_factor = m_right_factor,
                        .pivot_row = m_pivot_row,
                        .scale = 1,
                        .unscale = 1};
    Status status = reduce_to_bidiagonal(reduction);
    if (status == Status::success && m_vectors)
        status = form_vectors();
    if (status == Status::success)
        status = iterate();
    if (status == Status::success)
        sort();
    return status;
}

Status SingularValuesWork::form_vectors() noexcept
{
    const Reflectors right{.vectors = m_right,
                           .stride = m_right_stride,
                           .inverse = m_right_inverse,
                           .count = std::max(m_cols - 2, 0),
                           .rows = m_padded_cols,
                           .offset = 1};
    const Reflectors left{.vectors = m_left,
                          .stride = m_left_stride,
                          .inverse = m_left_inverse,
                          .count = std::min(m_cols, std::max(m_rows, m_cols) - 1),
                          .rows = m_padded_rows,
                          .offset = 0};
    const Status status = multiply_out(right, m_right, m_right_stride, m_cols, m_tile);
    return status == Status::success ? multiply_out(left, m_left, m_left_stride, m_cols, m_tile) : status;
}

// Rotates at the end of each sweep: for what stays in the first-level cache anyway.
struct SingularValuesWork::DirectSink {
    explicit DirectSink(SingularValuesWork& work) noexcept : m_work(work), m_kernels(*s_bidiagonal_kernels) {}

    void begin_sweep(int first, int last) noexcept
    {
        m_first = first;
        m_count = last - first + 1;
    }
    void rotate_right(int j, double c, double s) noexcept { m_right_rotations[j - m_first] = {c, s}; }
    void rotate_left(int j, double c, double s) noexcept { m_left_rotations[j - m_first] = {c, s}; }
    void end_sweep() noexcept
    {
        m_kernels.rotate_columns(m_work.m_right, m_work.m_right_stride, m_work.m_padded_cols, m_first, m_count,
                                 m_right_rotations);
        m_kernels.rotate_columns(m_work.m_left, m_work.m_left_stride, m_work.m_padded_rows, m_first, m_count,
                                 m_left_rotations);
    }
    void rotate_left_apart(int j, int k, double c, double s) noexcept
    {
        m_kernels.rotate_columns_apart(m_work.m_left + j * m_work.m_left_stride,
                                       m_work.m_left + k * m_work.m_left_stride, m_work.m_padded_rows, {c, s});
    }
    void negate_right(int k) noexcept { m_work.m_sign[k] = -1; }

private:
    SingularValuesWork& m_work;
    const BidiagonalKernels& m_kernels;
    int m_first = 0, m_count = 0;
    PlaneRotation m_left_rotations[s_small], m_right_rotations[s_small];
};

struct SingularValuesWork::QueueSink {
    explicit QueueSink(SingularValuesWork& work) noexcept : m_work(work) {}

    [[nodiscard]] bool attach() noexcept
    {
        constexpr auto up = RotationQueue::Direction::up;
        return m_left.attach(m_work.m_left, m_work.m_padded_rows, m_work.m_left_stride, m_work.m_cols, up) &&
               m_right.attach(m_work.m_right, m_work.m_padded_cols, m_work.m_right_stride, m_work.m_cols, up);
    }
    void begin_sweep(int first, int last) noexcept
    {
        m_left.begin(first, last);
        m_right.begin(first, last);
    }
    void rotate_right(int j, double c, double s) noexcept { m_right.set(j, c, -s); }
    void rotate_left(int j, double c, double s) noexcept { m_left.set(j, c, -s); }
    void end_sweep() noexcept {}
    void rotate_left_apart(int j, int k, double c, double s) noexcept
    {
        m_left.flush();
        s_bidiagonal_kernels->rotate_columns_apart(m_work.m_left + j * m_work.m_left_stride,
                                                   m_work.m_left + k * m_work.m_left_stride, m_work.m_padded_rows,
                                                   {c, s});
    }
    void negate_right(int k) noexcept { m_work.m_sign[k] = -1; }
    void flush() noexcept
    {
        m_left.flush();
        m_right.flush();
    }

private:
    SingularValuesWork& m_work;
    RotationQueue m_left, m_right;
};

Status SingularValuesWork::iterate() noexcept
{
    if (!m_vectors) {
        NoVectors sink;
        return BidiagonalIteration(m_diagonal, m_super, m_cols, sink).run();
    }
    if (small()) {
        DirectSink sink(*this);
        return BidiagonalIteration(m_diagonal, m_super, m_cols, sink).run();
    }
    QueueSink sink(*this);
    if (!sink.attach())
        return Status::out_of_memory;
    const Status status = BidiagonalIteration(m_diagonal, m_super, m_cols, sink).run();
    sink.flush();
    return status;
}

// By insertion: equal values keep their order, and the iteration leaves few out of it.
void SingularValuesWork::sort() noexcept
{
    for (int i = 0; i < m_cols; ++i) {
        const double value = m_diagonal[i];
        int k = i;
        for (; k > 0 && m_diagonal[k - 1] < value; --k) {
            m_diagonal[k] = m_diagonal[k - 1];
            m_order[k] = m_order[k - 1];
        }
        m_diagonal[k] = value;
        m_order[k] = i;
    }
}

} // namespace qmml::matrix
