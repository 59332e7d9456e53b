#pragma once

#include <QString>

#include <memory>

namespace tessly {

/// Held by the one instance that writes the history of a data folder. The kernel releases it with
/// the process, however that ends.
class InstanceLock
{
public:
    /// Takes the lock of `dataFolder`, which must exist. Null if another process holds it; throws
    /// FileError if the lock file cannot be made, or if what is in its place is not the user's own
    /// ordinary file.
    [[nodiscard]] static std::unique_ptr<InstanceLock> acquire(const QString& dataFolder);

    /// Whether a process holds the lock. Takes nothing, so that nobody who wants it loses it to the
    /// question; creates nothing.
    [[nodiscard]] static bool isHeld(const QString& dataFolder);

    ~InstanceLock();
    InstanceLock(const InstanceLock&) = delete;
    InstanceLock& operator=(const InstanceLock&) = delete;

private:
    explicit InstanceLock(int file);

    int m_file;
};

} // namespace tessly
