#pragma once

#include "BusActions.h"
#include "BusTypes.h"
#include "HistoryCommands.h"

#include <QDBusAbstractAdaptor>
#include <QDBusMessage>
#include <QDBusUnixFileDescriptor>

#include <functional>

namespace tessly {

/// The program's own interface on the bus. A call that cannot be answered at once is answered
/// later, so that nothing waits here. Refusals and failures are D-Bus errors named by
/// `busErrorName`.
class BusInterface final : public QDBusAbstractAdaptor
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "com.brackmoor.tessly")

public:
    /// Sends an answer, which may take a while to be written out: not on the main thread.
    using SendLater = std::function<void(std::function<QDBusMessage()> answer)>;

    /// `commands` must outlive the interface, which belongs to `parent`.
    BusInterface(
        const BusActions& actions, HistoryCommands& commands, SendLater sendLater, QObject* parent);

public Q_SLOTS:
    void Show() const;
    /// `platformData`: as org.freedesktop.Application has it.
    void Show(const QVariantMap& platformData) const;
    void Hide() const;
    void Toggle() const;
    void Toggle(const QVariantMap& platformData) const;
    void Quit() const;
    void Pause() const;
    void Resume() const;

    /// The keys of `tessly status --json`.
    QVariantMap Status(const QDBusMessage& call);
    /// The keys of `tessly list --json`; an empty kind stands for all kinds, a negative limit for
    /// no limit.
    tessly::BusEntries
    List(const QString& query, const QString& kind, qlonglong limit, const QDBusMessage& call);

    void Paste(qlonglong position, bool plainTextOnly, const QDBusMessage& call);
    void Copy(qlonglong position, bool plainTextOnly, const QDBusMessage& call);
    void Pin(qlonglong position, const QDBusMessage& call);
    void Unpin(qlonglong position, const QDBusMessage& call);
    void Delete(qlonglong position, const QDBusMessage& call);
    void Clear(bool everything, const QDBusMessage& call);

    /// Adds entries, from lines as an export has them between its first and its last, in memory
    /// that SealedMemory has made. The answer has the keys of busImportOutcome, with lines counted
    /// from 0. Of no lines it is answered once the history is open and has what waited for that.
    QVariantMap Import(const QDBusUnixFileDescriptor& lines, const QDBusMessage& call);

private:
    [[nodiscard]] ActionCompletion answer(const QDBusMessage& call) const;

    BusActions m_actions;
    HistoryCommands& m_commands;
    SendLater m_sendLater;
};

} // namespace tessly
