// The stack of event sources that the host keeps here.
#include "core/block.h"

#include <qmml/random.h>

#include <algorithm>

namespace qmml {
namespace {

class EventSourceStack {
public:
    void push(EventSource* source) noexcept
    {
        if (m_depth == m_entries.size() && !grow())
            return;
        m_entries[m_depth++] = source;
    }

    void pop() noexcept
    {
        if (m_depth > 0 && --m_depth == 0)
            m_entries = {};
    }

    EventSource* top() const noexcept { return m_depth > 0 ? m_entries[m_depth - 1] : nullptr; }

private:
    bool grow() noexcept
    {
        constexpr std::size_t first_size = 16;
        Block<EventSource*> larger(static_cast<std::int64_t>(std::max(first_size, 2 * m_entries.size())));
        if (!larger)
            return false;
        std::copy_n(m_entries.begin(), m_depth, larger.begin());
        m_entries = std::move(larger);
        return true;
    }

    std::size_t m_depth = 0;
    Block<EventSource*> m_entries;
};

constinit EventSourceStack s_sources;

} // namespace
} // namespace qmml

void push_event_source(EventSource* source)
{
    qmml::s_sources.push(source);
}

void pop_event_source(void)
{
    qmml::s_sources.pop();
}

EventSource* get_event_source(void)
{
    EventSource* const source = qmml::s_sources.top();
    if (source != nullptr)
        source->ops->add_reference(source);
    return source;
}
