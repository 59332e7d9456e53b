#include "TestBus.h"

#include "FrozenProcess.h"

#include <QDBusMessage>
#include <QFile>
#include <QUuid>

#include <csignal>
#include <stdexcept>
#include <sys/prctl.h>

using namespace Qt::StringLiterals;

namespace tessly::test {

namespace {

/// A session's bus that starts the test's services only: those of the machine are not its business.
constexpr const char* configuration = R"(
<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>session</type>
  <listen>unix:path=%1</listen>
  <auth>EXTERNAL</auth>
  <servicedir>%2</servicedir>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
)";

} // namespace

TestBus::TestBus()
{
    QFile file(m_folder.filePath(u"bus.conf"_s));
    const QByteArray text = QByteArray(configuration)
                                .trimmed()
                                .replace("%1", QFile::encodeName(m_folder.filePath(u"bus"_s)))
                                .replace("%2", QFile::encodeName(m_folder.path()));
    if (!file.open(QIODevice::WriteOnly) || file.write(text) != text.size()) {
        throw std::runtime_error("the bus's configuration cannot be written");
    }
    file.close();
    // A test that crashes leaves nothing behind.
    m_daemon.setChildProcessModifier([] { prctl(PR_SET_PDEATHSIG, SIGKILL); });
    m_daemon.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_daemon.start(
        u"dbus-daemon"_s, {u"--config-file="_s + file.fileName(), u"--nofork"_s, u"--nopidfile"_s,
                           u"--print-address=1"_s});
    while (!m_daemon.canReadLine()) {
        if (!m_daemon.waitForReadyRead(20000)) {
            throw std::runtime_error("dbus-daemon did not start");
        }
    }
    m_address = QString::fromUtf8(m_daemon.readLine().trimmed());
}

TestBus::~TestBus()
{
    kill();
}

QDBusConnection TestBus::connect(const QString& address)
{
    return QDBusConnection::connectToBus(address, QUuid::createUuid().toString());
}

void TestBus::addService(const QString& name, const QString& command)
{
    QFile file(m_folder.filePath(name + u".service"_s));
    const QString text = u"[D-BUS Service]\nName=%1\nExec=%2\n"_s.arg(name, command);
    if (!file.open(QIODevice::WriteOnly) || file.write(text.toUtf8()) < 0) {
        throw std::runtime_error("the service cannot be described");
    }
    file.close();
    // The bus looks for new files by itself, but when, it does not say.
    QDBusConnection bus = connect();
    bus.call(QDBusMessage::createMethodCall(
        u"org.freedesktop.DBus"_s, u"/org/freedesktop/DBus"_s, u"org.freedesktop.DBus"_s,
        u"ReloadConfig"_s));
    QDBusConnection::disconnectFromBus(bus.name());
}

void TestBus::suspend()
{
    freeze(m_daemon);
}

void TestBus::resume()
{
    thaw(m_daemon);
}

void TestBus::kill()
{
    if (m_daemon.state() != QProcess::NotRunning) {
        m_daemon.kill();
        m_daemon.waitForFinished(5000);
    }
}

} // namespace tessly::test
