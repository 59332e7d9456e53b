#pragma once

#include "PasteboardOffer.h"
#include "X11EventLoop.h"
#include "X11IncrementalSends.h"

#include <chrono>
#include <deque>
#include <functional>
#include <map>
#include <memory>

namespace tessly {

/// Owns selections and serves what it offers to whoever asks. Loop thread only.
class X11SelectionOwner
{
public:
    using Offer = std::shared_ptr<PasteboardOffer>;

    /// `fetched` is called for each piece of content that a reader asks for (lists of types and the
    /// like do not count).
    X11SelectionOwner(
        X11EventLoop& loop, xcb_window_t window, std::chrono::milliseconds readerDeadline,
        std::function<void()> fetched = {});

    /// Takes a selection, as of a server time. `done` hears whether the server agreed, which it
    /// does not if a newer owner has taken the selection since.
    void
    own(xcb_atom_t selection, Offer offer, xcb_timestamp_t time,
        std::function<void(bool isOwner)> done = {});
    /// Leaves a selection without an owner, whoever owns it.
    void release(xcb_atom_t selection, xcb_timestamp_t time);

    /// What it offers, as far as the server's word of up to this request (an event's
    /// `full_sequence`) tells; null if it does not own the selection.
    [[nodiscard]] Offer offer(xcb_atom_t selection, std::uint32_t sequence);
    /// What it offers once everything asked of the server is done.
    [[nodiscard]] Offer latestOffer(xcb_atom_t selection) const;
    [[nodiscard]] bool owns(xcb_atom_t selection) const { return bool(latestOffer(selection)); }

    void handle(const xcb_selection_request_event_t& event, std::uint32_t sequence);
    void handle(const xcb_selection_clear_event_t& event, std::uint32_t sequence);
    void handle(const xcb_property_notify_event_t& event) { m_sends.handle(event); }
    void handle(const xcb_destroy_notify_event_t& event) { m_sends.handle(event); }

    /// The names of the targets that every owner has by the protocol.
    [[nodiscard]] static const QByteArrayList& protocolTargets();

private:
    struct Owned
    {
        Offer offer;
        xcb_timestamp_t time = 0;
    };
    /// What is asked of the server, by the number of the request.
    struct Pending
    {
        std::uint32_t sequence;
        Owned owned;
    };
    struct Selection
    {
        Owned current;
        std::deque<Pending> pending;
    };

    void settle(Selection& selection, std::uint32_t sequence);
    [[nodiscard]] bool
    convert(const Owned& owned, xcb_window_t reader, xcb_atom_t target, xcb_atom_t property);
    void convertMultiple(const xcb_selection_request_event_t& request, const Owned& owned);
    void convertPairs(
        const Owned& owned, xcb_window_t reader, xcb_atom_t property,
        const xcb_get_property_reply_t* pairs);
    void store(
        xcb_window_t reader, xcb_atom_t property, xcb_atom_t type,
        const std::vector<std::uint32_t>& values);
    void notify(const xcb_selection_request_event_t& request, xcb_atom_t property);
    [[nodiscard]] std::vector<xcb_atom_t> targets(const PasteboardOffer& offer);

    X11EventLoop& m_loop;
    const xcb_window_t m_window;
    X11IncrementalSends m_sends;
    std::function<void()> m_fetched;
    std::map<xcb_atom_t, Selection> m_selections;
};

} // namespace tessly
