/* qmml/missing.h: missing values, comparisons that ignore the last bits, and the floating-point exception mask.
 *
 * A missing value is a NaN, under one of three conventions that do not mix:
 *   double          any NaN is missing; the library writes 0x7FF8000000000000
 *   float           missing only when the bits are exactly 0xFFFFFFFF; any other NaN is an ordinary value
 *   coded double    low word 0xFFFFFFFF, high word the reason code negated
 *
 * Nothing here raises a floating-point fault on a NaN. Pointers may be null where the comment says so. */
#ifndef QMML_MISSING_H
#define QMML_MISSING_H

#include "qmml/export.h"

#ifdef __cplusplus
/* The canonical missing values. They hold from load on; constructing a CNAN writes them anew. */
class QMML_API CNAN {
public:
    CNAN();
    CNAN(const CNAN&) = default;
    CNAN& operator=(const CNAN&);

    static double m_dNAN; /* 0x7FF8000000000000 */
    static float m_fNAN;  /* 0xFFFFFFFF */
};
#endif

QMML_BEGIN_C

/* 1 for a NaN of any sign and payload; 0 for a null pointer. */
QMML_API int IsNaN(const double* v);
/* ORs 0x7FF8000000000000 into the value: the sign and the other fraction bits stay. Null is ignored. */
QMML_API void setNaN(double* v);

/* Code 3 becomes 0xFFFFFFFDFFFFFFFF. Null is ignored. */
QMML_API void NANSet(short code, double* v);
/* The code, 1 to 9, or 0 when the value holds none. */
QMML_API int NAN_Test(double v);
/* 0 when the value holds a code from 1 to 10, or the pointer is null; 1 otherwise, so 1 for the uncoded NaN. The range
 * is one wider than that of NAN_Test. */
QMML_API int valid8(const double* v);

/* Tolerant comparisons. Both operands lose their lowest fraction bits (four of a double, two of a float) and are then
 * compared exactly: neighbours may still differ where a boundary of 16 (4) units lies between them.
 *
 * A pair with a NaN in it is unordered: Less and LessEqual give 1, Greater and GreaterEqual 0, FloatIsEqual 1.
 * DoubleIsEqual alone looks for NaNs first: two of them are equal, one and a number are not. */
QMML_API int DoubleIsEqual(double a, double b);
QMML_API int DoubleIsLess(double a, double b);
QMML_API int DoubleIsLessEqual(double a, double b);
QMML_API int DoubleIsGreater(double a, double b);
QMML_API int DoubleIsGreaterEqual(double a, double b);
QMML_API int FloatIsEqual(float a, float b);
QMML_API int FloatIsLess(float a, float b);
QMML_API int FloatIsLessEqual(float a, float b);
QMML_API int FloatIsGreater(float a, float b);
QMML_API int FloatIsGreaterEqual(float a, float b);

/* The double that f shows when printed with 7 significant digits, halves rounded up: 0.1f gives 0.1.
 * Infinities and NaNs pass through; anything below the smallest normal float gives 0.0. */
QMML_API double FloatToDoubleExact(float f);

/* Resets the floating-point unit and lets invalid operation, division by zero and overflow trap; denormal operand,
 * underflow and inexact stay masked. Returns the exception masks in force, a bit being set for a masked exception:
 * inexact 0x1, underflow 0x2, overflow 0x4, division by zero 0x8, invalid 0x10, denormal operand 0x80000. */
QMML_API unsigned SetFPUExceptionMask(void);

/* 1 when exactly one argument is not 0. */
QMML_API int XOR(int a, int b);
/* The truth of a when c is not 0, else that of b. */
QMML_API int ThreeCond(int a, int b, int c);
/* Always 0. */
QMML_API int lookbr(void);

QMML_END_C

#ifdef __cplusplus
/* For doubles the same as IsNaN and setNaN. The float forms know the one pattern only and want a valid pointer. */
QMML_API int IsNan(const double* v);
QMML_API int IsNan(const float* v);
QMML_API void SetNan(double* v);
QMML_API void SetNan(float* v);
#endif

#endif
