#pragma once

#include "SQLiteConnection.h"

namespace tessly {

/// The history is in the order of the last uses. So that what is used now comes first in it, also
/// after the clock was set back, dates every clip that is not dated before `now` (seconds since
/// 1970) to just before it, in their order; where these meet older ones, those move as well. To be
/// called in the transaction that then uses the date. Throws ClipStoreError.
void dateClipsBefore(double now, SQLiteConnection& connection);

} // namespace tessly
