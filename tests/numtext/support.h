// What the tests of number text share.
#pragma once

#include <qmml/numtext.h>

#include <bit>
#include <cfenv>
#include <cstdint>
#include <random>

// The decimal separator for a scope.
class DecimalSeparator {
public:
    explicit DecimalSeparator(unsigned short c) : m_before(GetDecimalSepConv()) { SetDecimalSep(c); }
    DecimalSeparator(const DecimalSeparator&) = delete;
    DecimalSeparator& operator=(const DecimalSeparator&) = delete;
    ~DecimalSeparator() { SetDecimalSep(m_before); }

private:
    const unsigned short m_before;
};

// Every fault traps in this scope, inexact results included. Nothing but the calls under test may compute in it.
class EveryTrap {
public:
    EveryTrap()
    {
        std::fegetenv(&m_environment);
        std::feclearexcept(FE_ALL_EXCEPT);
        feenableexcept(FE_ALL_EXCEPT);
    }
    EveryTrap(const EveryTrap&) = delete;
    EveryTrap& operator=(const EveryTrap&) = delete;
    ~EveryTrap() { std::fesetenv(&m_environment); }

private:
    std::fenv_t m_environment;
};

inline std::uint64_t bits(double value)
{
    return std::bit_cast<std::uint64_t>(value);
}

// Every class of doubles, finite ones far more often than not.
class AnyBits {
public:
    double operator()() { return std::bit_cast<double>(m_engine()); }

private:
    std::mt19937_64 m_engine{20240607};
};
