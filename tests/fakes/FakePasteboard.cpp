#include "FakePasteboard.h"

#include "FlavourTargets.h"
#include "MendedUTF8.h"
#include "PasteboardOffer.h"

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace tessly::test {

FakePasteboard::FakePasteboard() = default;
FakePasteboard::~FakePasteboard() = default;

qint64 FakePasteboard::copy(Content content)
{
    m_content = std::move(content);
    m_isOwn = false;
    m_ownItems.clear();
    change();
    if (std::exchange(m_hasOwnerLeft, false)) {
        m_afterOwnerThatLeft = m_changeCount;
    }
    return m_changeCount;
}

qint64 FakePasteboard::copyText(QByteArrayView text)
{
    return copy({.plainText = text.toByteArray()});
}

void FakePasteboard::ownerLeaves()
{
    if (!m_content || m_isOwn) {
        return;
    }
    // The offer itself stays known, like a list of types that was fetched earlier.
    m_ownerLeft = true;
    m_hasOwnerLeft = true;
    m_gate.releaseWaiting();
    if (m_kept) {
        own(std::exchange(m_kept, std::nullopt)->items);
    }
}

bool FakePasteboard::beginPaste(WriteTicket ticket)
{
    m_fetchCount = 0;
    return ticket && ticket == m_ticket;
}

int FakePasteboard::copiesMissed(qint64, Clock::Duration) const
{
    return std::exchange(m_copiesMissed, 0);
}

std::size_t FakePasteboard::typesRequests() const
{
    return static_cast<std::size_t>(
        std::ranges::count(m_requests, Request::What::types, &Request::what));
}

std::size_t FakePasteboard::contentRequests() const
{
    return m_requests.size() - typesRequests();
}

std::size_t FakePasteboard::requests(Flavour flavour) const
{
    return static_cast<std::size_t>(std::ranges::count_if(m_requests, [flavour](const Request& r) {
        return r.what == Request::What::flavour && r.flavour == flavour;
    }));
}

std::size_t FakePasteboard::fileURLRequests() const
{
    return static_cast<std::size_t>(
        std::ranges::count(m_requests, Request::What::fileURLs, &Request::what));
}

QCoro::Task<std::optional<QSet<QString>>> FakePasteboard::types(qint64 changeCount)
{
    const std::weak_ptr<bool> alive = m_alive;
    m_requests.push_back({.what = Request::What::types, .changeCount = changeCount});
    co_await m_gate.pass();
    if (alive.expired() || changeCount != m_changeCount || m_ownerLeft) {
        co_return std::nullopt;
    }
    if (!m_content) {
        co_return QSet<QString>();
    }
    if (m_content->hidesTypes) {
        co_return std::nullopt;
    }
    co_return offeredTypes();
}

QCoro::Task<ReadResult<QByteArray>>
FakePasteboard::read(qint64 changeCount, Flavour flavour, qint64 byteLimit)
{
    const std::weak_ptr<bool> alive = m_alive;
    m_requests.push_back({Request::What::flavour, changeCount, flavour, byteLimit});
    co_await m_gate.pass();
    ReadResult<QByteArray> result;
    if (alive.expired() || changeCount != m_changeCount) {
        result.status = ReadStatus::unreadable;
    } else if (!m_content || !offered(flavour)) {
        result.status = ReadStatus::absent;
    } else if (m_ownerLeft || m_isSilent || m_content->hanging.contains(flavour)) {
        result.status = m_hasDelivered ? ReadStatus::absent : ReadStatus::unreadable;
        m_isSilent = m_hasDelivered;
    } else if (m_content->beyondMemory.contains(flavour)) {
        result.status = ReadStatus::noMemory;
    } else if (m_content->refused.contains(flavour)) {
        result.status = ReadStatus::absent;
    } else if (offered(flavour)->size() > byteLimit) {
        result.status = ReadStatus::tooLarge;
        delivered();
    } else {
        result.status = ReadStatus::read;
        result.value = *offered(flavour);
        if (flavour == Flavour::plainText) {
            result.value = mendedUTF8(result.value);
        }
        delivered();
    }
    co_return result;
}

QCoro::Task<ReadResult<QByteArrayList>>
FakePasteboard::readFileURLs(qint64 changeCount, qint64 byteLimit)
{
    const std::weak_ptr<bool> alive = m_alive;
    m_requests.push_back(
        {.what = Request::What::fileURLs, .changeCount = changeCount, .byteLimit = byteLimit});
    co_await m_gate.pass();
    ReadResult<QByteArrayList> result;
    if (alive.expired() || changeCount != m_changeCount) {
        result.status = ReadStatus::unreadable;
    } else if (!m_content || m_content->fileURLs.isEmpty()) {
        result.status = ReadStatus::absent;
    } else if (m_ownerLeft || m_isSilent) {
        result.status = m_hasDelivered ? ReadStatus::absent : ReadStatus::unreadable;
    } else {
        qint64 bytes = 0;
        for (const QByteArray& url : std::as_const(m_content->fileURLs)) {
            bytes += url.size();
        }
        result.status = bytes > byteLimit ? ReadStatus::tooLarge : ReadStatus::read;
        if (result.status == ReadStatus::read) {
            result.value = m_content->fileURLs;
        }
        delivered();
    }
    co_return result;
}

QCoro::Task<> FakePasteboard::catchUp()
{
    co_return;
}

WriteTicket FakePasteboard::write(std::vector<PasteboardItem> items)
{
    std::erase_if(items, [](const PasteboardItem& item) { return item.isEmpty(); });
    if (items.empty() || m_refusesWrites) {
        return {};
    }
    m_writes.push_back(items);
    m_hasOwnerLeft = false;
    own(std::move(items));
    m_ticket = WriteTicket(++m_lastTicket);
    return m_ticket;
}

QCoro::Task<bool> FakePasteboard::holds(WriteTicket ticket)
{
    co_return ticket&& ticket == m_ticket;
}

void FakePasteboard::clear()
{
    m_content.reset();
    m_isOwn = false;
    m_ownItems.clear();
    m_hasOwnerLeft = false;
    change();
}

void FakePasteboard::keepWhenOwnerLeaves(
    qint64 changeCount, std::vector<PasteboardItem> items, HasSourceEnded hasSourceEnded)
{
    m_keeps.push_back({changeCount, items, std::move(hasSourceEnded)});
    if (changeCount != m_changeCount || m_isOwn) {
        return;
    }
    if (items.empty()) {
        m_kept.reset();
    } else if (m_ownerLeft) {
        own(std::move(items));
    } else {
        m_kept = Keep{changeCount, std::move(items), {}};
    }
}

void FakePasteboard::change()
{
    ++m_changeCount;
    m_ticket = {};
    m_ownerLeft = false;
    m_hasDelivered = false;
    m_isSilent = false;
    m_kept.reset();
    // What waits belongs to an older content now, and hears so at once.
    m_gate.releaseWaiting();
    if (m_changed) {
        m_changed();
    }
}

void FakePasteboard::own(std::vector<PasteboardItem> items)
{
    Content content;
    content.extraTypes.insert(markerType);
    const auto takeFirst = [](std::optional<QByteArray>& flavour,
                              const std::optional<QByteArray>& offer) {
        if (!flavour) {
            flavour = offer;
        }
    };
    for (const PasteboardItem& item : items) {
        takeFirst(content.plainText, item.plainText);
        takeFirst(content.rtf, item.rtf);
        takeFirst(content.html, item.html);
        takeFirst(content.png, item.png);
        if (item.fileURL) {
            content.fileURLs.append(*item.fileURL);
        }
    }
    if (!content.fileURLs.isEmpty()) {
        takeFirst(content.plainText, PasteboardOffer(items).bytes("UTF8_STRING"));
    }
    m_content = std::move(content);
    m_isOwn = true;
    m_ownItems = std::move(items);
    change();
}

QSet<QString> FakePasteboard::offeredTypes() const
{
    QSet<QString> names = m_content->extraTypes;
    if (names.contains(QString::fromUtf8(passwordHintTarget()))) {
        names << concealedType;
    }
    if (m_content->plainText) {
        names << u"UTF8_STRING"_s << u"text/plain;charset=utf-8"_s;
    }
    if (m_content->rtf) {
        names << u"text/rtf"_s;
    }
    if (m_content->html) {
        names << u"text/html"_s;
    }
    if (m_content->png) {
        names << u"image/png"_s;
    }
    if (m_content->otherImage) {
        names << u"image/tiff"_s;
    }
    if (!m_content->fileURLs.isEmpty()) {
        names << u"text/uri-list"_s;
    }
    return names;
}

const std::optional<QByteArray>& FakePasteboard::offered(Flavour flavour) const
{
    switch (flavour) {
    case Flavour::plainText:
        return m_content->plainText;
    case Flavour::rtf:
        return m_content->rtf;
    case Flavour::html:
        return m_content->html;
    case Flavour::png:
        return m_content->png;
    case Flavour::otherImage:
        return m_content->otherImage;
    }
    Q_UNREACHABLE();
}

void FakePasteboard::delivered()
{
    m_hasDelivered = true;
    if (m_content->leavesAfterOneRead) {
        ownerLeaves();
    }
}

} // namespace tessly::test
