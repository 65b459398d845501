// What a call is expected to do to the last error, and to return.
#pragma once

#include "distrib/result.h"

#include <gtest/gtest.h>

#include <cmath>

namespace qmml::test {

inline void expect_relative(double value, double expected, double relative, double absolute = 0)
{
    EXPECT_NEAR(value, expected, relative * std::abs(expected) + absolute);
}

enum class LastError { cleared, set, kept };

// Evaluates the call with a last error that no function sets.
template <class Call>
void expect_call(Call call, double expected, LastError effect)
{
    constexpr unsigned earlier = 77;
    platform::set_last_error(earlier);
    EXPECT_EQ(call(), expected);
    EXPECT_EQ(platform::last_error(), effect == LastError::cleared ? 0u
                                      : effect == LastError::set   ? distr_error_code
                                                                   : earlier);
}

template <class Call>
void expect_failure(Call call)
{
    expect_call(call, distr_error_value, LastError::set);
}

} // namespace qmml::test
