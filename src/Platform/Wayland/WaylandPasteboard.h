#pragma once

#include "Pasteboard.h"
#include "WaylandClipboard.h"
#include "WaylandClipboardDeadlines.h"
#include "WaylandEventLoop.h"

#include <functional>
#include <memory>
#include <string>

class QObject;

namespace tessly {

/// The clipboard of a Wayland compositor that has data control. All traffic with the compositor and
/// with other programs takes place on a thread and a connection of its own, so that nobody holds
/// the main thread, and serving what was written does not depend on it either.
///
/// Wayland does not tell an owner that ends half-way through its content from one that has handed
/// it over: what was written by then is read.
class WaylandPasteboard final : public Pasteboard
{
public:
    struct Options
    {
        /// As $WAYLAND_DISPLAY names it, or a path; empty: $WAYLAND_DISPLAY itself.
        std::string display;
        WaylandClipboardDeadlines deadlines;
    };

    /// Connects, and waits for the compositor's answer. Throws WaylandError if it cannot be
    /// reached, or lets no program read the clipboard.
    WaylandPasteboard();
    explicit WaylandPasteboard(const Options& options);
    /// What it owns is gone with it. Everything that is still awaited ends as unreadable.
    ~WaylandPasteboard() override;

    /// Called once, on the main thread, when the compositor has gone away: what is read from then
    /// on is unreadable, what is written is refused.
    void setConnectionLost(std::function<void()> callback);

    [[nodiscard]] qint64 changeCount() const override { return m_state.changeCount; }
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
    /// from then on find that or something newer; false if the compositor did not take it, or
    /// something newer has taken its place already.
    [[nodiscard]] QCoro::Task<bool> hasWritten();

    /// Offers what was written last as the PRIMARY selection too, for programs that paste only
    /// that, until another program takes it or `clear`. False if the clipboard is not this
    /// program's, or the compositor has no PRIMARY.
    [[nodiscard]] QCoro::Task<bool> offerAsPrimary();

private:
    void lost();

    WaylandClipboard::State m_state;
    std::function<void()> m_connectionLost;
    /// Lives on the main thread; what is posted to it is dropped when it goes.
    std::unique_ptr<QObject> m_mainThread;
    WaylandEventLoop m_loop;
    std::unique_ptr<WaylandClipboard> m_clipboard;
};

} // namespace tessly
