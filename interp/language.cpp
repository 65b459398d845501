#include "interp/language.h"

#include "core/elementary.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <qmml/distrib.h>

namespace qmml::interp {

// Degrees of freedom at which the inverse Student t serves as the inverse normal.
static double inverse_normal(double p)
{
    return invnrm(p, 1000);
}

static double exact_log2(double x)
{
    return std::log10(x) / std::log10(2.0);
}

static constexpr Function operator_entry(Operation operation, int operands, int checked)
{
    return {{}, operation, operands, checked, {nullptr}};
}
static constexpr Function inlined(std::string_view name, Operation operation, int operands)
{
    return {name, operation, operands, operands, {nullptr}};
}
static constexpr Function runtime(std::string_view name, double (*f)(double))
{
    return {name, Operation::call_1, 1, 1, {.one = f}};
}
// A distribution call leaves its first operand on the stack when it is only checked.
static constexpr Function distribution(std::string_view name, double (*f)(double, double))
{
    return {name, Operation::distribution_2, 2, 1, {.two = f}};
}
static constexpr Function distribution(std::string_view name, double (*f)(double, double, double))
{
    return {name, Operation::distribution_3, 3, 2, {.three = f}};
}
static constexpr Function distribution(std::string_view name, double (*f)(double, double, double, double))
{
    return {name, Operation::distribution_4, 4, 3, {.four = f}};
}

static constexpr int s_first_named = code_function;

static constexpr auto s_functions = std::to_array<Function>({
    {{}, Operation::power, 2, 1, {.two = elementary::pow}},
    operator_entry(Operation::multiply, 2, 2),
    operator_entry(Operation::divide, 2, 1),
    operator_entry(Operation::add, 2, 2),
    operator_entry(Operation::subtract, 2, 2),
    operator_entry(Operation::equal, 2, 2),
    operator_entry(Operation::greater, 2, 2),
    operator_entry(Operation::greater_equal, 2, 2),
    operator_entry(Operation::less, 2, 2),
    operator_entry(Operation::less_equal, 2, 2),
    operator_entry(Operation::not_equal, 2, 2),
    operator_entry(Operation::logical_and, 2, 2),
    operator_entry(Operation::logical_or, 2, 2),
    operator_entry(Operation::logical_not, 1, 1),
    operator_entry(Operation::invalid, 0, 0),
    operator_entry(Operation::invalid, 0, 0),
    operator_entry(Operation::invalid, 0, 0),
    operator_entry(Operation::minus, 1, 1),
    operator_entry(Operation::ifgraph, 1, 1),
    operator_entry(Operation::ifgraph_row_column, 2, 2),
    inlined("abs", Operation::absolute, 1),
    runtime("arccos", std::acos),
    runtime("arcsin", std::asin),
    runtime("arctan", elementary::atan),
    distribution("beta", d_beta),
    distribution("binom", d_binom),
    distribution("cauchy", d_cauchy),
    distribution("chi2", d_chi2),
    inlined("cos", Operation::cosine, 1),
    runtime("cosh", std::cosh),
    inlined("exp", Operation::exponential, 1),
    distribution("expon", d_expon),
    distribution("extreme", d_extreme),
    distribution("f", d_f),
    distribution("gamma", d_gamma),
    distribution("geom", d_geom),
    {"hypot", Operation::call_2, 2, 2, {.two = std::hypot}},
    distribution("ibeta", i_beta),
    distribution("ibinom", i_binom),
    distribution("icauchy", i_cauchy),
    distribution("ichi2", i_chi2),
    distribution("iexpon", i_expon),
    distribution("iextreme", i_extreme),
    distribution("if", i_f),
    distribution("igamma", i_gamma),
    distribution("igeom", i_geom),
    distribution("ilaplace", i_laplace),
    distribution("ilogis", i_logis),
    distribution("ilognorm", i_lognorm),
    {"inormal", Operation::lower_normal, 3, 2, {.three = i_normal}},
    {"invinorm", Operation::distribution_1, 1, 1, {.one = inverse_normal}},
    distribution("ipareto", i_pareto),
    distribution("ipoisson", i_poisson),
    distribution("irayl", i_rayleigh),
    distribution("istudent", i_student),
    distribution("iweibull", i_weibull),
    distribution("laplace", d_laplace),
    inlined("log", Operation::logarithm, 1),
    runtime("log10", std::log10),
    runtime("log2", exact_log2),
    distribution("logis", d_logis),
    distribution("lognorm", d_lognorm),
    inlined("max", Operation::maximum, 2),
    inlined("min", Operation::minimum, 2),
    {"normal", Operation::normal, 3, 2, {.three = d_normal}},
    distribution("pareto", d_pareto),
    distribution("poisson", d_poisson),
    distribution("rayl", d_rayleigh),
    inlined("sign", Operation::sign, 1),
    inlined("sin", Operation::sine, 1),
    runtime("sinh", std::sinh),
    inlined("sqrt", Operation::square_root, 1),
    distribution("student", d_student),
    runtime("tan", elementary::tan),
    runtime("tanh", std::tanh),
    inlined("trunc", Operation::truncate, 1),
    distribution("vbeta", v_beta),
    distribution("vcauchy", v_cauchy),
    distribution("vchi2", v_chi2),
    distribution("vexpon", v_expon),
    distribution("vextreme", v_extreme),
    distribution("vf", v_f),
    distribution("vgamma", v_gamma),
    distribution("vlaplace", v_laplace),
    distribution("vlogis", v_logis),
    distribution("vlognorm", v_lognorm),
    distribution("vnormal", v_normal),
    distribution("vpareto", v_pareto),
    distribution("vrayl", v_rayleigh),
    distribution("vstudent", v_student),
    distribution("vweibull", v_weibull),
    distribution("weibull", d_weibull),
});
static_assert(s_functions.size() == 92);
static_assert(std::ranges::is_sorted(s_functions.begin() + s_first_named, s_functions.end(), {}, &Function::name));

const Function& function_of(int code) noexcept
{
    return s_functions[static_cast<std::size_t>(code)];
}

std::span<const Function> functions() noexcept
{
    return s_functions;
}

Operation opposite(Operation relation) noexcept
{
    switch (relation) {
    case Operation::equal: return Operation::not_equal;
    case Operation::not_equal: return Operation::equal;
    case Operation::greater: return Operation::less_equal;
    case Operation::greater_equal: return Operation::less;
    case Operation::less: return Operation::greater_equal;
    case Operation::less_equal: return Operation::greater;
    default: return Operation::invalid;
    }
}

// A name of at most eight letters in one word, so that looking it up is a multiplication and a comparison.
static constexpr std::uint64_t pack(std::string_view name) noexcept
{
    std::uint64_t key = 0;
    for (const char c : name) {
        const auto byte = static_cast<unsigned char>(c);
        key = key << 8 | (byte >= 'A' && byte <= 'Z' ? byte + 32u : byte);
    }
    return key;
}

namespace {

struct NameHash {
    static constexpr int bits = 10;
    std::uint64_t multiplier = 0x9e3779b97f4a7c15u;
    std::array<unsigned char, 1u << bits> code{}; // 0: no name

    constexpr std::size_t slot(std::uint64_t key) const noexcept { return (key * multiplier) >> (64 - bits); }

    // Tries multipliers until every name has a slot of its own.
    constexpr NameHash()
    {
        for (bool collision = true; collision; multiplier = multiplier * 3 + 2) {
            collision = false;
            code.fill(0);
            for (std::size_t i = s_first_named; i < s_functions.size() && !collision; ++i) {
                auto& entry = code[slot(pack(s_functions[i].name))];
                collision = entry != 0;
                entry = static_cast<unsigned char>(i);
            }
            if (!collision)
                break;
        }
    }
};

} // namespace

int find_function(std::string_view name) noexcept
{
    static constexpr NameHash s_names;
    if (name.size() > 8 || name.empty())
        return -1;
    const std::uint64_t key = pack(name);
    const int code = s_names.code[s_names.slot(key)];
    return code != 0 && pack(s_functions[static_cast<std::size_t>(code)].name) == key ? code : -1;
}

} // namespace qmml::interp
