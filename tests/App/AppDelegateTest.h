#pragma once

#include "AppDelegate.h"

#include "AppPaths.h"
#include "FakeBundle.h"
#include "FakeHotKeyCenter.h"
#include "FakeImageConverter.h"
#include "FakeKeyEventPoster.h"
#include "FakeLoginItem.h"
#include "FakeOutsideClickMonitor.h"
#include "FakePasteboard.h"
#include "FakeStatusItem.h"
#include "FakeViewFactory.h"
#include "FakeWorkspace.h"
#include "TestSupport.h"
#include "VirtualClock.h"

#include <gmock/gmock.h>

#include <QCursor>
#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QTemporaryDir>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

namespace tessly::test {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

/// A desktop in memory, which outlives the program that runs on it.
class FakePlatform final : public DesktopPlatform
{
public:
    struct Parts
    {
        FakePasteboard pasteboard;
        FakeWorkspace workspace;
        FakeKeyEventPoster keys;
        FakeOutsideClickMonitor outsideClicks;
        FakeHotKeyCenter hotKeys;
        FakeStatusItem statusItem;
        FakeImageConverter imageConverter;
        FakeLoginItem loginItem;
        FakeBundle bundle;
        /// How often the user was to be asked again, and whether the desktop does that.
        int asked = 0;
        bool canAsk = true;
    };

    explicit FakePlatform(Parts& parts)
        : m_parts(parts)
    {
    }

    Pasteboard& pasteboard() override { return m_parts.pasteboard; }
    Workspace& workspace() override { return m_parts.workspace; }
    KeyEventPoster& keys() override { return m_parts.keys; }
    OutsideClickMonitor& outsideClicks() override { return m_parts.outsideClicks; }
    HotKeyCenter& hotKeys() override { return m_parts.hotKeys; }
    [[nodiscard]] QStringList protocols() const override { return {u"fake"_s}; }
    StatusItem& statusItem() override { return m_parts.statusItem; }
    ImageConverter& imageConverter() override { return m_parts.imageConverter; }
    LoginItem& loginItem() override { return m_parts.loginItem; }
    const Bundle& bundle() override { return m_parts.bundle; }
    [[nodiscard]] bool askAgain() override
    {
        ++m_parts.asked;
        return m_parts.canAsk;
    }

private:
    Parts& m_parts;
};

/// The program's delegate over real files in a folder of the test's own and a desktop of fakes, in
/// virtual time. The store works on its own thread.
class AppDelegateTest : public testing::Test
{
protected:
    AppDelegateTest()
    {
        qputenv("XDG_DATA_HOME", QFile::encodeName(m_folder.filePath(u"data"_s)));
        qputenv("XDG_CONFIG_HOME", QFile::encodeName(m_folder.filePath(u"config"_s)));
        qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent");
        qunsetenv("TESSLY_UI_TESTING");
    }

    QString settingsPath() const { return m_folder.filePath(u"config/com.brackmoor.tessly.ini"_s); }
    void writeSettings(const QByteArray& lines)
    {
        QDir().mkpath(m_folder.filePath(u"config"_s));
        QFile file(settingsPath());
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("[General]\n" + lines);
    }

    /// The program as it was started before.
    void start()
    {
        writeSettings("hasCompletedOnboarding=true\n" + m_settings);
        startFirst();
    }
    void startFirst()
    {
        launch();
        wait();
    }
    /// As `startFirst`, and goes on at once.
    void launch()
    {
        m_delegate = std::make_unique<AppDelegate>(AppDelegate::Surroundings{
            .clock = m_clock,
            .makePlatform = [this] { return std::make_unique<FakePlatform>(m_desktop); },
            .views = [this] { return &m_views; },
            .quit = [this] { ++m_quits; },
            .fail = [this](const std::exception& error) { m_failure = error.what(); },
        });
        m_delegate->applicationDidFinishLaunching();
        settle();
    }
    /// Until the history is there.
    void wait()
    {
        ASSERT_TRUE(waitUntil([this] { return !m_delegate->isOpeningHistory(); }));
        settle();
    }
    void stop()
    {
        m_delegate->applicationWillTerminate();
        m_delegate.reset();
    }

    void settle() { m_clock.advance(Clock::Duration::zero()); }
    /// Lets the monitor look at the clipboard.
    void tick()
    {
        m_clock.advance(350ms);
        settle();
    }
    AppModel& model() { return m_delegate->model(); }
    QString message() { return model().banner() ? model().banner()->message : QString(); }
    std::optional<AppModel::BannerKind> bannerKind()
    {
        return model().banner() ? std::optional(model().banner()->kind) : std::nullopt;
    }
    bool bannerBecomes(const QString& text)
    {
        return waitUntil([&] { return message() == text; });
    }
    bool listBecomes(std::size_t count)
    {
        return waitUntil([&] { return model().clips().size() == count; });
    }
    void copy(QByteArrayView text)
    {
        m_desktop.pasteboard.copyText(text);
        tick();
    }
    QStringList openTrayMenu()
    {
        m_desktop.statusItem.rightClick();
        return m_views.menu->titles();
    }

    QTemporaryDir m_folder;
    VirtualClock m_clock;
    FakePlatform::Parts m_desktop;
    FakeViewFactory m_views;
    int m_quits = 0;
    QByteArray m_failure;
    /// Lines of the settings file.
    QByteArray m_settings;
    std::unique_ptr<AppDelegate> m_delegate;
};

using BannerKind = AppModel::BannerKind;
inline constexpr quint32 modifiers = HotKeyCenter::optionKey | HotKeyCenter::shiftKey;

} // namespace tessly::test
