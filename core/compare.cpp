#include "core/compare.h"

#include <qmml/missing.h>

int DoubleIsEqual(double a, double b)
{
    return qmml::is_equal(a, b);
}

int DoubleIsLess(double a, double b)
{
    return qmml::is_less(a, b);
}

int DoubleIsLessEqual(double a, double b)
{
    return qmml::is_less_equal(a, b);
}

int DoubleIsGreater(double a, double b)
{
    return qmml::is_greater(a, b);
}

int DoubleIsGreaterEqual(double a, double b)
{
    return qmml::is_greater_equal(a, b);
}

int FloatIsEqual(float a, float b)
{
    return qmml::is_equal(a, b);
}

int FloatIsLess(float a, float b)
{
    return qmml::is_less(a, b);
}

int FloatIsLessEqual(float a, float b)
{
    return qmml::is_less_equal(a, b);
}

int FloatIsGreater(float a, float b)
{
    return qmml::is_greater(a, b);
}

int FloatIsGreaterEqual(float a, float b)
{
    return qmml::is_greater_equal(a, b);
}
