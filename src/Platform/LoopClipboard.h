#pragma once

#include "Pasteboard.h"

#include <QByteArray>
#include <QByteArrayList>
#include <QSet>
#include <QString>

#include <atomic>
#include <chrono>
#include <functional>
#include <optional>
#include <vector>

namespace tessly {

/// The half of a desktop's clipboard that lives on the thread of its connection. The operations are
/// those of Pasteboard, answered by callback, once each.
class LoopClipboard
{
public:
    using TypesDone = std::function<void(std::optional<QSet<QString>>)>;
    using ReadDone = std::function<void(ReadResult<QByteArray>)>;
    using FileURLsDone = std::function<void(ReadResult<QByteArrayList>)>;
    using OwnDone = std::function<void(bool isOwner)>;

    /// What other threads read.
    class State
    {
    public:
        State();

        [[nodiscard]] qint64 changeCount() const { return m_changeCount; }
        [[nodiscard]] std::chrono::nanoseconds contentAge() const;
        /// The write that the content is, as far as the desktop has said by now; zero if it is
        /// none.
        [[nodiscard]] quint64 heldTicket() const { return m_heldTicket; }

        /// A new content has come: that of a write, or (zero) another.
        void change(WriteTicket ticket = {});
        /// The content is not that of a write any more; what it is will be told next.
        void release() { m_heldTicket = 0; }

        /// Called with each change, on the thread of the connection. Set before that runs.
        std::function<void()> changed;
        /// Whether writes have somewhere to go.
        std::atomic<bool> isWritable = false;
        /// How often other programs have asked for content that was written.
        std::atomic<quint64> fetchCount = 0;

    private:
        std::atomic<qint64> m_changeCount = 1;
        std::atomic<std::chrono::steady_clock::rep> m_changedAt;
        std::atomic<quint64> m_heldTicket = 0;
    };

    LoopClipboard() = default;
    LoopClipboard(const LoopClipboard&) = delete;
    LoopClipboard& operator=(const LoopClipboard&) = delete;
    virtual ~LoopClipboard() = default;

    /// The desktop went away: everything is unreadable, now and later.
    virtual void connectionLost() = 0;

    virtual void types(qint64 changeCount, TypesDone done) = 0;
    virtual void read(qint64 changeCount, Flavour flavour, qint64 byteLimit, ReadDone done) = 0;
    virtual void readFileURLs(qint64 changeCount, qint64 byteLimit, FileURLsDone done) = 0;
    /// Calls back once what the desktop knew of at the time of the call has been heard of, or it
    /// has gone away.
    virtual void catchUp(std::function<void()> done) = 0;
    virtual void write(const std::vector<PasteboardItem>& items, WriteTicket ticket) = 0;
    /// Answers once the writes before are through: whether this one is, or is about to become, the
    /// clipboard's content. Drops the question if the desktop goes away first.
    virtual void holds(WriteTicket ticket, OwnDone done) = 0;
    /// Offers as PRIMARY, too, what was written with this ticket, if that is still the clipboard's
    /// content. Answers once that is so, or cannot be; drops the question if the desktop goes away
    /// first.
    virtual void offerAsPrimary(WriteTicket ticket, OwnDone done) = 0;
    virtual void clear() = 0;
    virtual void keepWhenOwnerLeaves(
        qint64 changeCount, std::vector<PasteboardItem> items,
        Pasteboard::HasSourceEnded hasSourceEnded) = 0;
};

} // namespace tessly
