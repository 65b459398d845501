// Shapiro-Wilk test.
#pragma once

namespace qmml::stattest {

struct ShapiroWilk {
    double w = 1, p = 1;
};

namespace shapiro_wilk {
inline constexpr int s_too_few = 1, s_too_many = 2, s_too_few_used = 4, s_censored_too_much = 5, s_no_range = 6;
}

// Returns the error; the result counts with each of them.
int shapiro_wilk_test(const double* data, int n, int used, bool with_coefficients, ShapiroWilk& result) noexcept;

} // namespace qmml::stattest
