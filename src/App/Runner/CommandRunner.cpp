#include "CommandRunner.h"

#include "ActivationToken.h"
#include "BusNames.h"
#include "BusTypes.h"
#include "ClosedHistory.h"
#include "CommandOutput.h"
#include "InstanceLock.h"
#include "SystemClock.h"
#include "TerminalText.h"

#include <QDBusArgument>
#include <QDBusError>
#include <QFileInfo>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <sys/ioctl.h>
#include <thread>
#include <unistd.h>
#include <utility>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace tessly {

namespace {

constexpr auto pollInterval = 20ms;

struct Call
{
    QString method;
    QVariantList arguments = {};
    std::chrono::milliseconds BusClient::Limits::* limit = &BusClient::Limits::answer;
};

/// What lets the panel take the focus, where this command was given such a permission.
QVariantList platformData()
{
    const QVariantMap data = ownPlatformData();
    return data.isEmpty() ? QVariantList() : QVariantList{data};
}

Call callFor(const Invocation& invocation)
{
    switch (invocation.command) {
    case CommandID::show:
        return {u"Show"_s, platformData()};
    case CommandID::hide:
        return {u"Hide"_s};
    case CommandID::toggle:
        return {u"Toggle"_s, platformData()};
    case CommandID::pause:
        return {u"Pause"_s};
    case CommandID::resume:
        return {u"Resume"_s};
    case CommandID::quit:
        return {u"Quit"_s};
    case CommandID::paste:
        return {u"Paste"_s, {invocation.position, invocation.isPlain}};
    case CommandID::copy:
        return {u"Copy"_s, {invocation.position, invocation.isPlain}};
    case CommandID::pin:
        return {u"Pin"_s, {invocation.position}, &BusClient::Limits::change};
    case CommandID::unpin:
        return {u"Unpin"_s, {invocation.position}, &BusClient::Limits::change};
    case CommandID::deleteEntry:
        return {u"Delete"_s, {invocation.position}, &BusClient::Limits::change};
    case CommandID::clear:
        return {u"Clear"_s, {invocation.isEverything}, &BusClient::Limits::change};
    case CommandID::status:
        return {u"Status"_s};
    case CommandID::list:
        return {
            u"List"_s,
            {invocation.query, invocation.kind ? rawValue(*invocation.kind) : QString(),
             invocation.limit}};
    case CommandID::exportHistory:
    case CommandID::importHistory:
        // More than one call.
        break;
    }
    Q_UNREACHABLE();
}

std::optional<int> terminalColumns()
{
    winsize size = {};
    if (isatty(STDOUT_FILENO) != 1 || ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 ||
        size.ws_col == 0) {
        return std::nullopt;
    }
    return size.ws_col;
}

bool printToStandardOutput(const QByteArray& text)
{
    const bool isWritten =
        std::fwrite(text.constData(), 1, static_cast<std::size_t>(text.size()), stdout) ==
        static_cast<std::size_t>(text.size());
    return std::fflush(stdout) == 0 && isWritten;
}

} // namespace

CommandRunner::Output CommandRunner::standardOutput()
{
    return {
        .print = printToStandardOutput,
        .complain =
            [](const QString& line) { std::fprintf(stderr, "tessly: %s\n", qUtf8Printable(line)); },
        .columns = terminalColumns(),
        .remark = [](const QString& line) { std::fprintf(stderr, "%s\n", qUtf8Printable(line)); },
    };
}

CommandRunner::CommandRunner(
    QString dataFolder, BusClient& client, Output output, MaximumHistory maximumHistory)
    : m_dataFolder(std::move(dataFolder))
    , m_databasePath(m_dataFolder + u"/history.sqlite"_s)
    , m_client(client)
    , m_output(std::move(output))
    , m_maximumHistory(std::move(maximumHistory))
{
    registerBusTypes();
}

int CommandRunner::run(const Invocation& invocation)
{
    switch (invocation.command) {
    case CommandID::list:
        return list(invocation);
    case CommandID::status:
        return status(invocation);
    case CommandID::exportHistory:
        return exportHistory(invocation.file);
    case CommandID::importHistory:
        return importHistory(invocation);
    default:
        return act(invocation);
    }
}

CommandRunner::Reach CommandRunner::reach(std::chrono::milliseconds limit)
{
    if (m_client.isRunning()) {
        return Reach::running;
    }
    if (!InstanceLock::isHeld(m_dataFolder)) {
        return Reach::notRunning;
    }
    // It takes its lock before it has its name on the bus.
    const bool isThere =
        m_client.waitUntilRunning([this] { return !InstanceLock::isHeld(m_dataFolder); }, limit);
    if (isThere) {
        return Reach::running;
    }
    return InstanceLock::isHeld(m_dataFolder) ? Reach::unreachable : Reach::notRunning;
}

