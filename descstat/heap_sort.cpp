#include <qmml/descstat.h>

#include <algorithm>
#include <cstddef>

namespace qmml::descstat {
namespace {

// Whatever the comparison answers, every index stays inside and the loops end.
class Heap {
public:
    Heap(void* base, std::size_t element_size, int (*compare)(const void*, const void*)) noexcept
        : m_base(static_cast<std::byte*>(base)), m_size(element_size), m_compare(compare)
    {
    }

    void swap(std::size_t i, std::size_t j) const noexcept { std::swap_ranges(at(i), at(i) + m_size, at(j)); }

    // Restores the heap of count elements below a changed root.
    void sift_down(std::size_t root, std::size_t count) const
    {
        for (std::size_t child = 2 * root + 1; child < count; child = 2 * root + 1) {
            if (child + 1 < count && m_compare(at(child), at(child + 1)) < 0)
                ++child;
            if (m_compare(at(root), at(child)) >= 0)
                return;
            swap(root, child);
            root = child;
        }
    }

private:
    std::byte* at(std::size_t i) const noexcept { return m_base + i * m_size; }

    std::byte* const m_base;
    const std::size_t m_size;
    int (*const m_compare)(const void*, const void*);
};

} // namespace
} // namespace qmml::descstat

void HugeHeapSort(void* base, unsigned n, unsigned elementSize, int (*compare)(const void*, const void*))
{
    if (n < 2 || elementSize == 0)
        return;
    const qmml::descstat::Heap heap(base, elementSize, compare);
    for (std::size_t root = n / 2; root-- > 0;)
        heap.sift_down(root, n);
    for (std::size_t last = n - 1; last > 0; --last) {
        heap.swap(0, last);
        heap.sift_down(0, last);
    }
}
