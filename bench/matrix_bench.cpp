#include "matrix_bench.h"

#include <qmml/matrix.h>

#include <limits>
#include <numeric>
#include <random>

namespace qmml::bench {
namespace {

Numbers random_numbers(std::size_t count, unsigned seed)
{
    std::mt19937_64 engine(seed);
    std::uniform_real_distribution<double> uniform(-1, 1);
    Numbers numbers(count);
    std::generate(numbers.begin(), numbers.end(), [&] { return uniform(engine); });
    return numbers;
}

std::size_t size(int count)
{
    return static_cast<std::size_t>(count);
}

// ---- Plain products for the checks ----

Numbers times(const double* a, int rows, int columns, std::span<const double> x)
{
    Numbers y(size(rows));
    for (int j = 0; j < columns; ++j)
        for (int i = 0; i < rows; ++i)
            y[size(i)] += a[size(j) * size(rows) + size(i)] * x[size(j)];
    return y;
}

Numbers transposed_times(const double* a, int rows, int columns, std::span<const double> x)
{
    Numbers y(size(columns));
    for (int j = 0; j < columns; ++j)
        for (int i = 0; i < rows; ++i)
            y[size(j)] += a[size(j) * size(rows) + size(i)] * x[size(i)];
    return y;
}

double largest(std::span<const double> x)
{
    double most = 0;
    for (const double v : x)
        most = std::isnan(v) ? v : std::max(most, std::abs(v));
    return most;
}

double difference(std::span<const double> x, std::span<const double> y)
{
    if (x.size() != y.size())
        return std::numeric_limits<double>::quiet_NaN();
    Numbers d(x.size());
    std::transform(x.begin(), x.end(), y.begin(), d.begin(), std::minus<>());
    return largest(d) / std::max(largest(y), std::numeric_limits<double>::min());
}

Numbers probe(int n)
{
    return random_numbers(size(n), 99);
}

// ---- Problems ----

void make_general(Problem& p)
{
    p.a = random_numbers(size(p.rows) * size(p.columns), 1);
    const double scale = std::sqrt(3 * std::exp(1.0) / p.rows);
    for (double& v : p.a)
        v *= scale;
    p.b = random_numbers(size(p.rows), 2);
}

// Random, with rows of different size: as elimination makes the elements grow, it comes to the smaller ones, and no
// product of some pivots leaves the range.
void make_for_determinant(Problem& p)
{
    const std::size_t n = size(p.rows);
    p.a = random_numbers(n * n, 1);
    Numbers scales(n);
    for (std::size_t i = 0; i < n; ++i)
        scales[i] = 1 / (1 + 0.37 * std::sqrt(static_cast<double>(i)));
    std::shuffle(scales.begin(), scales.end(), std::mt19937_64(5));
    for (std::size_t j = 0; j < n; ++j)
        for (std::size_t i = 0; i < n; ++i)
            p.a[j * n + i] *= scales[i];
}

void make_two(Problem& p)
{
    make_general(p);
    p.b = random_numbers(size(p.rows) * size(p.columns), 2);
}

void make_symmetric(Problem& p)
{
    make_general(p);
    for (int j = 0; j < p.columns; ++j)
        for (int i = 0; i < j; ++i)
            p.a[size(j) * size(p.rows) + size(i)] = p.a[size(i) * size(p.rows) + size(j)];
}

void make_positive(Problem& p) // a random symmetric matrix and enough on the diagonal
{
    make_symmetric(p);
    for (int i = 0; i < p.rows; ++i)
        p.a[size(i) * (size(p.rows) + 1)] += 5;
}

void make_cases(Problem& p)
{
    p.a = random_numbers(size(p.rows) * size(p.columns), 3);
    for (int i = 0; i < p.rows; ++i)
        for (int j = 1; j < p.columns; ++j)
            p.a[size(j) * size(p.rows) + size(i)] += 10 + 0.3 * p.a[size(i)];
}

// ---- Checks: backward errors, so that they depend little on the condition ----

double product_error(const Problem& p, std::span<const double> c)
{
    const Numbers x = probe(p.columns), bx = times(p.b.data(), p.rows, p.columns, x);
    return difference(times(c.data(), p.rows, p.columns, x), times(p.a.data(), p.rows, p.columns, bx));
}

double inverse_error(const Problem& p, std::span<const double> inverse)
{
    const Numbers x = probe(p.rows), y = times(inverse.data(), p.rows, p.rows, x);
    return largest(y) >= 0 ? difference(times(p.a.data(), p.rows, p.rows, y), x) / std::max(1.0, largest(y))
                           : largest(y);
}

double solution_error(const Problem& p, std::span<const double> x)
{
    return difference(times(p.a.data(), p.rows, p.rows, x), p.b) / std::max(1.0, largest(x));
}

double determinant_error(const Problem& p, std::span<const double> answer)
{
    const std::size_t n = size(p.rows);
    Numbers a = p.a;
    double expected = 1;
    for (std::size_t k = 0; k < n; ++k) {
        std::size_t pivot = k;
        for (std::size_t i = k + 1; i < n; ++i)
            if (std::abs(a[k * n + i]) > std::abs(a[k * n + pivot]))
                pivot = i;
        if (pivot != k)
            for (std::size_t j = k; j < n; ++j)
                std::swap(a[j * n + k], a[j * n + pivot]);
        expected *= pivot != k ? -a[k * n + k] : a[k * n + k];
        for (std::size_t j = k + 1; j < n; ++j) {
            const double factor = a[j * n + k] / a[k * n + k];
            for (std::size_t i = k + 1; i < n; ++i)
                a[j * n + i] -= factor * a[k * n + i];
        }
    }
    return std::abs(answer[0] - expected) / std::abs(expected);
}

double eigen_error(const Problem& p, std::span<const double> answer)
{
    const auto values = answer.first(size(p.rows));
    const double* const vectors = answer.data() + p.rows;
    const Numbers x = probe(p.rows), c = transposed_times(vectors, p.rows, p.rows, x);
    Numbers scaled = c;
    for (std::size_t i = 0; i < scaled.size(); ++i)
        scaled[i] *= values[i];
    return std::max(difference(times(vectors, p.rows, p.rows, c), x),
                    difference(times(vectors, p.rows, p.rows, scaled), times(p.a.data(), p.rows, p.rows, x)));
}

double svd_error(const Problem& p, std::span<const double> answer)
{
    const double* const u = answer.data();
    const double* const w = u + p.count();
    const double* const v = w + p.columns;
    const Numbers x = probe(p.columns);
    Numbers c = transposed_times(v, p.columns, p.columns, x);
    const double orthogonal = difference(times(v, p.columns, p.columns, c), x);
    for (int i = 0; i < p.columns; ++i)
        c[size(i)] *= w[i];
    return std::max(orthogonal, difference(times(u, p.rows, p.columns, c), times(p.a.data(), p.rows, p.columns, x)));
}

// The sums of their squares and fourth powers are known without them.
double singular_values_error(const Problem& p, std::span<const double> w)
{
    double squares = 0, fourths = 0, expected_squares = 0, expected_fourths = 0;
    for (const double v : w) {
        squares += v * v;
        fourths += v * v * v * v;
    }
    for (const double v : p.a)
        expected_squares += v * v;
    for (int j = 0; j < p.columns; ++j)
        for (const double v : transposed_times(p.a.data(), p.rows, p.columns,
                                               std::span(p.a).subspan(size(j) * size(p.rows), size(p.rows))))
            expected_fourths += v * v;
    return std::max(std::abs(squares / expected_squares - 1), std::abs(fourths / expected_fourths - 1));
}

double cholesky_error(const Problem& p, std::span<const double> u)
{
    const Numbers x = probe(p.rows), ux = times(u.data(), p.rows, p.rows, x);
    return difference(transposed_times(u.data(), p.rows, p.rows, ux), times(p.a.data(), p.rows, p.rows, x));
}

double correlation_error(const Problem& p, std::span<const double> answer)
{
    const std::size_t rows = size(p.rows), columns = size(p.columns);
    Numbers centred = p.a, expected;
    for (std::size_t j = 0; j < columns; ++j) {
        const auto column = std::span(centred).subspan(j * rows, rows);
        double sum = 0, squares = 0;
        for (const double v : column)
            sum += v;
        for (double& v : column) {
            v -= sum / p.rows;
            squares += v * v;
        }
        for (double& v : column)
            v /= std::sqrt(squares);
    }
    for (std::size_t j = 0; j < columns; ++j)
        for (const double v :
             transposed_times(centred.data(), p.rows, p.columns, std::span(centred).subspan(j * rows, rows)))
            expected.push_back(v);
    return difference(answer, expected);
}

// ---- The library itself ----

class Own {
public:
    explicit Own(const Problem& given) : m_given(given), m_work(given.a) {}
    Numbers answer() const { return m_work; }

protected:
    void restore() { std::copy(m_given.a.begin(), m_given.a.end(), m_work.begin()); }

