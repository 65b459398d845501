// A column through the formula handle, and a distribution.
#include <qmml/qmml.h>

#include <math.h>
#include <stdio.h>

int main(void)
{
    const double x[] = {1, 2, 4}, y[] = {3, 5, 7};
    const double* columns[] = {x, y};
    double result[3] = {0, 0, 0};
    QmmlFormula* formula = QMMLFormulaNew("sqrt(x) + 10 * y", 2);
    const int done = QMMLFormulaEvalColumn(formula, result, 3, columns);
    QMMLFormulaFree(formula);
    printf("%d cases: %g %g %g, P = %.6f\n", done, result[0], result[1], result[2], i_normal(1.96, 0, 1));
    return !(done == 3 && result[0] == 31 && result[2] == 72 && fabs(i_normal(1.96, 0, 1) - 0.9750021) < 1e-6);
}
