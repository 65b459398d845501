// One case through the class, and an error with its position.
#include <qmml/qmml.h>

#include <cmath>
#include <cstdio>

int main()
{
    ExInterpreter formula("exp(x) * y", 2), broken("x + q", 2);
    double result = 0;
    const bool evaluated = formula.ExpresVal(&result, 1.0, 2.0) == 1;
    const bool rejected = broken.ExpresVal(nullptr, 1.0, 2.0) == 0 && broken.GetInterpreterError() == 1;
    std::printf("%.17g; %s (%d)\n", result, broken.GetInterpreterErrorDescr(), broken.GetInterpreterErrorPos());
    return !(evaluated && rejected && std::fabs(result - 2 * std::exp(1.0)) < 1e-14);
}
