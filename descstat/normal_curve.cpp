#include "core/missing.h"
#include "core/under_guard.h"
#include "descstat/moments.h"

#include <qmml/descstat.h>

#include <cmath>

void CleanForThreshold(int n, double* values, double threshold)
{
    qmml::under_guard([=] {
        for (int i = 0; i < n; ++i)
            if (values[i] <= threshold) // never so for what is missing
                values[i] = qmml::s_missing;
    });
}

void GetNormalCurveStats(const double* values, int n, int* count, double* mean, double* sd)
{
    qmml::under_guard([=] {
        const qmml::descstat::Moments moments = qmml::descstat::normal_moments_of(values, n);
        *count = static_cast<int>(moments.count);
        *mean = moments.count > 0 ? moments.mean : qmml::s_missing;
        *sd = moments.count > 0 ? std::sqrt(moments.variance) : qmml::s_missing;
    });
}
