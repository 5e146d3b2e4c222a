#include "engines/rip/RipEvents.h"

namespace zib {

void RipEvents::push(const RipEvent& event)
{
    const std::lock_guard lock(m_mutex);
    if (event.kind == RipEvent::Kind::Progress)
        for (auto at = m_events.rbegin(); at != m_events.rend() && at->kind == RipEvent::Kind::Progress; ++at)
            if (at->progress == event.progress) {
                *at = event;
                return;
            }
    m_events.push_back(event);
}

std::optional<RipEvent> RipEvents::take()
{
    const std::lock_guard lock(m_mutex);
    if (m_events.empty())
        return std::nullopt;
    const RipEvent event = m_events.front();
    m_events.pop_front();
    return event;
}

} // namespace zib
