#pragma once

#include "SQLiteConnection.h"

#include <QByteArray>
#include <QByteArrayList>

#include <memory>
#include <optional>

struct sqlite3_stmt;

namespace tessly {

/// One compiled statement. Parameters count from 1, columns from 0, as SQLite counts them.
class SQLiteStatement
{
public:
    enum class Step { row, done, failed };

    /// Compiles the first statement of `sql`. Throws SQLiteError. The connection must outlive it.
    SQLiteStatement(const SQLiteConnection& connection, const QByteArray& sql);

    // False if SQLite refuses. Absent values bind NULL. The bytes are shared, not copied.
    [[nodiscard]] bool bindText(int parameter, const std::optional<QByteArray>& utf8);
    [[nodiscard]] bool bindData(int parameter, const std::optional<QByteArray>& bytes);
    [[nodiscard]] bool bindInteger(int parameter, qint64 value);
    [[nodiscard]] bool bindDouble(int parameter, double value);

    [[nodiscard]] Step step();
    /// Back to the beginning, for another run; what is bound stays bound.
    void reset();

    [[nodiscard]] int columnCount() const;

    // Columns of the row that `step` stands on.
    [[nodiscard]] bool isNull(int column) const;
    [[nodiscard]] qint64 integer(int column) const;
    [[nodiscard]] double real(int column) const;
    /// A copy of the text (UTF-8) or blob: never null, empty for NULL.
    [[nodiscard]] QByteArray bytes(int column) const;

private:
    struct Finalize
    {
        void operator()(sqlite3_stmt* statement) const;
    };
    // Goes last: SQLite points into these bytes.
    QByteArrayList m_bound;
    std::unique_ptr<sqlite3_stmt, Finalize> m_statement;
};

} // namespace tessly
