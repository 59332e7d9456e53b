#include "AppDelegate.h"
#include "AppPaths.h"
#include "AppSettings.h"
#include "BusClient.h"
#include "ClipStoreError.h"
#include "CommandLineParser.h"
#include "CommandRunner.h"
#include "DesktopChoice.h"
#include "IniUserDefaults.h"
#include "InstanceLock.h"
#include "MainThreadCall.h"
#include "StatusReport.h"
#include "SystemClock.h"
#include "TerminalText.h"
#include "TerminationSignals.h"
#include "ThreadExecutor.h"
#include "ToolkitExit.h"
#include "ViewLoader.h"

#include <QGuiApplication>
#include <QLoggingCategory>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <malloc.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace tessly;
using namespace Qt::StringLiterals;

namespace {

Q_LOGGING_CATEGORY(log, "com.brackmoor.tessly.AppDelegate")

/// Everything the program holds was copied by its user: nobody else reads its files, and no crash
/// leaves it on disk.
void keepToOurselves()
{
    umask(S_IRWXG | S_IRWXO);
    // One byte, not none: the kernel hands a crash to a program that the system has for it whatever
    // the limit, but for this one.
    const rlimit smallest = {.rlim_cur = 1, .rlim_max = 1};
    setrlimit(RLIMIT_CORE, &smallest);
}

/// Ends the process with no more ado: QtDBus would wait for a bus that is silent.
[[noreturn]] void endNow(int status)
{
    std::fflush(nullptr);
    std::_Exit(status);
}

/// Needs an application object. Nobody reads what is printed when a user logs in, so the desktop is
/// told as well.
[[noreturn]] void fail(const QString& reason)
{
    std::fprintf(stderr, "Tessly could not start: %s\n", qUtf8Printable(terminalLine(reason)));
    BusClient().notify(u"Tessly could not start"_s, reason);
    endNow(EXIT_FAILURE);
}

/// The same before there is one.
[[noreturn]] void failEarly(int argc, char** argv, const QString& reason)
{
    const QCoreApplication application(argc, argv);
    fail(reason);
}

/// For the user. What the history says of itself does not name its file.
QString reasonOf(const std::exception& error)
{
    const QString reason = QString::fromUtf8(error.what());
    const QString file = AppPaths::databasePath();
    const bool isAboutHistory = dynamic_cast<const ClipStoreError*>(&error) != nullptr;
    return isAboutHistory && !reason.contains(file) ? u"%1 (%2)"_s.arg(reason, file) : reason;
}

qint64 maximumHistory()
{
    IniUserDefaults defaults(
        AppPaths::settingsPath(), std::make_unique<ThreadExecutor>("tessly-settings"));
    return AppSettings(defaults).trimLimit();
}

/// A command has nothing to put in order, and what else the bus has to say no longer matters.
[[noreturn]] void runCommand(int argc, char** argv, const Invocation& invocation)
{
    const QCoreApplication application(argc, argv);
    BusClient client;
    CommandRunner runner(
        AppPaths::applicationSupportDirectory(), client, CommandRunner::standardOutput(),
        maximumHistory);
    endNow(runner.run(invocation));
}

/// From the beginning, since an application object is made once in a process. Needs one.
[[noreturn]] void startAgain(char** argv)
{
    execv("/proc/self/exe", argv);
    fail(QString::fromLocal8Bit(std::strerror(errno)));
}

[[noreturn]] void startSecond(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    BusClient client;
    CommandRunner runner(
        AppPaths::applicationSupportDirectory(), client, CommandRunner::standardOutput(),
        maximumHistory);
    if (const auto status = runner.showRunningInstance()) {
        endNow(*status);
    }
    // The first has ended meanwhile.
    startAgain(argv);
}

/// In our own order, with what has been read of copies in the history. The toolkit would not live
/// to see the usual end.
[[noreturn]] void endWithoutDesktop(AppDelegate& delegate)
{
    qCCritical(log) << "The connection to the desktop was lost.";
    delegate.desktopWentAway();
    endNow(EXIT_FAILURE);
}

/// Returns once the program is asked to end.
void runLoop(AppDelegate& delegate)
{
    const ToolkitExit toolkitExit([&delegate] { endWithoutDesktop(delegate); });
    // Not QGuiApplication's, which begins by waiting for the session bus.
    if (QCoreApplication::exec() != EXIT_SUCCESS) {
        endWithoutDesktop(delegate);
    }
}

/// Before the toolkit starts.
void prepareToolkit(const DesktopChoice& choice)
{
    // Not what the user prefers for programs of the toolkit: the windows are to be where the keys
    // and the clipboard are.
    qputenv("QT_QPA_PLATFORM", choice.toolkitPlatform());
    // All drawing is done in software. Left to itself, the toolkit loads OpenGL on Wayland all the
    // same, with the first window: 50 MB and a tenth of a second. It complains of the name in its
    // log, and of little else there.
    qputenv("QT_WAYLAND_CLIENT_BUFFER_INTEGRATION", "none");
    QLoggingCategory::setFilterRules(u"qt.qpa.wayland.warning=false"_s);
}

int start(int argc, char** argv)
{
    // Whoever read the log may go, and whoever is served over a socket.
    std::signal(SIGPIPE, SIG_IGN);
    // One arena more than the main thread's: the workers take turns, and each arena keeps memory.
    mallopt(M_ARENA_MAX, 2);
    // Large contents come and go: each is given back to the system when it is freed. Left to
    // itself, the allocator keeps blocks as large as the largest it has seen.
    mallopt(M_MMAP_THRESHOLD, 256 * 1024);

    std::unique_ptr<InstanceLock> lock;
    try {
        AppPaths::prepareDirectories();
        lock = InstanceLock::acquire(AppPaths::applicationSupportDirectory());
    } catch (const std::exception& error) {
        failEarly(argc, argv, reasonOf(error));
    }
    if (!lock) {
        startSecond(argc, argv);
    }

    QCoreApplication::setApplicationName(u"Tessly"_s);
    QCoreApplication::setApplicationVersion(programVersion());
    QGuiApplication::setDesktopFileName(u"com.brackmoor.tessly"_s);
    QGuiApplication::setQuitOnLastWindowClosed(false);
    const auto quit = [] { QCoreApplication::exit(); };
    bool isBusSilent = false;
    bool isToStartAgain = false;
    const DesktopChoice choice = [&] {
        try {
            return chooseDesktop();
        } catch (const std::exception& error) {
            failEarly(argc, argv, reasonOf(error));
        }
    }();
    prepareToolkit(choice);
    const QGuiApplication application(argc, argv);
    try {
        SystemClock clock;
        ViewLoader views;
        AppDelegate delegate({
            .clock = clock,
            .makePlatform =
                [&] {
                    return makeDesktopPlatform(
                        choice, clock, [] { QCoreApplication::exit(EXIT_FAILURE); });
                },
            .views = [&views] { return views.factory(); },
            .quit = quit,
            .fail = [](const std::exception& error) { fail(reasonOf(error)); },
        });
        const TerminationSignals signalsWatch([&delegate] { delegate.quitApplication(); });
        MainThreadCall xServerAnswers;
        if (choice.awaited) {
            xServerAnswers.setCallback([&delegate] {
                qCInfo(log) << "XWayland answers: Tessly starts again, with the clipboard.";
                delegate.startAgain();
            });
            choice.awaited->setAnswered(xServerAnswers.request());
        }
        delegate.applicationDidFinishLaunching();
        runLoop(delegate);
        isBusSilent = delegate.isBusSilent();
        isToStartAgain = delegate.startsAgain();
        delegate.applicationWillTerminate();
    } catch (const std::exception& error) {
        fail(reasonOf(error));
    }
    if (isToStartAgain) {
        startAgain(argv);
    }
    if (isBusSilent) {
        endNow(EXIT_SUCCESS);
    }
    return EXIT_SUCCESS;
}

} // namespace

int main(int argc, char** argv)
{
    keepToOurselves();
    const Invocation invocation = parseCommandLine({argv + 1, argv + argc});
    switch (invocation.verb) {
    case Invocation::Verb::start:
        return start(argc, argv);
    case Invocation::Verb::command:
        runCommand(argc, argv, invocation);
    case Invocation::Verb::print: {
        const auto output = CommandRunner::standardOutput();
        if (!output.print(invocation.text.toUtf8())) {
            output.complain(u"could not write to standard output"_s);
            return exitFailed;
        }
        return EXIT_SUCCESS;
    }
    case Invocation::Verb::wrongUsage:
        CommandRunner::standardOutput().complain(invocation.text);
        return exitWrongUsage;
    }
    return exitWrongUsage;
}
