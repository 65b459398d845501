// OpenBLAS with LAPACKE, on one thread; the work arrays are made before the clock starts.
#include "matrix_bench.h"

#include <cblas.h>
#include <lapacke.h>

namespace qmml::bench {
namespace {

class InLapack {
public:
    explicit InLapack(const Problem& given) : m_given(given), m_work(given.a) {}
    Numbers answer() const { return m_work; }

protected:
    void restore() { std::copy(m_given.a.begin(), m_given.a.end(), m_work.begin()); }
    std::size_t square(int n) const { return static_cast<std::size_t>(n) * static_cast<std::size_t>(n); }

    // The lower triangle from the upper one.
    static void mirror(Numbers& a, int n)
    {
        for (int j = 0; j < n; ++j)
            for (int i = j + 1; i < n; ++i)
                a[static_cast<std::size_t>(j * n + i)] = a[static_cast<std::size_t>(i * n + j)];
    }

    const Problem& m_given;
    Numbers m_work;
    const int m_n = m_given.columns;
    std::vector<lapack_int> m_pivots = std::vector<lapack_int>(static_cast<std::size_t>(8 * m_n));
    Numbers m_scratch = Numbers(square(m_n) * 5 + 1000 * static_cast<std::size_t>(m_n)); // enough for all of them
    const int m_scratch_size = static_cast<int>(m_scratch.size());
};

struct LapackProduct : InLapack {
    using InLapack::InLapack;
    void run()
    {
        cblas_dgemm(CblasColMajor, CblasNoTrans, CblasNoTrans, m_n, m_n, m_n, 1, m_given.a.data(), m_n,
                    m_given.b.data(), m_n, 0, m_work.data(), m_n);
    }
};

struct LapackInverse : InLapack {
    using InLapack::InLapack;
    void run()
    {
        restore();
        LAPACKE_dgetrf_work(LAPACK_COL_MAJOR, m_n, m_n, m_work.data(), m_n, m_pivots.data());
        LAPACKE_dgetri_work(LAPACK_COL_MAJOR, m_n, m_work.data(), m_n, m_pivots.data(), m_scratch.data(),
                            m_scratch_size);
    }
};

struct LapackDeterminant : InLapack {
    using InLapack::InLapack;
    void run()
    {
        restore();
        LAPACKE_dgetrf_work(LAPACK_COL_MAJOR, m_n, m_n, m_work.data(), m_n, m_pivots.data());
        m_determinant = 1;
        for (int i = 0; i < m_n; ++i) {
            const double pivot = m_work[static_cast<std::size_t>(i) * static_cast<std::size_t>(m_n + 1)];
            m_determinant *= m_pivots[static_cast<std::size_t>(i)] == i + 1 ? pivot : -pivot;
        }
    }
    Numbers answer() const { return {m_determinant}; }
    double m_determinant = 0;
};

struct LapackSolution : InLapack {
    using InLapack::InLapack;
    void run()
    {
        restore();
        m_x = m_given.b;
        LAPACKE_dgesv_work(LAPACK_COL_MAJOR, m_n, 1, m_work.data(), m_n, m_pivots.data(), m_x.data(), m_n);
    }
    Numbers answer() const { return m_x; }
    Numbers m_x = m_given.b;
};

struct LapackRefinedSolution : InLapack {
    using InLapack::InLapack;
    void run()
    {
        restore();
        m_x = m_given.b;
        LAPACKE_dgetrf_work(LAPACK_COL_MAJOR, m_n, m_n, m_work.data(), m_n, m_pivots.data());
        LAPACKE_dgetrs_work(LAPACK_COL_MAJOR, 'N', m_n, 1, m_work.data(), m_n, m_pivots.data(), m_x.data(), m_n);
        double forward = 0, backward = 0;
        LAPACKE_dgerfs_work(LAPACK_COL_MAJOR, 'N', m_n, 1, m_given.a.data(), m_n, m_work.data(), m_n, m_pivots.data(),
                            m_given.b.data(), m_n, m_x.data(), m_n, &forward, &backward, m_scratch.data(),
                            m_pivots.data() + m_n);
    }
    Numbers answer() const { return m_x; }
    Numbers m_x = m_given.b;
};

struct LapackEigen : InLapack { // by divide and conquer
    using InLapack::InLapack;
    void run()
    {
        restore();
        LAPACKE_dsyevd_work(LAPACK_COL_MAJOR, 'V', 'L', m_n, m_work.data(), m_n, m_values.data(), m_scratch.data(),
                            m_scratch_size, m_pivots.data(), static_cast<int>(m_pivots.size()));
    }
    Numbers answer() const
    {
        Numbers all = m_values;
        all.insert(all.end(), m_work.begin(), m_work.end());
        return all;
    }
    Numbers m_values = Numbers(static_cast<std::size_t>(m_n));
};

struct LapackEigenByQr : LapackEigen {
    using LapackEigen::LapackEigen;
    void run()
    {
        restore();
        LAPACKE_dsyev_work(LAPACK_COL_MAJOR, 'V', 'L', m_n, m_work.data(), m_n, m_values.data(), m_scratch.data(),
                           m_scratch_size);
    }
};

struct LapackSvd : InLapack { // by divide and conquer
    using InLapack::InLapack;
    void run()
    {
        restore();
        LAPACKE_dgesdd_work(LAPACK_COL_MAJOR, 'S', m_n, m_n, m_work.data(), m_n, m_w.data(), m_u.data(), m_n,
                            m_vt.data(), m_n, m_scratch.data(), m_scratch_size, m_pivots.data());
    }
    Numbers answer() const
    {
        Numbers all = m_u;
        all.insert(all.end(), m_w.begin(), m_w.end());
        for (int j = 0; j < m_n; ++j)
            for (int i = 0; i < m_n; ++i)
                all.push_back(m_vt[static_cast<std::size_t>(i * m_n + j)]);
        return all;
    }
    Numbers m_u = m_work, m_vt = m_work, m_w = Numbers(static_cast<std::size_t>(m_n));
};

struct LapackSvdByQr : LapackSvd {
    using LapackSvd::LapackSvd;
    void run()
    {
        restore();
        LAPACKE_dgesvd_work(LAPACK_COL_MAJOR, 'S', 'S', m_n, m_n, m_work.data(), m_n, m_w.data(), m_u.data(), m_n,
                            m_vt.data(), m_n, m_scratch.data(), m_scratch_size);
    }
};

struct LapackSingularValues : InLapack {
    using InLapack::InLapack;
    void run()
    {
        restore();
        LAPACKE_dgesdd_work(LAPACK_COL_MAJOR, 'N', m_n, m_n, m_work.data(), m_n, m_w.data(), nullptr, m_n, nullptr, m_n,
                            m_scratch.data(), m_scratch_size, m_pivots.data());
    }
    Numbers answer() const { return m_w; }
    Numbers m_w = Numbers(static_cast<std::size_t>(m_n));
};

struct LapackPseudoInverse : LapackSvd {
    using LapackSvd::LapackSvd;
    void run()
    {
        LapackSvd::run();
        for (int j = 0; j < m_n; ++j)
            cblas_dscal(m_n, m_w[static_cast<std::size_t>(j)] > 1e-14 ? 1 / m_w[static_cast<std::size_t>(j)] : 0,
                        m_u.data() + static_cast<std::ptrdiff_t>(j) * m_n, 1);
        cblas_dgemm(CblasColMajor, CblasTrans, CblasTrans, m_n, m_n, m_n, 1, m_vt.data(), m_n, m_u.data(), m_n, 0,
                    m_work.data(), m_n);
    }
    Numbers answer() const { return m_work; }
};

struct LapackCholesky : InLapack {
    using InLapack::InLapack;
    void run()
    {
        restore();
        LAPACKE_dpotrf_work(LAPACK_COL_MAJOR, 'U', m_n, m_work.data(), m_n);
        for (int j = 0; j < m_n; ++j)
            std::fill_n(m_work.begin() + static_cast<std::ptrdiff_t>(j) * m_n + j + 1, m_n - j - 1, 0.0);
    }
};

struct LapackSweep : InLapack {
    using InLapack::InLapack;
    void run()
    {
        restore();
        LAPACKE_dpotrf_work(LAPACK_COL_MAJOR, 'U', m_n, m_work.data(), m_n);
        LAPACKE_dpotri_work(LAPACK_COL_MAJOR, 'U', m_n, m_work.data(), m_n);
        mirror(m_work, m_n);
    }
};

struct LapackCorrelation : InLapack {
    using InLapack::InLapack;
    void run()
    {
        const auto rows = static_cast<std::size_t>(m_given.rows), columns = static_cast<std::size_t>(m_n);
        for (std::size_t j = 0; j < columns; ++j) {
            const double mean = cblas_ddot(m_given.rows, &m_given.a[j * rows], 1, &m_one, 0) / m_given.rows;
            for (std::size_t i = 0; i < rows; ++i)
                m_work[j * rows + i] = m_given.a[j * rows + i] - mean;
        }
        cblas_dsyrk(CblasColMajor, CblasUpper, CblasTrans, m_n, m_given.rows, 1, m_work.data(), m_given.rows, 0,
                    m_result.data(), m_n);
        for (std::size_t j = 0; j < columns; ++j)
            m_scratch[j] = 1 / std::sqrt(m_result[j * columns + j]);
        for (std::size_t j = 0; j < columns; ++j)
            for (std::size_t i = 0; i <= j; ++i)
                m_result[j * columns + i] *= m_scratch[i] * m_scratch[j];
        mirror(m_result, m_n);
    }
    Numbers answer() const { return m_result; }
    const double m_one = 1;
    Numbers m_result = Numbers(square(m_n));
};

void add_openblas()
{
    openblas_set_num_threads(1);
    add_square<LapackProduct>("matmul", "openblas");
    add_square<LapackInverse>("inverse", "openblas");
    add_square<LapackDeterminant>("determinant", "openblas");
    add_square<LapackSolution>("solve", "openblas");
    add_square<LapackRefinedSolution>("solve", "openblas_refined");
    add_square<LapackEigen>("eigen_symmetric", "openblas");
    add_square<LapackEigenByQr>("eigen_symmetric", "openblas_dsyev");
    add_square<LapackSvd>("svd", "openblas");
    add_square<LapackSvdByQr>("svd", "openblas_dgesvd");
    add_square<LapackSingularValues>("singular_values", "openblas");
    add_square<LapackPseudoInverse>("pseudo_inverse", "openblas");
    add_square<LapackCholesky>("cholesky", "openblas");
    add_square<LapackSweep>("sweep_all", "openblas");
    add_correlation<LapackCorrelation>("openblas");
}

const Peer<> s_openblas(add_openblas);

} // namespace
} // namespace qmml::bench
