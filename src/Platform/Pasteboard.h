#pragma once

#include "Clock.h"

#include <QByteArray>
#include <QByteArrayList>
#include <QCoroTask>
#include <QSet>
#include <QString>

#include <functional>
#include <optional>
#include <utility>
#include <vector>

namespace tessly {

/// What one content of the pasteboard can be read as.
enum class Flavour {
    /// UTF-8, mended where it was not valid.
    plainText,
    rtf,
    html,
    /// Bytes that begin with the PNG signature.
    png,
    /// An image in another format (TIFF, BMP, JPEG, WebP, GIF), bytes as offered.
    otherImage,
};

/// How reading one flavour ended.
enum class ReadStatus {
    read,
    /// Not offered, or refused by the owner, or not what its type promises. Also what was not read
    /// of an owner that went away or fell silent after it had handed over another flavour, as some
    /// do.
    absent,
    /// More bytes than the caller allowed.
    tooLarge,
    /// The whole content is lost to this read: its owner hung or went away before it had handed
    /// over anything, or a newer content has taken its place.
    unreadable,
    /// The whole content is lost: there is not enough memory for it just now.
    noMemory,
};

template <typename Value>
struct ReadResult
{
    ReadStatus status = ReadStatus::absent;
    /// Empty unless `status` is `read`.
    Value value = {};
};

/// One item as it is written: its flavours, each in the bytes that readers get. Every write carries
/// the marker type, which tells the monitor that the content is the program's own.
struct PasteboardItem
{
    std::optional<QByteArray> plainText = {};
    std::optional<QByteArray> rtf = {};
    std::optional<QByteArray> html = {};
    std::optional<QByteArray> png = {};
    /// An absolute file URL.
    std::optional<QByteArray> fileURL = {};

    [[nodiscard]] bool isEmpty() const;
    bool operator==(const PasteboardItem&) const = default;
};

/// Tells one write of the program from every other. Equal to none but itself; false if nothing was
/// written.
class WriteTicket
{
public:
    WriteTicket() = default;
    explicit WriteTicket(quint64 number)
        : m_number(number)
    {
    }

    [[nodiscard]] explicit operator bool() const { return m_number != 0; }
    /// Zero if nothing was written; later writes have greater numbers.
    [[nodiscard]] quint64 number() const { return m_number; }
    bool operator==(const WriteTicket&) const = default;

private:
    quint64 m_number = 0;
};

/// Whether the desktop lets the program read the pasteboard.
enum class PasteboardAccess { available, askEveryTime, denied };

/// The desktop's clipboard.
///
/// Main thread only. Nothing here waits: what depends on another process is awaited, has a
/// deadline, and ends as `unreadable` when that process does not play along.
class Pasteboard
{
public:
    /// Offered with everything the program writes, with the value "1".
    static const QString markerType;
    /// Offered by the types() of content whose owner asked for it to be kept out of histories.
    static const QString concealedType;

    /// Whether the program that a content came from is gone. Called and destroyed on any thread;
    /// must not wait. Empty: that is not known, and an owner that has left counts as gone.
    using HasSourceEnded = std::function<bool()>;

    Pasteboard() = default;
    Pasteboard(const Pasteboard&) = delete;
    Pasteboard& operator=(const Pasteboard&) = delete;
    virtual ~Pasteboard() = default;

    /// A number that changes with every new content, whoever wrote it. A read of memory.
    [[nodiscard]] virtual qint64 changeCount() const = 0;

    /// How long the present content has been there, as far as the program knows.
    [[nodiscard]] virtual Clock::Duration contentAge() const = 0;
    /// How many contents of other programs came after that of `changeCount` and were replaced, by a
    /// write of the program, or by others when they had been there for at least `shortestStay`. As
    /// far as the desktop tells; of the last changes only.
    [[nodiscard]] virtual int
    copiesMissed(qint64 changeCount, Clock::Duration shortestStay) const = 0;

    /// Whether the content of `changeCount` is another program's that came within two seconds of
    /// the owner before it going away: perhaps a program that offers again what it has read. What
    /// this program keeps for that case does not count as an owner. A read of memory.
    [[nodiscard]] virtual bool followsOwnerThatLeft(qint64 changeCount) const = 0;

    /// Whether the desktop tells of changes. Where it does not, `changeCount` has to be looked at
    /// from time to time.
    [[nodiscard]] virtual bool notifiesOfChanges() const = 0;
    /// `changed` is called after the change count has moved on, once for several changes that come
    /// close together. Replaces the one given before; empty: nobody is called.
    virtual void setChanged(std::function<void()> changed) = 0;
    /// Waits until every change that the desktop knew of at the time of the call shows in
    /// `changeCount`.
    [[nodiscard]] virtual QCoro::Task<> catchUp() = 0;

    [[nodiscard]] virtual PasteboardAccess access() const = 0;

    /// The names of all types offered for the content of `changeCount`; an empty set for an empty
    /// pasteboard. Reads no content. None if they cannot be had, or if that content is no longer
    /// the current one.
    [[nodiscard]] virtual QCoro::Task<std::optional<QSet<QString>>> types(qint64 changeCount) = 0;

    /// One flavour of the content of `changeCount`, `byteLimit` bytes at the most.
    [[nodiscard]] virtual QCoro::Task<ReadResult<QByteArray>>
    read(qint64 changeCount, Flavour flavour, qint64 byteLimit) = 0;

    /// The absolute `file:` URLs of the content of `changeCount`, in order, `byteLimit` bytes of
    /// them at the most.
    [[nodiscard]] virtual QCoro::Task<ReadResult<QByteArrayList>>
    readFileURLs(qint64 changeCount, qint64 byteLimit) = 0;

    /// Replaces the content, in one step, by these items and the marker. No ticket, with the
    /// content left as it was, if there is nothing in them or the desktop refuses.
    [[nodiscard]] virtual WriteTicket write(std::vector<PasteboardItem> items) = 0;
    /// Whether the content is that of this write. Answers once the write is through: if true, who
    /// reads from then on finds that content or a newer one.
    [[nodiscard]] virtual QCoro::Task<bool> holds(WriteTicket ticket) = 0;
    /// How often other programs have asked for content (lists of types do not count) that the
    /// program offered, since it last pressed paste keys. A read of memory.
    [[nodiscard]] virtual quint64 fetchCount() const = 0;

    /// Leaves the pasteboard empty, which is a change.
    virtual void clear() = 0;

    /// Offers these items (with the marker) once the owner of the content of `changeCount` goes
    /// away, or at once if it has, unless newer content has come. Takes the place of the items
    /// given before; without any, nothing is offered. A new content, whoever wrote it, ends this.
    ///
    /// Where the desktop does not tell an owner that goes away from one that takes its content
    /// back, `hasSourceEnded` decides: nothing is offered if the source has not ended, unless the
    /// owner went because it was read here.
    virtual void keepWhenOwnerLeaves(
        qint64 changeCount, std::vector<PasteboardItem> items,
        HasSourceEnded hasSourceEnded = {}) = 0;
};

} // namespace tessly
