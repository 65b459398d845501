// Tests of proportions and means from summary values.
#include "core/compare.h"
#include "core/under_guard.h"
#include "distrib/result.h"

#include <qmml/distrib.h>

#include <cmath>

namespace qmml {
namespace {

// What a test reports. Each stage sets the status that a failure in it leaves behind.
struct Report {
    double statistic = 0, p = 1.0;
    int status = 1;
};

// Each returns whether the test came to its end.

bool out_of_proportion(double p) noexcept
{
    return is_less(p, 0.0) || is_greater(p, 1.0);
}

// A two-sided test counts both tails.
bool finish(Report& report, int one_sided) noexcept
{
    double p = i_normal(report.statistic, 0, 1);
    if (p == distr_error_value)
        return false;
    if (p > 0.5)
        p = 1 - p;
    if (one_sided == 0)
        p = 2 * p;
    report.p = p;
    return true;
}

bool finish_exactly(Report& report, double p0, double phat, double n) noexcept
{
    const double k = phat * n;
    if (phat <= p0) {
        const double p = i_binom(k, p0, n);
        if (p == distr_error_value)
            return false;
        report.p = p;
    } else if (k - 1 < 0) {
        report.p = 0;
    } else {
        const double p = i_binom(k, p0, n); // of more than k
        if (p == distr_error_value)
            return false;
        report.p = 1 - p;
    }
    return true;
}

bool one_proportion(Report& report, double p0, double phat, double n, int one_sided, bool normal_approximation) noexcept
{
    constexpr double smallest_sample = 2;
    if (is_greater_equal(p0, 1.0) || is_less_equal(p0, 0.0) || out_of_proportion(phat))
        return false;
    report.status = 2;
    if (is_less(n, smallest_sample))
        return false;
    report.status = 3;
    if (!normal_approximation && one_sided == 1)
        return finish_exactly(report, p0, phat, n);
    report.statistic = (phat - p0) / std::sqrt((1 - p0) * p0 / n);
    return finish(report, one_sided);
}

bool two_proportions(Report& report, double p1, double p2, double size1, double size2, int one_sided,
                     bool pooled) noexcept
{
    if (out_of_proportion(p1) || out_of_proportion(p2))
        return false;
    report.status = 2;
    if (is_less(size1, 1.0) || is_less(size2, 1.0))
        return false;
    report.status = 3;
    const double p = (p1 * size1 + p2 * size2) / (size1 + size2);
    const double error = pooled ? std::sqrt((1 / size1 + 1 / size2) * (1 - p) * p)
                                : std::sqrt((1 - p1) * p1 / size1 + (1 - p2) * p2 / size2);
    if (error <= 0) // a NaN goes on and shows in the result
        return false;
    report.statistic = (p1 - p2) / error;
    return finish(report, one_sided);
}

bool one_mean(Report& report, double m0, double m1, double sd, double n, int one_sided) noexcept
{
    if (is_less_equal(sd, 0.0))
        return false;
    report.status = 2;
    if (is_less(n, 1.0))
        return false;
    report.status = 3;
    report.statistic = (m1 - m0) / (sd / std::sqrt(n));
    return finish(report, one_sided);
}

bool two_means(Report& report, double mean1, double mean2, double sd1, double sd2, double size1, double size2,
               int one_sided, bool pooled) noexcept
{
    if (is_less_equal(sd1, 0.0) || is_less_equal(sd2, 0.0))
        return false;
    report.status = 2;
    if (is_less(size1, 1.0) || is_less(size2, 1.0))
        return false;
    report.status = 3;
    const double sd =
        std::sqrt(((size1 - 1) * (sd1 * sd1) + (size2 - 1) * (sd2 * sd2)) / (size1 + size2 - 2)); // used when pooled
    const double error =
        pooled ? sd * std::sqrt(1 / size1 + 1 / size2) : std::sqrt(sd1 * sd1 / size1 + sd2 * sd2 / size2);
    report.statistic = (mean1 - mean2) / error; // two samples of one value each, pooled, divide by zero
    return finish(report, one_sided);
}

template <class Test>
int run(Test test, double* statistic, double* p, int* status) noexcept
{
    Report report;
    bool finished = false;
    under_guard([&] { finished = test(report); });
    if (statistic != nullptr)
        *statistic = report.statistic;
    if (p != nullptr)
        *p = report.p;
    if (status != nullptr)
        *status = finished ? 0 : report.status;
    return finished;
}

} // namespace
} // namespace qmml

int BinomialTestSingleSample(double p0, double phat, double n, int oneSided, unsigned char normalApprox,
                             double* statistic, double* p, int* status)
{
    return qmml::run(
        [=](qmml::Report& report) { return qmml::one_proportion(report, p0, phat, n, oneSided, normalApprox != 0); },
        statistic, p, status);
}

int BinomialTestTwoSamples(double p1, double p2, double size1, double size2, int oneSided, unsigned char pooled,
                           double* statistic, double* p, int* status)
{
    return qmml::run(
        [=](qmml::Report& report) {
            return qmml::two_proportions(report, p1, p2, size1, size2, oneSided, pooled != 0);
        },
        statistic, p, status);
}

int zTestSingleSampleMean(double m0, double m1, double sd, double n, int oneSided, double* statistic, double* p,
                          int* status)
{
    return qmml::run([=](qmml::Report& report) { return qmml::one_mean(report, m0, m1, sd, n, oneSided); }, statistic,
                     p, status);
}

int zTestTwoSampleMeans(double mean1, double mean2, double sd1, double sd2, double size1, double size2, int oneSided,
                        unsigned char pooled, double* statistic, double* p, int* status)
{
    return qmml::run(
        [=](qmml::Report& report) {
            return qmml::two_means(report, mean1, mean2, sd1, sd2, size1, size2, oneSided, pooled != 0);
        },
        statistic, p, status);
}
