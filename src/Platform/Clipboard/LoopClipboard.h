#pragma once

#include "Pasteboard.h"

#include <QByteArray>
#include <QByteArrayList>
#include <QSet>
#include <QString>

#include <atomic>
#include <chrono>
#include <deque>
#include <functional>
#include <mutex>
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
        using Now = std::function<std::chrono::steady_clock::time_point()>;

        /// Programs that look at the clipboard from time to time look twice a second, or every
        /// second.
        static constexpr std::chrono::milliseconds usualTakeover{2000};

        /// What comes within `takeover` of an owner's end follows it. `now` is called on any
        /// thread.
        explicit State(
            std::chrono::milliseconds takeover = usualTakeover,
            Now now = std::chrono::steady_clock::now);

        [[nodiscard]] qint64 changeCount() const { return m_changeCount; }
        [[nodiscard]] std::chrono::nanoseconds contentAge() const;
        [[nodiscard]] int
        copiesMissed(qint64 changeCount, std::chrono::nanoseconds shortestStay) const;
        [[nodiscard]] bool followsOwnerThatLeft(qint64 changeCount) const
        {
            return changeCount == m_afterOwnerThatLeft;
        }
        /// Whether the content, and PRIMARY too if that is to be pasted, is that of this write, as
        /// far as the desktop has said by now. Begins to count fetches anew.
        [[nodiscard]] bool beginPaste(WriteTicket ticket, bool isPrimaryPasted);

        enum class Origin { program, otherProgram, nobody };
        /// A new content has come; with the ticket of the write that it is, if it is one.
        void change(Origin origin, WriteTicket ticket = {});
        /// The other program that owned the content has gone away; the change count stays.
        void ownerLeft() { m_ownerLeftAt = m_now(); }
        /// The content is not that of a write any more; what it is will be told next.
        void release() { m_heldTicket = 0; }
        /// Likewise PRIMARY.
        void changePrimary(WriteTicket ticket) { m_primaryTicket = ticket.number(); }
        void releasePrimary() { m_primaryTicket = 0; }

        /// Called with each change, on the thread of the connection. Set before that runs.
        std::function<void()> changed;
        /// Whether writes have somewhere to go.
        std::atomic<bool> isWritable = false;
        /// How often other programs have asked for content that was written, since a paste began.
        std::atomic<quint64> fetchCount = 0;

    private:
        /// What another program had copied, and was replaced.
        struct Replaced
        {
            qint64 changeCount = 0;
            std::chrono::nanoseconds stay;
        };

        const std::chrono::milliseconds m_takeover;
        const Now m_now;
        std::atomic<qint64> m_changeCount = 1;
        std::atomic<std::chrono::steady_clock::rep> m_changedAt;
        std::atomic<quint64> m_heldTicket = 0;
        std::atomic<quint64> m_primaryTicket = 0;
        Origin m_origin = Origin::nobody;
        std::optional<std::chrono::steady_clock::time_point> m_ownerLeftAt;
        /// The change count of the content for which that holds; zero for none.
        std::atomic<qint64> m_afterOwnerThatLeft = 0;
        mutable std::mutex m_replacedMutex;
        /// The latest of them.
        std::deque<Replaced> m_replaced;
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
