#include "PowerLossVFS.h"

#include <QFile>

#include <algorithm>
#include <stdexcept>

namespace tessly::test {

namespace {

// What a disk writes as one.
constexpr qsizetype sectorSize = 512;

} // namespace

void PowerLossVFS::failAt(int number)
{
    m_files.clear();
    m_number = number;
    m_hasFailed = false;
}

bool PowerLossVFS::isDue()
{
    if (m_number == 0 || --m_number > 0) {
        return false;
    }
    m_hasFailed = true;
    return true;
}

void PowerLossVFS::apply(const Change& change, QByteArray& content)
{
    if (change.bytes.isNull()) {
        content.resize(change.offset, '\0');
        return;
    }
    const qsizetype end = change.offset + change.bytes.size();
    if (content.size() < end) {
        content.resize(end, '\0');
    }
    content.replace(change.offset, change.bytes.size(), change.bytes);
}

PowerLossVFS::Answer PowerLossVFS::open(const char* /*file*/, int& /*flags*/)
{
    return m_hasFailed ? Answer(SQLITE_CANTOPEN) : Answer();
}

void PowerLossVFS::opened(const char* file)
{
    if (file == nullptr || (m_files.contains(file) && !m_files[file].isRemoved)) {
        return;
    }
    QFile real(QFile::decodeName(file));
    if (!real.open(QFile::ReadOnly)) {
        // Nothing may be thrown through SQLite.
        qFatal("A file that was just opened cannot be read");
    }
    m_files[file] = Disk{.content = real.readAll(), .changes = {}};
}

PowerLossVFS::Answer PowerLossVFS::remove(const char* file, bool syncsFolder)
{
    if (m_hasFailed) {
        return SQLITE_IOERR_DELETE;
    }
    if (syncsFolder) {
        m_files.erase(file);
    } else {
        m_files[file].isRemoved = true;
    }
    return {};
}

PowerLossVFS::Answer PowerLossVFS::read(const char* /*file*/, int /*size*/)
{
    return m_hasFailed ? Answer(SQLITE_IOERR_READ) : Answer();
}

PowerLossVFS::Answer
PowerLossVFS::write(const char* file, const void* bytes, int size, sqlite3_int64 offset)
{
    if (m_hasFailed) {
        return SQLITE_IOERR_WRITE;
    }
    if (file != nullptr) {
        m_files[file].changes.push_back(
            {.offset = offset, .bytes = QByteArray(static_cast<const char*>(bytes), size)});
    }
    return isDue() ? Answer(SQLITE_IOERR_WRITE) : Answer();
}

PowerLossVFS::Answer PowerLossVFS::truncate(const char* file, sqlite3_int64 size)
{
    if (m_hasFailed) {
        return SQLITE_IOERR_TRUNCATE;
    }
    if (file != nullptr) {
        m_files[file].changes.push_back({.offset = size, .bytes = QByteArray()});
    }
    return isDue() ? Answer(SQLITE_IOERR_TRUNCATE) : Answer();
}

PowerLossVFS::Answer PowerLossVFS::sync(const char* file)
{
    if (m_hasFailed || isDue()) {
        return SQLITE_IOERR_FSYNC;
    }
    if (file != nullptr) {
        Disk& disk = m_files[file];
        for (const Change& change : disk.changes) {
            apply(change, disk.content);
        }
        disk.changes.clear();
    }
    return {};
}

void PowerLossVFS::comeBack(QRandomGenerator& random)
{
    // All of it lost, all of it there, and everything between.
    const int luck = random.bounded(5);
    for (auto& [name, disk] : m_files) {
        for (const Change& change : disk.changes) {
            const int fate = luck == 0 ? 0 : luck == 1 ? 2 : random.bounded(3);
            if (fate == 0) {
                continue;
            }
            if (fate == 2 || change.bytes.isNull()) {
                apply(change, disk.content);
                continue;
            }
            // Some of its sectors.
            for (qsizetype at = 0; at < change.bytes.size();) {
                const qsizetype length = std::min(
                    sectorSize - (change.offset + at) % sectorSize, change.bytes.size() - at);
                if (random.bounded(2) == 0) {
                    apply(
                        {.offset = change.offset + at, .bytes = change.bytes.mid(at, length)},
                        disk.content);
                }
                at += length;
            }
        }
        if (disk.isRemoved && random.bounded(2) == 0) {
            QFile::remove(QFile::decodeName(name));
            continue;
        }
        QFile real(QFile::decodeName(name));
        if (!real.open(QFile::WriteOnly) || real.write(disk.content) != disk.content.size()) {
            throw std::runtime_error("a file cannot be written");
        }
        // It is memory; no disk had it.
        QFile::remove(QFile::decodeName(name) + QStringLiteral("-shm"));
    }
    m_files.clear();
    m_number = 0;
    m_hasFailed = false;
}

} // namespace tessly::test
