// A program with functions of its own under names that the library uses inside: neither meets the other's.
#include <qmml/interp.h>

#include <cmath>
#include <cstdio>

extern "C" {
__attribute__((visibility("default"))) double i_normal(double, double, double)
{
    return 42;
}
__attribute__((visibility("default"))) double gammln(double)
{
    return 42;
}
}

int main()
{
    double upper = 0, lower = 0;
    const double x = 1;
    ExInterpreter normal("inormal(x, 0, 1)", 1), chi2("ichi2(2 * x, 2)", 1);
    normal.ExpresVal(&upper, x);
    chi2.ExpresVal(&lower, x);
    std::printf("%.17g %.17g\n", upper, lower);
    const bool as_documented =
        std::fabs(upper - 0.5 * std::erfc(-std::sqrt(0.5))) < 1e-8 && std::fabs(lower - (1 - std::exp(-1.0))) < 1e-10;
    return !(as_documented && i_normal(0, 0, 1) == 42 && gammln(1) == 42);
}
