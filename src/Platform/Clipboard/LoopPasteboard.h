#pragma once

#include "LoopClipboard.h"
#include "MainThreadCall.h"
#include "Pasteboard.h"

#include <functional>
#include <utility>

namespace tessly {

/// A pasteboard whose traffic with the desktop and with other programs takes place on a thread and
/// a connection of its own, so that nobody holds the main thread, and serving what was written does
/// not depend on it either.
class LoopPasteboard : public Pasteboard
{
public:
    ~LoopPasteboard() override;

    /// Called once, on the main thread, when the desktop has gone away: what is read from then on
    /// is unreadable, what is written is refused.
    void setConnectionLost(std::function<void()> callback)
    {
        m_connectionLost.setCallback(std::move(callback));
    }

    [[nodiscard]] qint64 changeCount() const final { return m_state.changeCount(); }
    [[nodiscard]] Clock::Duration contentAge() const final { return m_state.contentAge(); }
    [[nodiscard]] int copiesMissed(qint64 changeCount, Clock::Duration shortestStay) const final
    {
        return m_state.copiesMissed(changeCount, shortestStay);
    }
    [[nodiscard]] bool followsOwnerThatLeft(qint64 changeCount) const final
    {
        return m_state.followsOwnerThatLeft(changeCount);
    }
    [[nodiscard]] bool notifiesOfChanges() const final { return true; }
    void setChanged(std::function<void()> changed) final
    {
        m_changed.setCallback(std::move(changed));
    }
    [[nodiscard]] QCoro::Task<> catchUp() final;
    [[nodiscard]] PasteboardAccess access() const final { return PasteboardAccess::available; }
    [[nodiscard]] QCoro::Task<std::optional<QSet<QString>>> types(qint64 changeCount) final;
    [[nodiscard]] QCoro::Task<ReadResult<QByteArray>>
    read(qint64 changeCount, Flavour flavour, qint64 byteLimit) final;
    [[nodiscard]] QCoro::Task<ReadResult<QByteArrayList>>
    readFileURLs(qint64 changeCount, qint64 byteLimit) final;
    [[nodiscard]] WriteTicket write(std::vector<PasteboardItem> items) final;
    /// False if the desktop did not take what was written, or something else is there.
    [[nodiscard]] QCoro::Task<bool> holds(WriteTicket ticket) final;
    /// Whether what was written with this ticket, if it is the last, is text and neither an image
    /// nor files.
    [[nodiscard]] bool isText(WriteTicket ticket) const
    {
        return m_isText && ticket.number() == m_lastTicket;
    }
    [[nodiscard]] quint64 fetchCount() const final { return m_state.fetchCount; }
    void clear() final;
    void keepWhenOwnerLeaves(
        qint64 changeCount, std::vector<PasteboardItem> items,
        HasSourceEnded hasSourceEnded = {}) final;

    /// Offers what was written with this ticket as PRIMARY, too, for programs that paste only that,
    /// until another program takes it or `clear`. True once it is so; false if it is not the
    /// clipboard's content (any more), or there is no PRIMARY.
    [[nodiscard]] QCoro::Task<bool> offerAsPrimary(WriteTicket ticket);
    /// For who is about to press paste keys: whether the content, and PRIMARY too if that is what
    /// they paste, is that of this write, as far as has been heard. Fetches are counted from now.
    /// Any thread.
    [[nodiscard]] bool beginPaste(WriteTicket ticket, bool isPrimaryPasted)
    {
        return m_state.beginPaste(ticket, isPrimaryPasted);
    }

protected:
    /// Runs a job on the thread of the connection.
    using Post = std::function<void(std::function<void()> job)>;

    /// `takeover` as LoopClipboard::State has it.
    explicit LoopPasteboard(std::chrono::milliseconds takeover);

    [[nodiscard]] LoopClipboard::State& state() { return m_state; }
    /// Before anything is asked. The clipboard must be there as long as jobs run.
    void start(LoopClipboard& clipboard, Post post);
    /// The desktop went away. On the thread of the connection.
    void lost();

private:
    struct Loop
    {
        Post post;
    };

    template <typename Value, typename Ask>
    [[nodiscard]] QCoro::Task<Value> ask(Value fallback, Ask ask);

    LoopClipboard::State m_state;
    MainThreadCall m_changed;
    MainThreadCall m_connectionLost;
    quint64 m_lastTicket = 0;
    /// What was written last.
    bool m_isText = false;
    LoopClipboard* m_clipboard = nullptr;
    Loop m_loop;
};

} // namespace tessly
