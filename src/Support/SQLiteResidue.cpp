#include "SQLiteResidue.h"

#include "SQLiteError.h"
#include "SQLiteTransaction.h"

#include <QByteArray>
#include <QtEndian>

#include <sqlite3.h>

#include <algorithm>
#include <optional>
#include <utility>

namespace tessly {

namespace {

// What follows is SQLite's file format, which is documented and will not change
// (sqlite.org/fileformat2.html). Numbers are stored most significant byte first.

constexpr qint64 fileHeaderSize = 100;
constexpr qint64 smallestPageSize = 512;
constexpr qint64 smallestUsableSize = 480;
constexpr qint64 pageSizeOffset = 16;
constexpr qint64 reservedBytesOffset = 20;
constexpr qint64 largestRootPageOffset = 52; // 0: not in auto-vacuum mode
constexpr qint64 pendingByte = 0x40000000;   // The page that has it is used for locks alone.

// Pointer-map entries: what each page is used for, and by whom.
constexpr qint64 mapEntrySize = 5;
constexpr char mapRootPage = 1;
constexpr char mapTreePage = 5;

// B-tree pages: a header, pointers to the cells, free space, and the cells at the end.
constexpr char interiorIndexPage = 2;
constexpr char interiorTablePage = 5;
constexpr char leafIndexPage = 10;
constexpr char leafTablePage = 13;
constexpr qint64 cellCountOffset = 3;
constexpr qint64 cellsOffset = 5;

quint16 number16(const QByteArray& bytes, qint64 offset)
{
    return qFromBigEndian<quint16>(bytes.constData() + offset);
}

sqlite3_file* file(const SQLiteConnection& connection, int which)
{
    sqlite3_file* result = nullptr;
    sqlite3_file_control(connection.handle(), "main", which, static_cast<void*>(&result));
    return result != nullptr && result->pMethods != nullptr ? result : nullptr;
}

void require(int result)
{
    if (result != SQLITE_OK) {
        throw SQLiteError(QString::fromUtf8(sqlite3_errstr(result)), result);
    }
}

qint64 size(sqlite3_file& file)
{
    sqlite3_int64 bytes = 0;
    require(file.pMethods->xFileSize(&file, &bytes));
    return bytes;
}

/// The database file, through SQLite's own handle: opening it a second time and closing it would
/// drop the locks that SQLite holds.
class PageFile
{
public:
    explicit PageFile(sqlite3_file& file)
        : m_file(file)
        , m_header(read(0, fileHeaderSize))
    {
        const qint64 stored = number16(m_header, pageSizeOffset);
        m_pageSize = stored == 1 ? 65536 : stored;
        m_usableSize = m_pageSize - static_cast<quint8>(m_header.at(reservedBytesOffset));
        // Someone else may have written or cut the file, and what is in memory may be no more.
        if (m_pageSize < smallestPageSize || (m_pageSize & (m_pageSize - 1)) != 0 ||
            m_usableSize < smallestUsableSize) {
            require(SQLITE_CORRUPT);
        }
        m_pageCount = size(m_file) / m_pageSize;
    }

    [[nodiscard]] bool isAutoVacuumed() const
    {
        return qFromBigEndian<quint32>(m_header.constData() + largestRootPageOffset) != 0;
    }

    /// Calls back with the number of each b-tree page, from what the pointer-map pages say: the
    /// contents of large rows, most of the file, need not be looked at.
    template <typename Callback>
    void forEachTreePage(Callback callback)
    {
        callback(1);
        const qint64 pagesPerMap = m_usableSize / mapEntrySize;
        const qint64 pendingPage = pendingByte / m_pageSize + 1;
        for (qint64 first = 2; first <= m_pageCount; first += pagesPerMap + 1) {
            const qint64 map = first == pendingPage ? first + 1 : first;
            const qint64 end = std::min(first + pagesPerMap, m_pageCount);
            if (map >= end) {
                break;
            }
            const QByteArray entries = readPage(map);
            for (qint64 page = map + 1; page <= end; ++page) {
                const char use = entries.at((page - map - 1) * mapEntrySize);
                if (use == mapRootPage || use == mapTreePage) {
                    callback(page);
                }
            }
        }
    }

    /// Zeroes the unallocated space of a b-tree page; false if it was zero already.
    bool eraseUnallocated(qint64 page)
    {
        const QByteArray bytes = readPage(page);
        const qint64 header = page == 1 ? fileHeaderSize : 0;
        const auto headerSize = [](char type) -> std::optional<qint64> {
            switch (type) {
            case interiorIndexPage:
            case interiorTablePage:
                return 12;
            case leafIndexPage:
            case leafTablePage:
                return 8;
            default:
                return std::nullopt;
            }
        }(bytes.at(header));
        if (!headerSize) {
            return false;
        }
        const qint64 cells = number16(bytes, header + cellsOffset);
        const qint64 start =
            header + *headerSize + qint64{2} * number16(bytes, header + cellCountOffset);
        const qint64 end = cells == 0 ? 65536 : cells;
        if (start >= end || end > m_usableSize) {
            return false;
        }
        const QByteArrayView space = QByteArrayView(bytes).sliced(start, end - start);
        if (std::ranges::all_of(space, [](char byte) { return byte == 0; })) {
            return false;
        }
        const QByteArray zeros(space.size(), '\0');
        require(m_file.pMethods->xWrite(
            &m_file, zeros.constData(), static_cast<int>(zeros.size()),
            (page - 1) * m_pageSize + start));
        return true;
    }

    void sync() { require(m_file.pMethods->xSync(&m_file, SQLITE_SYNC_NORMAL)); }

private:
    [[nodiscard]] QByteArray read(qint64 offset, qint64 length)
    {
        QByteArray bytes(length, Qt::Uninitialized);
        require(m_file.pMethods->xRead(&m_file, bytes.data(), static_cast<int>(length), offset));
        return bytes;
    }
    [[nodiscard]] QByteArray readPage(qint64 page)
    {
        return read((page - 1) * m_pageSize, m_pageSize);
    }

    sqlite3_file& m_file;
    QByteArray m_header;
    qint64 m_pageSize = 0;
    qint64 m_usableSize = 0;
    qint64 m_pageCount = 0;
};

} // namespace

bool eraseResidue(SQLiteConnection& connection)
{
    // With the write lock held and the log empty, nobody else changes the file's pages. The bytes
    // that change belong to no row, so that readers do not see the difference.
    SQLiteTransaction transaction(connection, SQLiteTransaction::Mode::immediate);
    sqlite3_file* const log = file(connection, SQLITE_FCNTL_JOURNAL_POINTER);
    sqlite3_file* const database = file(connection, SQLITE_FCNTL_FILE_POINTER);
    if (database == nullptr || (log != nullptr && size(*log) > 0)) {
        return false;
    }
    PageFile pages(*database);
    if (pages.isAutoVacuumed()) {
        bool isChanged = false;
        pages.forEachTreePage([&](qint64 page) { isChanged |= pages.eraseUnallocated(page); });
        if (isChanged) {
            pages.sync();
        }
    }
    transaction.commit();
    // Pages in memory have the old bytes still, and would bring them back with their next change.
    sqlite3_db_release_memory(connection.handle());
    return true;
}

} // namespace tessly
