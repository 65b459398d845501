// The GNU Scientific Library, up to where it can still be the best peer. Its matrices go row by row: to it the same
// numbers are the transpose.
#include "matrix_bench.h"

#include <gsl/gsl_blas.h>
#include <gsl/gsl_eigen.h>
#include <gsl/gsl_linalg.h>

namespace qmml::bench {
namespace {

class Matrix {
public:
    explicit Matrix(std::size_t n) : m_matrix(gsl_matrix_calloc(n, n), gsl_matrix_free) {}
    Matrix(std::size_t n, const Numbers& numbers) : Matrix(n) { fill(numbers); }
    void fill(const Numbers& numbers) { std::copy(numbers.begin(), numbers.end(), get()->data); }
    gsl_matrix* get() const { return m_matrix.get(); }
    Numbers numbers() const { return {get()->data, get()->data + get()->size1 * get()->size2}; }
    Numbers transposed() const
    {
        Numbers all;
        for (std::size_t j = 0; j < get()->size2; ++j)
            for (std::size_t i = 0; i < get()->size1; ++i)
                all.push_back(gsl_matrix_get(get(), i, j));
        return all;
    }

private:
    std::unique_ptr<gsl_matrix, void (*)(gsl_matrix*)> m_matrix;
};

using Vector = std::unique_ptr<gsl_vector, void (*)(gsl_vector*)>;
using Permutation = std::unique_ptr<gsl_permutation, void (*)(gsl_permutation*)>;

Vector make_vector(std::size_t n)
{
    return {gsl_vector_calloc(n), gsl_vector_free};
}

class InGsl {
public:
    explicit InGsl(const Problem& given) : m_given(given) {}
    Numbers answer() const { return m_result.numbers(); }

protected:
    const Problem& m_given;
    const std::size_t m_n = static_cast<std::size_t>(m_given.rows);
    Matrix m_work = Matrix(m_n, m_given.a), m_result = Matrix(m_n);
    Permutation m_permutation = {gsl_permutation_calloc(m_n), gsl_permutation_free};
    int m_sign = 0;
};

struct GslProduct : InGsl {
    using InGsl::InGsl;
    void run() { gsl_blas_dgemm(CblasNoTrans, CblasNoTrans, 1, m_b.get(), m_work.get(), 0, m_result.get()); }
    Matrix m_b = Matrix(m_n, m_given.b);
};

struct GslInverse : InGsl {
    using InGsl::InGsl;
    void run()
    {
        m_work.fill(m_given.a);
        gsl_linalg_LU_decomp(m_work.get(), m_permutation.get(), &m_sign);
        gsl_linalg_LU_invert(m_work.get(), m_permutation.get(), m_result.get());
    }
};

struct GslDeterminant : InGsl {
    using InGsl::InGsl;
    void run()
    {
        m_work.fill(m_given.a);
        gsl_linalg_LU_decomp(m_work.get(), m_permutation.get(), &m_sign);
        m_determinant = gsl_linalg_LU_det(m_work.get(), m_sign);
    }
    Numbers answer() const { return {m_determinant}; }
    double m_determinant = 0;
};

struct GslSolution : InGsl {
    explicit GslSolution(const Problem& given) : InGsl(given)
    {
        for (std::size_t i = 0; i < m_n; ++i) {
            gsl_vector_set(m_b.get(), i, given.b[i]);
            for (std::size_t j = 0; j < m_n; ++j)
                m_rows[i * m_n + j] = given.a[j * m_n + i];
        }
    }
    void run()
    {
        m_work.fill(m_rows);
        gsl_linalg_LU_decomp(m_work.get(), m_permutation.get(), &m_sign);
        gsl_linalg_LU_solve(m_work.get(), m_permutation.get(), m_b.get(), m_x.get());
    }
    Numbers answer() const { return {m_x->data, m_x->data + m_n}; }
    Numbers m_rows = Numbers(m_n * m_n);
    Vector m_b = make_vector(m_n), m_x = make_vector(m_n);
};

struct GslEigen : InGsl {
    using InGsl::InGsl;
    void run()
    {
        m_work.fill(m_given.a);
        gsl_eigen_symmv(m_work.get(), m_values.get(), m_result.get(), m_space.get());
    }
    Numbers answer() const
    {
        Numbers all(m_values->data, m_values->data + m_n);
        const Numbers vectors = m_result.transposed();
        all.insert(all.end(), vectors.begin(), vectors.end());
        return all;
    }
    Vector m_values = make_vector(m_n);
    std::unique_ptr<gsl_eigen_symmv_workspace, void (*)(gsl_eigen_symmv_workspace*)> m_space = {
        gsl_eigen_symmv_alloc(m_n), gsl_eigen_symmv_free};
};

struct GslSvd : InGsl { // of the transpose: what it calls U is V
    using InGsl::InGsl;
    void run()
    {
        m_work.fill(m_given.a);
        gsl_linalg_SV_decomp(m_work.get(), m_result.get(), m_w.get(), m_space.get());
    }
    Numbers answer() const
    {
        Numbers all = m_result.transposed();
        all.insert(all.end(), m_w->data, m_w->data + m_n);
        const Numbers v = m_work.transposed();
        all.insert(all.end(), v.begin(), v.end());
        return all;
    }
    Vector m_w = make_vector(m_n), m_space = make_vector(m_n);
};

struct GslCholesky : InGsl { // its lower factor, row by row, is the upper one column by column
    using InGsl::InGsl;
    void run()
    {
        m_work.fill(m_given.a);
        gsl_linalg_cholesky_decomp1(m_work.get());
        for (std::size_t i = 0; i < m_n; ++i)
            std::fill_n(m_work.get()->data + i * m_n + i + 1, m_n - i - 1, 0.0);
    }
    Numbers answer() const { return m_work.numbers(); }
};

struct GslSweep : InGsl {
    using InGsl::InGsl;
    void run()
    {
        m_work.fill(m_given.a);
        gsl_linalg_cholesky_decomp1(m_work.get());
        gsl_linalg_cholesky_invert(m_work.get());
    }
    Numbers answer() const { return m_work.numbers(); }
};

void add_gsl()
{
    add_square<GslProduct>("matmul", "gsl", 256);
    add_square<GslInverse>("inverse", "gsl", 256);
    add_square<GslDeterminant>("determinant", "gsl", 256);
    add_square<GslSolution>("solve", "gsl", 256);
    add_square<GslEigen>("eigen_symmetric", "gsl", 256);
    add_square<GslSvd>("svd", "gsl", 64);
    add_square<GslCholesky>("cholesky", "gsl", 256);
    add_square<GslSweep>("sweep_all", "gsl", 256);
}

const Peer<> s_gsl(add_gsl);

} // namespace
} // namespace qmml::bench
