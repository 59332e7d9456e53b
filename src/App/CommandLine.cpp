#include "CommandLine.h"

#include "BusNames.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusServiceWatcher>
#include <QEventLoop>
#include <QTimer>

#include <array>
#include <cstdio>
#include <string_view>

using namespace Qt::StringLiterals;

namespace tessly {

namespace {

constexpr std::chrono::seconds startLimit{10};

struct RemoteCommand
{
    std::string_view name;
    QLatin1StringView method;
};

constexpr std::array remoteCommands = {
    RemoteCommand{"show", "Show"_L1},
    RemoteCommand{"hide", "Hide"_L1},
    RemoteCommand{"toggle", "Toggle"_L1},
    RemoteCommand{"quit", "Quit"_L1},
};

QString usage()
{
    return uR"(Usage: tessly [show | hide | toggle | quit]

Without a command, starts Tessly; if it runs already, opens its panel.

  show         open the Quick Paste panel
  hide         close it
  toggle       open it, or close it if it is open
  quit         end Tessly
  --version    print the version
  --help       print this help

Exit status: 0 done; 1 refused or failed; 2 wrong usage; 3 Tessly is not running.
)"_s;
}

int complain(int status, const QString& line)
{
    std::fprintf(stderr, "tessly: %s\n", qUtf8Printable(line));
    return status;
}

bool isRunning(const QDBusConnection& bus)
{
    return bus.interface()->isServiceRegistered(busName).value();
}

/// The first instance takes its lock before it has its name on the bus: wait for the name.
bool waitUntilRunning(const QDBusConnection& bus)
{
    QEventLoop loop;
    const QDBusServiceWatcher watcher(busName, bus, QDBusServiceWatcher::WatchForRegistration);
    QObject::connect(&watcher, &QDBusServiceWatcher::serviceRegistered, &loop, &QEventLoop::quit);
    if (isRunning(bus)) {
        return true;
    }
    QTimer::singleShot(startLimit, &loop, &QEventLoop::quit);
    loop.exec();
    return isRunning(bus);
}

int call(const QDBusConnection& bus, const QString& method)
{
    const auto message = QDBusMessage::createMethodCall(busName, busPath, busInterface, method);
    const auto reply = bus.call(message);
    if (reply.type() == QDBusMessage::ErrorMessage) {
        return complain(exitFailed, reply.errorMessage());
    }
    return EXIT_SUCCESS;
}

} // namespace

Command parseCommandLine(const std::vector<const char*>& arguments)
{
    if (arguments.empty()) {
        return {};
    }
    const std::string_view first = arguments.front();
    if (arguments.size() == 1) {
        if (first == "--version") {
            return {Command::Verb::print, {}, u"tessly "_s + programVersion() + u'\n'};
        }
        if (first == "--help" || first == "-h") {
            return {Command::Verb::print, {}, usage()};
        }
        for (const auto& command : remoteCommands) {
            if (command.name == first) {
                return {Command::Verb::callRunningInstance, command.method, {}};
            }
        }
    }
    const auto wrong = QString::fromLocal8Bit(arguments.back());
    return {
        Command::Verb::wrongUsage,
        {},
        u"tessly: cannot make sense of \"%1\"\n\n"_s.arg(wrong) + usage()};
}

QString programVersion()
{
    return QStringLiteral(TESSLY_VERSION);
}

int callRunningInstance(const QString& method)
{
    const auto bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) {
        return complain(exitFailed, u"there is no session bus on which to reach Tessly"_s);
    }
    if (!isRunning(bus)) {
        return complain(exitNotRunning, u"Tessly is not running"_s);
    }
    return call(bus, method);
}

int showRunningInstance()
{
    const auto bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) {
        return complain(
            exitFailed, u"Tessly is running, but there is no session bus on which to reach it"_s);
    }
    if (!waitUntilRunning(bus)) {
        return complain(exitFailed, u"Tessly is running, but does not answer"_s);
    }
    return call(bus, u"Show"_s);
}

} // namespace tessly
