#pragma once

#include <QString>
#include <QStringList>

namespace tessly {

/// What the program says about itself.
struct StatusReport
{
    bool isRunning = false;
    bool isPaused = false;
    qint64 items = 0;
    qint64 pinned = 0;
    /// The database and its companions, on disk.
    qint64 bytes = 0;
    /// "x11" or "wayland".
    QString session;
    /// Why the last save failed, if no later one has succeeded; else empty.
    QString lastError = {};
    /// The names of what was found to work with.
    QStringList protocols;
    // Whether each works on this desktop, now. Nothing does while the program does not run.
    bool capture = false;
    bool paste = false;
    bool hotKeys = false;
    bool tray = false;

    bool operator==(const StatusReport&) const = default;
};

/// The type of the session that this process belongs to, by its environment.
[[nodiscard]] QString sessionType();

} // namespace tessly
