#pragma once

#include <QString>
#include <QStringList>

#include <optional>

namespace tessly {

/// An application that runs on the desktop, or has run. Main thread only, where nothing else is
/// said; nothing here waits.
class RunningApplication
{
public:
    RunningApplication() = default;
    RunningApplication(const RunningApplication&) = delete;
    RunningApplication& operator=(const RunningApplication&) = delete;
    virtual ~RunningApplication() = default;

    /// The application's name for people, or none where the desktop tells none.
    [[nodiscard]] virtual std::optional<QString> localizedName() const = 0;
    /// The application id: its desktop entry's id without ".desktop", or the nearest thing to it.
    [[nodiscard]] virtual std::optional<QString> bundleIdentifier() const = 0;
    /// Every name that the desktop has for it, its id among them: desktop-entry id,
    /// _GTK_APPLICATION_ID, Wayland app_id, both halves of WM_CLASS. By any of them the user may
    /// have put it on the ignore list; letter case does not matter.
    [[nodiscard]] virtual QStringList names() const;
    /// Whether it is in front and has the keyboard.
    [[nodiscard]] virtual bool isActive() const = 0;
    /// Whether its window (the one that was in front when this object was made) is gone. A read of
    /// memory; any thread, and any thread may let go of this object last.
    [[nodiscard]] virtual bool isTerminated() const = 0;
    /// Asks the desktop to bring it to the front. Whether it came shows in `isActive`.
    virtual void activate() = 0;
};

} // namespace tessly
