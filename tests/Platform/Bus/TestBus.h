#pragma once

#include <QDBusConnection>
#include <QProcess>
#include <QString>
#include <QTemporaryDir>

namespace tessly::test {

/// A message bus of a test's own. Throws std::runtime_error if it does not start.
class TestBus
{
public:
    TestBus();
    ~TestBus();
    TestBus(const TestBus&) = delete;
    TestBus& operator=(const TestBus&) = delete;

    /// As D-Bus names it.
    [[nodiscard]] const QString& address() const { return m_address; }
    /// A new connection with a unique name of its own. Any thread; waits for the bus.
    [[nodiscard]] QDBusConnection connect() const { return connect(m_address); }
    [[nodiscard]] static QDBusConnection connect(const QString& address);

    /// Has the bus start a program for whoever asks for a name. `command` begins with the path of
    /// an executable.
    void addService(const QString& name, const QString& command);

    /// Leaves everybody who asks without an answer, until resumed.
    void suspend();
    void resume();
    /// Ends the bus, as a crash would.
    void kill();

private:
    QTemporaryDir m_folder;
    QProcess m_daemon;
    QString m_address;
};

} // namespace tessly::test
