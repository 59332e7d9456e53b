#include "X11Pasteboard.h"

#include "LoopAnswer.h"
#include "X11Clipboard.h"

#include <QCoroFuture>
#include <QObject>

#include <utility>

namespace tessly {

X11Pasteboard::X11Pasteboard()
    : X11Pasteboard(Options())
{
}

X11Pasteboard::X11Pasteboard(const Options& options)
    : m_mainThread(std::make_unique<QObject>())
    , m_loop(options.display)
    , m_clipboard(std::make_unique<X11Clipboard>(m_loop, options.deadlines, m_changeCount))
{
    m_loop.start(
        "clipboard", {.event = [this](const auto& event) { m_clipboard->handle(event); },
                      .lost = [this] { lost(); }});
}

X11Pasteboard::~X11Pasteboard()
{
    // What the clipboard has begun refers to the loop: first nothing runs any more, then it goes.
    m_loop.stop();
    m_clipboard.reset();
}

void X11Pasteboard::setConnectionLost(std::function<void()> callback)
{
    m_connectionLost = std::move(callback);
}

void X11Pasteboard::lost()
{
    m_isLost = true;
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

QCoro::Task<std::optional<QSet<QString>>> X11Pasteboard::types(qint64 changeCount)
{
    auto types = askLoop(
        m_loop, std::optional<QSet<QString>>(),
        [clipboard = m_clipboard.get(), changeCount](const auto& answer) {
            clipboard->types(changeCount, answer);
        });
    co_return co_await types;
}

QCoro::Task<ReadResult<QByteArray>>
X11Pasteboard::read(qint64 changeCount, Flavour flavour, qint64 byteLimit)
{
    auto result = askLoop(
        m_loop, ReadResult<QByteArray>{.status = ReadStatus::unreadable},
        [clipboard = m_clipboard.get(), changeCount, flavour, byteLimit](const auto& answer) {
            clipboard->read(changeCount, flavour, byteLimit, answer);
        });
    co_return co_await result;
}

QCoro::Task<ReadResult<QByteArrayList>>
X11Pasteboard::readFileURLs(qint64 changeCount, qint64 byteLimit)
{
    auto result = askLoop(
        m_loop, ReadResult<QByteArrayList>{.status = ReadStatus::unreadable},
        [clipboard = m_clipboard.get(), changeCount, byteLimit](const auto& answer) {
            clipboard->readFileURLs(changeCount, byteLimit, answer);
        });
    co_return co_await result;
}

bool X11Pasteboard::write(std::vector<PasteboardItem> items)
{
    std::erase_if(items, [](const PasteboardItem& item) { return item.isEmpty(); });
    if (items.empty() || m_isLost) {
        return false;
    }
    m_loop.post(
        [clipboard = m_clipboard.get(), items = std::move(items)] { clipboard->write(items); });
    return true;
}

void X11Pasteboard::clear()
{
    m_loop.post([clipboard = m_clipboard.get()] { clipboard->clear(); });
}

void X11Pasteboard::keepWhenOwnerLeaves(qint64 changeCount, std::vector<PasteboardItem> items)
{
    std::erase_if(items, [](const PasteboardItem& item) { return item.isEmpty(); });
    m_loop.post([clipboard = m_clipboard.get(), changeCount, items = std::move(items)] {
        clipboard->keepWhenOwnerLeaves(changeCount, items);
    });
}

QCoro::Task<bool> X11Pasteboard::hasWritten()
{
    auto hasWritten = askLoop(m_loop, false, [clipboard = m_clipboard.get()](const auto& answer) {
        clipboard->awaitWrites(answer);
    });
    co_return co_await hasWritten;
}

QCoro::Task<bool> X11Pasteboard::offerAsPrimary()
{
    auto isOwner = askLoop(m_loop, false, [clipboard = m_clipboard.get()](const auto& answer) {
        clipboard->offerAsPrimary(answer);
    });
    co_return co_await isOwner;
}

} // namespace tessly
