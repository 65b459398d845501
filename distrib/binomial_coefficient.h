// n over k.
#pragma once

namespace qmml {

// Sums of logarithms where n <= 70 and k <= 70, Stirling's formula otherwise. Nothing is checked: k > n gives n! / k!
// as long as both are at most 70.
double binomial_coefficient(int n, int k) noexcept;

} // namespace qmml
