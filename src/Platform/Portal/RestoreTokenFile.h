#pragma once

#include "Actor.h"

#include <QFuture>
#include <QString>

#include <memory>

namespace tessly {

/// Where what the portal or its user has answered is kept from one start of the program to the
/// next, such as the token for pressing keys: a file that only its owner can read, from its first
/// byte, and that holds one token or another whole.
///
/// Files are read and written by the executor; failures are logged, without the token. Main thread
/// only.
class RestoreTokenFile
{
public:
    RestoreTokenFile(QString path, std::unique_ptr<Executor> executor);
    /// Returns when what was given to be written has been.
    ~RestoreTokenFile();
    RestoreTokenFile(const RestoreTokenFile&) = delete;
    RestoreTokenFile& operator=(const RestoreTokenFile&) = delete;

    /// The token; empty if there is none that can be read.
    [[nodiscard]] QFuture<QString> read();
    /// Replaces the token; by none, if it is empty.
    void write(const QString& token);

private:
    QString m_path;
    std::unique_ptr<Executor> m_executor;
};

} // namespace tessly
