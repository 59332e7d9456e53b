#include "LoopClipboard.h"

#include <algorithm>
#include <utility>

namespace tessly {

namespace {

// Whoever asks for what was missed asks at each change; more than these come only if nobody does.
constexpr std::size_t rememberedReplacements = 64;

} // namespace

LoopClipboard::State::State(std::chrono::milliseconds takeover, Now now)
    : m_takeover(takeover)
    , m_now(std::move(now))
    , m_changedAt(m_now().time_since_epoch().count())
{
}

std::chrono::nanoseconds LoopClipboard::State::contentAge() const
{
    return m_now().time_since_epoch() - std::chrono::steady_clock::duration(m_changedAt);
}

int LoopClipboard::State::copiesMissed(
    qint64 changeCount, std::chrono::nanoseconds shortestStay) const
{
    const std::scoped_lock lock(m_replacedMutex);
    return static_cast<int>(std::ranges::count_if(m_replaced, [&](const Replaced& replaced) {
        return replaced.changeCount > changeCount && replaced.stay >= shortestStay;
    }));
}

bool LoopClipboard::State::beginPaste(WriteTicket ticket, bool isPrimaryPasted)
{
    fetchCount = 0;
    return ticket && m_heldTicket == ticket.number() &&
           (!isPrimaryPasted || m_primaryTicket == ticket.number());
}

void LoopClipboard::State::change(Origin origin, WriteTicket ticket)
{
    if (std::exchange(m_origin, origin) == Origin::otherProgram) {
        const std::scoped_lock lock(m_replacedMutex);
        m_replaced.push_back(
            {m_changeCount,
             origin == Origin::program ? std::chrono::nanoseconds::max() : contentAge()});
        if (m_replaced.size() > rememberedReplacements) {
            m_replaced.pop_front();
        }
    }
    m_heldTicket = ticket.number();
    const auto now = m_now();
    if (origin == Origin::otherProgram) {
        if (m_ownerLeftAt && now - *m_ownerLeftAt <= m_takeover) {
            m_afterOwnerThatLeft = m_changeCount + 1;
        }
    } else if (origin == Origin::nobody || ticket) {
        m_ownerLeftAt.reset();
    }
    m_changedAt = now.time_since_epoch().count();
    ++m_changeCount;
    if (changed) {
        changed();
    }
}

} // namespace tessly