int CommandRunner::list(const Invocation& invocation)
{
    std::optional<std::vector<ClipSummary>> found;
    // Where the program cannot be asked, its files can be read, also while it writes to them.
    if (reach(m_client.limits().look) == Reach::running) {
        const Call call = callFor(invocation);
        const QDBusMessage answer =
            m_client.call(call.method, call.arguments, m_client.limits().*call.limit);
        if (answer.type() != QDBusMessage::ReplyMessage) {
            return complainOfAnswer(answer);
        }
        found = entries(qdbus_cast<BusEntries>(answer.arguments().value(0)));
        if (!found) {
            return complain(exitFailed, u"Tessly's answer makes no sense"_s);
        }
    } else {
        try {
            found = ClosedHistory::summaries(
                m_databasePath, invocation.query, invocation.kind, invocation.limit);
        } catch (const ClipStoreError& error) {
            return complain(exitFailed, error.description());
        }
    }
    return print(
        invocation.isJSON ? listJSON(*found)
                          : listText(*found, SystemClock().now(), m_output.columns).toUtf8());
}

int CommandRunner::status(const Invocation& invocation)
{
    StatusReport report;
    switch (reach(m_client.limits().look)) {
    case Reach::running: {
        const QDBusMessage answer = m_client.call(u"Status"_s, {}, m_client.limits().answer);
        if (answer.type() != QDBusMessage::ReplyMessage) {
            return complainOfAnswer(answer);
        }
        report = statusReport(qdbus_cast<QVariantMap>(answer.arguments().value(0)));
        break;
    }
    case Reach::notRunning:
        try {
            const ClipStore::Statistics statistics = ClosedHistory::statistics(m_databasePath);
            report.items = statistics.totalItems;
            report.pinned = statistics.pinnedItems;
            report.bytes = statistics.databaseBytes;
            report.session = sessionType();
        } catch (const ClipStoreError& error) {
            return complain(exitFailed, error.description());
        }
        break;
    case Reach::unreachable:
        return complainOfReach();
    }
    return print(invocation.isJSON ? statusJSON(report) : statusText(report).toUtf8());
}

int CommandRunner::act(const Invocation& invocation)
{
    switch (reach(m_client.limits().start)) {
    case Reach::running:
        break;
    case Reach::notRunning:
        return complain(exitNotRunning, u"Tessly is not running"_s);
    case Reach::unreachable:
        return complainOfReach();
    }
    const Call call = callFor(invocation);
    const QDBusMessage answer =
        m_client.call(call.method, call.arguments, m_client.limits().*call.limit);
    if (answer.type() != QDBusMessage::ReplyMessage) {
        return complainOfAnswer(answer);
    }
    return invocation.command == CommandID::quit ? waitForEnd() : EXIT_SUCCESS;
}

int CommandRunner::waitForEnd()
{
    const auto end = std::chrono::steady_clock::now() + m_client.limits().start;
    while (InstanceLock::isHeld(m_dataFolder)) {
        if (std::chrono::steady_clock::now() >= end) {
            return complain(exitFailed, u"Tessly has not ended yet"_s);
        }
        std::this_thread::sleep_for(pollInterval);
    }
    return EXIT_SUCCESS;
}

std::optional<int> CommandRunner::showRunningInstance()
{
    const bool isThere = m_client.waitUntilRunning(
        [this] { return !InstanceLock::isHeld(m_dataFolder); }, m_client.limits().start);
    if (isThere) {
        const QDBusMessage answer =
            m_client.call(u"Show"_s, platformData(), m_client.limits().answer);
        if (answer.type() == QDBusMessage::ReplyMessage) {
            return EXIT_SUCCESS;
        }
        if (InstanceLock::isHeld(m_dataFolder)) {
            return complainOfAnswer(answer);
        }
    }
    if (InstanceLock::isHeld(m_dataFolder)) {
        return complainOfReach();
    }
    return std::nullopt;
}

int CommandRunner::print(const QByteArray& text)
{
    if (m_output.print(text)) {
        return EXIT_SUCCESS;
    }
    return complainOfPrinting(errno);
}

int CommandRunner::complainOfPrinting(int reason)
{
    // Whoever closed the pipe has read enough.
    return reason == EPIPE ? exitFailed
                           : complain(
                                 exitFailed, u"could not print: "_s +
                                                 QString::fromLocal8Bit(std::strerror(reason)));
}

int CommandRunner::complain(int status, const QString& line)
{
    m_output.complain(terminalLine(line));
    return status;
}

int CommandRunner::complainOfAnswer(const QDBusMessage& answer)
{
    const QDBusError error(answer);
    switch (error.type()) {
    case QDBusError::ServiceUnknown:
        return complain(exitNotRunning, u"Tessly is not running"_s);
    case QDBusError::NoReply:
    case QDBusError::Timeout:
    case QDBusError::TimedOut:
        return complain(exitFailed, u"Tessly does not answer"_s);
    case QDBusError::UnknownMethod:
    case QDBusError::UnknownInterface:
    case QDBusError::InvalidSignature:
        return complain(exitFailed, u"the Tessly that runs does not know this command"_s);
    default:
        return complain(exitFailed, error.message());
    }
}

int CommandRunner::complainOfReach()
{
    switch (m_client.bus()) {
    case BusClient::Bus::absent:
        return complain(
            exitFailed, u"Tessly is running, but there is no session bus on which to reach it"_s);
    case BusClient::Bus::silent:
        return complain(exitFailed, u"the session bus does not answer"_s);
    case BusClient::Bus::present:
        break;
    }
    return complain(exitFailed, u"Tessly is running, but cannot be reached on the session bus"_s);
}

} // namespace tessly
