#pragma once

#include "LoopClipboard.h"
#include "X11ClipboardContent.h"
#include "X11ClipboardDeadlines.h"
#include "X11EventLoop.h"
#include "X11SelectionOwner.h"
#include "X11SelectionReader.h"

#include <xcb/xfixes.h>

#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace tessly {

/// The half of X11Pasteboard that lives on the loop thread: follows who owns CLIPBOARD, and owns it
/// for the program. Writable while the server is there.
class X11Clipboard final : public LoopClipboard
{
public:
    /// Before the loop is started. What the change count shows now stands for the content that
    /// there is. Throws X11Error if the server lacks XFIXES.
    X11Clipboard(X11EventLoop& loop, const X11ClipboardDeadlines& deadlines, State& state);

    /// What owns CLIPBOARD and PRIMARY for the program. Any thread.
    [[nodiscard]] xcb_window_t window() const { return m_window; }

    void handle(const xcb_generic_event_t& event);

    void connectionLost() override;
    void types(qint64 changeCount, TypesDone done) override;
    void read(qint64 changeCount, Flavour flavour, qint64 byteLimit, ReadDone done) override;
    void readFileURLs(qint64 changeCount, qint64 byteLimit, FileURLsDone done) override;
    void catchUp(std::function<void()> done) override;
    void write(const std::vector<PasteboardItem>& items, WriteTicket ticket) override;
    void holds(WriteTicket ticket, OwnDone done) override;
    void offerAsPrimary(WriteTicket ticket, OwnDone done) override;
    void clear() override;
    /// The server tells an owner that ends from one that takes its content back, which is a change:
    /// the source is not asked about.
    void keepWhenOwnerLeaves(
        qint64 changeCount, std::vector<PasteboardItem> items,
        Pasteboard::HasSourceEnded hasSourceEnded) override;

private:
    using TimeDone = std::function<void(xcb_timestamp_t)>;

    void watchOwner();
    void ownerChanged(const xcb_xfixes_selection_notify_event_t& event, std::uint32_t sequence);
    void serverTimeCame(xcb_timestamp_t time);
    void withServerTime(TimeDone done);
    void offerKept();
    [[nodiscard]] X11SelectionOwner::Offer offerOf(WriteTicket ticket) const;
    [[nodiscard]] bool isCurrent(qint64 changeCount) const;

    X11EventLoop& m_loop;
    const X11ClipboardDeadlines m_deadlines;
    State& m_state;
    const xcb_window_t m_window;
    X11SelectionReader m_reader;
    X11SelectionOwner m_owner;
    xcb_atom_t m_clipboard = XCB_ATOM_NONE;
    xcb_atom_t m_timeProperty = XCB_ATOM_NONE;
    std::uint8_t m_ownerChange = 0;

    // The current content is another program's, the program's own, or, with both null, nothing.
    std::shared_ptr<X11ClipboardContent> m_foreign;
    X11SelectionOwner::Offer m_own;
    /// When the other program took the selection, in the server's time; not known of one that had
    /// it before this program came.
    std::optional<xcb_timestamp_t> m_takenAt;
    bool m_hasOwnerLeft = false;
    /// What to offer then.
    std::vector<PasteboardItem> m_kept;
    std::deque<TimeDone> m_awaitTime;
    bool m_isLost = false;
};

} // namespace tessly
