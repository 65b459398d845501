// Eigen: matrices of any size, as a program has them that does not know the size beforehand.
#include "matrix_bench.h"

#include <Eigen/Dense>

namespace qmml::bench {
namespace {

using Eigen::MatrixXd;
using Eigen::VectorXd;

class InEigen {
public:
    explicit InEigen(const Problem& given)
        : m_a(Eigen::Map<const MatrixXd>(given.a.data(), given.rows, given.columns)), m_result(m_a)
    {
    }
    Numbers answer() const { return {m_result.data(), m_result.data() + m_result.size()}; }

protected:
    const MatrixXd m_a;
    MatrixXd m_result;
};

struct EigenProduct : InEigen {
    explicit EigenProduct(const Problem& given)
        : InEigen(given), m_b(Eigen::Map<const MatrixXd>(given.b.data(), given.rows, given.columns))
    {
    }
    void run() { m_result.noalias() = m_a * m_b; }
    const MatrixXd m_b;
};

template <class Factors>
struct EigenInverse : InEigen {
    using InEigen::InEigen;
    void run()
    {
        m_factors.compute(m_a);
        m_result = m_factors.inverse();
    }
    Factors m_factors = Factors(m_a.rows());
};

template <>
struct EigenInverse<Eigen::FullPivLU<MatrixXd>> : InEigen {
    using InEigen::InEigen;
    void run()
    {
        m_factors.compute(m_a);
        m_result = m_factors.inverse();
    }
    Eigen::FullPivLU<MatrixXd> m_factors = Eigen::FullPivLU<MatrixXd>(m_a.rows(), m_a.cols());
};

struct EigenDeterminant : InEigen {
    using InEigen::InEigen;
    void run() { m_determinant = m_factors.compute(m_a).determinant(); }
    Numbers answer() const { return {m_determinant}; }
    Eigen::PartialPivLU<MatrixXd> m_factors = Eigen::PartialPivLU<MatrixXd>(m_a.rows());
    double m_determinant = 0;
};

struct EigenSolution : InEigen {
    explicit EigenSolution(const Problem& given)
        : InEigen(given), m_b(Eigen::Map<const VectorXd>(given.b.data(), given.rows))
    {
    }
    void run() { m_x = m_factors.compute(m_a).solve(m_b); }
    Numbers answer() const { return {m_x.data(), m_x.data() + m_x.size()}; }
    const VectorXd m_b;
    VectorXd m_x = m_b;
    Eigen::PartialPivLU<MatrixXd> m_factors = Eigen::PartialPivLU<MatrixXd>(m_a.rows());
};

struct EigenSymmetric : InEigen {
    using InEigen::InEigen;
    void run() { m_solver.compute(m_a); }
    Numbers answer() const
    {
        Numbers all(m_solver.eigenvalues().begin(), m_solver.eigenvalues().end());
        const MatrixXd& vectors = m_solver.eigenvectors();
        all.insert(all.end(), vectors.data(), vectors.data() + vectors.size());
        return all;
    }
    Eigen::SelfAdjointEigenSolver<MatrixXd> m_solver = Eigen::SelfAdjointEigenSolver<MatrixXd>(m_a.rows());
};

template <class Solver>
struct EigenSvd : InEigen {
    using InEigen::InEigen;
    void run() { m_solver.compute(m_a); }
    Numbers answer() const
    {
        const MatrixXd &u = m_solver.matrixU(), &v = m_solver.matrixV();
        Numbers all(u.data(), u.data() + u.size());
        all.insert(all.end(), m_solver.singularValues().begin(), m_solver.singularValues().end());
        all.insert(all.end(), v.data(), v.data() + v.size());
        return all;
    }
    Solver m_solver = Solver(m_a.rows(), m_a.cols(), Eigen::ComputeThinU | Eigen::ComputeThinV);
};

template <class Solver>
struct EigenSingularValues : InEigen {
    using InEigen::InEigen;
    void run() { m_solver.compute(m_a); }
    Numbers answer() const { return {m_solver.singularValues().begin(), m_solver.singularValues().end()}; }
    Solver m_solver = Solver(m_a.rows(), m_a.cols());
};

struct EigenPseudoInverse : InEigen {
    using InEigen::InEigen;
    void run() { m_result = m_factors.compute(m_a).pseudoInverse(); }
    Eigen::CompleteOrthogonalDecomposition<MatrixXd> m_factors =
        Eigen::CompleteOrthogonalDecomposition<MatrixXd>(m_a.rows(), m_a.cols());
};

struct EigenCholesky : InEigen {
    using InEigen::InEigen;
    void run() { m_result = m_factors.compute(m_a).matrixU(); }
    Eigen::LLT<MatrixXd> m_factors = Eigen::LLT<MatrixXd>(m_a.rows());
};

struct EigenSweep : InEigen {
    using InEigen::InEigen;
    void run()
    {
        m_result.setIdentity();
        m_factors.compute(m_a).solveInPlace(m_result);
    }
    Eigen::LLT<MatrixXd> m_factors = Eigen::LLT<MatrixXd>(m_a.rows());
};

struct EigenCorrelation : InEigen {
    using InEigen::InEigen;
    void run()
    {
        m_centred = m_a.rowwise() - m_a.colwise().mean();
        m_centred.array().rowwise() /= m_centred.colwise().norm().array();
        m_result.resize(m_a.cols(), m_a.cols());
        m_result.setZero();
        m_result.selfadjointView<Eigen::Lower>().rankUpdate(m_centred.transpose());
        m_result.triangularView<Eigen::StrictlyUpper>() = m_result.transpose();
    }
    MatrixXd m_centred = m_a;
};

void add_eigen()
{
    add_square<EigenProduct>("matmul", "eigen");
    add_square<EigenInverse<Eigen::PartialPivLU<MatrixXd>>>("inverse", "eigen");
    add_square<EigenInverse<Eigen::FullPivLU<MatrixXd>>>("inverse", "eigen_fullpivot");
    add_square<EigenDeterminant>("determinant", "eigen");
    add_square<EigenSolution>("solve", "eigen");
    add_square<EigenSymmetric>("eigen_symmetric", "eigen");
    add_square<EigenSvd<Eigen::BDCSVD<MatrixXd>>>("svd", "eigen");
    add_square<EigenSvd<Eigen::JacobiSVD<MatrixXd>>>("svd", "eigen_jacobi", 16);
    add_square<EigenSingularValues<Eigen::BDCSVD<MatrixXd>>>("singular_values", "eigen");
    add_square<EigenSingularValues<Eigen::JacobiSVD<MatrixXd>>>("singular_values", "eigen_jacobi", 16);
    add_square<EigenPseudoInverse>("pseudo_inverse", "eigen");
    add_square<EigenCholesky>("cholesky", "eigen");
    add_square<EigenSweep>("sweep_all", "eigen");
    add_correlation<EigenCorrelation>("eigen");
}

const Peer<> s_eigen(add_eigen);

} // namespace
} // namespace qmml::bench
