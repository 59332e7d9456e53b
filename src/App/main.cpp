#include "AppDelegate.h"
#include "AppPaths.h"
#include "BusClient.h"
#include "CommandLineParser.h"
#include "CommandRunner.h"
#include "DesktopChoice.h"
#include "InstanceLock.h"
#include "StatusReport.h"
#include "SystemClock.h"
#include "TerminalText.h"
#include "TerminationSignals.h"
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
    const rlimit none = {.rlim_cur = 0, .rlim_max = 0};
    setrlimit(RLIMIT_CORE, &none);
}

int fail(const QString& reason)
{
    std::fprintf(stderr, "Tessly could not start: %s\n", qUtf8Printable(terminalLine(reason)));
    return EXIT_FAILURE;
}

/// Ends the process with no more ado: QtDBus would wait for a bus that is silent.
[[noreturn]] void endNow(int status)
{
    std::fflush(nullptr);
    std::_Exit(status);
}

/// A command has nothing to put in order, and what else the bus has to say no longer matters.
[[noreturn]] void runCommand(int argc, char** argv, const Invocation& invocation)
{
    const QCoreApplication application(argc, argv);
    BusClient client;
    CommandRunner runner(
        AppPaths::applicationSupportDirectory(), client, CommandRunner::standardOutput());
    endNow(runner.run(invocation));
}

int startSecond(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    BusClient client;
    CommandRunner runner(
        AppPaths::applicationSupportDirectory(), client, CommandRunner::standardOutput());
    if (const auto status = runner.showRunningInstance()) {
        endNow(*status);
    }
    // The first has ended meanwhile. From the beginning, since an application object is made once
    // in a process.
    execv("/proc/self/exe", argv);
    return fail(QString::fromLocal8Bit(std::strerror(errno)));
}

std::unique_ptr<DesktopPlatform> connectToDesktop(const DesktopChoice& choice, Clock& clock)
{
    return makeDesktopPlatform(choice, clock, [] {
        qCCritical(log) << "The connection to the desktop was lost.";
        QCoreApplication::exit(EXIT_FAILURE);
    });
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
        return fail(QString::fromUtf8(error.what()));
    }
    if (!lock) {
        return startSecond(argc, argv);
    }

    QCoreApplication::setApplicationName(u"Tessly"_s);
    QCoreApplication::setApplicationVersion(programVersion());
    QGuiApplication::setDesktopFileName(u"com.brackmoor.tessly"_s);
    QGuiApplication::setQuitOnLastWindowClosed(false);
    const auto quit = [] { QCoreApplication::exit(); };
    int status = EXIT_FAILURE;
    bool isBusSilent = false;
    try {
        const DesktopChoice choice = chooseDesktop();
        prepareToolkit(choice);
        const QGuiApplication application(argc, argv);
        SystemClock clock;
        ViewLoader views;
        AppDelegate delegate({
            .clock = clock,
            .makePlatform = [&] { return connectToDesktop(choice, clock); },
            .views = [&views] { return views.factory(); },
            .quit = quit,
        });
        const TerminationSignals signalsWatch([&delegate] { delegate.quitApplication(); });
        delegate.applicationDidFinishLaunching();
        // Not QGuiApplication's, which begins by waiting for the session bus.
        status = QCoreApplication::exec();
        isBusSilent = delegate.isBusSilent();
        delegate.applicationWillTerminate();
    } catch (const std::exception& error) {
        return fail(QString::fromUtf8(error.what()));
    }
    if (isBusSilent) {
        endNow(status);
    }
    return status;
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
