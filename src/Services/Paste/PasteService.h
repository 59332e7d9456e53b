#pragma once

#include "ClipPayload.h"
#include "Clock.h"
#include "KeyEventPoster.h"
#include "Pasteboard.h"
#include "RunningApplication.h"

#include <QCoroTask>
#include <QObject>
#include <QPointer>
#include <QPromise>
#include <QUrl>

#include <deque>
#include <functional>
#include <memory>

namespace tessly {

/// Puts clips back on the pasteboard and pastes them into applications. Whoever writes takes turns:
/// what one has put there is not replaced before it is pasted. Main thread only.
class PasteService final : public QObject
{
    Q_OBJECT

public:
    struct Result
    {
        enum class Case {
            /// The clip is on the pasteboard, or was; no keys were pressed.
            copiedOnly,
            pasted,
            /// The keys could not be made.
            failed,
        };
        Case resultCase = Case::failed;
        /// With `copiedOnly`: the reason is the missing permission.
        bool needsAutomaticPaste = false;
        /// With `copiedOnly`: the reason is that another program has copied something since.
        bool isReplaced = false;

        bool operator==(const Result&) const = default;
    };

    /// The page of the system's settings that grants automatic paste.
    static const QUrl automaticPasteSettingsURL;

    /// Questions to the desktop, replaceable one by one: the first two are put to the poster of
    /// keys where none is given; without the third no settings page opens.
    struct Hooks
    {
        std::function<bool()> checkAutomaticPasteAccess = {};
        std::function<bool()> requestAutomaticPasteAccess = {};
        std::function<bool(const QUrl&)> openSettingsURL = {};
    };

    /// All references must outlive the service.
    PasteService(
        Pasteboard& pasteboard, KeyEventPoster& keys, Clock& clock, Hooks hooks,
        QObject* parent = nullptr);
    ~PasteService() override;

    [[nodiscard]] bool checkAutomaticPasteAccess() const;
    [[nodiscard]] bool requestAutomaticPasteAccess() const;
    [[nodiscard]] bool openSettingsURL(const QUrl& url) const;

    /// The right to write, for as long as a copy of this is kept.
    using Turn = std::shared_ptr<const void>;
    /// Waits until those who asked before have given up theirs, and what was pasted last has been
    /// fetched, which is not waited for longer than 300 ms after its keys. Turns come in the order
    /// of the calls.
    [[nodiscard]] QCoro::Task<Turn> turn();

    /// Replaces the pasteboard's content by the payload; no ticket, with the pasteboard untouched,
    /// if there is nothing to write. For those whose turn it is.
    [[nodiscard]] WriteTicket write(const ClipPayload& payload, bool plainTextOnly);
    /// Whether the pasteboard's content is what was written with this ticket; answers once that is
    /// there to be read.
    [[nodiscard]] QCoro::Task<bool> holds(WriteTicket ticket);

    /// Waits until `target` is in front, asking it to come at most `attempts` times, then presses
    /// its paste keys, if what was written with this ticket is still there. Failed if the service
    /// goes meanwhile.
    [[nodiscard]] QCoro::Task<Result> pasteWhenTargetIsReady(
        std::shared_ptr<RunningApplication> target, int attempts, WriteTicket ticket);

private:
    static QCoro::Task<Turn> takeTurn(QPointer<PasteService> self, QFuture<void> mine);
    static QCoro::Task<Result> pasteWhenReady(
        QPointer<PasteService> self, std::shared_ptr<RunningApplication> target, int attempts,
        WriteTicket ticket);
    static QCoro::Task<Result> postCommandV(
        QPointer<PasteService> self, std::shared_ptr<RunningApplication> target,
        WriteTicket ticket);
    void endTurn();
    [[nodiscard]] bool isFetchAwaited() const;

    Pasteboard& m_pasteboard;
    KeyEventPoster& m_keys;
    Clock& m_clock;
    Hooks m_hooks;
    /// The one whose turn it is in front, if there is one.
    std::deque<std::shared_ptr<QPromise<void>>> m_turns;
    /// Runs as long as it is waited for that what was pasted last is fetched.
    std::unique_ptr<Clock::Timer> m_fetchTimeout;
};

} // namespace tessly
