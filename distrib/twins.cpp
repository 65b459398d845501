// The capitalised names: each only forwards.
#include <qmml/distrib.h>

double Beta(double x, double a, double b)
{
    return d_beta(x, a, b);
}
double IBeta(double x, double a, double b)
{
    return i_beta(x, a, b);
}
double VBeta(double p, double a, double b)
{
    return v_beta(p, a, b);
}
double Cauchy(double x, double location, double scale)
{
    return d_cauchy(x, location, scale);
}
double ICauchy(double x, double location, double scale)
{
    return i_cauchy(x, location, scale);
}
double VCauchy(double p, double location, double scale)
{
    return v_cauchy(p, location, scale);
}
double Chi2(double x, double df)
{
    return d_chi2(x, df);
}
double IChi2(double x, double df)
{
    return i_chi2(x, df);
}
double VChi2(double p, double df)
{
    return v_chi2(p, df);
}
double Expon(double x, double lambda)
{
    return d_expon(x, lambda);
}
double IExpon(double x, double lambda)
{
    return i_expon(x, lambda);
}
double VExpon(double p, double lambda)
{
    return v_expon(p, lambda);
}
double Extreme(double x, double location, double scale)
{
    return d_extreme(x, location, scale);
}
double IExtreme(double x, double location, double scale)
{
    return i_extreme(x, location, scale);
}
double VExtreme(double p, double location, double scale)
{
    return v_extreme(p, location, scale);
}
double FDistr(double x, double df1, double df2)
{
    return d_f(x, df1, df2);
}
double IFDistr(double x, double df1, double df2)
{
    return i_f(x, df1, df2);
}
double VF(double p, double df1, double df2)
{
    return v_f(p, df1, df2);
}
double Gamma(double x, double shape)
{
    return d_gamma(x, shape);
}
double IGamma(double x, double shape)
{
    return i_gamma(x, shape);
}
double VGamma(double p, double shape)
{
    return v_gamma(p, shape);
}
double Laplace(double x, double location, double scale)
{
    return d_laplace(x, location, scale);
}
double ILaplace(double x, double location, double scale)
{
    return i_laplace(x, location, scale);
}
double VLaplace(double p, double location, double scale)
{
    return v_laplace(p, location, scale);
}
double Logis(double x, double location, double scale)
{
    return d_logis(x, location, scale);
}
double ILogis(double x, double location, double scale)
{
    return i_logis(x, location, scale);
}
double VLogis(double p, double location, double scale)
{
    return v_logis(p, location, scale);
}
double Lognorm(double x, double mu, double sigma)
{
    return d_lognorm(x, mu, sigma);
}
double ILognorm(double x, double mu, double sigma)
{
    return i_lognorm(x, mu, sigma);
}
double VLognorm(double p, double mu, double sigma)
{
    return v_lognorm(p, mu, sigma);
}
double Normal(double x, double mu, double sigma)
{
    return d_normal(x, mu, sigma);
}
double INormal(double x, double mu, double sigma)
{
    return i_normal(x, mu, sigma);
}
double VNormal(double p, double mu, double sigma)
{
    return v_normal(p, mu, sigma);
}
double Pareto(double x, double shape)
{
    return d_pareto(x, shape);
}
double IPareto(double x, double shape)
{
    return i_pareto(x, shape);
}
double VPareto(double p, double shape)
{
    return v_pareto(p, shape);
}
double Rayleigh(double x, double b)
{
    return d_rayleigh(x, b);
}
double IRayleigh(double x, double b)
{
    return i_rayleigh(x, b);
}
double VRayleigh(double p, double b)
{
    return v_rayleigh(p, b);
}
double Student(double x, double df)
{
    return d_student(x, df);
}
double IStudent(double x, double df)
{
    return i_student(x, df);
}
double VStudent(double p, double df)
{
    return v_student(p, df);
}
double Weibull(double x, double scale, double shape, double location)
{
    return d_weibull(x, scale, shape, location);
}
double IWeibull(double x, double scale, double shape, double location)
{
    return i_weibull(x, scale, shape, location);
}
double VWeibull(double p, double scale, double shape, double location)
{
    return v_weibull(p, scale, shape, location);
}
double Binom(double x, double p, double n)
{
    return d_binom(x, p, n);
}
double IBinom(double x, double p, double n)
{
    return i_binom(x, p, n);
}
double Geom(double x, double p)
{
    return d_geom(x, p);
}
double IGeom(double x, double p)
{
    return i_geom(x, p);
}
double Poisson(double x, double lambda)
{
    return d_poisson(x, lambda);
}
double IPoisson(double x, double lambda)
{
    return i_poisson(x, lambda);
}
