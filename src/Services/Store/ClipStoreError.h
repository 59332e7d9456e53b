#pragma once

#include <QByteArray>
#include <QString>

#include <exception>

namespace tessly {

/// What a store operation throws. Its description is shown to the user as it stands.
class ClipStoreError final : public std::exception
{
public:
    enum class Case { openDatabase, corruptedDatabase, prepare, execute, bind, decode };

    /// `sqliteCode`: see below.
    ClipStoreError(Case errorCase, QString message, int sqliteCode = 0);

    [[nodiscard]] Case errorCase() const { return m_case; }
    [[nodiscard]] const QString& message() const { return m_message; }
    /// SQLite's extended result code, 0 where SQLite had no part in it.
    [[nodiscard]] int sqliteCode() const { return m_sqliteCode; }
    /// The case's fixed prefix, followed by the message.
    [[nodiscard]] const QString& description() const { return m_description; }
    /// The description in UTF-8.
    [[nodiscard]] const char* what() const noexcept override { return m_what.constData(); }

private:
    Case m_case;
    QString m_message;
    QString m_description;
    QByteArray m_what;
    int m_sqliteCode;
};

} // namespace tessly