    const Problem& m_given;
    Numbers m_work;
    int m_status = 0;
};

struct OwnProduct : Own {
    using Own::Own;
    void run()
    {
        const int n = m_given.rows;
        MatrixMultiply__(m_work.data(), n, n, m_given.a.data(), n, n, m_given.b.data(), n, n, &m_status);
    }
};

struct OwnInverse : Own {
    using Own::Own;
    void run()
    {
        restore();
        MatrixInverse__(m_work.data(), m_given.rows, &m_status);
    }
};

struct OwnDeterminant : Own {
    using Own::Own;
    void run() { ComputeDeterminant__(m_given.a.data(), m_given.rows, &m_determinant, &m_status); }
    Numbers answer() const { return {m_determinant}; }
    double m_determinant = 0;
};

struct OwnSolution : Own {
    using Own::Own;
    void run()
    {
        restore();
        m_x = m_given.b;
        SolveLinearSetOfEquations__(m_work.data(), m_x.data(), m_given.rows, 1, &m_status);
    }
    Numbers answer() const { return m_x; }
    Numbers m_x = m_given.b;
};

struct OwnEigen : Own {
    using Own::Own;
    void run()
    {
        int positive = 0;
        EigenValuesAndVectors__(m_given.a.data(), m_given.rows, m_values.data(), m_work.data(), &positive, &m_status);
    }
    Numbers answer() const
    {
        Numbers all = m_values;
        all.insert(all.end(), m_work.begin(), m_work.end());
        return all;
    }
    Numbers m_values = Numbers(size(m_given.rows));
};

struct OwnSvd : Own {
    using Own::Own;
    void run()
    {
        restore();
        SingularValueDecomposition__(m_work.data(), m_given.rows, m_given.columns, m_w.data(), m_v.data(), &m_status);
    }
    Numbers answer() const
    {
        Numbers all = m_work;
        all.insert(all.end(), m_w.begin(), m_w.end());
        all.insert(all.end(), m_v.begin(), m_v.end());
        return all;
    }
    Numbers m_w = Numbers(size(m_given.columns)), m_v = Numbers(size(m_given.columns) * size(m_given.columns));
};

struct OwnSingularValues : Own {
    using Own::Own;
    void run() { SingularValuesForMatrix__(m_given.a.data(), m_given.rows, m_given.columns, m_w.data(), &m_status); }
    Numbers answer() const { return m_w; }
    Numbers m_w = Numbers(size(m_given.columns));
};

struct OwnPseudoInverse : Own {
    using Own::Own;
    void run() { GeneralOrPseudoInverse__(m_given.a.data(), m_given.rows, m_given.columns, m_work.data(), &m_status); }
};

struct OwnCholesky : Own {
    using Own::Own;
    void run()
    {
        restore();
        CholeskyDecomposition__(m_work.data(), m_given.rows, &m_status);
    }
};

struct OwnSweep : Own {
    using Own::Own;
    void run()
    {
        restore();
        SweepingOnMatrix__(m_work.data(), m_given.rows, 0, m_given.rows - 1, 1, &m_status);
    }
    Numbers answer() const
    {
        Numbers inverse = m_work;
        for (double& v : inverse)
            v = -v;
        return inverse;
    }
};

struct OwnCorrelation : Own {
    using Own::Own;
    void run()
    {
        int failed = 0;
        ComputeCorrelationMatrix__(m_given.a.data(), m_given.rows, m_given.columns, m_result.data(), 1, &m_status,
                                   &failed);
    }
    Numbers answer() const { return m_result; }
    Numbers m_result = Numbers(size(m_given.columns) * size(m_given.columns));
};

void add_qmml()
{
    add_square<OwnProduct>("matmul", "qmml");
    add_square<OwnInverse>("inverse", "qmml");
    add_square<OwnDeterminant>("determinant", "qmml");
    add_square<OwnSolution>("solve", "qmml");
    add_square<OwnEigen>("eigen_symmetric", "qmml");
    add_square<OwnSvd>("svd", "qmml");
    add_square<OwnSingularValues>("singular_values", "qmml");
    add_square<OwnPseudoInverse>("pseudo_inverse", "qmml");
    add_square<OwnCholesky>("cholesky", "qmml");
    add_square<OwnSweep>("sweep_all", "qmml");
    add_correlation<OwnCorrelation>("qmml");
}

constexpr Operation s_operations[] = {
    {"matmul", make_two, product_error},
    {"inverse", make_general, inverse_error},
    {"determinant", make_for_determinant, determinant_error},
    {"solve", make_general, solution_error},
    {"eigen_symmetric", make_symmetric, eigen_error},
    {"svd", make_general, svd_error},
    {"singular_values", make_general, singular_values_error},
    {"pseudo_inverse", make_general, inverse_error},
    {"cholesky", make_positive, cholesky_error},
    {"sweep_all", make_positive, inverse_error},
    {"correlation", make_cases, correlation_error},
};

} // namespace

const std::vector<int>& sizes()
{
    static const std::vector<int> s_sizes = {4, 16, 64, 256, 1024};
    return s_sizes;
}

const Operation& operation(const std::string& name)
{
    const auto* const found =
        std::find_if(std::begin(s_operations), std::end(s_operations), [&](const auto& o) { return o.name == name; });
    if (found == std::end(s_operations))
        throw std::logic_error("no operation " + name);
    return *found;
}

const Problem& problem(const std::string& workload, const Operation& operation, int rows, int columns)
{
    static std::map<std::string, Problem> s_problems;
    Problem& made = s_problems[workload];
    if (made.a.empty()) {
        made.rows = rows;
        made.columns = columns;
        operation.make(made);
    }
    return made;
}

} // namespace qmml::bench

int main(int argc, char** argv)
{
    using namespace qmml::bench;
    Peer<>::add_all();
    add_qmml();
    return run_benchmarks(argc, argv);
}
