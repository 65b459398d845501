// qmml: formulas over data files, statistics, distributions and matrices from the command line.
#include "host/command.h"
#include "host/error.h"
#include "host/output_file.h"
#include "host/platform/process.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <exception>
#include <new>
#include <string>
#include <vector>

using namespace qmml::host;

static constexpr int s_failure = 2;

static int fail(const char* message) noexcept
{
    std::fprintf(stderr, "qmml: %s\n", message);
    return s_failure;
}

static bool is_letter(char c)
{
    return std::isalpha(static_cast<unsigned char>(c)) != 0;
}

// Last first, as the parser wants them. What begins with a minus sign is taken for an option unless it looks like an
// integer, so a formula directly behind "eval" and numbers like -.5 are put into words that it understands.
static std::vector<std::string> arguments(int argc, char** argv)
{
    std::vector<std::string> list(argv + std::min(argc, 1), argv + argc);
    const std::string command = list.empty() ? "" : list[0];
    if (command == "eval" && list.size() > 1 && list[1].size() > 1 && list[1][0] == '-') {
        const std::string& formula = list[1];
        const bool option = formula[1] == '-' ? formula.size() == 2 || is_letter(formula[2])
                                              : formula == "-h" || formula.starts_with("-o");
        if (!option)
            list[1].insert(0, "--formula=");
    }
    if (command == "dist" || command == "test" || command == "fit")
        for (std::string& word : list)
            if (word.starts_with("-."))
                word.insert(1, "0");
    std::reverse(list.begin(), list.end());
    return list;
}

static int run(int argc, char** argv)
{
    CLI::App app("Formulas and statistics over data files, probability distributions, matrix algebra", "qmml");
    app.set_version_flag("--version", "qmml " QMML_HOST_VERSION);
    app.require_subcommand(1);
    app.footer("\"qmml COMMAND --help\" tells more. Exit codes: 0 success, 2 any error.");
    add_eval_command(app);
    add_dist_command(app);
    add_matrix_command(app);
    add_describe_command(app);
    add_test_command(app);
    add_fit_command(app);
    add_rank_command(app);
    add_lowess_command(app);
    add_select_command(app);
    add_report_command(app);
    add_functions_command(app);
    try {
        app.parse(arguments(argc, argv));
    } catch (const CLI::CallForHelp&) {
        write_to_stdout(app.help());
    } catch (const CLI::CallForVersion& version) {
        write_to_stdout(std::string(version.what()) + '\n');
    } catch (const CLI::ParseError& error) {
        throw Error(std::string(error.what()) + " (qmml --help)");
    }
    return 0;
}

int main(int argc, char** argv)
{
    ignore_broken_pipes();
    try {
        return run(argc, argv);
    } catch (const ClosedPipe&) {
        return 0;
    } catch (const std::bad_alloc&) {
        return fail("out of memory");
    } catch (const std::exception& error) {
        return fail(error.what());
    }
}
