#include "core/sort.h"
#include "descstat/result.h"

#include <qmml/descstat.h>

int QelVectorSort(double* values, int ascending, int n)
{
    qmml::sort_values(values, n, qmml::direction_of(ascending));
    return 1;
}

int DualSort(double* keys, double* companion, int n, int ascending)
{
    qmml::sort_with_companions(keys, companion, n, qmml::direction_of(ascending));
    return 1;
}

int QelVectorDualSort(double* keys, double* companion, int ascending, int nKeys, int nCompanion)
{
    if (nKeys != nCompanion)
        return qmml::descstat::fail(qmml::descstat::s_lengths_differ);
    return DualSort(keys, companion, nKeys, ascending);
}

void SimpleDoubleSort(int n, double* values)
{
    qmml::sort_ascending(values, n);
}

void SortDoubleArray(double* values, int n)
{
    qmml::sort_ascending(values, n);
}
