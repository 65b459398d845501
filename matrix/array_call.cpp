#include "matrix/array_call.h"

#include <qmml/core.h>
#include <qmml/matrix.h>

namespace qmml::matrix {
namespace {

Error fault_of(const Array& array) noexcept
{
    int dims[2];
    const int count = CArrDim(array.shape.rows, array.shape.cols).QMMLGetArrayDimensions(array.data, dims, 2);
    if (count == 0)
        return Error::no_dimensions;
    const std::int64_t size = array.shape.size();
    return count < 0 || count > 2 || size > s_most_elements || (size > 0 && array.data == nullptr)
               ? Error::unusable_array
               : Error::none;
}

Error meaning_of(Status status, std::initializer_list<Meaning> meanings) noexcept
{
    for (const Meaning& meaning : meanings)
        if (meaning.status == static_cast<int>(status))
            return meaning.error;
    switch (status) {
    case Status::singular: return Error::singular;
    case Status::out_of_memory: return Error::out_of_memory;
    case Status::stopped: return Error::stopped;
    default: return Error::none;
    }
}

} // namespace

void report(Error error) noexcept
{
    if (error != Error::none)
        QMMLSetLastError(static_cast<int>(error));
}

bool accepted(std::initializer_list<Array> arrays, std::initializer_list<Rule> rules) noexcept
{
    for (const Array& array : arrays)
        if (const Error fault = fault_of(array); fault != Error::none) {
            report(fault);
            return false;
        }
    for (const Rule& rule : rules)
        if (!rule.holds) {
            report(rule.otherwise);
            return false;
        }
    return true;
}

bool reported_success(Status status, std::initializer_list<Meaning> meanings) noexcept
{
    if (status == Status::success)
        return true;
    report(meaning_of(status, meanings));
    return false;
}

} // namespace qmml::matrix

CArrDim::CArrDim(int rows, int cols) : m_rows(rows), m_cols(cols) {}

int CArrDim::QMMLGetArrayDimensions(const void*, int* dims, int maxDims) const
{
    if (dims != nullptr)
        dims[0] = m_rows;
    if (maxDims < 2)
        return 1;
    if (dims != nullptr)
        dims[1] = m_cols;
    return m_cols < 2 ? 1 : 2;
}
