#include "LoopPasteboard.h"

#include "LoopAnswer.h"

#include <QCoroFuture>

#include <algorithm>
#include <utility>

namespace tessly {

LoopPasteboard::LoopPasteboard(std::chrono::milliseconds takeover)
    : m_state(takeover)
{
    m_state.changed = m_changed.request();
}

LoopPasteboard::~LoopPasteboard() = default;

void LoopPasteboard::start(LoopClipboard& clipboard, Post post)
{
    m_clipboard = &clipboard;
    m_loop.post = std::move(post);
}

void LoopPasteboard::lost()
{
    m_state.isWritable = false;
    m_clipboard->connectionLost();
    m_connectionLost.request()();
}

template <typename Value, typename Ask>
QCoro::Task<Value> LoopPasteboard::ask(Value fallback, Ask ask)
{
    auto answer =
        askLoop(m_loop, std::move(fallback), [clipboard = m_clipboard, ask](const auto& done) {
            ask(*clipboard, done);
        });
    co_return co_await answer;
}

QCoro::Task<std::optional<QSet<QString>>> LoopPasteboard::types(qint64 changeCount)
{
    return ask(
        std::optional<QSet<QString>>(), [changeCount](LoopClipboard& clipboard, const auto& done) {
            clipboard.types(changeCount, done);
        });
}

QCoro::Task<ReadResult<QByteArray>>
LoopPasteboard::read(qint64 changeCount, Flavour flavour, qint64 byteLimit)
{
    return ask(
        ReadResult<QByteArray>{.status = ReadStatus::unreadable},
        [changeCount, flavour, byteLimit](LoopClipboard& clipboard, const auto& done) {
            clipboard.read(changeCount, flavour, byteLimit, done);
        });
}

QCoro::Task<ReadResult<QByteArrayList>>
LoopPasteboard::readFileURLs(qint64 changeCount, qint64 byteLimit)
{
    return ask(
        ReadResult<QByteArrayList>{.status = ReadStatus::unreadable},
        [changeCount, byteLimit](LoopClipboard& clipboard, const auto& done) {
            clipboard.readFileURLs(changeCount, byteLimit, done);
        });
}

QCoro::Task<> LoopPasteboard::catchUp()
{
    co_await ask(false, [](LoopClipboard& clipboard, const auto& done) {
        clipboard.catchUp([done] { done(true); });
    });
}

WriteTicket LoopPasteboard::write(std::vector<PasteboardItem> items)
{
    std::erase_if(items, [](const PasteboardItem& item) { return item.isEmpty(); });
    if (items.empty() || !m_state.isWritable) {
        return {};
    }
    const WriteTicket ticket(++m_lastTicket);
    m_isText =
        std::ranges::any_of(items, [](const auto& item) { return item.plainText.has_value(); }) &&
        std::ranges::none_of(items, [](const auto& item) { return item.png || item.fileURL; });
    m_loop.post([clipboard = m_clipboard, items = std::move(items), ticket] {
        clipboard->write(items, ticket);
    });
    return ticket;
}

void LoopPasteboard::clear()
{
    m_loop.post([clipboard = m_clipboard] { clipboard->clear(); });
}

void LoopPasteboard::keepWhenOwnerLeaves(
    qint64 changeCount, std::vector<PasteboardItem> items, HasSourceEnded hasSourceEnded)
{
    std::erase_if(items, [](const PasteboardItem& item) { return item.isEmpty(); });
    m_loop.post([clipboard = m_clipboard, changeCount, items = std::move(items),
                 hasSourceEnded = std::move(hasSourceEnded)] {
        clipboard->keepWhenOwnerLeaves(changeCount, items, hasSourceEnded);
    });
}

QCoro::Task<bool> LoopPasteboard::holds(WriteTicket ticket)
{
    return ask(false, [ticket](LoopClipboard& clipboard, const auto& done) {
        clipboard.holds(ticket, done);
    });
}

QCoro::Task<bool> LoopPasteboard::offerAsPrimary(WriteTicket ticket)
{
    return ask(false, [ticket](LoopClipboard& clipboard, const auto& done) {
        clipboard.offerAsPrimary(ticket, done);
    });
}

} // namespace tessly
