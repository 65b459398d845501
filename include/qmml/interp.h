/* qmml/interp.h: the interpreter of user formulas.
 *
 * A formula is infix arithmetic over the variables X, Y, Z, or over T alone, with relations, logical operators, 72
 * named functions and the constants euler (2.7182818) and pi (3.1415926). Names do not depend on case. Arguments are
 * separated by the user's list separator, which is read once, when the interpreter is made. "//" starts a comment, and
 * so does ";" where it is not the list separator. A formula may begin with "=" or with the name of its result, as in
 * "V1 = x + 1".
 *
 * Operators, loosest first:  |  or      &  and      = <> < <= > >=      + -      * /  ~ not  unary -      ^ **
 * ("^" associates to the right). Truth values are 1.0 and 0.0, and a missing value is false to & and |. A relation with
 * a missing value holds for =, < and <=, and does not hold for >, >= and <>.
 *
 * An evaluation gives a missing value where its outcome is infinite, denormal or undefined, and where a distribution
 * function rejects its parameters. At most 32 operators and 32 operands may be pending at a time.
 *
 * Error codes, which each evaluation or check clears first:
 *   0 with an empty text: no error      0 with a text: the formula is empty      1 unknown identifier
 *   2 unpaired parenthesis              3 separator expected behind a number     4 numeric or syntax error
 *   5 formula error
 * Positions count characters from the start of the text, or from the first non-blank character behind the target name.
 *
 * Floating-point traps never end the process: a fault that the caller has unmasked makes the value missing. Invalid
 * operation, division by zero and overflow count however they were unmasked; underflow, inexact and denormal operands
 * where the C library's functions did it, as they do for the old unit and MXCSR together.
 *
 * One interpreter serves one thread at a time. */
#ifndef QMML_INTERP_H
#define QMML_INTERP_H

#include "qmml/export.h"

#ifdef __cplusplus
class QMML_API ExInterpreter {
public:
    /* Copies the text; null means an empty one. variables: 0 to 3 make X, X Y or X Y Z known, as their negatives do,
     * but -1 makes T known instead. The text is looked at by the first evaluation or check. */
    ExInterpreter(const char* formula, int variables);
    ExInterpreter(const ExInterpreter& other); /* formula, separators and ifgraph settings; no error */
    ExInterpreter& operator=(const ExInterpreter&) = delete;
    ~ExInterpreter();

    /* Evaluates for one case: as many doubles as there are variables, X first. Returns 1, or 0 on a formula error. On
     * an error, and where a floating-point fault that the caller had unmasked was raised (which still returns 1), the
     * missing pattern is ORed into *result. A null result makes the call a check. */
    int ExpresVal(double* result, double first, ...);
    /* 1 when the formula is well formed. Stricter than an evaluation, which ignores surplus operands. */
    int ExpresCheck();

    int GetInterpreterError() const;
    int GetInterpreterErrorPos() const;
    const char* GetInterpreterErrorDescr() const; /* French; valid until the next evaluation, check or destruction */

    /* What ifgraph(n) and ifgraph(row, col) compare with. All three start at 0. With mode 2, graph counts through rows
     * of `columns` graphs; in any other mode it is the row. */
    void SetIfgraphMode(int mode, int columns);
    void SetIfgraphGraph(int graph);

    /* Evaluates for n cases, columns[v][i] being variable v of case i; a column that is null is missing throughout.
     * Each result has the bits that ExpresVal gives. Returns the number of cases evaluated: n, or 0 on a formula error,
     * and then every result is missing. result may be one of the columns. */
    int ExpresColumn(double* result, int n, const double* const* columns);

    int ExpresValues(double* result, const double* values); /* ExpresVal with the variables in an array */

private:
    struct State;
    bool begin_slowly(const double* result) noexcept;
    State* m_state;
};
#endif

QMML_BEGIN_C

/* The same interpreter behind a handle, for C and for foreign-function interfaces. A null handle is an empty formula
 * that cannot be evaluated: each function then returns 0, or an empty text. */
typedef struct QmmlFormula QmmlFormula;

QMML_API QmmlFormula* QMMLFormulaNew(const char* formula, int variables); /* null when memory is short */
QMML_API void QMMLFormulaFree(QmmlFormula* formula);
QMML_API int QMMLFormulaCheck(QmmlFormula* formula);
QMML_API int QMMLFormulaEval(QmmlFormula* formula, double* result, const double* variables);
QMML_API int QMMLFormulaEvalColumn(QmmlFormula* formula, double* result, int n, const double* const* columns);
QMML_API int QMMLFormulaError(const QmmlFormula* formula);
QMML_API int QMMLFormulaErrorPos(const QmmlFormula* formula);
QMML_API const char* QMMLFormulaErrorText(const QmmlFormula* formula);
QMML_API void QMMLFormulaSetIfgraph(QmmlFormula* formula, int mode, int columns, int graph);

QMML_END_C

#endif
