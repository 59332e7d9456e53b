#include "ClipDates.h"

#include "ClipStatement.h"
#include "ClipStoreError.h"
#include "SQLiteError.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

namespace tessly {

namespace {

const char* const failure = "Could not update clipboard history";

// Less would soon be lost in the 53 bits of a date.
constexpr double oneMicrosecond = 1e-6;

struct Date
{
    qint64 row;
    double lastUsedAt;
};

bool isAnyLater(double now, const SQLiteConnection& connection)
{
    ClipStatement later(connection, R"sql(SELECT 1 FROM clips INDEXED BY clips_recency_index
WHERE is_pinned IN (0, 1) AND last_used_at >= ? LIMIT 1;)sql");
    return later.real(1, now).next(failure);
}

/// The clips to date anew, and how.
std::vector<Date> newDates(double now, const SQLiteConnection& connection)
{
    ClipStatement clips(
        connection, "SELECT rowid, last_used_at FROM clips ORDER BY last_used_at DESC, rowid;");
    std::vector<Date> dates;
    double next = now;
    while (clips.next(failure) && clips.row().real(1) >= next) {
        next = std::min(
            next - oneMicrosecond, std::nextafter(next, -std::numeric_limits<double>::infinity()));
        dates.push_back({clips.row().integer(0), next});
    }
    return dates;
}

void execute(SQLiteConnection& connection, const char* sql)
{
    try {
        connection.execute(sql);
    } catch (const SQLiteError& error) {
        throw ClipStoreError(ClipStoreError::Case::execute, error.message(), error.code());
    }
}

} // namespace

void dateClipsBefore(double now, SQLiteConnection& connection)
{
    if (!isAnyLater(now, connection)) {
        return;
    }
    const std::vector<Date> dates = newDates(now, connection);
    // The index does not know the dates; its trigger would index every text again.
    ClipStatement triggers(
        connection,
        "SELECT sql FROM sqlite_master WHERE type = 'trigger' AND name = 'clips_after_update';");
    QByteArray trigger;
    if (triggers.next(failure)) {
        trigger = triggers.row().bytes(0);
    }
    triggers.reset();
    execute(connection, "DROP TRIGGER IF EXISTS clips_after_update;");
    ClipStatement update(
        connection, "UPDATE clips SET last_used_at = ?1, created_at = min(created_at, ?1) "
                    "WHERE rowid = ?2;");
    for (const Date& date : dates) {
        update.reset();
        update.real(1, date.lastUsedAt).integer(2, date.row).run(failure);
    }
    execute(connection, trigger.constData());
}

} // namespace tessly
