#pragma once

#include "ClipStore.h"

namespace tessly::test {

/// Fills a store with a history as people have one, as of `now`; `storeNow` is what the store takes
/// for the time.
void saveSampleHistory(ClipStore& store, double& storeNow, double now);

/// Contents that try to break out of their row: huge, right to left, control characters, emoji.
void saveHostileContents(ClipStore& store, double& storeNow, double now);

} // namespace tessly::test
