#pragma once

#include "Clip.h"
#include "SQLiteConnection.h"

namespace tessly {

/// Puts a clip into the history as it is, with its times, its pin and how often it was copied;
/// false, and nothing is changed, if there is one of its identifier or of its content already.
/// `payload` is its whole content. Throws ClipStoreError.
[[nodiscard]] bool
insertIfNew(const Clip& clip, const ClipPayload& payload, SQLiteConnection& history);

} // namespace tessly
