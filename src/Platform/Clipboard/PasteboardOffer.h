#pragma once

#include "Pasteboard.h"

#include <QByteArrayView>

#include <optional>
#include <vector>

namespace tessly {

/// What one write offers to other programs: the names of its flavours, and the bytes under each.
/// The bytes of the items are shared, never copied. Used on one thread at a time.
class PasteboardOffer
{
public:
    /// Goes through the text once, to tell whether it fits STRING. Of several items with the same
    /// flavour the first counts; files are put together into one list, and where there is no text,
    /// their paths are it. `ticket` is that of the write, if it is one.
    explicit PasteboardOffer(const std::vector<PasteboardItem>& items, WriteTicket ticket = {});

    [[nodiscard]] WriteTicket ticket() const { return m_ticket; }

    /// Every name once, the most telling ones first.
    [[nodiscard]] const QByteArrayList& names() const { return m_names; }

    /// What a reader gets that asks by this name; none if it is not offered.
    [[nodiscard]] std::optional<QByteArray> bytes(QByteArrayView name);

    // What the program gets that reads its own write.
    [[nodiscard]] ReadResult<QByteArray> read(Flavour flavour, qint64 byteLimit);
    [[nodiscard]] ReadResult<QByteArrayList> readFileURLs(qint64 byteLimit);

private:
    void addText(const QByteArray& text);
    void add(QByteArrayView name, const QByteArray& bytes);

    const WriteTicket m_ticket;
    QByteArrayList m_names;
    /// One for each name.
    QByteArrayList m_bytes;
    /// Whether the bytes of STRING are Latin-1 by now; they are UTF-8 until asked for.
    bool m_hasLatin1 = false;
};

} // namespace tessly
