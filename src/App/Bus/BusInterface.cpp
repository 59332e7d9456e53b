#include "BusInterface.h"

#include "ActivationToken.h"
#include "BusNames.h"
#include "ExportFormat.h"
#include "Invocation.h"
#include "SealedMemory.h"

#include <QDBusError>

#include <memory>
#include <system_error>
#include <utility>

using namespace Qt::StringLiterals;

namespace tessly {

namespace {

AppModel::PasteStyle style(bool plainTextOnly)
{
    return plainTextOnly ? AppModel::PasteStyle::plainTextOnly : AppModel::PasteStyle::original;
}

} // namespace

BusInterface::BusInterface(
    const BusActions& actions, HistoryCommands& commands, SendLater sendLater, QObject* parent)
    : QDBusAbstractAdaptor(parent)
    , m_actions(actions)
    , m_commands(commands)
    , m_sendLater(std::move(sendLater))
{
    registerBusTypes();
}

void BusInterface::Show() const
{
    Show({});
}

void BusInterface::Show(const QVariantMap& platformData) const
{
    m_actions.keepActivationToken(activationToken(platformData));
    m_actions.show();
}

void BusInterface::Hide() const
{
    m_actions.hide();
}

void BusInterface::Toggle() const
{
    Toggle({});
}

void BusInterface::Toggle(const QVariantMap& platformData) const
{
    m_actions.keepActivationToken(activationToken(platformData));
    m_actions.toggle();
}

void BusInterface::Quit() const
{
    m_actions.quit();
}

void BusInterface::Pause() const
{
    m_commands.pause();
}

void BusInterface::Resume() const
{
    m_commands.resume();
}

ActionCompletion BusInterface::answer(const QDBusMessage& call) const
{
    call.setDelayedReply(true);
    return [send = m_sendLater, call](const ActionOutcome& outcome) {
        send([call, outcome] {
            return outcome.resultCase == ActionOutcome::Case::done
                       ? call.createReply()
                       : call.createErrorReply(busErrorName(outcome.resultCase), outcome.message);
        });
    };
}

QVariantMap BusInterface::Status(const QDBusMessage& call)
{
    m_commands.status(
        [send = m_sendLater, call](const StatusReport& report) {
            send([call, report] { return call.createReply(busStatus(report)); });
        },
        answer(call));
    return {};
}

BusEntries BusInterface::List(
    const QString& query, const QString& kind, qlonglong limit, const QDBusMessage& call)
{
    const auto refuse = [&](const QString& reason) {
        call.setDelayedReply(true);
        m_sendLater(
            [call, reason] { return call.createErrorReply(QDBusError::InvalidArgs, reason); });
        return BusEntries();
    };
    const auto wanted = clipKind(kind);
    if (!wanted && !kind.isEmpty()) {
        return refuse(u"There is no kind \"%1\"."_s.arg(kind));
    }
    if (query.size() > longestQuery) {
        return refuse(u"A query has %1 characters at the most."_s.arg(longestQuery));
    }
    m_commands.list(
        query, wanted, limit,
        [send = m_sendLater, call](HistoryCommands::Entries entries) {
            send([call, entries = std::move(entries)] {
                return call.createReply(QVariant::fromValue(busEntries(*entries)));
            });
        },
        answer(call));
    return {};
}

void BusInterface::Paste(qlonglong position, bool plainTextOnly, const QDBusMessage& call)
{
    m_commands.paste(position, style(plainTextOnly), answer(call));
}

void BusInterface::Copy(qlonglong position, bool plainTextOnly, const QDBusMessage& call)
{
    m_commands.copy(position, style(plainTextOnly), answer(call));
}

void BusInterface::Pin(qlonglong position, const QDBusMessage& call)
{
    m_commands.setPinned(position, true, answer(call));
}

void BusInterface::Unpin(qlonglong position, const QDBusMessage& call)
{
    m_commands.setPinned(position, false, answer(call));
}

void BusInterface::Delete(qlonglong position, const QDBusMessage& call)
{
    m_commands.deleteEntry(position, answer(call));
}

void BusInterface::Clear(bool everything, const QDBusMessage& call)
{
    m_commands.clear(everything, answer(call));
}

QVariantMap BusInterface::Import(const QDBusUnixFileDescriptor& lines, const QDBusMessage& call)
{
    std::shared_ptr<const SealedMemory> memory;
    try {
        memory = std::make_shared<const SealedMemory>(
            lines.fileDescriptor(), ExportFormat::largestBatch);
    } catch (const std::system_error&) {
        call.setDelayedReply(true);
        m_sendLater([call] {
            return call.createErrorReply(
                QDBusError::InvalidArgs, u"Lines are taken from sealed memory only."_s);
        });
        return {};
    }
    m_commands.importLines(
        [memory] { return memory->bytes(); },
        [send = m_sendLater, call](const ImportOutcome& outcome) {
            send([call, outcome] { return call.createReply(busImportOutcome(outcome)); });
        },
        answer(call));
    return {};
}

} // namespace tessly
