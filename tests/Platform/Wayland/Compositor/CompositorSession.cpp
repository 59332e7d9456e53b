#include "CompositorSession.h"

#include "TestSupport.h"

#include <csignal>
#include <stdexcept>
#include <sys/prctl.h>

using namespace Qt::StringLiterals;

namespace tessly::test {

namespace {

/// In the child, before it becomes the program: a test that crashes leaves nothing behind.
void endWithTest()
{
    prctl(PR_SET_PDEATHSIG, SIGKILL);
}

} // namespace

CompositorSession::CompositorSession()
    : m_environment(QProcessEnvironment::systemEnvironment())
{
    for (const QString& name :
         {u"WAYLAND_DISPLAY"_s, u"DISPLAY"_s, u"SWAYSOCK"_s, u"LD_PRELOAD"_s}) {
        m_environment.remove(name);
    }
    m_environment.insert(u"XDG_RUNTIME_DIR"_s, m_runtime.path());
    m_environment.insert(u"HOME"_s, m_runtime.path());
    // Some programs leave files there.
    m_environment.insert(u"TMPDIR"_s, m_runtime.path());
}

CompositorSession::~CompositorSession()
{
    if (m_compositor) {
        m_compositor->terminate();
        if (!m_compositor->waitForFinished(5000)) {
            m_compositor->kill();
            m_compositor->waitForFinished(5000);
        }
    }
}

void CompositorSession::startCompositor(
    const QString& program, const QStringList& arguments, Variables variables,
    const std::function<void()>& prepare, const std::function<bool()>& isReady)
{
    for (const auto& [name, value] : variables) {
        m_environment.insert(name, value);
    }
    m_compositor = std::make_unique<QProcess>();
    m_compositor->setProcessEnvironment(m_environment);
    m_compositor->setProcessChannelMode(QProcess::MergedChannels);
    m_compositor->setChildProcessModifier([prepare] {
        prepare();
        endWithTest();
    });
    m_compositor->start(program, arguments);
    const bool isUp =
        m_compositor->waitForStarted(10000) &&
        waitUntil(
            [&] { return isReady() || m_compositor->state() == QProcess::NotRunning; },
            std::chrono::seconds(30));
    if (!isUp || m_compositor->state() == QProcess::NotRunning) {
        throw std::runtime_error(
            program.toStdString() + " did not start: " + m_compositor->errorString().toStdString() +
            '\n' + m_compositor->readAll().toStdString());
    }
}

std::unique_ptr<QProcess> CompositorSession::start(
    const QString& name, const QStringList& arguments, const QByteArray& input) const
{
    auto environment = m_environment;
    environment.insert(u"WAYLAND_DISPLAY"_s, m_socket);
    auto process = std::make_unique<QProcess>();
    process->setProcessEnvironment(environment);
    process->setChildProcessModifier(endWithTest);
    process->start(name, arguments);
    if (!process->waitForStarted(10000)) {
        throw std::runtime_error((name + u": "_s + process->errorString()).toStdString());
    }
    process->write(input);
    process->closeWriteChannel();
    return process;
}

std::optional<QByteArray>
CompositorSession::output(const QString& name, const QStringList& arguments) const
{
    const auto process = start(name, arguments);
    if (!waitUntil(
            [&] { return process->state() == QProcess::NotRunning; }, std::chrono::seconds(20))) {
        throw std::runtime_error((name + u" does not end"_s).toStdString());
    }
    if (process->exitStatus() != QProcess::NormalExit || process->exitCode() != 0) {
        return std::nullopt;
    }
    return process->readAllStandardOutput();
}

} // namespace tessly::test
