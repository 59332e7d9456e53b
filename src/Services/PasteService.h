#pragma once

#include "ClipPayload.h"
#include "Clock.h"
#include "KeyEventPoster.h"
#include "Pasteboard.h"
#include "RunningApplication.h"

#include <QCoroTask>
#include <QObject>
#include <QPointer>
#include <QUrl>

#include <functional>
#include <map>
#include <memory>

namespace tessly {

/// Puts a clip back on the pasteboard and pastes it into an application. Main thread only.
class PasteService final : public QObject
{
    Q_OBJECT

public:
    struct Result
    {
        enum class Case {
            /// The clip is on the pasteboard; no keys were pressed.
            copiedOnly,
            pasted,
            /// The keys could not be made.
            failed,
        };
        Case resultCase = Case::failed;
        /// With `copiedOnly`: the reason is the missing permission.
        bool needsAutomaticPaste = false;

        bool operator==(const Result&) const = default;
    };
    using Completion = std::function<void(Result)>;

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

    /// Replaces the pasteboard's content by the payload; false, with the pasteboard untouched, if
    /// there is nothing to write.
    [[nodiscard]] bool write(const ClipPayload& payload, bool plainTextOnly);

    /// Waits until `target` is in front, asking it to come at most `attemptsRemaining` times, then
    /// presses its paste keys. `completion` is called once, unless the service goes before.
    void pasteWhenTargetIsReady(
        std::shared_ptr<RunningApplication> target, int attemptsRemaining, Completion completion);

private:
    void after(Clock::Duration delay, std::function<void()> step);
    static QCoro::Task<> postCommandV(
        QPointer<PasteService> self, std::shared_ptr<RunningApplication> target,
        Completion completion);

    Pasteboard& m_pasteboard;
    KeyEventPoster& m_keys;
    Clock& m_clock;
    Hooks m_hooks;
    quint64 m_nextWait = 0;
    std::map<quint64, std::unique_ptr<Clock::Timer>> m_waits;
};

} // namespace tessly
