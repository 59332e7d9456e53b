#include "WaylandPasteboard.h"

#include "LoopAnswer.h"

#include <QCoroFuture>
#include <QObject>

#include <utility>

namespace tessly {

WaylandPasteboard::WaylandPasteboard()
    : WaylandPasteboard(Options())
{
}

WaylandPasteboard::WaylandPasteboard(const Options& options)
    : m_mainThread(std::make_unique<QObject>())
    , m_loop(options.display)
    , m_clipboard(std::make_unique<WaylandClipboard>(m_loop, options.deadlines, m_state))
{
    m_loop.start("clipboard", [this] { lost(); });
}

WaylandPasteboard::~WaylandPasteboard()
{
    // What the clipboard has begun refers to the loop: first nothing runs any more, then it goes.
    m_loop.stop();
    m_clipboard.reset();
}

void WaylandPasteboard::setConnectionLost(std::function<void()> callback)
{
    m_connectionLost = std::move(callback);
}

void WaylandPasteboard::lost()
{
    m_clipboard->connectionLost();
    QMetaObject::invokeMethod(
        m_mainThread.get(),
        [this] {
            if (const auto callback = m_connectionLost) {
                callback();
            }
        },
        Qt::QueuedConnection);
}

QCoro::Task<std::optional<QSet<QString>>> WaylandPasteboard::types(qint64 changeCount)
{
    auto types = askLoop(
        m_loop, std::optional<QSet<QString>>(),
        [clipboard = m_clipboard.get(), changeCount](const auto& answer) {
            clipboard->types(changeCount, answer);
        });
    co_return co_await types;
}

QCoro::Task<ReadResult<QByteArray>>
WaylandPasteboard::read(qint64 changeCount, Flavour flavour, qint64 byteLimit)
{
    auto result = askLoop(
        m_loop, ReadResult<QByteArray>{.status = ReadStatus::unreadable},
        [clipboard = m_clipboard.get(), changeCount, flavour, byteLimit](const auto& answer) {
            clipboard->read(changeCount, flavour, byteLimit, answer);
        });
    co_return co_await result;
}

QCoro::Task<ReadResult<QByteArrayList>>
WaylandPasteboard::readFileURLs(qint64 changeCount, qint64 byteLimit)
{
    auto result = askLoop(
        m_loop, ReadResult<QByteArrayList>{.status = ReadStatus::unreadable},
        [clipboard = m_clipboard.get(), changeCount, byteLimit](const auto& answer) {
            clipboard->readFileURLs(changeCount, byteLimit, answer);
        });
    co_return co_await result;
}

bool WaylandPasteboard::write(std::vector<PasteboardItem> items)
{
    std::erase_if(items, [](const PasteboardItem& item) { return item.isEmpty(); });
    if (items.empty() || !m_state.isWritable) {
        return false;
    }
    m_loop.post(
        [clipboard = m_clipboard.get(), items = std::move(items)] { clipboard->write(items); });
    return true;
}

void WaylandPasteboard::clear()
{
    m_loop.post([clipboard = m_clipboard.get()] { clipboard->clear(); });
}

void WaylandPasteboard::keepWhenOwnerLeaves(qint64 changeCount, std::vector<PasteboardItem> items)
{
    std::erase_if(items, [](const PasteboardItem& item) { return item.isEmpty(); });
    m_loop.post([clipboard = m_clipboard.get(), changeCount, items = std::move(items)] {
        clipboard->keepWhenOwnerLeaves(changeCount, items);
    });
}

QCoro::Task<bool> WaylandPasteboard::hasWritten()
{
    auto hasWritten = askLoop(m_loop, false, [clipboard = m_clipboard.get()](const auto& answer) {
        clipboard->awaitWrites(answer);
    });
    co_return co_await hasWritten;
}

QCoro::Task<bool> WaylandPasteboard::offerAsPrimary()
{
    auto isOffered = askLoop(m_loop, false, [clipboard = m_clipboard.get()](const auto& answer) {
        clipboard->offerAsPrimary(answer);
    });
    co_return co_await isOffered;
}

} // namespace tessly
