#pragma once

#include "RunningApplication.h"

#include <QPoint>
#include <QUrl>

#include <memory>
#include <optional>

namespace tessly {

/// The desktop: which application is in front, and how to open things. Main thread only.
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

    /// Opens a URL with the program the desktop has for it; false if there is none.
    [[nodiscard]] virtual bool openURL(const QUrl& url) = 0;
};

/// This program's own id, among those that `RunningApplication::bundleIdentifier` gives.
inline const QString ownBundleIdentifier = QStringLiteral("com.brackmoor.tessly");

} // namespace tessly
