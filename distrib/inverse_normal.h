// Inverse of the standard normal lower tail.
#pragma once

namespace qmml {

// z with P(Z <= z) = p. Sets *fault and gives 0 when p <= 0 or p >= 1; leaves *fault alone otherwise.
double inverse_normal(double p, bool* fault) noexcept;

} // namespace qmml
