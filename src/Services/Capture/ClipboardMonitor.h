#pragma once

#include "AppSettings.h"
#include "ClipPayload.h"
#include "Clock.h"
#include "ImageConverter.h"
#include "Pasteboard.h"
#include "PayloadReader.h"
#include "Workspace.h"

#include <QCoroTask>
#include <QObject>
#include <QPointer>
#include <QPromise>

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <vector>

namespace tessly {

/// Watches the pasteboard and hands on every content that is to be recorded. Decides all of what is
/// not: own writes, secrets, ignored applications, kinds that are switched off, empty and oversized
/// content. What is not recorded though nothing forbids it is a line in the log. Main thread only.
class ClipboardMonitor final : public QObject
{
    Q_OBJECT
    Q_PROPERTY(bool isPaused READ isPaused NOTIFY isPausedChanged)

public:
    enum class AccessIssue { askEveryTime, denied };

    using OnCapture = std::function<void(
        ClipPayload payload, std::optional<QString> sourceAppName,
        std::optional<QString> sourceBundleID)>;
    using OnAccessIssue = std::function<void(AccessIssue)>;

    /// What the monitor asks; all of it must outlive the monitor.
    struct Dependencies
    {
        Pasteboard& pasteboard;
        AppSettings& settings;
        ImageConverter& imageConverter;
        Workspace& workspace;
        Clock& clock;
    };

    ClipboardMonitor(
        Dependencies dependencies, OnCapture onCapture, OnAccessIssue onAccessIssue,
        QObject* parent = nullptr);
    ~ClipboardMonitor() override;

    /// Begins to watch; the content present now is not recorded. Does nothing if begun already.
    void start();
    /// Ends watching. What is being read is not recorded.
    void stop();

    [[nodiscard]] bool isPaused() const { return m_isPaused; }
    /// Pauses, or resumes without recording what was copied meanwhile. What is being read when the
    /// user pauses is not recorded.
    void togglePaused();

    /// Looks now at what has been copied by the time of the call, and waits until that has been
    /// handed on or dropped, for `timeout` at the most.
    QCoro::Task<> settle(Clock::Duration timeout);

Q_SIGNALS:
    void isPausedChanged();

private:
    /// Who is credited with a content.
    struct Source
    {
        std::optional<QString> name;
        std::optional<QString> bundleIdentifier;
        /// Empty if its end would not be told.
        Pasteboard::HasSourceEnded hasEnded;
    };
    using Applications = std::vector<std::shared_ptr<RunningApplication>>;
    /// A content that its owner may change without telling anybody, as it was read last.
    struct Mutable
    {
        qint64 changeCount = 0;
        /// Those in front when it was recorded.
        Applications applications = {};
        QByteArray contentHash;
        /// Not so if it was there before watching began.
        bool isRecorded = false;
        /// It is to be looked at once more when what is being read has been.
        bool isDue = false;
    };
    /// One attempt to read the pasteboard; later ones have greater numbers.
    struct Reading
    {
        quint64 number = 0;
        qint64 changeCount = 0;
        /// What cannot be read is lost.
        bool isCopy = true;
    };
    /// What is to be handed on, in its turn.
    struct Capture
    {
        ClipPayload payload;
        Source source;
        /// Nobody may have copied it: a program may offer again what it has read.
        bool mayBeOfferedAgain = false;
    };
    /// A reading that has not come to its end, and what it has come to.
    struct Unfinished
    {
        bool isCopy = true;
        std::optional<Capture> capture = {};
    };
    /// A call of `settle`.
    struct Settling
    {
        QPromise<void> promise;
        std::unique_ptr<Clock::Timer> timeout;
        /// What had been copied by its time is being read.
        bool isCaughtUp = false;
    };

    void beginAfterPresent();
    void contentChanged();
    void look();
    void poll();
    void lookAtMutable();
    [[nodiscard]] bool hasAccess();
    [[nodiscard]] bool isAnyIgnored(const Applications& applications) const;
    [[nodiscard]] static Source sourceOf(const Applications& applications);
    [[nodiscard]] static Source sourceOf(const std::shared_ptr<RunningApplication>& application);
    [[nodiscard]] bool isInFront(const Source& source) const;
    [[nodiscard]] bool isWanted(const Reading& reading) const;
    [[nodiscard]] bool isOvertaken(const Reading& reading) const;
    Reading beginReading(Reading reading);
    void finish(const Reading& reading);
    void finishAll();
    void handOn();
    [[nodiscard]] bool isOfferedAgain(const Capture& capture);
    void endSettling();
    void keep(const Mutable& content, const ClipPayload& payload);
    static void log(const char* loss);
    static void logLoss(const Reading& reading, const char* loss);

    static QCoro::Task<> catchUp(QPointer<ClipboardMonitor> self, std::shared_ptr<Settling> call);
    static QCoro::Task<> record(QPointer<ClipboardMonitor> self, Reading reading);
    static QCoro::Task<> learnPresent(QPointer<ClipboardMonitor> self, Reading reading);
    static QCoro::Task<> recordAgain(QPointer<ClipboardMonitor> self, Reading reading);
    static QCoro::Task<std::optional<ClipPayload>>
    payload(QPointer<ClipboardMonitor> self, Reading reading);
    /// The same; throws std::bad_alloc where there is not enough memory.
    static QCoro::Task<std::optional<ClipPayload>>
    payloadOf(QPointer<ClipboardMonitor> self, Reading reading);

    Dependencies m_dependencies;
    PayloadReader m_reader;
    OnCapture m_onCapture;
    OnAccessIssue m_onAccessIssue;
    bool m_isStarted = false;
    bool m_isPaused = false;
    /// Where the desktop does not tell of changes.
    std::unique_ptr<Clock::Timer> m_ticks;
    /// Where it does: run until no further change came, and until that is waited for no longer.
    std::unique_ptr<Clock::Timer> m_quiet;
    std::unique_ptr<Clock::Timer> m_latest;
    qint64 m_lastChangeCount = 0;
    /// The one that asks the pasteboard now, if any. A newer content puts an end to it.
    std::optional<Reading> m_reading;
    quint64 m_readings = 0;
    /// By number.
    std::map<quint64, Unfinished> m_unfinished;
    std::optional<Mutable> m_mutable;
    /// What was handed on last; none if it is too large to be held on to.
    std::optional<ClipPayload> m_lastHandedOn;
    std::optional<AccessIssue> m_lastAccessIssue;
    std::vector<std::shared_ptr<Settling>> m_settling;
};

} // namespace tessly
