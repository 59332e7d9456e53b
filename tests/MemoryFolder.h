#pragma once

#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>

namespace tessly::test {

/// A temporary folder whose files cost no disk, where the machine has a place for such.
class MemoryFolder : public QTemporaryDir
{
public:
    MemoryFolder()
        : QTemporaryDir(
              (QFileInfo(QStringLiteral("/dev/shm")).isWritable() ? QStringLiteral("/dev/shm")
                                                                  : QDir::tempPath()) +
              QStringLiteral("/tessly-test-XXXXXX"))
    {
    }
};

} // namespace tessly::test
