#pragma once

#include <QByteArray>
#include <QString>

#include <exception>
#include <system_error>

namespace tessly {

/// The file system refused something. Its description can be shown to the user.
class FileError final : public std::exception
{
public:
    /// `action` says what was tried: "create the folder".
    FileError(const QString& action, QString path, std::errc code);
    /// Where not the file system but the program refuses: `reason` follows "it", "is a symbolic
    /// link". The code is `operation_not_permitted`.
    FileError(const QString& action, QString path, const QString& reason);

    [[nodiscard]] const QString& path() const { return m_path; }
    [[nodiscard]] std::errc code() const { return m_code; }
    /// "Could not create the folder “/a/b”: Permission denied".
    [[nodiscard]] const QString& description() const { return m_description; }
    /// The description in UTF-8.
    [[nodiscard]] const char* what() const noexcept override { return m_what.constData(); }

private:
    QString m_path;
    std::errc m_code;
    QString m_description;
    QByteArray m_what;
};

} // namespace tessly
