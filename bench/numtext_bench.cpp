#include "numtext_bench.h"

#include <qmml/numtext.h>

#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <random>

namespace qmml::bench {
namespace {

constexpr std::size_t s_count = 4096; // more than a branch predictor learns by heart

std::string text_of(double value)
{
    char text[s_text_size];
    return {text, static_cast<std::size_t>(std::snprintf(text, sizeof text, "%.15g", value))};
}

NumberSet make_set(const std::string& name, double share_of_short)
{
    static constexpr double s_scales[] = {1, 10, 100, 1000, 10000};
    std::mt19937_64 engine(1);
    std::uniform_real_distribution<double> unit, logarithm(-6, 9);
    std::uniform_int_distribution<int> numerator(-99999, 999999);
    std::uniform_int_distribution<std::size_t> scale(0, std::size(s_scales) - 1);
    NumberSet set = {name, {}, {}};
    for (std::size_t i = 0; i < s_count; ++i) {
        const bool is_short = unit(engine) < share_of_short;
        const double magnitude = std::pow(10.0, logarithm(engine)) * (1 + unit(engine));
        set.values.push_back(is_short              ? numerator(engine) / s_scales[scale(engine)]
                             : unit(engine) < 0.25 ? -magnitude
                                                   : magnitude);
        set.texts.push_back(text_of(set.values.back()));
    }
    return set;
}

// write: (value, text of s_text_size bytes) -> length.
template <class Write>
void add_formatter(const std::string& implementation, Write write)
{
    for (const NumberSet& set : number_sets())
        benchmark::RegisterBenchmark(
            ("format_number" + set.name + "/" + implementation).c_str(), [&set, write](benchmark::State& state) {
                char text[s_text_size];
                for (const double value : set.values)
                    if (const std::string written(text, static_cast<std::size_t>(write(value, text)));
                        !reads_back(std::strtod(written.c_str(), nullptr), value))
                        return state.SkipWithError(("wrong text " + written + ": not timed").c_str());
                while (state.KeepRunningBatch(s_count))
                    for (const double value : set.values) {
                        benchmark::DoNotOptimize(write(value, text));
                        benchmark::ClobberMemory();
                    }
            });
}

// read: text -> value.
template <class Read>
void add_scanner(const std::string& implementation, Read read)
{
    for (const NumberSet& set : number_sets())
        benchmark::RegisterBenchmark(("parse_number" + set.name + "/" + implementation).c_str(),
                                     [&set, read](benchmark::State& state) {
                                         for (const std::string& text : set.texts)
                                             if (read(text) != std::strtod(text.c_str(), nullptr))
                                                 return state.SkipWithError("wrong value: not timed");
                                         while (state.KeepRunningBatch(s_count))
                                             for (const std::string& text : set.texts)
                                                 benchmark::DoNotOptimize(read(text));
                                     });
}

void add_numbers()
{
    IniCon__(QMML_GENERAL_FORMAT, 15, 15);
    add_formatter("to_chars_15", [](double value, char* text) {
        return std::to_chars(text, text + s_text_size, value, std::chars_format::general, 15).ptr - text;
    });
    add_formatter("to_chars", // the shortest text that reads back exactly: up to 17 digits
                  [](double value, char* text) { return std::to_chars(text, text + s_text_size, value).ptr - text; });
    add_formatter("snprintf",
                  [](double value, char* text) { return std::snprintf(text, s_text_size, "%.15g", value); });
    add_formatter("qmml", [](double value, char* text) { return Conver__(value, text); });

    add_scanner("from_chars", [](const std::string& text) {
        double value = 0;
        std::from_chars(text.data(), text.data() + text.size(), value);
        return value;
    });
    add_scanner("strtod", [](const std::string& text) { return std::strtod(text.c_str(), nullptr); });
    add_scanner("qmml", [](const std::string& text) {
        double value = 0;
        Get_NU(text.c_str(), &value);
        return value;
    });
}

} // namespace

const std::vector<NumberSet>& number_sets()
{
    static const std::vector<NumberSet> s_sets = {make_set("", 0.5), make_set("_short", 1), make_set("_full", 0)};
    return s_sets;
}

} // namespace qmml::bench

int main(int argc, char** argv)
{
    using namespace qmml::bench;
    add_numbers();
    add_matrix_files();
    return run_benchmarks(argc, argv);
}
