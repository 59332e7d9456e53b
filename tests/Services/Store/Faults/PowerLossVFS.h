#pragma once

#include "VFSLayer.h"

#include <QByteArray>
#include <QRandomGenerator>

#include <map>
#include <vector>

namespace tessly::test {

/// A disk that promises of each file what was synced, and nothing else: of what was written since,
/// each write may be there, or not, or in part, in any order, when the power fails.
class PowerLossVFS final : public VFSLayer
{
public:
    /// Fails at the `number`-th write, sync or truncation that follows (from 1), which may still
    /// have reached the disk; everything that is asked from then on fails. What the files hold now
    /// is on the disk; connections must be closed.
    void failAt(int number);
    [[nodiscard]] bool hasFailed() const { return m_hasFailed; }

    /// Puts the files as the disk may have them after the failure. Connections must be closed.
    void comeBack(QRandomGenerator& random);

protected:
    Answer open(const char* file, int& flags) override;
    void opened(const char* file) override;
    Answer remove(const char* file, bool syncsFolder) override;
    Answer read(const char* file, int size) override;
    Answer write(const char* file, const void* bytes, int size, sqlite3_int64 offset) override;
    Answer truncate(const char* file, sqlite3_int64 size) override;
    Answer sync(const char* file) override;

private:
    struct Change
    {
        qint64 offset;
        /// None: the file is cut there.
        QByteArray bytes;
    };
    struct Disk
    {
        QByteArray content;
        /// Since then, in order.
        std::vector<Change> changes;
        /// Without a sync of the folder, so that it may be there again.
        bool isRemoved = false;
    };

    static void apply(const Change& change, QByteArray& content);
    /// Counts a call; whether the power fails at it.
    bool isDue();

    std::map<QByteArray, Disk> m_files;
    int m_number = 0;
    bool m_hasFailed = false;
};

} // namespace tessly::test
