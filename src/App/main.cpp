#include "AppDelegate.h"
#include "AppPaths.h"
#include "BusService.h"
#include "CommandLine.h"
#include "InstanceLock.h"
#include "TerminationSignals.h"

#include <QGuiApplication>

#include <cstdio>
#include <cstdlib>
#include <malloc.h>
#include <sys/resource.h>
#include <sys/stat.h>

using namespace tessly;
using namespace Qt::StringLiterals;

namespace {

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
    std::fprintf(stderr, "Tessly could not start: %s\n", qUtf8Printable(reason));
    return EXIT_FAILURE;
}

int start(int argc, char** argv)
{
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
        const QCoreApplication application(argc, argv);
        return showRunningInstance();
    }

    QCoreApplication::setApplicationName(u"Tessly"_s);
    QCoreApplication::setApplicationVersion(programVersion());
    QGuiApplication::setDesktopFileName(u"com.brackmoor.tessly"_s);
    QGuiApplication::setQuitOnLastWindowClosed(false);
    // Until there is a native Wayland side, XWayland serves there.
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "xcb");
    }
    QGuiApplication application(argc, argv);
    try {
        AppDelegate delegate;
        const TerminationSignals signalsWatch([] { QCoreApplication::exit(); });
        delegate.applicationDidFinishLaunching();
        const int status = QGuiApplication::exec();
        delegate.applicationWillTerminate();
        return status;
    } catch (const std::exception& error) {
        return fail(QString::fromUtf8(error.what()));
    }
}

} // namespace

int main(int argc, char** argv)
{
    keepToOurselves();
    const auto command = parseCommandLine({argv + 1, argv + argc});
    switch (command.verb) {
    case Command::Verb::start:
        return start(argc, argv);
    case Command::Verb::callRunningInstance: {
        const QCoreApplication application(argc, argv);
        return callRunningInstance(command.method);
    }
    case Command::Verb::print:
        std::fputs(qUtf8Printable(command.text), stdout);
        return EXIT_SUCCESS;
    case Command::Verb::wrongUsage:
        std::fputs(qUtf8Printable(command.text), stderr);
        return exitWrongUsage;
    }
    return exitWrongUsage;
}
