#include "X11SelectionOwner.h"

#include "FlavourTargets.h"

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace tessly {

namespace {

// The most conversions that one MULTIPLE request may ask for.
constexpr std::uint32_t maximumPairs = 64;

// Every name that an offer can have.
std::vector<std::string> offerableNames()
{
    const PasteboardOffer everything({PasteboardItem{
        .plainText = "a"_ba,
        .rtf = "a"_ba,
        .html = "a"_ba,
        .png = "a"_ba,
        .fileURL = "file:///a"_ba}});
    std::vector<std::string> names;
    for (const QByteArray& name : everything.names()) {
        names.push_back(name.toStdString());
    }
    return names;
}

// Text is typed by its encoding, everything else by its name.
std::string typeOf(const std::string& target)
{
    return target == "TEXT" ? "UTF8_STRING" : target;
}

} // namespace

const QByteArrayList& X11SelectionOwner::protocolTargets()
{
    static const QByteArrayList names = {
        "TARGETS"_ba, "TIMESTAMP"_ba, "MULTIPLE"_ba, "SAVE_TARGETS"_ba};
    return names;
}

X11SelectionOwner::X11SelectionOwner(
    X11EventLoop& loop, xcb_window_t window, std::chrono::milliseconds readerDeadline,
    std::function<void()> fetched)
    : m_loop(loop)
    , m_window(window)
    , m_sends(loop, readerDeadline)
    , m_fetched(std::move(fetched))
{
    std::vector<std::string> names = offerableNames();
    for (const QByteArray& name : protocolTargets()) {
        names.push_back(name.toStdString());
    }
    names.insert(names.end(), {"ATOM_PAIR", "NULL"});
    loop.learnAtoms(names);
}

void X11SelectionOwner::own(
    xcb_atom_t selection, Offer offer, xcb_timestamp_t time, std::function<void(bool isOwner)> done)
{
    const auto cookie = xcb_set_selection_owner(m_loop.connection(), m_window, selection, time);
    m_selections[selection].pending.push_back({cookie.sequence, {std::move(offer), time}});
    m_loop.awaitReply<xcb_get_selection_owner_reply_t>(
        xcb_get_selection_owner(m_loop.connection(), selection),
        [this, selection, sequence = cookie.sequence,
         done = std::move(done)](const xcb_get_selection_owner_reply_t* reply) {
            const bool isOwner = reply != nullptr && reply->owner == m_window;
            Selection& state = m_selections[selection];
            if (isOwner) {
                settle(state, sequence);
            } else {
                std::erase_if(state.pending, [sequence](const Pending& pending) {
                    return pending.sequence <= sequence;
                });
            }
            if (done) {
                done(isOwner);
            }
        });
}

void X11SelectionOwner::release(xcb_atom_t selection, xcb_timestamp_t time)
{
    xcb_set_selection_owner(m_loop.connection(), XCB_WINDOW_NONE, selection, time);
}

X11SelectionOwner::Offer X11SelectionOwner::offer(xcb_atom_t selection, std::uint32_t sequence)
{
    Selection& state = m_selections[selection];
    settle(state, sequence);
    return state.current.offer;
}

X11SelectionOwner::Offer X11SelectionOwner::latestOffer(xcb_atom_t selection) const
{
    const auto found = m_selections.find(selection);
    if (found == m_selections.end()) {
        return nullptr;
    }
    const Selection& state = found->second;
    return state.pending.empty() ? state.current.offer : state.pending.back().owned.offer;
}

void X11SelectionOwner::settle(Selection& selection, std::uint32_t sequence)
{
    while (!selection.pending.empty() && selection.pending.front().sequence <= sequence) {
        selection.current = std::move(selection.pending.front().owned);
        selection.pending.pop_front();
    }
}

void X11SelectionOwner::handle(const xcb_selection_clear_event_t& event, std::uint32_t sequence)
{
    if (event.owner == m_window) {
        Selection& state = m_selections[event.selection];
        settle(state, sequence);
        state.current = {};
    }
}

void X11SelectionOwner::handle(const xcb_selection_request_event_t& event, std::uint32_t sequence)
{
    Selection& state = m_selections[event.selection];
    settle(state, sequence);
    // Nobody but a forger asks on behalf of this window, and events of its own would be turned off
    // by serving it.
    if (!state.current.offer || event.requestor == m_window) {
        notify(event, XCB_ATOM_NONE);
        return;
    }
    if (event.target == m_loop.atom("MULTIPLE")) {
        convertMultiple(event, state.current);
        return;
    }
    // Old readers name no property and mean the one called like the target.
    const xcb_atom_t property = event.property != XCB_ATOM_NONE ? event.property : event.target;
    const bool isServed = convert(state.current, event.requestor, event.target, property);
    notify(event, isServed ? property : xcb_atom_t{XCB_ATOM_NONE});
}

bool X11SelectionOwner::convert(
    const Owned& owned, xcb_window_t reader, xcb_atom_t target, xcb_atom_t property)
{
    if (target == m_loop.atom("TARGETS")) {
        store(reader, property, XCB_ATOM_ATOM, targets(*owned.offer));
        return true;
    }
    if (target == m_loop.atom("TIMESTAMP")) {
        store(reader, property, XCB_ATOM_INTEGER, {owned.time});
        return true;
    }
    if (target == m_loop.atom("SAVE_TARGETS")) {
        // Asked for its effect, which is none here: the content stays with this program.
        store(reader, property, m_loop.atom("NULL"), {});
        return true;
    }
    const auto& names = owned.offer->names();
    const auto name = std::ranges::find_if(names, [this, target](const QByteArray& offered) {
        return m_loop.atom(offered.toStdString()) == target;
    });
    if (name == names.end()) {
        return false;
    }
    if (m_fetched) {
        m_fetched();
    }
    const auto bytes = owned.offer->bytes(*name);
    const xcb_atom_t type = m_loop.atom(typeOf(name->toStdString()));
    if (bytes->size() > m_sends.chunkSize()) {
        return m_sends.begin(reader, property, type, *bytes);
    }
    xcb_change_property(
        m_loop.connection(), XCB_PROP_MODE_REPLACE, reader, property, type, 8,
        static_cast<std::uint32_t>(bytes->size()), bytes->constData());
    return true;
}

void X11SelectionOwner::convertMultiple(
    const xcb_selection_request_event_t& request, const Owned& owned)
{
    if (request.property == XCB_ATOM_NONE) {
        notify(request, XCB_ATOM_NONE);
        return;
    }
    const auto cookie = xcb_get_property(
        m_loop.connection(), 0, request.requestor, request.property, XCB_GET_PROPERTY_TYPE_ANY, 0,
        maximumPairs * 2);
    m_loop.awaitReply<xcb_get_property_reply_t>(
        cookie, [this, request, owned](const xcb_get_property_reply_t* pairs) {
            if (pairs == nullptr || pairs->format != 32 || pairs->value_len < 2) {
                notify(request, XCB_ATOM_NONE);
                return;
            }
            convertPairs(owned, request.requestor, request.property, pairs);
            notify(request, request.property);
        });
}

void X11SelectionOwner::convertPairs(
    const Owned& owned, xcb_window_t reader, xcb_atom_t property,
    const xcb_get_property_reply_t* pairs)
{
    const auto* values = static_cast<const std::uint32_t*>(xcb_get_property_value(pairs));
    std::vector<std::uint32_t> answers(values, values + pairs->value_len);
    // A pair is a target and the property for it; properties of refused ones become None.
    for (std::size_t index = 0; index + 1 < answers.size(); index += 2) {
        const xcb_atom_t target = answers[index];
        if (target == m_loop.atom("MULTIPLE") || answers[index + 1] == XCB_ATOM_NONE ||
            !convert(owned, reader, target, answers[index + 1])) {
            answers[index + 1] = XCB_ATOM_NONE;
        }
    }
    store(reader, property, m_loop.atom("ATOM_PAIR"), answers);
}

void X11SelectionOwner::store(
    xcb_window_t reader, xcb_atom_t property, xcb_atom_t type,
    const std::vector<std::uint32_t>& values)
{
    xcb_change_property(
        m_loop.connection(), XCB_PROP_MODE_REPLACE, reader, property, type, 32,
        static_cast<std::uint32_t>(values.size()), values.data());
}

void X11SelectionOwner::notify(const xcb_selection_request_event_t& request, xcb_atom_t property)
{
    // What is sent must have the size of any event.
    union {
        xcb_selection_notify_event_t notify;
        char bytes[32];
    } event = {};
    event.notify.response_type = XCB_SELECTION_NOTIFY;
    event.notify.time = request.time;
    event.notify.requestor = request.requestor;
    event.notify.selection = request.selection;
    event.notify.target = request.target;
    event.notify.property = property;
    xcb_send_event(m_loop.connection(), 0, request.requestor, XCB_EVENT_MASK_NO_EVENT, event.bytes);
}

std::vector<xcb_atom_t> X11SelectionOwner::targets(const PasteboardOffer& offer)
{
    std::vector<xcb_atom_t> atoms;
    for (const QByteArrayList& names : {protocolTargets(), offer.names()}) {
        for (const QByteArray& name : names) {
            atoms.push_back(m_loop.atom(name.toStdString()));
        }
    }
    return atoms;
}

} // namespace tessly
