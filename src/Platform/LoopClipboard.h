#pragma once

#include "Pasteboard.h"

#include <QByteArray>
#include <QByteArrayList>
#include <QSet>
#include <QString>

#include <atomic>
#include <functional>
#include <optional>
#include <vector>

namespace tessly {

/// The half of a desktop's clipboard that lives on the thread of its connection. The operations are
/// those of Pasteboard, answered by callback, once each.
class LoopClipboard
{
public:
    using TypesDone = std::function<void(std::optional<QSet<QString>>)>;
    using ReadDone = std::function<void(ReadResult<QByteArray>)>;
    using FileURLsDone = std::function<void(ReadResult<QByteArrayList>)>;
    using OwnDone = std::function<void(bool isOwner)>;

    /// What the main thread reads.
    struct State
    {
        std::atomic<qint64> changeCount = 1;
        /// Whether writes have somewhere to go.
        std::atomic<bool> isWritable = false;
    };

    LoopClipboard() = default;
    LoopClipboard(const LoopClipboard&) = delete;
    LoopClipboard& operator=(const LoopClipboard&) = delete;
    virtual ~LoopClipboard() = default;

    /// The desktop went away: everything is unreadable, now and later.
    virtual void connectionLost() = 0;

    virtual void types(qint64 changeCount, TypesDone done) = 0;
    virtual void read(qint64 changeCount, Flavour flavour, qint64 byteLimit, ReadDone done) = 0;
    virtual void readFileURLs(qint64 changeCount, qint64 byteLimit, FileURLsDone done) = 0;
    virtual void write(const std::vector<PasteboardItem>& items) = 0;
    /// Answers once the writes before are through: whether the last is or becomes the clipboard's
    /// content. Drops the question if the desktop goes away first.
    virtual void awaitWrites(OwnDone done) = 0;
    /// Offers as PRIMARY, too, what was written last, if that is still its own. Answers once that
    /// is so, or cannot be; drops the question if the desktop goes away first.
    virtual void offerAsPrimary(OwnDone done) = 0;
    virtual void clear() = 0;
    virtual void keepWhenOwnerLeaves(qint64 changeCount, std::vector<PasteboardItem> items) = 0;
};

} // namespace tessly
