#include "X11SelectionReader.h"

#include <utility>

namespace tessly {

namespace {

// Enough for every transfer of an ordinary session. More are made when owners leave transfers
// unfinished, one for each.
constexpr int readyProperties = 4;

std::string propertyName(int number)
{
    return "TESSLY_TRANSFER_" + std::to_string(number);
}

} // namespace

X11SelectionReader::X11SelectionReader(X11EventLoop& loop, xcb_window_t window)
    : m_loop(loop)
    , m_window(window)
{
    std::vector<std::string> names = {"INCR"};
    for (; m_propertyCount < readyProperties; ++m_propertyCount) {
        names.push_back(propertyName(m_propertyCount));
    }
    loop.learnAtoms(names);
    for (std::size_t index = 1; index < names.size(); ++index) {
        m_freeProperties.push_back(loop.atom(names[index]));
    }
}

void X11SelectionReader::convert(X11Conversion conversion, X11Conversion::Done done)
{
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(conversion.deadline - m_loop.now());
    const auto entry =
        m_waiting.insert(m_waiting.end(), {std::move(conversion), std::move(done), 0});
    entry->timer = m_loop.callAfter(left, [this, entry] {
        const auto expired = std::move(entry->done);
        m_waiting.erase(entry);
        expired({.end = X11Conversion::End::timedOut});
    });
    advance();
}

void X11SelectionReader::beginOwner(X11Conversion::End end)
{
    if (const Transfer current = std::exchange(m_current, nullptr)) {
        current->giveUp(end);
    }
    endWaiting(end);
}

void X11SelectionReader::ownerLeft()
{
    if (const Transfer current = m_current) {
        current->ownerLeft();
    }
    endWaiting(X11Conversion::End::ownerLeft);
}

void X11SelectionReader::endWaiting(X11Conversion::End end)
{
    const auto waiting = std::exchange(m_waiting, {});
    for (const auto& [conversion, done, timer] : waiting) {
        m_loop.cancel(timer);
        done({.end = end});
    }
}

void X11SelectionReader::handle(const xcb_selection_notify_event_t& event)
{
    if (const Transfer transfer = transferOf(event)) {
        transfer->notified(event);
    }
}

void X11SelectionReader::handle(const xcb_property_notify_event_t& event)
{
    const auto found = m_transfers.find(event.atom);
    if (found != m_transfers.end() && event.state == XCB_PROPERTY_NEW_VALUE) {
        const Transfer transfer = found->second;
        transfer->propertyWritten();
    }
}

void X11SelectionReader::advance()
{
    std::erase_if(m_transfers, [this](const auto& entry) {
        const bool isOver = entry.second->phase() == X11SelectionTransfer::Phase::over;
        if (isOver) {
            m_freeProperties.push_back(entry.first);
        }
        return isOver;
    });
    const bool isOwnerBusy = m_current && m_current->phase() == X11SelectionTransfer::Phase::active;
    if (m_waiting.empty() || isOwnerBusy) {
        return;
    }
    if (m_freeProperties.empty()) {
        makeProperty();
        return;
    }
    auto next = std::move(m_waiting.front());
    m_waiting.pop_front();
    start(std::move(next));
}

void X11SelectionReader::start(Waiting waiting)
{
    const xcb_atom_t property = m_freeProperties.front();
    m_freeProperties.pop_front();
    m_loop.cancel(waiting.timer);
    m_current = std::make_shared<X11SelectionTransfer>(
        m_loop, m_window, property, std::move(waiting.conversion), std::move(waiting.done),
        [this] { advance(); });
    m_transfers.emplace(property, m_current);
    m_current->begin();
}

X11SelectionReader::Transfer
X11SelectionReader::transferOf(const xcb_selection_notify_event_t& event) const
{
    if (event.property != XCB_ATOM_NONE) {
        const auto found = m_transfers.find(event.property);
        return found != m_transfers.end() ? found->second : nullptr;
    }
    // A refusal names no property. Owners copy the time of the request, as they should, or put in
    // something else.
    Transfer match;
    for (const auto& [property, transfer] : m_transfers) {
        if (!transfer->awaitsNotify() || transfer->conversion().target != event.target) {
            continue;
        }
        if (transfer->conversion().time == event.time) {
            return transfer;
        }
        if (transfer == m_current) {
            match = transfer;
        }
    }
    return match;
}

void X11SelectionReader::makeProperty()
{
    if (std::exchange(m_makesProperty, true)) {
        return;
    }
    const std::string name = propertyName(m_propertyCount++);
    m_loop.awaitReply<xcb_intern_atom_reply_t>(
        xcb_intern_atom(
            m_loop.connection(), 0, static_cast<std::uint16_t>(name.size()), name.data()),
        [this](const xcb_intern_atom_reply_t* reply) {
            m_makesProperty = false;
            if (reply != nullptr) {
                m_freeProperties.push_back(reply->atom);
                advance();
            }
        });
}

} // namespace tessly
