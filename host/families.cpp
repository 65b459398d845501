#include "host/families.h"

#include <qmml/distrib.h>

#include <algorithm>
#include <type_traits>

namespace qmml::host {

template <auto F>
static double at(double point, const double* parameters)
{
    using Function = decltype(F);
    if constexpr (std::is_invocable_v<Function, double, double>)
        return F(point, parameters[0]);
    else if constexpr (std::is_invocable_v<Function, double, double, double>)
        return F(point, parameters[0], parameters[1]);
    else
        return F(point, parameters[0], parameters[1], parameters[2]);
}

static constexpr Parameter s_a_b[] = {{"a"}, {"b"}};
static constexpr Parameter s_p_n[] = {{"p"}, {"n"}};
static constexpr Parameter s_p[] = {{"p"}};
static constexpr Parameter s_df[] = {{"df"}};
static constexpr Parameter s_df1_df2[] = {{"df1"}, {"df2"}};
static constexpr Parameter s_shape[] = {{"shape"}};
static constexpr Parameter s_lambda[] = {{"lambda"}};
static constexpr Parameter s_b[] = {{"b"}};
static constexpr Parameter s_location_scale[] = {{"location", 0}, {"scale", 1}};
static constexpr Parameter s_mu_sigma[] = {{"mu", 0}, {"sigma", 1}};
static constexpr Parameter s_scale_shape_location[] = {{"scale"}, {"shape"}, {"location", 0}};

static constexpr Family s_families[] = {
    {"beta", "beta", "beta", s_a_b, at<d_beta>, at<i_beta>, at<v_beta>},
    {"binom", "binom", "binomial, n trials", s_p_n, at<d_binom>, at<i_binom>, nullptr},
    {"cauchy", "cauchy", "Cauchy", s_location_scale, at<d_cauchy>, at<i_cauchy>, at<v_cauchy>},
    {"chi2", "chi2", "chi-square", s_df, at<d_chi2>, at<i_chi2>, at<v_chi2>},
    {"expon", "expon", "exponential, rate lambda", s_lambda, at<d_expon>, at<i_expon>, at<v_expon>},
    {"extreme", "extreme", "extreme value, largest", s_location_scale, at<d_extreme>, at<i_extreme>, at<v_extreme>},
    {"f", "f", "F", s_df1_df2, at<d_f>, at<i_f>, at<v_f>},
    {"gamma", "gamma", "gamma, unit scale", s_shape, at<d_gamma>, at<i_gamma>, at<v_gamma>},
    {"geom", "geom", "geometric, failures before a success", s_p, at<d_geom>, at<i_geom>, nullptr},
    {"laplace", "laplace", "Laplace", s_location_scale, at<d_laplace>, at<i_laplace>, at<v_laplace>},
    {"logis", "logis", "logistic", s_location_scale, at<d_logis>, at<i_logis>, at<v_logis>},
    {"lognorm", "lognorm", "log-normal", s_mu_sigma, at<d_lognorm>, at<i_lognorm>, at<v_lognorm>},
    {"normal", "normal", "normal", s_mu_sigma, at<d_normal>, at<i_normal>, at<v_normal>},
    {"pareto", "pareto", "Pareto on x >= 1", s_shape, at<d_pareto>, at<i_pareto>, at<v_pareto>},
    {"poisson", "poisson", "Poisson", s_lambda, at<d_poisson>, at<i_poisson>, nullptr},
    {"rayleigh", "rayl", "Rayleigh", s_b, at<d_rayleigh>, at<i_rayleigh>, at<v_rayleigh>},
    {"student", "student", "Student t", s_df, at<d_student>, at<i_student>, at<v_student>},
    {"weibull", "weibull", "Weibull", s_scale_shape_location, at<d_weibull>, at<i_weibull>, at<v_weibull>},
};
static_assert(std::ranges::is_sorted(s_families, {}, &Family::name));
static_assert(std::ranges::all_of(s_families,
                                  [](const Family& f) { return f.parameters.size() <= s_most_parameters; }));

std::span<const Family> families() noexcept
{
    return s_families;
}

const Family* find_family(std::string_view name) noexcept
{
    const auto found =
        std::ranges::find_if(s_families, [&](const Family& f) { return f.name == name || f.formula_name == name; });
    return found == std::end(s_families) ? nullptr : &*found;
}

} // namespace qmml::host
