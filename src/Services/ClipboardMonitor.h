#pragma once

#include "AppSettings.h"
#include "ClipPayload.h"
#include "Clock.h"
#include "ImageConverter.h"
#include "Pasteboard.h"

#include <QCoroTask>
#include <QObject>
#include <QPointer>

#include <functional>
#include <memory>
#include <optional>

namespace tessly {

/// Watches the pasteboard and hands on every content that is to be recorded. Decides all of what is
/// not: own writes, secrets, ignored applications, kinds that are switched off, empty and oversized
/// content. Main thread only.
class ClipboardMonitor final : public QObject
{
    Q_OBJECT
    Q_PROPERTY(bool isPaused READ isPaused NOTIFY isPausedChanged)

public:
    enum class AccessIssue { askEveryTime, denied };

    struct SourceApplication
    {
        std::optional<QString> localizedName;
        std::optional<QString> bundleIdentifier;

        bool operator==(const SourceApplication&) const = default;
    };

    using OnCapture = std::function<void(
        ClipPayload payload, std::optional<QString> sourceAppName,
        std::optional<QString> sourceBundleID)>;
    using OnAccessIssue = std::function<void(AccessIssue)>;
    using CurrentApplication = std::function<std::optional<SourceApplication>()>;

    /// What the monitor asks; all of it must outlive the monitor.
    struct Dependencies
    {
        Pasteboard& pasteboard;
        AppSettings& settings;
        ImageConverter& imageConverter;
        Clock& clock;
    };

    ClipboardMonitor(
        Dependencies dependencies, OnCapture onCapture, OnAccessIssue onAccessIssue,
        CurrentApplication currentApplication, QObject* parent = nullptr);
    ~ClipboardMonitor() override;

    /// Begins to watch; the content present now is not recorded. Does nothing if begun already.
    void start();
    /// Ends watching. What is being read is not recorded.
    void stop();

    [[nodiscard]] bool isPaused() const { return m_isPaused; }
    /// Pauses, or resumes without recording what was copied meanwhile. What is being read when the
    /// user pauses is not recorded.
    void togglePaused();

Q_SIGNALS:
    void isPausedChanged();

private:
    /// A new content of the pasteboard, as the tick that found it saw the desktop.
    struct Change
    {
        qint64 changeCount = 0;
        std::optional<SourceApplication> previous;
        std::optional<SourceApplication> current;
    };

    void poll();
    [[nodiscard]] bool hasAccess();
    [[nodiscard]] bool isToBeRecorded(const QSet<QString>& types, const Change& change) const;
    [[nodiscard]] qint64 byteLimit() const;
    static QCoro::Task<> record(QPointer<ClipboardMonitor> self, Change change);

    Dependencies m_dependencies;
    OnCapture m_onCapture;
    OnAccessIssue m_onAccessIssue;
    CurrentApplication m_currentApplication;
    std::unique_ptr<Clock::Timer> m_timer;
    qint64 m_lastChangeCount = 0;
    /// The change whose content may still be recorded, if any.
    std::optional<qint64> m_recording;
    std::optional<AccessIssue> m_lastAccessIssue;
    std::optional<SourceApplication> m_lastObservedApplication;
    bool m_isPaused = false;
};

} // namespace tessly
