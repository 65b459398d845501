#pragma once

#include <cstddef>

namespace qmml::matrix {

// x - y to 15 significant digits of the larger operand: the difference of nearly equal numbers loses its round-off
// tail. Where the operands are not of a size, or one of them is infinite, it is x - y.
double rounded_difference(double x, double y) noexcept;

// out[i] = rounded_difference(x[i], y), with the same bits; out may be x.
void rounded_differences(const double* x, std::ptrdiff_t n, double y, double* out) noexcept;

// What y asks of an x. The decimal exponent of x may differ from that of y by one; so two spacings of the result are
// possible, and where |x| lies decides between them. No spacing (0) leaves x - y as it is.
struct RoundedShift {
    RoundedShift() noexcept = default; // nothing to subtract
    explicit RoundedShift(double y) noexcept;

    double subtrahend = 0;
    double lower = 0, middle = 0, upper = 0; // from lower on the first spacing, from middle the second, from upper none
    double first = 0, second = 0, at_zero = 0;
};

} // namespace qmml::matrix
