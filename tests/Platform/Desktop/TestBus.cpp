#include "TestBus.h"

#include <QUuid>

#include <csignal>
#include <stdexcept>
#include <sys/prctl.h>

using namespace Qt::StringLiterals;

namespace tessly::test {

TestBus::TestBus()
{
    // A test that crashes leaves nothing behind.
    m_daemon.setChildProcessModifier([] { prctl(PR_SET_PDEATHSIG, SIGKILL); });
    m_daemon.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_daemon.start(
        u"dbus-daemon"_s, {u"--session"_s, u"--nofork"_s, u"--nopidfile"_s, u"--print-address=1"_s,
                           u"--address=unix:path="_s + m_folder.filePath(u"bus"_s)});
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

void TestBus::suspend()
{
    ::kill(static_cast<pid_t>(m_daemon.processId()), SIGSTOP);
}

void TestBus::resume()
{
    ::kill(static_cast<pid_t>(m_daemon.processId()), SIGCONT);
}

void TestBus::kill()
{
    if (m_daemon.state() != QProcess::NotRunning) {
        m_daemon.kill();
        m_daemon.waitForFinished(5000);
    }
}

} // namespace tessly::test
