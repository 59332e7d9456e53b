#pragma once

#include "SQLiteStatement.h"

namespace tessly {

/// A statement of the history database: what SQLite refuses is thrown as ClipStoreError.
class ClipStatement
{
public:
    /// Throws `execute`, with the statement's text and SQLite's message.
    ClipStatement(const SQLiteConnection& connection, const QByteArray& sql);

    // Each binds one parameter (counted from 1) and throws `bind` with its number. Absent values
    // bind NULL. A blob or text of more than 2 GB is fatal.
    ClipStatement& text(int parameter, const std::optional<QByteArray>& utf8);
    ClipStatement& text(int parameter, const std::optional<QString>& text);
    ClipStatement& data(int parameter, const std::optional<QByteArray>& bytes);
    ClipStatement& integer(int parameter, qint64 value);
    ClipStatement& real(int parameter, double value);

    /// Runs a statement that returns no rows. Throws `execute`: `failure`, then SQLite's message.
    void run(const char* failure);

    /// Steps to the next row; false behind the last. Throws like `run`.
    [[nodiscard]] bool next(const char* failure);

    /// Back before the first row; what is bound stays bound.
    void reset() { m_statement.reset(); }

    [[nodiscard]] const SQLiteStatement& row() const { return m_statement; }

private:
    [[noreturn]] void fail(const char* failure) const;

    const SQLiteConnection& m_connection;
    SQLiteStatement m_statement;
};

} // namespace tessly
