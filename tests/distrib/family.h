// The whole family as a table, for the laws that every member obeys.
#pragma once

#include <qmml/distrib.h>

#include <string>
#include <variant>
#include <vector>

namespace qmml::test {

using Function2 = double (*)(double, double);
using Function3 = double (*)(double, double, double);
using Function4 = double (*)(double, double, double, double);

struct Member {
    const char* name;
    std::variant<Function2, Function3, Function4> function;
    std::variant<Function2, Function3, Function4> twin;
    int code; // DistrFunct's

    int arguments() const { return static_cast<int>(function.index()) + 2; }
    double call(const double* a) const { return call(function, a); }
    double call_twin(const double* a) const { return call(twin, a); }

private:
    static double call(const std::variant<Function2, Function3, Function4>& f, const double* a)
    {
        switch (f.index()) {
        case 0: return std::get<0>(f)(a[0], a[1]);
        case 1: return std::get<1>(f)(a[0], a[1], a[2]);
        default: return std::get<2>(f)(a[0], a[1], a[2], a[3]);
        }
    }
};

inline const std::vector<Member>& family()
{
    static const std::vector<Member> members = {
        {"d_beta", d_beta, Beta, 0},
        {"i_beta", i_beta, IBeta, 1},
        {"v_beta", v_beta, VBeta, 38},
        {"d_binom", d_binom, Binom, 2},
        {"i_binom", i_binom, IBinom, 3},
        {"d_cauchy", d_cauchy, Cauchy, 4},
        {"i_cauchy", i_cauchy, ICauchy, 5},
        {"v_cauchy", v_cauchy, VCauchy, 39},
        {"d_chi2", d_chi2, Chi2, 6},
        {"i_chi2", i_chi2, IChi2, 7},
        {"v_chi2", v_chi2, VChi2, 40},
        {"d_expon", d_expon, Expon, 8},
        {"i_expon", i_expon, IExpon, 9},
        {"v_expon", v_expon, VExpon, 41},
        {"d_extreme", d_extreme, Extreme, 32},
        {"i_extreme", i_extreme, IExtreme, 33},
        {"v_extreme", v_extreme, VExtreme, 42},
        {"d_f", d_f, FDistr, 10},
        {"i_f", i_f, IFDistr, 11},
        {"v_f", v_f, VF, 43},
        {"d_gamma", d_gamma, Gamma, 12},
        {"i_gamma", i_gamma, IGamma, 13},
        {"v_gamma", v_gamma, VGamma, 44},
        {"d_geom", d_geom, Geom, 14},
        {"i_geom", i_geom, IGeom, 15},
        {"d_laplace", d_laplace, Laplace, 16},
        {"i_laplace", i_laplace, ILaplace, 17},
        {"v_laplace", v_laplace, VLaplace, 45},
        {"d_logis", d_logis, Logis, 18},
        {"i_logis", i_logis, ILogis, 19},
        {"v_logis", v_logis, VLogis, 46},
        {"d_lognorm", d_lognorm, Lognorm, 36},
        {"i_lognorm", i_lognorm, ILognorm, 37},
        {"v_lognorm", v_lognorm, VLognorm, 47},
        {"d_normal", d_normal, Normal, 22},
        {"i_normal", i_normal, INormal, 23},
        {"v_normal", v_normal, VNormal, 48},
        {"d_pareto", d_pareto, Pareto, 24},
        {"i_pareto", i_pareto, IPareto, 25},
        {"v_pareto", v_pareto, VPareto, 49},
        {"d_poisson", d_poisson, Poisson, 26},
        {"i_poisson", i_poisson, IPoisson, 27},
        {"d_rayleigh", d_rayleigh, Rayleigh, 34},
        {"i_rayleigh", i_rayleigh, IRayleigh, 35},
        {"v_rayleigh", v_rayleigh, VRayleigh, 50},
        {"d_student", d_student, Student, 28},
        {"i_student", i_student, IStudent, 29},
        {"v_student", v_student, VStudent, 51},
        {"d_weibull", d_weibull, Weibull, 30},
        {"i_weibull", i_weibull, IWeibull, 31},
        {"v_weibull", v_weibull, VWeibull, 52},
    };
    return members;
}

} // namespace qmml::test
