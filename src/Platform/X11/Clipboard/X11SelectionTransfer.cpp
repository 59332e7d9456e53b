#include "X11SelectionTransfer.h"

#include <algorithm>
#include <new>
#include <utility>

namespace tessly {

namespace {

// A value is fetched in pieces of this size, so that one that is too large is never held whole.
constexpr std::uint32_t pieceBytes = 1U << 20;

// A server that takes longer than this for a question that it can answer by itself has served the
// owner no better.
constexpr std::chrono::milliseconds promptAnswer(100);

qint64 byteCount(const xcb_get_property_reply_t& reply)
{
    return static_cast<qint64>(reply.value_len) * (reply.format / 8);
}

} // namespace

X11SelectionTransfer::X11SelectionTransfer(
    X11EventLoop& loop, xcb_window_t window, xcb_atom_t property, X11Conversion conversion,
    X11Conversion::Done done, std::function<void()> changed)
    : m_loop(loop)
    , m_window(window)
    , m_property(property)
    , m_incr(loop.atom("INCR"))
    , m_conversion(std::move(conversion))
    , m_done(std::move(done))
    , m_changed(std::move(changed))
{
}

X11SelectionTransfer::~X11SelectionTransfer()
{
    stopDeadlines();
}

void X11SelectionTransfer::begin()
{
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(m_conversion.deadline - m_loop.now());
    xcb_delete_property(m_loop.connection(), m_window, m_property);
    xcb_convert_selection(
        m_loop.connection(), m_window, m_conversion.selection, m_conversion.target, m_property,
        m_conversion.time);
    startOverallDeadline(std::max(left, std::chrono::milliseconds(0)));
    awaitServer([this](bool) { startStallDeadline(); });
}

void X11SelectionTransfer::notified(const xcb_selection_notify_event_t& event)
{
    if (!m_awaitsNotify) {
        return;
    }
    m_awaitsNotify = false;
    progress();
    if (event.property == XCB_ATOM_NONE) {
        finish(X11Conversion::End::refused);
        return;
    }
    fetch();
}

void X11SelectionTransfer::propertyWritten()
{
    // The first value is announced by SelectionNotify.
    if (m_awaitsNotify || m_phase == Phase::abandoned || m_phase == Phase::over) {
        return;
    }
    if (m_isFetching) {
        m_isWrittenAgain = true;
        return;
    }
    progress();
    fetch();
}

void X11SelectionTransfer::giveUp(X11Conversion::End end)
{
    if (!isAnswered()) {
        answer(end);
        stopDeadlines();
        startDeadlines(m_conversion.drainDeadline);
    }
}

void X11SelectionTransfer::ownerLeft()
{
    m_hasOwnerLeft = true;
    if (!m_isFetching && m_phase != Phase::over) {
        finish(X11Conversion::End::ownerLeft);
    }
}

void X11SelectionTransfer::fetch()
{
    m_isFetching = true;
    // Of what is thrown away only the size is of interest: zero is the end.
    const std::uint32_t bytes = isAnswered() && m_isIncremental ? 0 : pieceBytes;
    // The server deletes the property once the last piece is taken, which is what the owner of an
    // incremental transfer waits for.
    const auto cookie = xcb_get_property(
        m_loop.connection(), 1, m_window, m_property, XCB_GET_PROPERTY_TYPE_ANY, m_offset / 4,
        bytes / 4);
    m_loop.awaitReply<xcb_get_property_reply_t>(
        cookie, [weak = weak_from_this()](const xcb_get_property_reply_t* reply) {
            if (const auto transfer = weak.lock()) {
                transfer->fetched(reply);
            }
        });
}

void X11SelectionTransfer::fetched(const xcb_get_property_reply_t* reply)
{
    m_isFetching = false;
    if (reply == nullptr) {
        // The server is gone, or the owner has put a shorter value in place of one half fetched.
        xcb_delete_property(m_loop.connection(), m_window, m_property);
        finish(X11Conversion::End::refused);
        return;
    }
    if (reply->type == XCB_ATOM_NONE) {
        // No value at all: the whole answer is missing, or the event was for a value taken before.
        if (!m_isIncremental) {
            finish(X11Conversion::End::refused);
        } else {
            chunkTaken();
        }
        return;
    }
    progress();
    if (!m_isIncremental && reply->type == m_incr) {
        // The size announced in it is a promise that nobody keeps; it is not looked at.
        m_isIncremental = true;
        if (reply->bytes_after > 0) {
            xcb_delete_property(m_loop.connection(), m_window, m_property);
        }
        chunkTaken();
        return;
    }
    if (isAnswered()) {
        drain(*reply);
    } else {
        take(*reply);
    }
}

/// Answers; what comes from this reply on is thrown away.
void X11SelectionTransfer::drainFrom(const xcb_get_property_reply_t& reply, X11Conversion::End end)
{
    answer(end);
    stopDeadlines();
    startDeadlines(m_conversion.drainDeadline);
    drain(reply);
}

void X11SelectionTransfer::drain(const xcb_get_property_reply_t& reply)
{
    const bool isEmpty = m_offset == 0 && byteCount(reply) == 0 && reply.bytes_after == 0;
    m_offset = 0;
    if (reply.bytes_after > 0) {
        xcb_delete_property(m_loop.connection(), m_window, m_property);
    }
    if (!m_isIncremental || isEmpty) {
        finish(X11Conversion::End::refused);
    } else {
        chunkTaken();
    }
}

void X11SelectionTransfer::take(const xcb_get_property_reply_t& reply)
{
    const qint64 size = byteCount(reply);
    const qint64 total = m_bytes.size() + size + reply.bytes_after;
    const bool isEnd = m_offset == 0 && size == 0 && reply.bytes_after == 0;
    const bool isWrong = !isAcceptable(reply);
    if (isWrong || total > m_conversion.byteLimit) {
        drainFrom(reply, isWrong ? X11Conversion::End::refused : X11Conversion::End::tooLarge);
        return;
    }
    m_type = reply.type;
    try {
        m_bytes.append(
            static_cast<const char*>(xcb_get_property_value(&reply)), static_cast<qsizetype>(size));
    } catch (const std::bad_alloc&) {
        drainFrom(reply, X11Conversion::End::noMemory);
        return;
    }
    if (reply.bytes_after > 0) {
        m_offset += static_cast<std::uint32_t>(size);
        fetch();
        return;
    }
    m_offset = 0;
    if (!m_isIncremental || isEnd) {
        finish(X11Conversion::End::converted);
    } else {
        chunkTaken();
    }
}

bool X11SelectionTransfer::isAcceptable(const xcb_get_property_reply_t& reply) const
{
    // The empty value that ends an incremental transfer has whatever type the owner likes.
    if (m_isIncremental && reply.value_len == 0 && reply.bytes_after == 0) {
        return true;
    }
    return reply.format == m_conversion.format &&
           std::ranges::find(m_conversion.types, reply.type) != m_conversion.types.end();
}

void X11SelectionTransfer::chunkTaken()
{
    if (m_isWrittenAgain) {
        m_isWrittenAgain = false;
        fetch();
    } else if (m_hasOwnerLeft) {
        finish(X11Conversion::End::ownerLeft);
    }
}

void X11SelectionTransfer::answer(X11Conversion::End end)
{
    if (isAnswered()) {
        return;
    }
    X11Conversion::Result result{.end = end, .type = m_type};
    if (end == X11Conversion::End::converted) {
        result.bytes = std::move(m_bytes);
        result.bytes.squeeze();
    }
    m_bytes = QByteArray();
    std::exchange(m_done, nullptr)(std::move(result));
}

void X11SelectionTransfer::finish(X11Conversion::End end)
{
    stopDeadlines();
    // First the phase: what the answer leads to may start the next conversion.
    m_phase = Phase::over;
    answer(end);
    m_changed();
}

void X11SelectionTransfer::progress()
{
    if (m_phase == Phase::stuck) {
        m_phase = Phase::active;
        startDeadlines(m_conversion.drainDeadline);
        return;
    }
    const bool isRenewed = isAnswered() || m_conversion.timeout == X11Conversion::Timeout::renewed;
    if (isRenewed && (m_stallTimer || m_awaitsServer)) {
        startStallDeadline();
    }
}

void X11SelectionTransfer::stalled()
{
    stopDeadlines();
    answer(X11Conversion::End::timedOut);
    setPhase(Phase::stuck);
}

void X11SelectionTransfer::startStallDeadline()
{
    stopStallDeadline();
    m_stallTimer = m_loop.callAfter(m_conversion.stallDeadline, [this] {
        m_stallTimer.reset();
        // Another client may have had the server for itself all along.
        awaitServer([this](bool isPrompt) {
            if (isPrompt) {
                stalled();
            } else {
                startStallDeadline();
            }
        });
    });
}

void X11SelectionTransfer::stopStallDeadline()
{
    if (m_stallTimer) {
        m_loop.cancel(*m_stallTimer);
        m_stallTimer.reset();
    }
    m_awaitsServer = false;
}

void X11SelectionTransfer::awaitServer(std::function<void(bool isPrompt)> callback)
{
    m_awaitsServer = true;
    m_loop.awaitReply<xcb_get_input_focus_reply_t>(
        xcb_get_input_focus(m_loop.connection()),
        [weak = weak_from_this(), question = ++m_question, asked = m_loop.now(),
         callback = std::move(callback)](const xcb_get_input_focus_reply_t* reply) {
            const auto transfer = weak.lock();
            if (transfer && transfer->m_awaitsServer && transfer->m_question == question) {
                transfer->m_awaitsServer = false;
                // A server that is gone answers at once, and nothing more will come.
                callback(reply == nullptr || transfer->m_loop.now() - asked <= promptAnswer);
            }
        });
}

void X11SelectionTransfer::startDeadlines(std::chrono::milliseconds overall)
{
    startStallDeadline();
    startOverallDeadline(overall);
}

void X11SelectionTransfer::startOverallDeadline(std::chrono::milliseconds delay)
{
    m_overallTimer = m_loop.callAfter(delay, [this] {
        m_overallTimer.reset();
        if (isAnswered()) {
            stopDeadlines();
            setPhase(Phase::abandoned);
        } else {
            giveUp(X11Conversion::End::timedOut);
        }
    });
}

void X11SelectionTransfer::stopDeadlines()
{
    stopStallDeadline();
    if (m_overallTimer) {
        m_loop.cancel(*m_overallTimer);
        m_overallTimer.reset();
    }
}

void X11SelectionTransfer::setPhase(Phase phase)
{
    m_phase = phase;
    m_changed();
}

} // namespace tessly
