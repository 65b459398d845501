#include <new>
#include <qmml/interp.h>

struct QmmlFormula {
    ExInterpreter interpreter;
};

QmmlFormula* QMMLFormulaNew(const char* formula, int variables)
{
    return new (std::nothrow) QmmlFormula{ExInterpreter(formula, variables)};
}

void QMMLFormulaFree(QmmlFormula* formula)
{
    delete formula;
}

int QMMLFormulaCheck(QmmlFormula* formula)
{
    return formula != nullptr ? formula->interpreter.ExpresCheck() : 0;
}

int QMMLFormulaEval(QmmlFormula* formula, double* result, const double* variables)
{
    return formula != nullptr ? formula->interpreter.ExpresValues(result, variables) : 0;
}

int QMMLFormulaEvalColumn(QmmlFormula* formula, double* result, int n, const double* const* columns)
{
    return formula != nullptr ? formula->interpreter.ExpresColumn(result, n, columns) : 0;
}

int QMMLFormulaError(const QmmlFormula* formula)
{
    return formula != nullptr ? formula->interpreter.GetInterpreterError() : 0;
}

int QMMLFormulaErrorPos(const QmmlFormula* formula)
{
    return formula != nullptr ? formula->interpreter.GetInterpreterErrorPos() : 0;
}

const char* QMMLFormulaErrorText(const QmmlFormula* formula)
{
    return formula != nullptr ? formula->interpreter.GetInterpreterErrorDescr() : "";
}

void QMMLFormulaSetIfgraph(QmmlFormula* formula, int mode, int columns, int graph)
{
    if (formula == nullptr)
        return;
    formula->interpreter.SetIfgraphMode(mode, columns);
    formula->interpreter.SetIfgraphGraph(graph);
}
