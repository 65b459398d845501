// The formula language: a call, a check, and a column agree on errors and results.
#include "fuzz/fuzz_input.h"

#include <cstring>
#include <qmml/interp.h>

using namespace qmml::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static constexpr double s_values[3] = {0.5, -2, 3};
    static constexpr int s_cases = 3;
    const ExactText text(data, size);
    const std::unique_ptr<QmmlFormula, void (*)(QmmlFormula*)> formula(QMMLFormulaNew(text.get(), 3), QMMLFormulaFree);
    require(formula != nullptr);
    double once = 0, again = 0;
    const int status = QMMLFormulaEval(formula.get(), &once, s_values);
    const int error = QMMLFormulaError(formula.get()), position = QMMLFormulaErrorPos(formula.get());
    require(position <= static_cast<int>(std::strlen(text.get())) + 1);
    require(QMMLFormulaEval(formula.get(), &again, s_values) == status && same_number(once, again));
    require(QMMLFormulaError(formula.get()) == error && QMMLFormulaErrorPos(formula.get()) == position);

    double columns[3][s_cases], results[s_cases] = {};
    for (int v = 0; v < 3; ++v)
        for (double& x : columns[v])
            x = s_values[v];
    const double* const all[3] = {columns[0], columns[1], columns[2]};
    QMMLFormulaEvalColumn(formula.get(), results, s_cases, all);
    require(QMMLFormulaError(formula.get()) == error);
    if (error < 0)
        for (const double result : results)
            require(same_number(result, once));
    QMMLFormulaCheck(formula.get());
    return 0;
}
