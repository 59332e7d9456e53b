#pragma once

#include "Clock.h"
#include "RunningApplication.h"

#include <QCoroTask>

#include <functional>
#include <memory>
#include <vector>

namespace tessly {

/// The desktop: which application is in front. Main thread only.
class Workspace
{
public:
    Workspace() = default;
    Workspace(const Workspace&) = delete;
    Workspace& operator=(const Workspace&) = delete;
    virtual ~Workspace() = default;

    /// The application in front, or none. A read of memory: the desktop's news arrive by
    /// themselves.
    [[nodiscard]] virtual std::shared_ptr<RunningApplication> frontmostApplication() const = 0;

    /// The applications that were in front at any moment of the last `span`, the earliest first.
    /// The last element is what is in front now: null if nothing is. Their names are looked up
    /// anew, since some programs name themselves only after their window has been shown. Answers
    /// from memory where the desktop does not.
    [[nodiscard]] virtual QCoro::Task<std::vector<std::shared_ptr<RunningApplication>>>
    inFrontDuring(Clock::Duration span) = 0;

    /// `changed` is called on the main thread each time that another window comes to the front, or
    /// none is in front any more. Replaces the one given before; empty: nobody is called.
    virtual void setFrontmostChanged(std::function<void()> changed) = 0;
};

/// This program's own id, among those that `RunningApplication::bundleIdentifier` gives.
inline const QString ownBundleIdentifier = QStringLiteral("com.brackmoor.tessly");

} // namespace tessly
