#include "XSession.h"

#include "TestSupport.h"

#include <QProcessEnvironment>

#include <csignal>
#include <stdexcept>
#include <sys/prctl.h>

using namespace Qt::StringLiterals;

namespace tessly::test {

namespace {

[[noreturn]] void fail(const QString& what)
{
    throw std::runtime_error(what.toStdString());
}

/// In the child, before it becomes the program: a test that crashes leaves nothing behind.
void endWithTest()
{
    prctl(PR_SET_PDEATHSIG, SIGKILL);
}

void end(QProcess* process)
{
    if (process != nullptr && process->state() != QProcess::NotRunning) {
        process->kill();
        process->waitForFinished(5000);
    }
}

} // namespace

XSession::XSession(WindowManager windowManager, const QString& screen)
{
    m_server = std::make_unique<QProcess>();
    m_server->setChildProcessModifier(endWithTest);
    m_server->setProcessChannelMode(QProcess::ForwardedErrorChannel);
    // The server picks a free display and writes its number, once it accepts connections.
    m_server->start(
        u"Xvfb"_s, {u"-displayfd"_s, u"1"_s, u"-screen"_s, u"0"_s, screen, u"-nolisten"_s, u"tcp"_s,
                    u"-noreset"_s});
    QByteArray number;
    while (!number.contains('\n')) {
        if (!m_server->waitForReadyRead(20000)) {
            fail(u"Xvfb did not start: "_s + m_server->errorString());
        }
        number += m_server->readAll();
    }
    m_display = u':' + QString::fromLatin1(number.trimmed());

    if (windowManager == WindowManager::openbox) {
        m_windowManager = startOpenbox();
    }
}

std::unique_ptr<QProcess> XSession::startOpenbox() const
{
    // It owns the root window well before it serves windows: those that are shown in between are
    // never managed. This command is the last thing it starts with.
    const QString mark = u"xprop -root -f _TEST_IS_MANAGED 32c -set _TEST_IS_MANAGED %1"_s;
    run(u"sh"_s, {u"-c"_s, mark.arg(0)});
    auto process = start(u"openbox"_s, {u"--startup"_s, mark.arg(1)});
    const bool isUp = waitUntil(
        [this] { return run(u"xprop"_s, {u"-root"_s, u"_TEST_IS_MANAGED"_s}).contains("= 1"); },
        std::chrono::seconds(20));
    if (!isUp) {
        fail(u"openbox did not start"_s);
    }
    return process;
}

XSession::~XSession()
{
    end(m_windowManager.get());
    end(m_server.get());
}

std::unique_ptr<QProcess> XSession::program(const QString& name, const QStringList& arguments) const
{
    auto environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"DISPLAY"_s, m_display);
    environment.insert(u"HOME"_s, m_home.path());
    environment.insert(u"LC_ALL"_s, u"C.UTF-8"_s);
    environment.remove(u"WAYLAND_DISPLAY"_s);
    // Neither their settings nor assistive technology are theirs to start: such services outlive
    // them, and whoever waits for the end of all that the test has started would wait for those.
    environment.insert(u"GSETTINGS_BACKEND"_s, u"memory"_s);
    environment.insert(u"NO_AT_BRIDGE"_s, u"1"_s);
    environment.remove(u"LD_PRELOAD"_s);
    auto process = std::make_unique<QProcess>();
    process->setProcessEnvironment(environment);
    process->setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process->setProgram(name);
    process->setArguments(arguments);
    process->setChildProcessModifier(endWithTest);
    return process;
}

std::unique_ptr<QProcess> XSession::start(const QString& name, const QStringList& arguments) const
{
    auto process = program(name, arguments);
    process->start();
    if (!process->waitForStarted(10000)) {
        fail(name + u": "_s + process->errorString());
    }
    return process;
}

QByteArray
XSession::run(const QString& name, const QStringList& arguments, const QByteArray& input) const
{
    const auto process = start(name, arguments);
    process->write(input);
    process->closeWriteChannel();
    if (!process->waitForFinished(20000) || process->exitStatus() != QProcess::NormalExit ||
        process->exitCode() != 0) {
        fail(name + u" failed: "_s + arguments.join(u' '));
    }
    return process->readAllStandardOutput();
}

void XSession::killServer()
{
    end(m_server.get());
}

} // namespace tessly::test
