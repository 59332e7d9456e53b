#pragma once

#include <QByteArray>
#include <QString>

#include <exception>

namespace tessly {

/// SQLite refused a call. The message is SQLite's own, and so is the code (an extended result
/// code).
class SQLiteError final : public std::exception
{
public:
    SQLiteError(QString message, int code);

    [[nodiscard]] const QString& message() const { return m_message; }
    [[nodiscard]] int code() const { return m_code; }
    [[nodiscard]] const char* what() const noexcept override { return m_what.constData(); }

private:
    QString m_message;
    QByteArray m_what;
    int m_code;
};

/// Whether a result code tells of what stands around a file (a lock, missing rights, no room on the
/// disk or in memory, a disk that does not answer, an interruption), which says nothing of what is
/// in it.
[[nodiscard]] bool isHindrance(int code);

} // namespace tessly
