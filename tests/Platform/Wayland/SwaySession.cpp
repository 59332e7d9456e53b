#include "SwaySession.h"

#include "TestSupport.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QProcessEnvironment>

#include <csignal>
#include <grp.h>
#include <stdexcept>
#include <sys/prctl.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace tessly::test {

namespace {

// It stands in every passwd, and owns nothing.
constexpr uid_t ordinaryUser = 65534;

std::unique_ptr<SwaySession> sharedSession;

/// Ends the shared session after the last test.
class SwayEnvironment final : public testing::Environment
{
public:
    void TearDown() override { sharedSession.reset(); }
};

[[maybe_unused]] testing::Environment* const environment =
    testing::AddGlobalTestEnvironment(new SwayEnvironment);

/// In the child, before it becomes the program: a test that crashes leaves nothing behind.
void endWithTest()
{
    prctl(PR_SET_PDEATHSIG, SIGKILL);
}

/// The same; sway does not run as root.
void becomeOrdinaryUser()
{
    if (geteuid() == 0 &&
        (setgroups(0, nullptr) != 0 || setgid(ordinaryUser) != 0 || setuid(ordinaryUser) != 0)) {
        _exit(126);
    }
    endWithTest();
}

} // namespace

SwaySession::SwaySession()
{
    const QByteArray folder = QFile::encodeName(m_runtime.path());
    if (geteuid() == 0 && chown(folder.constData(), ordinaryUser, ordinaryUser) != 0) {
        throw std::runtime_error("sway gets no runtime folder");
    }
    const QString readyFile = m_runtime.filePath(u"ready"_s);
    QFile config(m_runtime.filePath(u"config"_s));
    if (!config.open(QIODevice::WriteOnly) ||
        config.write("xwayland disable\n"
                     "exec echo \"$WAYLAND_DISPLAY\" > \"$XDG_RUNTIME_DIR/ready.part\" && "
                     "mv \"$XDG_RUNTIME_DIR/ready.part\" \"$XDG_RUNTIME_DIR/ready\"\n") < 0 ||
        !config.setPermissions(
            QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup | QFile::ReadOther)) {
        throw std::runtime_error("sway gets no configuration");
    }
    config.close();

    auto environmentOfSway = QProcessEnvironment::systemEnvironment();
    for (const QString& name :
         {u"WAYLAND_DISPLAY"_s, u"DISPLAY"_s, u"SWAYSOCK"_s, u"LD_PRELOAD"_s}) {
        environmentOfSway.remove(name);
    }
    environmentOfSway.insert(u"WLR_BACKENDS"_s, u"headless"_s);
    environmentOfSway.insert(u"WLR_RENDERER"_s, u"pixman"_s);
    environmentOfSway.insert(u"WLR_LIBINPUT_NO_DEVICES"_s, u"1"_s);
    environmentOfSway.insert(u"XDG_RUNTIME_DIR"_s, m_runtime.path());
    environmentOfSway.insert(u"HOME"_s, m_runtime.path());
    environmentOfSway.insert(u"SWAYSOCK"_s, m_runtime.filePath(u"ipc"_s));

    m_sway = std::make_unique<QProcess>();
    m_sway->setProcessEnvironment(environmentOfSway);
    m_sway->setProcessChannelMode(QProcess::MergedChannels);
    m_sway->setChildProcessModifier(becomeOrdinaryUser);
    m_sway->start(u"sway"_s, {u"--config"_s, config.fileName()});
    const bool isUp =
        m_sway->waitForStarted(10000) &&
        waitUntil(
            [&] { return QFile::exists(readyFile) || m_sway->state() == QProcess::NotRunning; },
            std::chrono::seconds(30));
    QFile ready(readyFile);
    if (!isUp || !ready.open(QIODevice::ReadOnly)) {
        throw std::runtime_error(
            "sway did not start: " + m_sway->errorString().toStdString() + '\n' +
            m_sway->readAll().toStdString());
    }
    m_socket = m_runtime.filePath(QString::fromUtf8(ready.readAll().trimmed()));
}

SwaySession::~SwaySession()
{
    m_sway->terminate();
    if (!m_sway->waitForFinished(5000)) {
        m_sway->kill();
        m_sway->waitForFinished(5000);
    }
}

SwaySession& SwaySession::shared()
{
    if (!sharedSession) {
        sharedSession = std::make_unique<SwaySession>();
    }
    return *sharedSession;
}

std::unique_ptr<QProcess>
SwaySession::start(const QString& name, const QStringList& arguments, const QByteArray& input) const
{
    auto environmentOfProgram = QProcessEnvironment::systemEnvironment();
    environmentOfProgram.remove(u"DISPLAY"_s);
    environmentOfProgram.remove(u"LD_PRELOAD"_s);
    environmentOfProgram.insert(u"XDG_RUNTIME_DIR"_s, m_runtime.path());
    environmentOfProgram.insert(u"WAYLAND_DISPLAY"_s, m_socket);
    environmentOfProgram.insert(u"SWAYSOCK"_s, m_runtime.filePath(u"ipc"_s));
    auto process = std::make_unique<QProcess>();
    process->setProcessEnvironment(environmentOfProgram);
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
SwaySession::output(const QString& name, const QStringList& arguments) const
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
