#pragma once

#include "WaylandDesktop.h"

#include "LogCapture.h"
#include "PasteTarget.h"
#include "TestCompositor.h"
#include "TestKeyboards.h"
#include "TestKeymap.h"
#include "TestSupport.h"
#include "TestToplevels.h"
#include "WaylandKeySender.h"
#include "WaylandWorkspace.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>
#include <QThread>

#include <linux/input-event-codes.h>
#include <memory>
#include <optional>

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

namespace tessly::test {

using namespace Qt::StringLiterals;

using Key = TestKeyboards::Key;
using WindowID = TestToplevels::WindowID;

inline constexpr std::uint32_t control = 4;

inline const QString logCategory = u"com.brackmoor.tessly.WaylandDesktop"_s;

inline const std::vector<Key> controlV = {
    {KEY_LEFTCTRL, true, 0},
    {KEY_V, true, control},
    {KEY_V, false, control},
    {KEY_LEFTCTRL, false, control}};

inline WaylandDesktop::Options options(const TestCompositor& compositor)
{
    return {
        .display = compositor.display(),
        .entries = DesktopEntries(QStringList()),
        .deadline = std::chrono::milliseconds(300)};
}

/// A compositor with windows and virtual keyboards, and the desktop under test on it.
class WaylandDesktopTest : public testing::Test
{
protected:
    using Application = std::shared_ptr<PasteTarget>;

    explicit WaylandDesktopTest(const TestCompositor::Options& options = {})
        : m_compositor(options)
    {
    }

    TestCompositor& compositor() { return m_compositor; }
    WaylandDesktop& desktop()
    {
        if (!m_desktop) {
            m_desktop = std::make_unique<WaylandDesktop>(WaylandDesktop::Options{
                .display = m_compositor.display(),
                .entries = DesktopEntries(QStringList{m_entries.path()}),
                .timeout = m_timeout,
                .firstDelay = std::chrono::milliseconds(1)});
        }
        return *m_desktop;
    }
    void endDesktop()
    {
        m_workspace.reset();
        m_desktop.reset();
    }
    /// Before the desktop is asked for.
    void install(const QString& id, const QByteArray& lines)
    {
        QFile file(m_entries.filePath(id + u".desktop"_s));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("[Desktop Entry]\nType=Application\n" + lines);
    }

    /// Of the desktop, before it is asked for.
    std::chrono::milliseconds m_timeout = std::chrono::hours(1);

    // What the compositor does.
    /// On its thread.
    TestToplevels& toplevels() { return m_toplevels; }
    template <typename First>
    void freeze(First first)
    {
        m_compositor.freeze([this, first] { first(m_toplevels); });
    }
    template <typename Job>
    auto windows(Job job)
    {
        std::optional<decltype(job(m_toplevels))> result;
        m_compositor.run([&] { result = job(m_toplevels); });
        return *result;
    }
    WindowID open(const QByteArray& appID, bool isActivated = true)
    {
        return windows([&](auto& toplevels) { return toplevels.open(appID, isActivated); });
    }
    void setActivated(WindowID window, bool isActivated)
    {
        m_compositor.run([&] { m_toplevels.setActivated(window, isActivated); });
    }
    void setAppID(WindowID window, const QByteArray& appID)
    {
        m_compositor.run([&] { m_toplevels.setAppID(window, appID); });
    }
    void close(WindowID window)
    {
        m_compositor.run([&] { m_toplevels.close(window); });
    }
    std::vector<WindowID> activations()
    {
        return windows([](auto& toplevels) { return toplevels.activations(); });
    }

    // What is seen of it.
    Application front()
    {
        if (!m_workspace) {
            m_workspace = std::make_unique<WaylandWorkspace>(desktop());
        }
        return std::dynamic_pointer_cast<PasteTarget>(m_workspace->frontmostApplication());
    }
    /// What is in front, once it is this.
    Application inFront(const std::optional<QString>& id)
    {
        Application application;
        EXPECT_TRUE(waitUntil([&] {
            application = front();
            return application && application->bundleIdentifier() == id;
        })) << id.value_or(u"none"_s).toStdString();
        return application;
    }
    /// What was in front in the last hour.
    QCoro::Task<std::vector<std::shared_ptr<RunningApplication>>> inFrontLately()
    {
        front();
        return m_workspace->inFrontDuring(std::chrono::hours(1));
    }
    void setFrontmostChanged(std::function<void()> changed)
    {
        front();
        m_workspace->setFrontmostChanged(std::move(changed));
    }
    bool nothingComesToFront()
    {
        return waitUntil([this] { return !front(); });
    }
    bool send(PasteChord chord = PasteChord::controlV)
    {
        VirtualKeyboardSender sender(desktop());
        return await(sender.send(chord, front(), [] { return true; })) == KeySender::Sending::sent;
    }
    template <typename Ask>
    auto keyboards(Ask ask)
    {
        std::optional<decltype(ask(m_keyboards))> result;
        m_compositor.run([&] { result = ask(m_keyboards); });
        return *result;
    }
    std::vector<Key> keys()
    {
        return keyboards([](auto& keyboards) { return keyboards.keys(); });
    }
    std::vector<QByteArray> keymaps()
    {
        return keyboards([](auto& keyboards) { return keyboards.keymaps(); });
    }
    bool letterIs(std::uint32_t key)
    {
        return waitUntil([&] {
            const auto strokes = desktop().strokes(PasteChord::controlV);
            return strokes && strokes->at(1).key == key;
        });
    }

private:
    TestCompositor m_compositor;
    TestToplevels& m_toplevels = m_compositor.add<TestToplevels>();
    TestKeyboards& m_keyboards = m_compositor.add<TestKeyboards>();
    QTemporaryDir m_entries;
    std::unique_ptr<WaylandDesktop> m_desktop;
    std::unique_ptr<WaylandWorkspace> m_workspace;
};

class WaylandDesktopWithoutSeatTest : public WaylandDesktopTest
{
protected:
    WaylandDesktopWithoutSeatTest()
        : WaylandDesktopTest({.hasSeat = false})
    {
    }
};

} // namespace tessly::test
