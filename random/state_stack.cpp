#include "core/block.h"
#include "core/startup.h"
#include "random/generator.h"

#include <qmml/random.h>

#include <algorithm>
#include <array>

namespace qmml {
namespace {

constinit RndState s_own_record = {};

// Never empty. Grows without bound, the first entries needing no memory.
class StateStack {
public:
    void push(RndState* record) noexcept
    {
        if (m_depth == capacity() && !grow())
            return;
        s_current_record = record ? record : &s_own_record;
        entries()[m_depth++] = s_current_record;
    }

    unsigned pop() noexcept
    {
        if (m_depth > 1)
            --m_depth;
        else
            entries()[0] = &s_own_record;
        s_current_record = entries()[m_depth - 1];
        return m_depth;
    }

private:
    RndState** entries() noexcept { return m_many.size() ? m_many.data() : m_few.data(); }
    std::size_t capacity() const noexcept { return std::max(m_many.size(), m_few.size()); }

    bool grow() noexcept
    {
        Block<RndState*> larger(2 * static_cast<std::int64_t>(capacity()));
        if (!larger)
            return false;
        std::copy_n(entries(), m_depth, larger.begin());
        m_many = std::move(larger);
        return true;
    }

    unsigned m_depth = 1;
    std::array<RndState*, 16> m_few = {&s_own_record};
    Block<RndState*> m_many;
};

constinit StateStack s_stack;

} // namespace

constinit RndState* s_current_record = &s_own_record;

[[maybe_unused]] static const bool s_started = start_up();

} // namespace qmml

intptr_t GetRndState(void)
{
    return reinterpret_cast<intptr_t>(qmml::s_current_record);
}

void PushRndState(RndState* record)
{
    qmml::s_stack.push(record);
}

unsigned PopRndState(void)
{
    return qmml::s_stack.pop();
}
