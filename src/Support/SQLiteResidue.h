#pragma once

#include "SQLiteConnection.h"

namespace tessly {

/// Overwrites what `secure_delete` leaves behind. SQLite zeroes a deleted row where it stands; but
/// when it moves rows from one page to another, their old bytes stay in the unallocated space of
/// the page they left, where a later deletion does not look.
///
/// The file must be in auto-vacuum mode (else nothing is done) and its write-ahead log be empty;
/// false if it is not, because someone else is writing. Throws SQLiteError.
bool eraseResidue(SQLiteConnection& connection);

} // namespace tessly
