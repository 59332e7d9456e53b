#pragma once

#include "Pasteboard.h"
#include "WaylandClipboardDeadlines.h"
#include "WaylandDataControl.h"
#include "WaylandPipeReader.h"

#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <span>

namespace tessly {

/// One content of the clipboard that another program owns, from that program's copy until it leaves
/// or another copies. Asks its owner only for what is wanted and offered. Every question is
/// answered once. Loop thread only.
class WaylandClipboardContent : public std::enable_shared_from_this<WaylandClipboardContent>
{
public:
    using TypesDone = std::function<void(std::optional<QSet<QString>>)>;
    using ReadDone = std::function<void(ReadResult<QByteArray>)>;
    using FileURLsDone = std::function<void(ReadResult<QByteArrayList>)>;

    WaylandClipboardContent(
        WaylandEventLoop& loop, WaylandPipeReader& reader,
        const WaylandClipboardDeadlines& deadlines, std::unique_ptr<WaylandDataOffer> offer);

    void types(const TypesDone& done) const;
    void read(Flavour flavour, qint64 byteLimit, ReadDone done);
    void readFileURLs(qint64 byteLimit, FileURLsDone done);

    /// The owner is gone: what it is still writing is taken, the rest is lost. If it served
    /// something before it went, that was all there is to be had; else the content is unreadable.
    void ownerLeft();
    /// Whether the owner is gone because it was read here, as those are that serve one read.
    [[nodiscard]] bool isUsedUp() const;
    /// Another content has come, or the compositor is gone: ends every question as unreadable.
    void end();

private:
    /// What became of the search for a flavour: bytes, and the type that they were offered as.
    struct Found
    {
        ReadStatus status;
        QByteArray type = {};
        QByteArray bytes = {};
    };
    using Accept = std::function<void(Found)>;
    struct Search;
    using SearchPointer = std::shared_ptr<Search>;

    void search(std::span<const QByteArrayView> names, qint64 byteLimit, Accept accept);
    void tryNext(const SearchPointer& search);
    void receive(const SearchPointer& search, const QByteArray& type);
    void
    received(const SearchPointer& search, const QByteArray& type, WaylandPipeReader::Result result);
    void receivedNothing(const SearchPointer& search, const QByteArray& type);
    void answer(const SearchPointer& search, Found found);
    /// The status of what an owner that went away or fell silent did not hand over.
    [[nodiscard]] ReadStatus lostStatus() const;

    WaylandEventLoop& m_loop;
    WaylandPipeReader& m_reader;
    const WaylandClipboardDeadlines m_deadlines;
    std::unique_ptr<WaylandDataOffer> m_offer;
    std::set<SearchPointer> m_searches;
    bool m_isServed = false;
    /// When it last handed something over, in the loop's time.
    LoopTimers::Time m_servedAt;
    LoopTimers::Time m_leftAt;
    /// It served something and then let a deadline pass: it is not waited for again.
    bool m_isSilent = false;
    bool m_hasOwnerLeft = false;
    bool m_isEnded = false;
};

} // namespace tessly
