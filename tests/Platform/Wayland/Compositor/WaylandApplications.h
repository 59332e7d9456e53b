#pragma once

#include "TestSupport.h"
#include "WaylandDesktop.h"
#include "WaylandWindows.h"
#include "WaylandWorkspace.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>
#include <QUrl>

#include <memory>

namespace tessly::test {

/// Windows of another program on a compositor, as the contracts of Workspace and KeyEventPoster ask
/// for them.
class WaylandApplications
{
public:
    explicit WaylandApplications(const std::string& display)
        : m_windows(std::make_unique<WaylandWindows>(display))
        , m_desktop(std::make_unique<WaylandDesktop>(WaylandDesktop::Options{
              .display = display, .entries = DesktopEntries(QStringList{m_entries.path()})}))
        , m_workspace(std::make_unique<WaylandWorkspace>(*m_desktop))
    {
    }
    ~WaylandApplications()
    {
        // The compositor is the next test's, too.
        m_windows.reset();
        EXPECT_TRUE(waitUntil([this] { return !m_workspace->frontmostApplication(); }));
    }
    WaylandApplications(const WaylandApplications&) = delete;
    WaylandApplications& operator=(const WaylandApplications&) = delete;

    Workspace& workspace() { return *m_workspace; }
    WaylandDesktop& desktop() { return *m_desktop; }
    WaylandWindows& windows() { return *m_windows; }

    void show(const QString& id) { m_windows->show(id.toStdString()); }
    void close(const QString& id) { m_windows->close(id.toStdString()); }

private:
    QTemporaryDir m_entries;
    std::unique_ptr<WaylandWindows> m_windows;
    std::unique_ptr<WaylandDesktop> m_desktop;
    std::unique_ptr<WaylandWorkspace> m_workspace;
};

} // namespace tessly::test
