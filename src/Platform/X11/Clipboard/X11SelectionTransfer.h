#pragma once

#include "X11EventLoop.h"

#include <QByteArray>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace tessly {

/// What is asked of a selection's owner, and within which bounds.
struct X11Conversion
{
    enum class End {
        converted,
        /// The owner said no, or gave something of another type or format.
        refused,
        /// More bytes than `byteLimit`.
        tooLarge,
        /// More than there is memory for just now.
        noMemory,
        /// A deadline passed.
        timedOut,
        /// The owner went away before it was done.
        ownerLeft,
        /// Given up by the asker: there is a newer owner.
        overtaken,
    };
    /// `bytes` are empty unless `end` is `converted`; `type` is the one the owner gave.
    struct Result
    {
        End end;
        xcb_atom_t type = XCB_ATOM_NONE;
        QByteArray bytes = {};
    };
    using Done = std::function<void(Result)>;
    /// What a sign of life of the owner does to its deadline.
    enum class Timeout {
        /// It starts anew.
        renewed,
        /// Nothing: all must have been said by then.
        once,
    };

    xcb_atom_t selection;
    xcb_atom_t target;
    /// A time at which the owner was the owner.
    xcb_timestamp_t time;
    /// The types and the format in which the answer is accepted.
    std::vector<xcb_atom_t> types;
    std::uint8_t format = 8;
    qint64 byteLimit;
    /// The longest wait for the owner. It begins when the server has passed the question on, and
    /// does not pass while the server serves nobody (or another client only).
    std::chrono::milliseconds stallDeadline;
    Timeout timeout = Timeout::renewed;
    /// When all of it must be over, whoever is to blame; in the loop's time.
    LoopTimers::Time deadline;
    /// How long the rest of a transfer that nobody wants any more is taken and thrown away.
    std::chrono::milliseconds drainDeadline;
};

/// One conversion of a selection, answered once, within its deadlines, whatever the owner does.
///
/// It lives on after its answer for as long as the owner may still write to its property: the rest
/// of an incremental transfer is drained, since some owners serve nobody until it is taken. Holds
/// `byteLimit` bytes and one piece of 1 MiB at the most. Loop thread only.
class X11SelectionTransfer : public std::enable_shared_from_this<X11SelectionTransfer>
{
public:
    /// How much the transfer still has to do with the owner.
    enum class Phase {
        active,
        /// Answered; nothing has come for longer than the deadline, but still may.
        stuck,
        /// The owner writes without end: it is left waiting.
        abandoned,
        /// Nothing can come any more, the property is free.
        over,
    };

    /// `window` must receive PropertyChange events. `changed` is called when the phase changes.
    X11SelectionTransfer(
        X11EventLoop& loop, xcb_window_t window, xcb_atom_t property, X11Conversion conversion,
        X11Conversion::Done done, std::function<void()> changed);
    ~X11SelectionTransfer();
    X11SelectionTransfer(const X11SelectionTransfer&) = delete;
    X11SelectionTransfer& operator=(const X11SelectionTransfer&) = delete;

    void begin();
    /// The owner's answer, which is known to belong to this conversion.
    void notified(const xcb_selection_notify_event_t& event);
    /// The property has a new value.
    void propertyWritten();
    /// Answers now, if not yet answered; what still comes is drained.
    void giveUp(X11Conversion::End end);
    /// The owner is gone; what it has written already is still taken.
    void ownerLeft();

    [[nodiscard]] Phase phase() const { return m_phase; }
    [[nodiscard]] xcb_atom_t property() const { return m_property; }
    [[nodiscard]] const X11Conversion& conversion() const { return m_conversion; }
    [[nodiscard]] bool isAnswered() const { return !m_done; }
    [[nodiscard]] bool awaitsNotify() const { return m_awaitsNotify; }

private:
    void fetch();
    void fetched(const xcb_get_property_reply_t* reply);
    void take(const xcb_get_property_reply_t& reply);
    void drainFrom(const xcb_get_property_reply_t& reply, X11Conversion::End end);
    void drain(const xcb_get_property_reply_t& reply);
    [[nodiscard]] bool isAcceptable(const xcb_get_property_reply_t& reply) const;
    void chunkTaken();
    void answer(X11Conversion::End end);
    void finish(X11Conversion::End end);
    void progress();
    void stalled();
    void startStallDeadline();
    void stopStallDeadline();
    void startOverallDeadline(std::chrono::milliseconds delay);
    void startDeadlines(std::chrono::milliseconds overall);
    /// Calls back once the server has done all that was asked of it by now, and has told of it;
    /// not if the stall deadline is stopped or starts anew before.
    void awaitServer(std::function<void(bool isPrompt)> callback);
    void stopDeadlines();
    void setPhase(Phase phase);

    X11EventLoop& m_loop;
    const xcb_window_t m_window;
    const xcb_atom_t m_property;
    const xcb_atom_t m_incr;
    const X11Conversion m_conversion;
    X11Conversion::Done m_done;
    std::function<void()> m_changed;

    Phase m_phase = Phase::active;
    bool m_awaitsNotify = true;
    bool m_isIncremental = false;
    bool m_isFetching = false;
    /// A value was written while another was being fetched.
    bool m_isWrittenAgain = false;
    bool m_hasOwnerLeft = false;
    /// Bytes of the current value fetched so far.
    std::uint32_t m_offset = 0;
    QByteArray m_bytes;
    xcb_atom_t m_type = XCB_ATOM_NONE;
    std::optional<X11EventLoop::TimerID> m_stallTimer;
    bool m_awaitsServer = false;
    /// Of the questions to the server, so that the answer to an old one is known as such.
    int m_question = 0;
    std::optional<X11EventLoop::TimerID> m_overallTimer;
};

} // namespace tessly
