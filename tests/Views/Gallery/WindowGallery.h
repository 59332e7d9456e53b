#pragma once

#include "AppModel.h"
#include "FakeBundle.h"
#include "FakeImageConverter.h"
#include "FakeKeyEventPoster.h"
#include "FakeLoginItem.h"
#include "FakePasteboard.h"
#include "FakeUserDefaults.h"
#include "FakeWorkspace.h"
#include "FixedDateClock.h"
#include "SettingsModel.h"

#include <QDir>
#include <QQuickWindow>
#include <QTemporaryDir>

namespace tessly::test {

/// The real settings, onboarding, status menu and alert over a history of their own, brought into
/// every state worth looking at.
class WindowGallery
{
public:
    WindowGallery();
    WindowGallery(const WindowGallery&) = delete;
    WindowGallery& operator=(const WindowGallery&) = delete;

    /// Pictures under the palette of the moment; their names begin with `prefix`.
    void photograph(const QDir& folder, const QString& prefix);

private:
    void photographSettings(const QDir& folder, const QString& prefix);
    void reload(SettingsModel& settings);
    void photographOnboarding(const QDir& folder, const QString& prefix);
    void photographStatusItem(const QDir& folder, const QString& prefix);
    void photographConfirmation(const QDir& folder, const QString& prefix);

    QTemporaryDir m_folder;
    FixedDateClock m_clock;
    double m_storeNow = 0;
    FakeUserDefaults m_defaults;
    AppSettings m_settings{m_defaults};
    FakePasteboard m_pasteboard;
    FakeImageConverter m_converter;
    FakeWorkspace m_workspace;
    FakeKeyEventPoster m_keys;
    FakeLoginItem m_loginItem;
    FakeBundle m_bundle;
    LaunchAtLoginService m_launchAtLogin{{m_loginItem, m_bundle, m_defaults}};
    ClipStore m_store;
    PasteService m_pasteService{m_pasteboard, m_keys, m_clock, {}};
    AppModel m_model;
};

} // namespace tessly::test
