#include "stattest/kolmogorov_smirnov.h"

#include <cmath>
#include <span>

namespace qmml::stattest {
namespace {

constexpr int s_levels = 5;
// In float, and so are the critical values: what is returned and compared depends on it.
constexpr float s_level[s_levels] = {0.2F, 0.15F, 0.1F, 0.05F, 0.01F};

struct Row {
    float n;
    float critical[s_levels];
};

// N. V. Smirnov, Table for estimating the goodness of fit of empirical distributions, Annals of Mathematical
// Statistics 19 (1948), 279-281, as tabulated by F. J. Massey, Journal of the American Statistical Association 46
// (1951), 68-78.
constexpr Row s_kolmogorov_smirnov[] = {
    {1, {0.900F, 0.925F, 0.950F, 0.975F, 0.995F}},  {2, {0.684F, 0.726F, 0.776F, 0.842F, 0.929F}},
    {3, {0.565F, 0.597F, 0.642F, 0.708F, 0.828F}},  {4, {0.494F, 0.525F, 0.564F, 0.624F, 0.733F}},
    {5, {0.446F, 0.474F, 0.510F, 0.565F, 0.669F}},  {6, {0.410F, 0.436F, 0.470F, 0.521F, 0.618F}},
    {7, {0.381F, 0.405F, 0.438F, 0.486F, 0.577F}},  {8, {0.358F, 0.381F, 0.411F, 0.457F, 0.543F}},
    {9, {0.339F, 0.360F, 0.388F, 0.432F, 0.514F}},  {10, {0.322F, 0.342F, 0.368F, 0.410F, 0.490F}},
    {11, {0.307F, 0.326F, 0.352F, 0.391F, 0.468F}}, {12, {0.295F, 0.313F, 0.338F, 0.375F, 0.450F}},
    {13, {0.284F, 0.302F, 0.325F, 0.361F, 0.433F}}, {14, {0.274F, 0.292F, 0.314F, 0.349F, 0.418F}},
    {15, {0.266F, 0.283F, 0.304F, 0.338F, 0.404F}}, {16, {0.258F, 0.274F, 0.295F, 0.328F, 0.392F}},
    {17, {0.250F, 0.266F, 0.286F, 0.318F, 0.381F}}, {18, {0.244F, 0.259F, 0.278F, 0.309F, 0.371F}},
    {19, {0.237F, 0.252F, 0.272F, 0.301F, 0.363F}}, {20, {0.231F, 0.246F, 0.264F, 0.294F, 0.356F}},
    {25, {0.21F, 0.22F, 0.24F, 0.27F, 0.32F}},      {30, {0.19F, 0.20F, 0.22F, 0.24F, 0.29F}},
    {35, {0.18F, 0.19F, 0.21F, 0.23F, 0.27F}},
};
constexpr Row s_kolmogorov_smirnov_beyond = {0, {1.07F, 1.14F, 1.22F, 1.36F, 1.63F}}; // over the root of n

// H. W. Lilliefors, On the Kolmogorov-Smirnov test for normality with mean and variance unknown, Journal of the
// American Statistical Association 62 (1967), 399-402.
constexpr Row s_lilliefors[] = {
    {4, {0.300F, 0.319F, 0.352F, 0.381F, 0.417F}},  {5, {0.285F, 0.299F, 0.315F, 0.337F, 0.405F}},
    {6, {0.265F, 0.277F, 0.294F, 0.319F, 0.364F}},  {7, {0.247F, 0.258F, 0.276F, 0.300F, 0.348F}},
    {8, {0.233F, 0.244F, 0.261F, 0.285F, 0.331F}},  {9, {0.223F, 0.233F, 0.249F, 0.271F, 0.311F}},
    {10, {0.215F, 0.224F, 0.239F, 0.258F, 0.294F}}, {11, {0.206F, 0.217F, 0.230F, 0.249F, 0.284F}},
    {12, {0.199F, 0.212F, 0.223F, 0.242F, 0.275F}}, {13, {0.190F, 0.202F, 0.214F, 0.234F, 0.268F}},
    {14, {0.183F, 0.194F, 0.207F, 0.227F, 0.261F}}, {15, {0.177F, 0.187F, 0.201F, 0.220F, 0.257F}},
    {16, {0.173F, 0.182F, 0.195F, 0.213F, 0.250F}}, {17, {0.169F, 0.177F, 0.189F, 0.206F, 0.245F}},
    {18, {0.166F, 0.173F, 0.184F, 0.200F, 0.239F}}, {19, {0.163F, 0.169F, 0.179F, 0.195F, 0.235F}},
    {20, {0.160F, 0.166F, 0.174F, 0.190F, 0.231F}}, {25, {0.149F, 0.153F, 0.165F, 0.180F, 0.203F}},
    {30, {0.131F, 0.136F, 0.144F, 0.161F, 0.187F}},
};
constexpr Row s_lilliefors_beyond = {0, {0.736F, 0.768F, 0.805F, 0.886F, 1.031F}}; // over the root of n

double probability(double distance, double n, std::span<const Row> rows, const Row& beyond) noexcept
{
    const Row* row = &beyond;
    double divisor = std::sqrt(n);
    for (const Row& candidate : rows)
        if (candidate.n >= n) {
            row = &candidate;
            divisor = 1;
            break;
        }
    for (int i = s_levels - 1; i >= 0; --i)
        if (row->critical[i] / divisor < distance)
            return s_level[i];
    return 1;
}

} // namespace

double tabulated_probability(double distance, double n, int mode) noexcept
{
    switch (mode) {
    case 0: return probability(distance, n, s_kolmogorov_smirnov, s_kolmogorov_smirnov_beyond);
    case 1: return probability(distance, n, s_lilliefors, s_lilliefors_beyond);
    case 2:
    case 3:
    case 4:
    case 5: return s_level[mode - 1];
    default: return 1;
    }
}

} // namespace qmml::stattest
