#pragma once

#include "ClipStatement.h"
#include "ListedPayload.h"

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

private:
    [[nodiscard]] qint64 size(qint64 row);
    [[nodiscard]] ListedPayload outline(qint64 row) const;
    [[nodiscard]] std::optional<QByteArray> all(const char* column, qint64 row) const;

    const SQLiteConnection& m_connection;
    ClipStatement m_size;
    ClipStatement m_content;
};

} // namespace tessly
