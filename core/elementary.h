// Elementary functions: the one set that scalar code, columns and distributions share.
#pragma once

#include <cmath>

namespace qmml::elementary {

inline double exp(double x) noexcept
{
    return std::exp(x);
}
inline double log(double x) noexcept
{
    return std::log(x);
}
inline double sin(double x) noexcept
{
    return std::sin(x);
}
inline double cos(double x) noexcept
{
    return std::cos(x);
}
inline double tan(double x) noexcept
{
    return std::tan(x);
}
inline double atan(double x) noexcept
{
    return std::atan(x);
}
inline double pow(double x, double y) noexcept
{
    return std::pow(x, y);
}

} // namespace qmml::elementary
