#include "WaylandClipboardContent.h"

#include "FlavourTargets.h"
#include "MendedUTF8.h"
#include "PasteboardText.h"
#include "WithinMemory.h"

#include <algorithm>
#include <array>
#include <deque>
#include <fcntl.h>
#include <limits>
#include <unistd.h>
#include <utility>

namespace tessly {

namespace {

// Line ends, comments and the line with the operation take room that is not counted to the URLs.
constexpr qint64 fileListOverhead = 4096;

} // namespace

struct WaylandClipboardContent::Search
{
    /// Still to be tried, the wanted one first.
    std::deque<QByteArray> candidates;
    qint64 byteLimit;
    LoopTimers::Time deadline;
    /// None once it is answered.
    Accept accept;
    std::optional<WaylandPipeReader::ReadID> reading = {};
    /// The first type under which the owner, being there, wrote nothing.
    std::optional<QByteArray> emptyType = {};
};

WaylandClipboardContent::WaylandClipboardContent(
    WaylandEventLoop& loop, WaylandPipeReader& reader, const WaylandClipboardDeadlines& deadlines,
    std::unique_ptr<WaylandDataOffer> offer)
    : m_loop(loop)
    , m_reader(reader)
    , m_deadlines(deadlines)
    , m_offer(std::move(offer))
{
}

void WaylandClipboardContent::types(const TypesDone& done) const
{
    if (!m_offer || m_offer->hasTooManyTypes()) {
        done(std::nullopt);
    } else {
        done(typeNames(m_offer->types()));
    }
}

void WaylandClipboardContent::read(Flavour flavour, qint64 byteLimit, ReadDone done)
{
    search(
        targetsOf(flavour), byteLimit,
        [flavour, byteLimit, done = std::move(done)](const Found& found) {
            auto result = withinMemory([&] {
                ReadResult<QByteArray> result{.status = found.status, .value = found.bytes};
                if (found.status == ReadStatus::read && flavour == Flavour::plainText) {
                    result.value = isLatin1Target(found.type) ? utf8FromLatin1(found.bytes)
                                                              : mendedUTF8(found.bytes);
                } else if (
                    found.status == ReadStatus::read &&
                    (found.bytes.isEmpty() || (flavour == Flavour::png && !isPNG(found.bytes)))) {
                    // Nothing at all is a text like any other, and nothing else.
                    result = {.status = ReadStatus::absent};
                }
                return result;
            });
            if (result.value.size() > byteLimit) {
                result = {.status = ReadStatus::tooLarge};
            }
            done(std::move(result));
        });
}

void WaylandClipboardContent::readFileURLs(qint64 byteLimit, FileURLsDone done)
{
    const qint64 listLimit =
        2 * std::min(byteLimit, std::numeric_limits<qint64>::max() / 4) + fileListOverhead;
    search(fileListTargets(), listLimit, [byteLimit, done = std::move(done)](const Found& found) {
        if (found.status == ReadStatus::read) {
            done(withinMemory(
                [&] { return limitedFileURLs(fileURLs(found.type, found.bytes), byteLimit); }));
        } else {
            done({.status = found.status});
        }
    });
}

void WaylandClipboardContent::ownerLeft()
{
    m_hasOwnerLeft = true;
    m_leftAt = m_loop.now();
    m_offer.reset();
}

bool WaylandClipboardContent::isUsedUp() const
{
    // Its last bytes may arrive after the news of its end.
    return m_hasOwnerLeft && m_isServed && m_leftAt - m_servedAt <= m_deadlines.usedUp;
}

void WaylandClipboardContent::end()
{
    m_isEnded = true;
    m_offer.reset();
    for (const SearchPointer& search : std::set<SearchPointer>(m_searches)) {
        answer(search, {.status = ReadStatus::unreadable});
        if (search->reading) {
            m_reader.giveUp(*search->reading);
        }
    }
}

void WaylandClipboardContent::search(
    std::span<const QByteArrayView> names, qint64 byteLimit, Accept accept)
{
    if (m_isEnded || (m_hasOwnerLeft && !m_isServed)) {
        accept({.status = ReadStatus::unreadable});
        return;
    }
    if (m_offer && m_offer->hasTooManyTypes()) {
        accept({.status = ReadStatus::unreadable});
        return;
    }
    const auto search = std::make_shared<Search>(Search{
        .candidates = {},
        .byteLimit = byteLimit,
        .deadline = m_loop.now() + m_deadlines.read,
        .accept = std::move(accept)});
    m_searches.insert(search);
    if (m_offer) {
        for (const QByteArrayView name : names) {
            for (const QByteArray& type : m_offer->types()) {
                if (isSameTarget(type, name)) {
                    search->candidates.push_back(type);
                }
            }
        }
    }
    tryNext(search);
}

void WaylandClipboardContent::tryNext(const SearchPointer& search)
{
    if (search->candidates.empty()) {
        if (search->emptyType) {
            answer(search, {.status = ReadStatus::read, .type = *search->emptyType});
        } else {
            answer(search, {.status = ReadStatus::absent});
        }
    } else if (!m_offer || m_isSilent) {
        answer(search, {.status = lostStatus()});
    } else {
        const QByteArray type = search->candidates.front();
        search->candidates.pop_front();
        receive(search, type);
    }
}

void WaylandClipboardContent::receive(const SearchPointer& search, const QByteArray& type)
{
    std::array<int, 2> pipe = {};
    // Only this end may be non-blocking: many programs take for an error what their end says then.
    if (pipe2(pipe.data(), O_CLOEXEC) != 0) {
        answer(search, {.status = ReadStatus::unreadable});
        return;
    }
    if (fcntl(pipe[0], F_SETFL, O_NONBLOCK) != 0) {
        close(pipe[0]);
        close(pipe[1]);
        answer(search, {.status = ReadStatus::unreadable});
        return;
    }
    m_offer->receive(type, pipe[1]);
    close(pipe[1]);
    search->reading = m_reader.begin(
        pipe[0],
        {.byteLimit = search->byteLimit,
         .stall = m_deadlines.stall,
         .deadline = search->deadline,
         .drain = m_deadlines.drain},
        [weak = weak_from_this(), search, type](WaylandPipeReader::Result result) {
            search->reading.reset();
            if (const auto content = weak.lock()) {
                content->received(search, type, std::move(result));
            }
        });
}

void WaylandClipboardContent::received(
    const SearchPointer& search, const QByteArray& type, WaylandPipeReader::Result result)
{
    switch (result.end) {
    case WaylandPipeReader::End::complete:
        if (result.bytes.isEmpty()) {
            receivedNothing(search, type);
            return;
        }
        m_isServed = true;
        m_servedAt = m_loop.now();
        answer(search, {ReadStatus::read, type, std::move(result.bytes)});
        return;
    case WaylandPipeReader::End::tooLarge:
        answer(search, {.status = ReadStatus::tooLarge});
        return;
    case WaylandPipeReader::End::noMemory:
        answer(search, {.status = ReadStatus::noMemory});
        return;
    case WaylandPipeReader::End::timedOut:
        m_isSilent |= m_isServed;
        answer(search, {.status = lostStatus()});
        return;
    case WaylandPipeReader::End::givenUp:
        answer(search, {.status = ReadStatus::unreadable});
        return;
    }
    Q_UNREACHABLE();
}

void WaylandClipboardContent::receivedNothing(const SearchPointer& search, const QByteArray& type)
{
    // Either the owner says no, or has an empty text, or it has just ended. What the compositor
    // says next tells that apart, if it says anything.
    const auto timer = m_loop.callAfter(m_deadlines.stall, [weak = weak_from_this(), search] {
        if (const auto content = weak.lock()) {
            content->answer(search, {.status = content->lostStatus()});
        }
    });
    m_loop.awaitOtherPrograms([weak = weak_from_this(), &loop = m_loop, timer, search, type] {
        loop.cancel(timer);
        const auto content = weak.lock();
        if (!content || !search->accept) {
            return;
        }
        if (content->m_hasOwnerLeft) {
            content->answer(search, {.status = content->lostStatus()});
            return;
        }
        if (!search->emptyType) {
            search->emptyType = type;
        }
        content->tryNext(search);
    });
}

void WaylandClipboardContent::answer(const SearchPointer& search, Found found)
{
    m_searches.erase(search);
    if (const Accept accept = std::exchange(search->accept, nullptr)) {
        accept(std::move(found));
    }
}

ReadStatus WaylandClipboardContent::lostStatus() const
{
    return m_isServed && !m_isEnded ? ReadStatus::absent : ReadStatus::unreadable;
}

} // namespace tessly
