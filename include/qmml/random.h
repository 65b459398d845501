/* qmml/random.h: random numbers.
 *
 * One generator, L'Ecuyer's combined congruential generator behind a Bays-Durham shuffle, feeds every function. Its
 * state is the record on top of a stack: the library's own record lies at the bottom, seeded from the tick count when
 * the library is loaded, and a caller may push a record of its own to draw a separate, repeatable stream.
 *
 * State and stack are process-wide and not locked. */
#ifndef QMML_RANDOM_H
#define QMML_RANDOM_H

#include "qmml/export.h"
#include "qmml/platform.h"

#include <stdint.h>
#include <stdlib.h>

QMML_BEGIN_C

/* A seed of 0 or less is set up on the next draw as its absolute value, at least 1; so a zero-filled record will do. */
typedef struct RndState {
    int seed;
    int seed2;
    int last;
    int table[32];
} RndState;

/* A uniform deviate in (0, 1). s < 0 seeds with -s before the draw. */
QMML_API double rnd_(int s);
/* Seeds with 1 + trunc(|x| mod 32000), or 1 when x is not finite, and makes one draw. Returns 0. */
QMML_API int inirnd_(double x);

/* Uniform in (0, a). */
QMML_API double uniform_(double a);
/* Normal with mean 0 and standard deviation sd. */
QMML_API double znormal_(double sd);
/* Poisson by multiplying uniforms: the time grows with the mean. NaN, zero and negative means give 0, infinity gives
 * infinity without a draw. */
QMML_API double poisson_(double mean);
/* 0 to 32767. */
QMML_API int rand_(void);

/* The shared library exports rand and srand too, with the declarations of <stdlib.h>: rand is rand_, and srand does
 * nothing, since seeding is inirnd_'s. Under their symbol version they never replace the C runtime's functions in
 * other libraries. The static library leaves them out. */

/* For scripting hosts. The argument converts to an integer: text as a number with ".", halves to even. What is empty,
 * left out or does not convert counts as 1. 0 repeats the last number, if any; below 0 seeds with its absolute value
 * and draws; above 0 draws. */
QMML_API double TumoRnd(QmmlVariant number);
/* Seeds with the argument as a double, or the calendar time in seconds if there is none. Returns 0. */
QMML_API int TumoRandomize(QmmlVariant seed);

/* The address of the record that draws use. */
QMML_API intptr_t GetRndState(void);
/* The record stays the caller's and must outlive its time on the stack. Null pushes the library's own record. Without
 * memory for another entry the stack stays as it was. */
QMML_API void PushRndState(RndState* record);
/* Returns the new depth. The library's own record comes back when the last entry goes, so the depth is never 0. */
QMML_API unsigned PopRndState(void);

/* count distinct integers from low..high, both included, in ascending order; what follows the range's last one is 0
 * where count is larger. They are drawn from the list of those left, or, where the range is at least 51 times the
 * count, from the whole range until they differ. 1, or 0 for low > high, count < 1 and without memory. low = high
 * stores a single 0. A null array sets the last error (qmml/core.h) to 12661. Memory beside out: 8 bytes for each
 * integer drawn from the list, up to 256 for each drawn from the whole range. */
QMML_API int PyloSelectUniqueRandomIntegersInRange(int count, int low, int high, int* out);
/* 1 if the variable, counted from 1, is among the count numbers, else 0. */
QMML_API int PyloDoesVariableExistInList(int count, const int* list, int variable);

/* A stack on which a host keeps its event sources. Neither push nor pop touches an object's references; get adds one to
 * the object on top for the caller. Without memory for another entry the stack stays as it was. */
QMML_API void push_event_source(EventSource* source);
QMML_API void pop_event_source(void);
QMML_API EventSource* get_event_source(void); /* null when there is none */

QMML_END_C

#endif
