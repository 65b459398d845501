// A private copy of a caller's matrix, on the stack up to an order of 16.
#pragma once

#include "core/block.h"
#include "matrix/array_call.h"

#include <cstring>

namespace qmml::matrix {

class WorkCopy {
public:
    explicit WorkCopy(const Array& array) noexcept : WorkCopy(array.shape)
    {
        if (array.shape.size() > 0 && m_data != nullptr)
            std::memcpy(m_data, array.data, static_cast<std::size_t>(array.shape.size()) * sizeof(double));
    }
    // Room for a matrix; what stands in it is not defined.
    explicit WorkCopy(Shape shape) noexcept
        : m_block(shape.size() > s_small ? shape.size() : 0), m_data(shape.size() > s_small ? m_block.data() : m_small)
    {
    }
    WorkCopy(const WorkCopy&) = delete;
    WorkCopy& operator=(const WorkCopy&) = delete;

    explicit operator bool() const noexcept { return m_data != nullptr; }
    double* data() noexcept { return m_data; }

private:
    static constexpr std::int64_t s_small = 256;

    Block<double> m_block;
    double* m_data;
    double m_small[s_small]; // NOLINT(cppcoreguidelines-pro-type-member-init): room
};

} // namespace qmml::matrix
