#pragma once

#include "ClipPreview.h"
#include "ClipStatement.h"
#include "ListedPayload.h"

#include <QByteArray>

#include <optional>

namespace tessly {

/// Reads the contents of clips from the history database: whole, or no more of them than a list
/// needs. Clips are named by their rows, which must be there: use it within the transaction that
/// has found them. Throws ClipStoreError.
class ClipContents
{
public:
    /// The connection must outlive it.
    explicit ClipContents(const SQLiteConnection& connection);

    /// The content if it has no more than that many bytes, with all that a list shows made already,
    /// so that the thread that shows it need not; else its outline.
    [[nodiscard]] ListedPayload listed(qint64 row, qint64 largestHeld);

    /// In memory once, however large it is.
    [[nodiscard]] ClipPayload payload(qint64 row) const;

    /// As ClipPreview::of, with a long list of files cut. What is not in it is not read.
    [[nodiscard]] ClipPreview preview(qint64 row) const;

private:
    /// Of one flavour.
    struct Beginning
    {
        QByteArray bytes;
        /// Of the whole.
        qint64 size = 0;

        [[nodiscard]] bool isCut() const { return bytes.size() < size; }
    };

    [[nodiscard]] qint64 size(qint64 row);
    [[nodiscard]] ListedPayload outline(qint64 row) const;
    [[nodiscard]] std::optional<QByteArray> all(const char* column, qint64 row) const;
    /// None where the flavour is absent.
    [[nodiscard]] std::optional<Beginning>
    beginning(const char* column, qint64 row, qint64 bytesAtMost) const;

    const SQLiteConnection& m_connection;
    ClipStatement m_size;
    ClipStatement m_content;
};

} // namespace tessly
