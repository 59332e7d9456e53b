#pragma once

#include "Clip.h"
#include "ClipSummary.h"
#include "SQLiteStatement.h"

namespace tessly {

/// The columns that `decodeClip` reads, in its order: all but the content.
extern const char* const bookkeepingColumns;

/// The columns that `decodePayload` reads, in its order.
extern const char* const contentColumns;

/// The columns that `decodeSummary` reads.
extern const char* const summaryColumns;

/// The clip of a content in a row of `bookkeepingColumns`. Throws ClipStoreError `decode` if its
/// identifier is none.
[[nodiscard]] Clip decodeClip(const SQLiteStatement& row, const ListedPayload& payload);

/// The content in a row of `contentColumns`.
[[nodiscard]] ClipPayload decodePayload(const SQLiteStatement& row);

/// A stored list of files; empty if it cannot be read.
[[nodiscard]] QByteArrayList decodeFileURLs(const QByteArray& json);

/// The entry in a row of `summaryColumns`. Throws like `decodeClip`.
[[nodiscard]] ClipSummary decodeSummary(const SQLiteStatement& row, qint64 position);

/// An identifier as it is stored: upper case, without braces.
[[nodiscard]] QByteArray storedID(QUuid id);

/// Throws ClipStoreError `decode` for a text that is no identifier.
[[nodiscard]] QUuid decodeID(const QByteArray& text);

} // namespace tessly
