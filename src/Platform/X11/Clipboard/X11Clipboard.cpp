#include "X11Clipboard.h"

#include "FlavourTargets.h"

#include <utility>

namespace tessly {

namespace {

xcb_window_t createWindow(X11EventLoop& loop)
{
    const xcb_window_t window = xcb_generate_id(loop.connection());
    const std::uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_create_window(
        loop.connection(), 0, window, loop.root(), -1, -1, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY,
        XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, &events);
    return window;
}

} // namespace

X11Clipboard::X11Clipboard(X11EventLoop& loop, const X11ClipboardDeadlines& deadlines, State& state)
    : m_loop(loop)
    , m_deadlines(deadlines)
    , m_state(state)
    , m_window(createWindow(loop))
    , m_reader(loop, m_window)
    , m_owner(loop, m_window, deadlines.reader, [&state] { ++state.fetchCount; })
{
    m_loop.learnAtoms({"CLIPBOARD", "TESSLY_TIME"});
    m_clipboard = m_loop.atom("CLIPBOARD");
    m_timeProperty = m_loop.atom("TESSLY_TIME");
    watchOwner();
    m_state.isWritable = true;
}

void X11Clipboard::watchOwner()
{
    auto* const connection = m_loop.connection();
    const auto* const extension = xcb_get_extension_data(connection, &xcb_xfixes_id);
    const auto version = owned(xcb_xfixes_query_version_reply(
        connection, xcb_xfixes_query_version(connection, 1, 0), nullptr));
    if (extension == nullptr || extension->present == 0 || !version) {
        throw X11Error("The X server does not tell when the clipboard changes (XFIXES).");
    }
    m_ownerChange = static_cast<std::uint8_t>(extension->first_event + XCB_XFIXES_SELECTION_NOTIFY);
    xcb_xfixes_select_selection_input(
        connection, m_window, m_clipboard,
        XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER |
            XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_WINDOW_DESTROY |
            XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_CLIENT_CLOSE);
    const auto owner = owned(xcb_get_selection_owner_reply(
        connection, xcb_get_selection_owner(connection, m_clipboard), nullptr));
    if (owner && owner->owner != XCB_WINDOW_NONE) {
        // When it took the selection is not known, so it is asked as of now, whenever that is.
        m_foreign =
            std::make_shared<X11ClipboardContent>(m_loop, m_reader, m_deadlines, XCB_CURRENT_TIME);
    }
}

void X11Clipboard::handle(const xcb_generic_event_t& event)
{
    constexpr std::uint8_t sentByClient = 0x80;
    const auto type = static_cast<std::uint8_t>(event.response_type & ~sentByClient);
    if ((event.response_type & sentByClient) != 0 && type != XCB_SELECTION_NOTIFY) {
        // Forged: only the answers of owners are sent by programs.
        return;
    }
    const std::uint32_t sequence = event.full_sequence;
    if (type == m_ownerChange) {
        ownerChanged(reinterpret_cast<const xcb_xfixes_selection_notify_event_t&>(event), sequence);
    } else if (type == XCB_SELECTION_NOTIFY) {
        m_reader.handle(reinterpret_cast<const xcb_selection_notify_event_t&>(event));
    } else if (type == XCB_SELECTION_REQUEST) {
        m_owner.handle(reinterpret_cast<const xcb_selection_request_event_t&>(event), sequence);
    } else if (type == XCB_SELECTION_CLEAR) {
        m_owner.handle(reinterpret_cast<const xcb_selection_clear_event_t&>(event), sequence);
        if (!m_owner.owns(XCB_ATOM_PRIMARY)) {
            m_state.releasePrimary();
        }
    } else if (type == XCB_DESTROY_NOTIFY) {
        m_owner.handle(reinterpret_cast<const xcb_destroy_notify_event_t&>(event));
    } else if (type == XCB_PROPERTY_NOTIFY) {
        const auto& change = reinterpret_cast<const xcb_property_notify_event_t&>(event);
        if (change.window != m_window) {
            m_owner.handle(change);
        } else if (change.atom == m_timeProperty) {
            serverTimeCame(change.time);
        } else {
            m_reader.handle(change);
        }
    }
    // Errors are about windows of other programs that went away: an ordinary thing.
}

void X11Clipboard::ownerChanged(
    const xcb_xfixes_selection_notify_event_t& event, std::uint32_t sequence)
{
    if (event.selection != m_clipboard) {
        return;
    }
    if (event.subtype != XCB_XFIXES_SELECTION_EVENT_SET_SELECTION_OWNER) {
        // Nobody has copied anything: the program that owned it has ended.
        if (m_foreign) {
            m_hasOwnerLeft = true;
            m_foreign->ownerLeft();
            m_state.ownerLeft();
            offerKept();
        }
        return;
    }
    m_kept.clear();
    m_hasOwnerLeft = false;
    m_takenAt = event.selection_timestamp;
    m_own.reset();
    if (const auto old = std::exchange(m_foreign, nullptr)) {
        old->end();
    }
    if (event.owner == m_window) {
        m_own = m_owner.offer(m_clipboard, sequence);
    } else if (event.owner != XCB_WINDOW_NONE) {
        m_foreign =
            std::make_shared<X11ClipboardContent>(m_loop, m_reader, m_deadlines, event.timestamp);
    }
    if (m_own) {
        m_state.change(State::Origin::program, m_own->ticket());
    } else {
        m_state.change(m_foreign ? State::Origin::otherProgram : State::Origin::nobody);
    }
}

void X11Clipboard::connectionLost()
{
    m_isLost = true;
    m_kept.clear();
    m_own.reset();
    m_state.release();
    m_state.releasePrimary();
    if (const auto old = std::exchange(m_foreign, nullptr)) {
        old->end();
    }
    // Nothing will be owned any more; whoever waits for a time to do so hears that by being let go.
    m_awaitTime.clear();
}

bool X11Clipboard::isCurrent(qint64 changeCount) const
{
    return !m_isLost && changeCount == m_state.changeCount();
}

void X11Clipboard::types(qint64 changeCount, TypesDone done)
{
    if (!isCurrent(changeCount)) {
        done(std::nullopt);
    } else if (m_foreign) {
        m_foreign->types(std::move(done));
    } else if (m_own) {
        done(typeNames(X11SelectionOwner::protocolTargets() + m_own->names()));
    } else {
        done(QSet<QString>());
    }
}

void X11Clipboard::read(qint64 changeCount, Flavour flavour, qint64 byteLimit, ReadDone done)
{
    if (!isCurrent(changeCount)) {
        done({.status = ReadStatus::unreadable});
    } else if (m_foreign) {
        m_foreign->read(flavour, byteLimit, std::move(done));
    } else if (m_own) {
        done(m_own->read(flavour, byteLimit));
    } else {
        done({.status = ReadStatus::absent});
    }
}

void X11Clipboard::readFileURLs(qint64 changeCount, qint64 byteLimit, FileURLsDone done)
{
    if (!isCurrent(changeCount)) {
        done({.status = ReadStatus::unreadable});
    } else if (m_foreign) {
        m_foreign->readFileURLs(byteLimit, std::move(done));
    } else if (m_own) {
        done(m_own->readFileURLs(byteLimit));
    } else {
        done({.status = ReadStatus::absent});
    }
}

void X11Clipboard::catchUp(std::function<void()> done)
{
    if (m_isLost) {
        done();
        return;
    }
    // Every event that the server sent before its reply has been handled by then.
    m_loop.awaitReply<xcb_get_input_focus_reply_t>(
        xcb_get_input_focus(m_loop.connection()),
        [done = std::move(done)](const xcb_get_input_focus_reply_t*) { done(); });
}

void X11Clipboard::write(const std::vector<PasteboardItem>& items, WriteTicket ticket)
{
    const auto offer = std::make_shared<PasteboardOffer>(items, ticket);
    withServerTime([this, offer](xcb_timestamp_t time) { m_owner.own(m_clipboard, offer, time); });
}

void X11Clipboard::holds(WriteTicket ticket, OwnDone done)
{
    // Times come and replies arrive in the order in which they were asked for.
    withServerTime([this, ticket, done = std::move(done)](xcb_timestamp_t) {
        m_loop.awaitReply<xcb_get_input_focus_reply_t>(
            xcb_get_input_focus(m_loop.connection()),
            [this, ticket, done](const xcb_get_input_focus_reply_t* reply) {
                done(reply != nullptr && offerOf(ticket) != nullptr);
            });
    });
}

/// What was written with this ticket, if it is, or is about to become, the clipboard's content.
X11SelectionOwner::Offer X11Clipboard::offerOf(WriteTicket ticket) const
{
    const auto offer = m_owner.latestOffer(m_clipboard);
    return ticket && offer && offer->ticket() == ticket ? offer : nullptr;
}

void X11Clipboard::clear()
{
    withServerTime([this](xcb_timestamp_t time) {
        m_owner.release(m_clipboard, time);
        if (m_owner.owns(XCB_ATOM_PRIMARY)) {
            m_owner.release(XCB_ATOM_PRIMARY, time);
        }
    });
}

void X11Clipboard::keepWhenOwnerLeaves(
    qint64 changeCount, std::vector<PasteboardItem> items, Pasteboard::HasSourceEnded)
{
    if (isCurrent(changeCount) && m_foreign) {
        m_kept = std::move(items);
        offerKept();
    }
}

void X11Clipboard::offerKept()
{
    if (!m_hasOwnerLeft || !m_takenAt || m_kept.empty()) {
        return;
    }
    // The server accepts a claim with the time of the last one, and refuses earlier ones. So with
    // the time at which the old owner copied, whatever was copied since remains; with any later
    // time, a copy made in the same millisecond would be lost, and a program that copies with the
    // time of a key pressed before would be refused. What was copied with the very same time is
    // found by asking first.
    m_loop.awaitReply<xcb_get_selection_owner_reply_t>(
        xcb_get_selection_owner(m_loop.connection(), m_clipboard),
        [this](const xcb_get_selection_owner_reply_t* reply) {
            // An own write may be on its way by now.
            const bool isOwned =
                reply == nullptr || reply->owner != XCB_WINDOW_NONE || m_owner.owns(m_clipboard);
            if (!isOwned && m_hasOwnerLeft && m_takenAt && !m_kept.empty()) {
                m_owner.own(
                    m_clipboard, std::make_shared<PasteboardOffer>(std::exchange(m_kept, {})),
                    *m_takenAt);
            }
        });
}

void X11Clipboard::offerAsPrimary(WriteTicket ticket, OwnDone done)
{
    withServerTime([this, ticket, done = std::move(done)](xcb_timestamp_t time) {
        if (const auto offer = offerOf(ticket)) {
            m_owner.own(XCB_ATOM_PRIMARY, offer, time, [this, ticket, done](bool isOwner) {
                m_state.changePrimary(isOwner ? ticket : WriteTicket());
                done(isOwner);
            });
        } else {
            done(false);
        }
    });
}

void X11Clipboard::withServerTime(TimeDone done)
{
    if (m_isLost) {
        return;
    }
    // Nothing is appended, but the server tells when that was done.
    xcb_change_property(
        m_loop.connection(), XCB_PROP_MODE_APPEND, m_window, m_timeProperty, XCB_ATOM_INTEGER, 32,
        0, nullptr);
    m_awaitTime.push_back(std::move(done));
}

void X11Clipboard::serverTimeCame(xcb_timestamp_t time)
{
    if (!m_awaitTime.empty()) {
        const TimeDone done = std::move(m_awaitTime.front());
        m_awaitTime.pop_front();
        done(time);
    }
}

} // namespace tessly
