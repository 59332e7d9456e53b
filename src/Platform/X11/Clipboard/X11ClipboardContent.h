#pragma once

#include "Pasteboard.h"
#include "X11ClipboardDeadlines.h"
#include "X11EventLoop.h"
#include "X11SelectionReader.h"

#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace tessly {

/// One content of CLIPBOARD that another program owns, from that program's copy until it leaves or
/// another copies. Asks for the list of types first, once (and once more if the owner misses its
/// deadline), and then only for what is wanted and offered. Every question is answered once. Loop
/// thread only.
class X11ClipboardContent : public std::enable_shared_from_this<X11ClipboardContent>
{
public:
    using TypesDone = std::function<void(std::optional<QSet<QString>>)>;
    using ReadDone = std::function<void(ReadResult<QByteArray>)>;
    using FileURLsDone = std::function<void(ReadResult<QByteArrayList>)>;

    /// `time` is a server time at which its owner was the owner.
    X11ClipboardContent(
        X11EventLoop& loop, X11SelectionReader& reader, const X11ClipboardDeadlines& deadlines,
        xcb_timestamp_t time);

    void types(TypesDone done);
    void read(Flavour flavour, qint64 byteLimit, ReadDone done);
    void readFileURLs(qint64 byteLimit, FileURLsDone done);

    /// The owner is gone: what was not read by now is lost. If it served something before it went,
    /// that was all there is to be had; else the content is unreadable.
    void ownerLeft();
    /// Another content has come, or the server is gone: ends every question as unreadable.
    void end();

private:
    struct Target
    {
        xcb_atom_t atom;
        QByteArray name;
    };
    /// What became of the search for a flavour. `type` is the one that the owner gave.
    struct Found
    {
        ReadStatus status;
        QByteArray target = {};
        xcb_atom_t type = XCB_ATOM_NONE;
        QByteArray bytes = {};
    };
    struct Search;
    using TargetsDone = std::function<void(const std::vector<Target>* targets)>;
    using Accept = std::function<void(Found)>;

    void targets(TargetsDone done);
    void askForTargets();
    void targetsConverted(const X11Conversion::Result& result);
    void targetsKnown(std::optional<std::vector<Target>> targets);
    void search(std::span<const QByteArrayView> names, qint64 byteLimit, Accept accept);
    void tryNext(const std::shared_ptr<Search>& search);
    [[nodiscard]] std::vector<xcb_atom_t> acceptedTypes(const Target& target) const;
    [[nodiscard]] ReadStatus statusOf(X11Conversion::End end) const;

    X11EventLoop& m_loop;
    X11SelectionReader& m_reader;
    const X11ClipboardDeadlines m_deadlines;
    const xcb_timestamp_t m_time;
    /// Once they are known, also if they cannot be had.
    std::optional<std::optional<std::vector<Target>>> m_targets;
    std::vector<TargetsDone> m_awaitTargets;
    int m_targetsAsked = 0;
    LoopTimers::Time m_targetsDeadline;
    bool m_isServed = false;
    /// It served something and then let a deadline pass: it is not waited for again.
    bool m_isSilent = false;
    bool m_hasOwnerLeft = false;
    bool m_isEnded = false;
};

} // namespace tessly
