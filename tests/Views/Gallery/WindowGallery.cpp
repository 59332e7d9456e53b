#include "WindowGallery.h"

#include "OnboardingModel.h"
#include "Picture.h"
#include "QuickConfirmation.h"
#include "QuickStatusMenu.h"
#include "QuickStatusToolTip.h"
#include "SampleHistory.h"
#include "StatusMenu.h"
#include "TestSupport.h"
#include "ThreadExecutor.h"
#include "WindowViews.h"

#include <QtTest/QTest>

using namespace Qt::StringLiterals;

namespace tessly::test {

namespace {

// In milliseconds.
constexpr int laidOut = 250;

} // namespace

WindowGallery::WindowGallery()
    : m_store(
          m_folder.filePath(u"history.sqlite"_s), [this] { return m_storeNow; },
          std::make_unique<ThreadExecutor>("store"))
    , m_model(
          {m_store, m_settings, m_pasteService, m_launchAtLogin, m_pasteboard, m_converter,
           m_workspace, m_clock})
{
    saveSampleHistory(m_store, m_storeNow, m_clock.now());
    m_settings.setIgnoredBundleIDsText(
        u"org.keepassxc.KeePassXC\ncom.bitwarden.desktop\norg.gnome.seahorse.Application"_s);
}

void WindowGallery::photograph(const QDir& folder, const QString& prefix)
{
    photographSettings(folder, prefix);
    photographOnboarding(folder, prefix);
    photographStatusItem(folder, prefix);
    photographConfirmation(folder, prefix);
}

void WindowGallery::photographSettings(const QDir& folder, const QString& prefix)
{
    SettingsModel settings({m_model, m_pasteboard, u"0.1.0"_s});
    reload(settings);
    const auto view = makeSettingsView(settings);
    view->show();
    QQuickWindow& window = view->window();
    const QString name = prefix + u"settings-"_s;
    savePicture(window, folder, name + u"general"_s);
    for (int i = 0; i < 5; ++i) {
        QTest::keyClick(&window, Qt::Key_Tab);
    }
    savePicture(window, folder, name + u"general-focus"_s);

    settings.setSelectedTab(1);
    savePicture(window, folder, name + u"privacy"_s);
    for (int i = 0; i < 4; ++i) {
        QTest::keyClick(&window, Qt::Key_Tab);
    }
    savePicture(window, folder, name + u"privacy-focus"_s);
    m_keys.setAllowed(false);
    m_pasteboard.setAccess(PasteboardAccess::denied);
    m_model.refreshAutomaticPasteAccess(false);
    reload(settings);
    for (int i = 0; i < 3; ++i) {
        QTest::keyClick(&window, Qt::Key_Tab, Qt::ShiftModifier);
    }
    savePicture(window, folder, name + u"privacy-required"_s);
    m_keys.setAllowed(true);
    m_pasteboard.setAccess(PasteboardAccess::available);
    m_model.refreshAutomaticPasteAccess(false);
    reload(settings);
    settings.clearUnpinnedHistory();
    savePicture(window, folder, name + u"clear-unpinned"_s);
    settings.cancelClearing();
    settings.clearEverything();
    QTest::keyClick(&window, Qt::Key_Tab);
    savePicture(window, folder, name + u"clear-everything"_s);
    settings.cancelClearing();
    settings.clearSystemClipboard();
    savePicture(window, folder, name + u"banner"_s);
    m_model.setBanner(std::nullopt);

    settings.setSelectedTab(2);
    savePicture(window, folder, name + u"shortcuts"_s);
    settings.setSelectedTab(3);
    savePicture(window, folder, name + u"about"_s);
    view->close();
}

/// Until what is shown is laid out: what the keyboard goes to is scrolled to as it stands then.
void WindowGallery::reload(SettingsModel& settings)
{
    settings.reload();
    await(m_store.statistics());
    QTest::qWait(laidOut);
}

void WindowGallery::photographOnboarding(const QDir& folder, const QString& prefix)
{
    OnboardingModel onboarding(m_model, [] {});
    const auto view = makeOnboardingView(onboarding);
    view->show();
    savePicture(view->window(), folder, prefix + u"onboarding"_s);
    QTest::keyClick(&view->window(), Qt::Key_Tab);
    savePicture(view->window(), folder, prefix + u"onboarding-focus"_s);
    view->close();
}

void WindowGallery::photographStatusItem(const QDir& folder, const QString& prefix)
{
    QuickStatusMenu menu;
    auto items = makeStatusMenu(false);
    menu.show(items, QPoint(300, 0), [](const QString&) {});
    QTest::keyClick(&menu.window(), Qt::Key_Down);
    savePicture(menu.window(), folder, prefix + u"status-menu"_s);
    menu.close();
    QuickStatusToolTip toolTip;
    toolTip.show(statusItemToolTip, QRect(300, 0, 24, 24));
    savePicture(toolTip.window(), folder, prefix + u"status-tool-tip"_s);
    toolTip.hide();
}

void WindowGallery::photographConfirmation(const QDir& folder, const QString& prefix)
{
    QuickConfirmation confirmation;
    confirmation.ask(u"Clear unpinned history?"_s, u"Clear"_s, u"Cancel"_s, [](bool) {});
    savePicture(confirmation.window(), folder, prefix + u"confirmation"_s);
    QTest::keyClick(&confirmation.window(), Qt::Key_Escape);
}

} // namespace tessly::test
