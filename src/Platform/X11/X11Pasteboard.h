#pragma once

#include "Pasteboard.h"
#include "X11ClipboardDeadlines.h"
#include "X11EventLoop.h"

#include <atomic>
#include <functional>
#include <memory>
#include <string>

class QObject;

namespace tessly {

class X11Clipboard;

/// The clipboard of an X server (the CLIPBOARD selection). All traffic with the server and with
/// other programs takes place on a thread and a connection of its own, so that nobody holds the
/// main thread, and serving what was written does not depend on it either.
class X11Pasteboard final : public Pasteboard
{
public:
    struct Options
    {
        /// As $DISPLAY names it; empty: $DISPLAY itself.
        std::string display;
        X11ClipboardDeadlines deadlines;
    };

    /// Connects. Throws X11Error if the server cannot be reached, or lacks XFIXES.
    X11Pasteboard();
    explicit X11Pasteboard(const Options& options);
    /// What it owns is gone with it. Everything that is still awaited ends as unreadable.
    ~X11Pasteboard() override;

    /// Called once, on the main thread, when the server has gone away: what is read from then on is
    /// unreadable, what is written is refused.
    void setConnectionLost(std::function<void()> callback);

    [[nodiscard]] qint64 changeCount() const override { return m_changeCount; }
    [[nodiscard]] PasteboardAccess access() const override { return PasteboardAccess::available; }
    [[nodiscard]] QCoro::Task<std::optional<QSet<QString>>> types(qint64 changeCount) override;
    [[nodiscard]] QCoro::Task<ReadResult<QByteArray>>
    read(qint64 changeCount, Flavour flavour, qint64 byteLimit) override;
    [[nodiscard]] QCoro::Task<ReadResult<QByteArrayList>>
    readFileURLs(qint64 changeCount, qint64 byteLimit) override;
    [[nodiscard]] bool write(std::vector<PasteboardItem> items) override;
    void clear() override;
    void keepWhenOwnerLeaves(qint64 changeCount, std::vector<PasteboardItem> items) override;

    /// True once what was written last has been put on the clipboard, so that programs that read it
    /// from then on find that or something newer; false if the server did not take it.
    [[nodiscard]] QCoro::Task<bool> hasWritten();

    /// Offers what the last write put on the clipboard as PRIMARY, too, until another program takes
    /// that. True once it is so; false if the program does not own the clipboard (any more).
    [[nodiscard]] QCoro::Task<bool> offerAsPrimary();

private:
    void lost();

    std::atomic<qint64> m_changeCount = 1;
    std::atomic<bool> m_isLost = false;
    std::function<void()> m_connectionLost;
    /// Lives on the main thread; what is posted to it is dropped when it goes.
    std::unique_ptr<QObject> m_mainThread;
    X11EventLoop m_loop;
    std::unique_ptr<X11Clipboard> m_clipboard;
};

} // namespace tessly
