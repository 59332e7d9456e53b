#pragma once

#include "Clip.h"
#include "ClipSummary.h"
#include "SQLiteStatement.h"

namespace tessly {

/// The columns that `decodeClip` reads, in its order.
extern const char* const clipColumns;
/// Those of them that `decodeClip` with a payload at hand reads: all but the content.
extern const char* const bookkeepingColumns;

/// The columns that `decodeSummary` reads.
extern const char* const summaryColumns;

/// The clip in a row of `clipColumns`. Throws ClipStoreError `decode` if its identifier is none; a
/// file list that cannot be read is empty.
[[nodiscard]] Clip decodeClip(const SQLiteStatement& row);

/// The clip in a row of `bookkeepingColumns`.
[[nodiscard]] Clip decodeClip(const SQLiteStatement& row, const ClipPayload& payload);

/// The entry in a row of `summaryColumns`. Throws like `decodeClip`.
[[nodiscard]] ClipSummary decodeSummary(const SQLiteStatement& row, qint64 position);

/// An identifier as it is stored: upper case, without braces.
[[nodiscard]] QByteArray storedID(QUuid id);

/// Throws ClipStoreError `decode` for a text that is no identifier.
[[nodiscard]] QUuid decodeID(const QByteArray& text);

} // namespace tessly
