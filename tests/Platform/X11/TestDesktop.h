#pragma once

#include "TestSupport.h"
#include "X11Desktop.h"
#include "X11Workspace.h"
#include "XClient.h"
#include "XSession.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>

namespace tessly::test {

/// A desktop with a few installed applications, a client that shows windows, and the workspace.
class TestDesktop
{
public:
    explicit TestDesktop(XSession::WindowManager windowManager = XSession::WindowManager::openbox)
        : m_session(windowManager)
        , m_client(m_session.display())
    {
        install("org.example.Editor", "Name=Text Editor\n");
        install("browser", "Name=Browser\nStartupWMClass=Example-browser\n");
        install("webmail", "Name=Mail\nStartupWMClass=crx_mail\n");
        install("painter", "Name=Painter\n");
        install("term", "Name=Term\nStartupWMClass=Term\nCategories=TerminalEmulator;\n");
        m_desktop = std::make_unique<X11Desktop>(
            m_session.display().toStdString(), DesktopEntries(QStringList{m_entries.path()}));
        m_workspace = std::make_unique<X11Workspace>(*m_desktop);
    }

    XSession& session() { return m_session; }
    XClient& client() { return m_client; }
    X11Desktop& desktop() { return *m_desktop; }
    X11Workspace& workspace() { return *m_workspace; }
    void endDesktop() { m_desktop.reset(); }

    std::shared_ptr<RunningApplication> front() { return m_workspace->frontmostApplication(); }

    bool comesToFront(const QString& id)
    {
        return waitUntil([&] {
            const auto now = front();
            return now && now->bundleIdentifier() == id;
        });
    }
    bool nothingComesToFront()
    {
        return waitUntil([&] { return !front(); });
    }

    /// Shows a window, and gives the application that comes to the front with it.
    std::shared_ptr<RunningApplication>
    show(const XClient::Look& look, xcb_window_t* window = nullptr)
    {
        const auto before = front();
        const auto shown = m_client.show(look);
        // Asked once each time: nothing may be in front for a moment.
        std::shared_ptr<RunningApplication> now;
        EXPECT_TRUE(waitUntil([&] {
            now = front();
            return now && now != before && now->isActive();
        }));
        if (window != nullptr) {
            *window = shown;
        }
        return now;
    }

    static XClient::Look look(const QByteArray& instance, const QByteArray& name)
    {
        XClient::Look look;
        look.windowClass = XClient::windowClass(instance, name);
        return look;
    }

private:
    void install(const char* id, const QByteArray& lines)
    {
        QFile file(m_entries.filePath(QLatin1String(id) + QStringLiteral(".desktop")));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("[Desktop Entry]\nType=Application\n" + lines);
    }

    XSession m_session;
    XClient m_client;
    QTemporaryDir m_entries;
    std::unique_ptr<X11Desktop> m_desktop;
    std::unique_ptr<X11Workspace> m_workspace;
};

} // namespace tessly::test
