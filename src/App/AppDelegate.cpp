#include "AppDelegate.h"

#include "ActivationToken.h"
#include "AppPaths.h"
#include "ClipStoreError.h"
#include "ConfirmationView.h"
#include "StatusMenu.h"
#include "StatusMenuView.h"
#include "StatusToolTipView.h"
#include "ThreadExecutor.h"
#include "Trace.h"

#include <QAccessible>
#include <QCursor>
#include <QDir>
#include <QFileInfo>
#include <QGuiApplication>
#include <QLoggingCategory>
#include <QScreen>
#include <QSessionManager>

#include <map>
#include <utility>

using namespace Qt::StringLiterals;

namespace tessly {

namespace {

Q_LOGGING_CATEGORY(lcAppDelegate, "com.brackmoor.tessly.AppDelegate")

/// For how long being asked to quit once more means nothing.
constexpr Clock::Duration quitRepeats = std::chrono::seconds(1);

// From a program that starts again to the one that it becomes: its user has paused it.
constexpr const char* pausedVariable = "TESSLY_STARTS_PAUSED";

constexpr const char* uiTestingVariable = "TESSLY_UI_TESTING";

/// Empty if the bundle has none.
QString shortVersion(const Bundle& bundle)
{
    const QVariant version = bundle.objectForInfoDictionaryKey(u"CFBundleShortVersionString"_s);
    return version.typeId() == QMetaType::QString ? version.toString() : QString();
}

/// A path as people write it.
QString fromHome(const QString& path)
{
    const QString home = QDir::homePath() + u'/';
    return path.startsWith(home) ? u"~/"_s + path.mid(home.size()) : path;
}

/// A desktop that restores its last session would start a second instance beside the login item's.
void stayOutOfRestoredSessions(QSessionManager& session)
{
    session.setRestartHint(QSessionManager::RestartNever);
}

PasteService::Hooks pasteHooks(DesktopPlatform& platform)
{
    return {
        .checkAutomaticPasteAccess = [&platform] { return platform.keys().isAllowed(); },
        .requestAutomaticPasteAccess = [&platform] { return platform.keys().requestAccess(); },
        .openSettingsURL = [&platform](const QUrl&) { return platform.askAgain(); },
    };
}

} // namespace

AppDelegate::AppDelegate(Surroundings surroundings)
    : m_surroundings(std::move(surroundings))
    , m_platform(m_surroundings.makePlatform())
    , m_hotKeys(m_platform->hotKeys())
    , m_directPasteKeys(m_hotKeys, [this](int position) { pastePosition(position); })
    , m_defaults(AppPaths::settingsPath(), std::make_unique<ThreadExecutor>("tessly-settings"))
    , m_settings(m_defaults)
    , m_files(m_surroundings.clock)
{
    if (qEnvironmentVariableIsSet(uiTestingVariable)) {
        m_uiTestingMode = qEnvironmentVariable(uiTestingVariable);
    }
    openHistory();
    m_pasteService = std::make_unique<PasteService>(
        m_platform->pasteboard(), m_platform->keys(), m_surroundings.clock,
        pasteHooks(*m_platform));
    m_launchAtLoginService =
        std::make_unique<LaunchAtLoginService>(LaunchAtLoginService::Dependencies{
            .service = m_platform->loginItem(),
            .bundle = m_platform->bundle(),
            .defaults = m_defaults,
        });
    m_model = std::make_unique<AppModel>(AppModel::Dependencies{
        .store = *m_store,
        .settings = m_settings,
        .pasteService = *m_pasteService,
        .launchAtLoginService = *m_launchAtLoginService,
        .pasteboard = m_platform->pasteboard(),
        .imageConverter = m_platform->imageConverter(),
        .workspace = m_platform->workspace(),
        .clock = m_surroundings.clock,
    });
    m_rescueNotices = std::make_unique<RescueNotices>(m_defaults, *m_model);
    historyOpened(this);
}

AppDelegate::~AppDelegate() = default;

void AppDelegate::openHistory()
{
    AppPaths::prepareDirectories();
    m_store = std::make_unique<ClipStore>(ClipStore::Means{
        .databasePath = AppPaths::databasePath(),
        .now = [this] { return m_surroundings.clock.now(); },
        .executor = std::make_unique<ThreadExecutor>("tessly-store"),
        .makeReader = [] { return std::make_unique<ThreadExecutor>("tessly-reader"); },
        .setAside =
            [] {
                const QString folder = AppPaths::applicationSupportDirectory();
                auto rescueFolder = AppPaths::recoverDatabaseFiles(folder);
                AppPaths::prepareDirectories();
                return rescueFolder;
            },
        .maximumHistory = m_settings.trimLimit(),
    });
}

/// Waits for the check of the history, and tells of what it has found.
QCoro::Task<> AppDelegate::historyOpened(QPointer<AppDelegate> self)
{
    ClipStore::Opening opening;
    try {
        opening = co_await self->m_store->opened();
    } catch (const std::exception& error) {
        if (self) {
            self->m_surroundings.fail(error);
        }
        co_return;
    }
    if (!self) {
        co_return;
    }
    self->m_isOpeningHistory = false;
    trace("checked");
    std::optional<QString> rescueFolder = opening.damagedFolder;
    if (rescueFolder) {
        // What was listed by then was that of the damaged one.
        self->m_model->reload(AppModel::Debounce::no);
        const QString folder = QFileInfo(*rescueFolder).fileName();
        self->m_rescueNotices->tell(
            folder, u"A damaged history database was preserved in ‘"_s + folder +
                        u"’. Tessly started with a fresh history."_s);
    } else {
        // An earlier run may not have been able to end it.
        rescueFolder = AppPaths::unfinishedRecovery(AppPaths::applicationSupportDirectory());
    }
    if (rescueFolder) {
        bringOver(self, *rescueFolder);
    }
}

/// Copies what can be read of a damaged history into the fresh one, and tells of it.
QCoro::Task<> AppDelegate::bringOver(QPointer<AppDelegate> self, QString rescueFolder)
{
    ClipRescue rescue;
    try {
        rescue = co_await self->m_store->rescue(
            QDir(rescueFolder).filePath(QFileInfo(AppPaths::databasePath()).fileName()),
            self->m_settings.trimLimit());
    } catch (const std::exception& error) {
        qCWarning(lcAppDelegate, "The damaged history was not brought over: %s", error.what());
    }
    if (!self || rescue.kept == 0) {
        co_return;
    }
    self->m_model->reload(AppModel::Debounce::no);
    const QString folder = QFileInfo(rescueFolder).fileName();
    self->m_rescueNotices->tell(
        folder,
        u"A damaged history database was preserved in ‘%1’. %2 of the %3 entries that it tells of "
        "were brought over."_s.arg(folder)
            .arg(rescue.kept)
            .arg(rescue.found));
}

void AppDelegate::applicationDidFinishLaunching()
{
    qGuiApp->installEventFilter(this);
    connect(
        qGuiApp, &QGuiApplication::saveStateRequest, this, stayOutOfRestoredSessions,
        Qt::DirectConnection);
    connect(
        qGuiApp, &QGuiApplication::applicationStateChanged, this,
        [this](Qt::ApplicationState state) {
            if (state == Qt::ApplicationActive) {
                applicationDidBecomeActive();
            }
        });
    setupStatusItem();
    makeQuickPasteController();
    m_model->hotKeyConfigurationDidChange = [self = QPointer(this)] {
        if (self) {
            if (self->m_settings.directPasteShortcuts()) {
                self->m_platform->hotKeys().forgetRefusal();
            }
            setupHotKeys(self);
        }
    };
    repairLoginItem();
    // At first there is the welcome window, and no question beside it.
    m_platform->hotKeys().setMayAsk(m_settings.hasCompletedOnboarding());
    connect(&m_settings, &AppSettings::hasCompletedOnboardingChanged, this, [this] {
        m_platform->hotKeys().setMayAsk(m_settings.hasCompletedOnboarding());
    });
    setupHotKeys(this);
    if (m_settings.hasCompletedOnboarding()) {
        m_model->clipboardMonitor().start();
        m_model->reload(AppModel::Debounce::no);
    } else {
        showOnboarding();
    }
    if (qEnvironmentVariableIsSet(pausedVariable)) {
        qunsetenv(pausedVariable);
        m_model->setRecordingPaused(true);
    }
    // Whatever the program was started with was for that window.
    keepActivationToken({});
    m_commands = std::make_unique<HistoryCommands>(HistoryCommands::Dependencies{
        .model = *m_model,
        .store = *m_store,
        .workspace = m_platform->workspace(),
        .abilities = abilities(),
    });
    m_bus = std::make_unique<BusService>(busActions(), *m_commands);
    // Assistive programs are found on the bus, for which Qt would wait.
    connect(
        m_bus.get(), &BusService::connectedToBus, this, [] { QAccessible::setRootObject(qApp); });
    m_bus->start();
}

void AppDelegate::applicationDidBecomeActive()
{
    // What answered late is known by now.
    tellOnboardingOfDesktop();
    m_model->refreshAutomaticPasteAccess(true);
}

void AppDelegate::applicationWillTerminate()
{
    if (m_startsAgain && m_model->clipboardMonitor().isPaused()) {
        qputenv(pausedVariable, "1");
    }
    m_bus.reset();
    m_model->clipboardMonitor().stop();
    m_hotKeys.unregisterAll();
    m_hotKeys.removeEventHandler();
    m_quickPasteController->close();
}

void AppDelegate::desktopWentAway()
{
    m_model->saveWhatWasRead();
    // Does first what it was given.
    m_store.reset();
}

bool AppDelegate::eventFilter(QObject* watched, QEvent* event)
{
    // The session ends. Left to the toolkit, any window that does not close would keep the program
    // running.
    if (watched == qGuiApp && event->type() == QEvent::Quit) {
        quitApplication();
        return true;
    }
    return QObject::eventFilter(watched, event);
}

void AppDelegate::setupStatusItem()
{
    StatusItem& item = m_platform->statusItem();
    item.setEvents({
        .leftClicked =
            [this](const StatusItem::Rectangle&) { m_quickPasteController->toggleByClick(); },
        .rightClicked = [this](const StatusItem::Rectangle&) { closePanel(); },
        .menu = [this] { return statusMenu(); },
        .menuRequested = [this](QPoint position) { showStatusMenu(position); },
        .toolTipRequested = [this](QRect icon) { showStatusToolTip(icon); },
        .toolTipDismissed =
            [this] {
                if (m_statusToolTip) {
                    m_statusToolTip->hide();
                }
            },
        .menuItemChosen = [this](const QString& action) { perform(action); },
        .presenceChanged = [this] { tellOnboardingOfDesktop(); },
    });
    item.setVisible(true);
}

void AppDelegate::makeQuickPasteController()
{
    m_previewModel = std::make_unique<PreviewModel>(PreviewModel::Dependencies{
        .model = *m_model,
        .store = *m_store,
        .images = m_platform->imageConverter(),
        .files = m_files,
        .clock = m_surroundings.clock,
    });
    m_panelModel = std::make_unique<PanelModel>(PanelModel::Dependencies{
        .model = *m_model,
        .preview = *m_previewModel,
        .pasteboard = m_platform->pasteboard(),
        .clock = m_surroundings.clock,
    });
    connect(m_panelModel.get(), &PanelModel::settingsRequested, this, &AppDelegate::openSettings);
    m_quickPasteController = std::make_unique<QuickPastePanelController>(
        QuickPastePanelController::Dependencies{
            .model = *m_model,
            .preview = *m_previewModel,
            .workspace = m_platform->workspace(),
            .outsideClicks = m_platform->outsideClicks(),
            .clock = m_surroundings.clock,
        },
        [this] { return panelAnchor(); },
        [this]() -> std::unique_ptr<PanelView> {
            ViewFactory* const views = m_surroundings.views();
            return views != nullptr ? views->makePanel(*m_panelModel, m_platform->panelSurface())
                                    : nullptr;
        },
        m_uiTestingMode ? QuickPastePanelController::KeepsOpen::forUITesting
                        : QuickPastePanelController::KeepsOpen::no);
}

void AppDelegate::repairLoginItem()
{
    try {
        m_launchAtLoginService->repairRegistrationIfNeeded();
    } catch (const std::exception&) {
        m_model->showBanner(u"Launch at login needs attention."_s, AppModel::BannerKind::warning);
    }
}

QCoro::Task<> AppDelegate::setupHotKeys(QPointer<AppDelegate> self)
{
    const auto state = self->m_settings.directPasteShortcuts() ? DirectPasteKeys::State::on
                                                               : DirectPasteKeys::State::off;
    const std::optional<QString> warning = co_await self->m_directPasteKeys.setUp(state);
    if (self && warning) {
        self->m_model->showBanner(*warning, AppModel::BannerKind::warning);
    }
}

QCoro::Task<std::optional<QRect>> AppDelegate::panelAnchor()
{
    if (QGuiApplication::primaryScreen() == nullptr) {
        co_return std::nullopt;
    }
    const StatusItem& item = m_platform->statusItem();
    const StatusItem::Rectangle icon = item.presence() == StatusItem::Presence::present
                                           ? item.rectangle()
                                           : StatusItem::Rectangle();
    if (icon && m_platform->panelSurface() == PanelSurface::window) {
        co_return icon;
    }
    // What a layer surface stands on is there by then, and not in front of it.
    const std::optional<QRect> place = co_await m_platform->panelAnchor();
    co_return icon ? icon : place;
}

HistoryCommands::Abilities AppDelegate::abilities()
{
    return {
        .capture =
            [this] { return m_platform->pasteboard().access() == PasteboardAccess::available; },
        .paste = [this] { return m_pasteService->checkAutomaticPasteAccess(); },
        .hotKeys = [this] { return m_platform->hotKeys().isAvailable(); },
        .tray =
            [this] { return m_platform->statusItem().presence() == StatusItem::Presence::present; },
        .protocols = [this] { return m_platform->protocols(); },
    };
}

BusActions AppDelegate::busActions()
{
    return {
        .show =
            [this] {
                trace("show-requested");
                openQuickPaste();
            },
        .hide = [this] { closePanel(); },
        .toggle = [this] { m_quickPasteController->toggle(); },
        .quit = [this] { quitApplication(); },
        .keepActivationToken = keepActivationToken,
    };
}

void AppDelegate::closePanel()
{
    if (m_quickPasteController) {
        m_quickPasteController->close();
    }
}

void AppDelegate::openQuickPaste()
{
    if (m_quickPasteController) {
        m_quickPasteController->show();
    }
}

/// While the panel is up, what is in front is the program itself.
void AppDelegate::pastePosition(int position)
{
    if (m_quickPasteController && m_quickPasteController->isShown()) {
        m_quickPasteController->pastePosition(position);
    } else {
        m_model->pasteGlobalPosition(position);
    }
}

void AppDelegate::toggleMonitoring()
{
    m_model->setRecordingPaused(!m_model->clipboardMonitor().isPaused());
}

void AppDelegate::showOnboarding()
{
    m_onboardingController = std::make_unique<OnboardingWindowController>(
        *m_model,
        [this](OnboardingModel& onboarding) {
            return make(&ViewFactory::makeOnboarding, onboarding);
        },
        [self = QPointer(this)] {
            if (self) {
                self->m_onboardingController->close();
                self->m_onboardingController.reset();
                self->openQuickPaste();
            }
        });
    tellOnboardingOfDesktop();
    m_onboardingController->show();
}

void AppDelegate::tellOnboardingOfDesktop()
{
    if (m_onboardingController) {
        m_onboardingController->setDesktop({
            .recording = m_platform->recordingNote(),
            .pasting = m_platform->pastingNote(),
            .storage = u"In %1, for nobody else to read."_s.arg(
                fromHome(AppPaths::applicationSupportDirectory())),
            .hasTray = m_platform->statusItem().presence() != StatusItem::Presence::absent,
        });
    }
}

void AppDelegate::showStatusMenu(QPoint position)
{
    if (!m_statusMenu) {
        m_statusMenu = make(&ViewFactory::makeStatusMenu);
    }
    if (m_statusMenu) {
        m_statusMenu->show(
            statusMenu(), position, [this](const QString& action) { perform(action); });
    }
}

void AppDelegate::showStatusToolTip(const QRect& icon)
{
    if (!m_statusToolTip) {
        m_statusToolTip = make(&ViewFactory::makeStatusToolTip);
    }
    if (m_statusToolTip) {
        m_statusToolTip->show(statusItemToolTip, icon);
    }
}

std::vector<StatusMenuItem> AppDelegate::statusMenu()
{
    return makeStatusMenu(m_model->clipboardMonitor().isPaused());
}

void AppDelegate::perform(const QString& menuAction)
{
    const std::map<QString, void (AppDelegate::*)()> actions = {
        {u"openQuickPaste"_s, &AppDelegate::openQuickPaste},
        {u"toggleMonitoring"_s, &AppDelegate::toggleMonitoring},
        {u"clearHistory"_s, &AppDelegate::clearHistory},
        {u"openSettings"_s, &AppDelegate::openSettings},
        {u"quitApplication"_s, &AppDelegate::quitApplication},
    };
    if (const auto found = actions.find(menuAction); found != actions.end()) {
        (this->*found->second)();
    }
}

void AppDelegate::clearHistory()
{
    if (!m_confirmation) {
        m_confirmation = make(&ViewFactory::makeConfirmation);
    }
    if (!m_confirmation) {
        return;
    }
    m_confirmation->ask(
        u"Clear unpinned history?"_s, u"Clear"_s, u"Cancel"_s,
        [self = QPointer(this)](bool isConfirmed) {
            if (self && isConfirmed) {
                self->m_model->clearHistory(false);
            }
        });
}

void AppDelegate::openSettings()
{
    closePanel();
    if (!m_settingsController) {
        m_settingsController = std::make_unique<SettingsWindowController>(
            SettingsModel::Dependencies{
                .model = *m_model,
                .pasteboard = m_platform->pasteboard(),
                .version = shortVersion(m_platform->bundle()),
            },
            m_surroundings.clock,
            [this](SettingsModel& settings) { return make(&ViewFactory::makeSettings, settings); });
    }
    m_settingsController->show();
}

void AppDelegate::startAgain()
{
    if (!m_isQuitting) {
        quitApplication();
        m_startsAgain = true;
    }
}

void AppDelegate::quitApplication()
{
    m_startsAgain = false;
    if (std::exchange(m_isQuitting, true)) {
        // The end of a session is often told more than once in a row; who asks again later does
        // not want to wait.
        if (!m_quitRepeats) {
            m_surroundings.quit();
        }
        return;
    }
    m_quitRepeats = m_surroundings.clock.after(quitRepeats, [this] { m_quitRepeats.reset(); });
    settleAndQuit(this);
}

/// What was copied just now is recorded first.
QCoro::Task<> AppDelegate::settleAndQuit(QPointer<AppDelegate> self)
{
    co_await self->m_model->settleForGood();
    if (self) {
        self->m_surroundings.quit();
    }
}

} // namespace tessly
