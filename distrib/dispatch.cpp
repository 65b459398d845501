#include <qmml/distrib.h>

#include "distrib/result.h"
#include "platform/float_guard.h"

#include <cmath>
#include <cstdarg>
#include <cstddef>
#include <iterator>

namespace qmml {

// A function of x and one to three parameters.
struct Entry {
    constexpr Entry(int c, double (*f)(double, double)) : code(c), parameters(1), one(f) {}
    constexpr Entry(int c, double (*f)(double, double, double)) : code(c), parameters(2), two(f) {}
    constexpr Entry(int c, double (*f)(double, double, double, double)) : code(c), parameters(3), three(f) {}

    int code;
    int parameters;
    union {
        double (*one)(double, double);
        double (*two)(double, double, double);
        double (*three)(double, double, double, double);
    };
};

static double d_lognorm_sigma(double x, double sigma)
{
    return d_lognorm(x, 0, sigma);
}

static double i_lognorm_sigma(double x, double sigma)
{
    return i_lognorm(x, 0, sigma);
}

// By code, without gaps.
static constexpr Entry s_functions[] = {
    {0, d_beta},     {1, i_beta},     {2, d_binom},          {3, i_binom},          {4, d_cauchy},    {5, i_cauchy},
    {6, d_chi2},     {7, i_chi2},     {8, d_expon},          {9, i_expon},          {10, d_f},        {11, i_f},
    {12, d_gamma},   {13, i_gamma},   {14, d_geom},          {15, i_geom},          {16, d_laplace},  {17, i_laplace},
    {18, d_logis},   {19, i_logis},   {20, d_lognorm_sigma}, {21, i_lognorm_sigma}, {22, d_normal},   {23, i_normal},
    {24, d_pareto},  {25, i_pareto},  {26, d_poisson},       {27, i_poisson},       {28, d_student},  {29, i_student},
    {30, d_weibull}, {31, i_weibull}, {32, d_extreme},       {33, i_extreme},       {34, d_rayleigh}, {35, i_rayleigh},
    {36, d_lognorm}, {37, i_lognorm}, {38, v_beta},          {39, v_cauchy},        {40, v_chi2},     {41, v_expon},
    {42, v_extreme}, {43, v_f},       {44, v_gamma},         {45, v_laplace},       {46, v_logis},    {47, v_lognorm},
    {48, v_normal},  {49, v_pareto},  {50, v_rayleigh},      {51, v_student},       {52, v_weibull},
};

static constexpr bool in_order()
{
    for (std::size_t i = 0; i < std::size(s_functions); ++i)
        if (s_functions[i].code != static_cast<int>(i))
            return false;
    return true;
}
static_assert(in_order());

static double call(const Entry& entry, double x, const double* parameters)
{
    switch (entry.parameters) {
    case 1: return entry.one(x, parameters[0]);
    case 2: return entry.two(x, parameters[0], parameters[1]);
    default: return entry.three(x, parameters[0], parameters[1], parameters[2]);
    }
}

static bool is_value(double v) noexcept
{
    return std::isfinite(v) && v != distr_error_value;
}

} // namespace qmml

unsigned char DistrFunct(int code, double* result, double x, ...)
{
    using namespace qmml;
    if (result == nullptr)
        return 0;
    if (static_cast<unsigned>(code) >= std::size(s_functions))
        return is_value(*result);

    const Entry& entry = s_functions[code];
    double parameters[3] = {};
    std::va_list arguments; // holds no more than the function takes
    va_start(arguments, x);
    for (int i = 0; i < entry.parameters; ++i)
        parameters[i] = va_arg(arguments, double);
    va_end(arguments);

    const platform::FloatGuard guard;
    const double value = call(entry, x, parameters);
    if (guard.faulted(platform::fault::serious))
        return 0;
    *result = value;
    return is_value(value);
}
