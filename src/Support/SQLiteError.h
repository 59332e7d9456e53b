#pragma once

#include <QByteArray>
#include <QString>

#include <exception>

namespace tessly {

/// SQLite refused a call. The message is SQLite's own.
class SQLiteError final : public std::exception
{
public:
    explicit SQLiteError(QString message);

    [[nodiscard]] const QString& message() const { return m_message; }
    [[nodiscard]] const char* what() const noexcept override { return m_what.constData(); }

private:
    QString m_message;
    QByteArray m_what;
};

} // namespace tessly
