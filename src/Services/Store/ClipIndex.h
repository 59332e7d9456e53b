#pragma once

#include "ClipStoreError.h"
#include "SQLiteConnection.h"

#include <atomic>

namespace tessly {

/// The full-text index of the history. It holds nothing that is not in the table of the clips, from
/// which it can be made again at any time: what is wrong with it costs no clip. The connection must
/// outlive it.
class ClipIndex
{
public:
    explicit ClipIndex(SQLiteConnection& connection);

    /// Makes the index if there is none, fills it if it missed something, and makes it again if it
    /// cannot be used. Where SQLite cannot have one, takes its triggers away, so that clips can be
    /// saved without it. Throws `execute` for what has nothing to do with the index, as a lock or a
    /// full disk; it is left as it is then, and clips can be saved all the same.
    void attach();

    /// For a connection that only reads: uses the index that is there, if it can be used.
    void attachToRead();

    /// Whether searches can use it. Any thread.
    [[nodiscard]] bool isAvailable() const { return m_isAvailable; }

    /// Compares it with the clips, text by text. Throws `execute`, also when it was interrupted.
    void check();

    /// Merges it into one part, in which no word of a deleted clip is left. Throws `execute`.
    void optimize();

    /// Gives back what deleted clips have left empty in it, which `optimize` may not. Reads the
    /// clips that there still are. Throws `execute`.
    void giveBack();

    /// Whether what was thrown is the index's fault alone. Looks at every page of the clips, where
    /// the error does not tell.
    [[nodiscard]] bool isToBlame(const ClipStoreError& error);

    enum class Dropping {
        /// Compacts the file if the index cannot be dropped otherwise.
        compactsIfNeeded,
        /// Compacts the file, which mends all that is not of the clips, unless it is too large for
        /// that.
        compacts,
    };
    /// Drops what there is of it, makes it again and fills it; a line in the log gives the reason.
    /// Does without one where that fails. Not in a transaction. False if the triggers stand still
    /// in the way of saving.
    bool remake(const QString& reason, Dropping dropping);
    /// As `remake`, but throws SQLiteError with what stood in the way.
    void mend(const QString& reason, Dropping dropping);

    /// Does without it from now on, and leaves it as it is.
    void giveUp() { m_isAvailable = false; }

private:
    void make();
    void deleteSecurely();
    void drop();
    void dropByForce(Dropping dropping);
    void compact();
    [[nodiscard]] bool isInStep();
    [[nodiscard]] bool canBeHad();
    bool detach();

    SQLiteConnection& m_connection;
    std::atomic_bool m_isAvailable = false;
};

} // namespace tessly
