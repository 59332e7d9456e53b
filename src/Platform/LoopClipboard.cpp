#include "LoopClipboard.h"

namespace tessly {

LoopClipboard::State::State()
    : m_changedAt(std::chrono::steady_clock::now().time_since_epoch().count())
{
}

std::chrono::nanoseconds LoopClipboard::State::contentAge() const
{
    return std::chrono::steady_clock::now().time_since_epoch() -
           std::chrono::steady_clock::duration(m_changedAt);
}

void LoopClipboard::State::change(WriteTicket ticket)
{
    m_heldTicket = ticket.number();
    m_changedAt = std::chrono::steady_clock::now().time_since_epoch().count();
    ++m_changeCount;
    if (changed) {
        changed();
    }
}

} // namespace tessly
