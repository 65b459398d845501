// The frame of the functions over caller arrays: what describes an array, how shapes are checked, how a failure becomes
// a last error. A function states its arrays, its rules in the order of their checks, and its work.
#pragma once

#include "core/guarded_call.h"
#include "matrix/status.h"

#include <cstdint>
#include <initializer_list>

namespace qmml::matrix {

enum class Error : int {
    none = 0,
    unusable_array = 12544,
    row_counts_differ = 12546,
    no_such_column = 12547,
    column_counts_differ = 12549,
    no_such_row = 12550,
    shapes_differ = 12551,
    not_side_by_side = 12552,
    not_one_above_other = 12553,
    not_conforming = 12554,
    not_square = 12555,
    divisor_too_small = 12556,
    singular = 12557,
    out_of_memory = 12558,
    stopped = 12559,
    determinant_out_of_range = 12560,
    no_pseudo_inverse = 12561,
    no_eigenvalues = 12562,
    invalid_sweep = 12563,
    no_variance = 12564,
    file_not_opened = 12565,
    file_not_written = 12566,
    no_dimensions = 12646,
    eigenproblem_failed = 12667,
};

// A count below zero is an empty array's.
inline std::int64_t extent(int count) noexcept
{
    return count < 0 ? 0 : count;
}

struct Shape {
    int rows, cols;

    bool operator==(const Shape&) const = default;
    bool square() const noexcept { return rows == cols; }
    std::int64_t size() const noexcept { return extent(rows) * extent(cols); }
};

// No object is larger than half the address space.
inline constexpr std::int64_t s_most_elements = PTRDIFF_MAX / sizeof(double);

struct Array {
    const double* data;
    Shape shape;
};

struct Rule {
    bool holds;
    Error otherwise;
};

// What a kernel's status means to one function, where it is not what it means to all.
struct Meaning {
    int status;
    Error error;
};

void report(Error error) noexcept; // Error::none leaves the last error alone

// The first array that cannot be one, then the first rule that does not hold; reported.
bool accepted(std::initializer_list<Array> arrays, std::initializer_list<Rule> rules) noexcept;

// Reports what the status means; true for success.
bool reported_success(Status status, std::initializer_list<Meaning> meanings) noexcept;

// work() gives a Status; deliver() writes what it has kept back, on success and on failure but not after a fault, which
// has no code unless one is named.
template <class Work, class Deliver>
int array_call(std::initializer_list<Array> arrays, std::initializer_list<Rule> rules, Work work,
               std::initializer_list<Meaning> meanings, Deliver deliver, Error on_fault = Error::none) noexcept
{
    if (!accepted(arrays, rules))
        return 0;
    Status status = Status::success;
    const Outcome outcome = guarded_call([&] { return (status = work()) == Status::success; }, deliver);
    if (outcome == Outcome::fault)
        report(on_fault);
    return outcome != Outcome::fault && reported_success(status, meanings);
}

template <class Work>
int array_call(std::initializer_list<Array> arrays, std::initializer_list<Rule> rules, Work work,
               std::initializer_list<Meaning> meanings = {}) noexcept
{
    return array_call(arrays, rules, work, meanings, [] {});
}

} // namespace qmml::matrix
