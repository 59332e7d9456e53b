#pragma once

#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <memory>
#include <optional>
#include <string>

namespace tessly::test {

/// A headless sway of the tests' own, in a runtime folder of its own, run as an ordinary user.
/// Fails by throwing std::runtime_error with what was missing.
class SwaySession
{
public:
    SwaySession();
    ~SwaySession();
    SwaySession(const SwaySession&) = delete;
    SwaySession& operator=(const SwaySession&) = delete;

    /// The one that all tests of this process share. Ends when the last test has.
    [[nodiscard]] static SwaySession& shared();

    /// The path of its socket.
    [[nodiscard]] std::string display() const { return m_socket.toStdString(); }

    /// Starts a program on it, gives it its input and returns it once it runs. It is killed when
    /// the returned object goes.
    [[nodiscard]] std::unique_ptr<QProcess>
    start(const QString& name, const QStringList& arguments, const QByteArray& input = {}) const;

    /// What a program prints; none if it fails.
    [[nodiscard]] std::optional<QByteArray>
    output(const QString& name, const QStringList& arguments) const;

private:
    QTemporaryDir m_runtime;
    QString m_socket;
    std::unique_ptr<QProcess> m_sway;
};

} // namespace tessly::test
