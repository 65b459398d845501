#pragma once

namespace qmml::stattest {

// ln k - psi(k) for k > 0, without the cancellation: about 1 / (2k) for large k, 1 / k for small ones.
double log_minus_digamma(double k) noexcept;

} // namespace qmml::stattest
