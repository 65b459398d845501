// How the command fails: one exception that ends in one message and exit code 2.
#pragma once

#include <stdexcept>
#include <string>
#include <system_error>

namespace qmml::host {

class Error : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// Whoever read the standard output has had enough: no failure.
struct ClosedPipe {};

[[noreturn]] inline void fail_with_errno(const std::string& what, int number)
{
    throw Error(what + ": " + std::generic_category().message(number));
}

} // namespace qmml::host
