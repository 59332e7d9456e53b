#pragma once

#include "Clip.h"
#include "SQLiteConnection.h"

namespace tessly {

/// Puts a clip into the history as it is, with its times, its pin and how often it was copied.
/// `payload` is its whole content. Throws ClipStoreError, also if there is one of its identifier or
/// of its content already.
void insert(const Clip& clip, const ClipPayload& payload, SQLiteConnection& history);

/// The same, but false, and nothing is changed, if there is such a one. What the search index
/// refuses is passed over, too.
[[nodiscard]] bool
insertIfNew(const Clip& clip, const ClipPayload& payload, SQLiteConnection& history);

} // namespace tessly
