// Kolmogorov-Smirnov test with the tabulated probabilities.
#pragma once

namespace qmml::stattest {

struct KolmogorovSmirnov {
    double distance = 0, p = 1, p_lilliefors = 1;
};

namespace kolmogorov_smirnov {
inline constexpr int s_all_equal = 1, s_too_few = 2, s_no_such_family = 3;
}

// The result counts after s_no_such_family too.
bool kolmogorov_smirnov_test(const double* data, int n, double missing, int family, const double (&parameters)[3],
                             KolmogorovSmirnov& result, int& error) noexcept;

// Mode 0 looks in the table of Kolmogorov and Smirnov, mode 1 in that of Lilliefors.
double tabulated_probability(double distance, double n, int mode) noexcept;

} // namespace qmml::stattest
