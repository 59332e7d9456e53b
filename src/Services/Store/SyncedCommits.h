#pragma once

#include "SQLiteConnection.h"

namespace tessly {

/// While it lives, what is committed is on the disk when the commit returns, and no power failure
/// takes it: for what somebody may rely on who throws away where it came from.
class SyncedCommits
{
public:
    /// Outside of a transaction. The connection must outlive it. Throws SQLiteError.
    explicit SyncedCommits(SQLiteConnection& connection);
    ~SyncedCommits();
    SyncedCommits(const SyncedCommits&) = delete;
    SyncedCommits& operator=(const SyncedCommits&) = delete;

private:
    SQLiteConnection& m_connection;
};

} // namespace tessly
