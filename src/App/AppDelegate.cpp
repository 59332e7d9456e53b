#include "AppDelegate.h"

#include "AppPaths.h"
#include "ClipStoreError.h"
#include "ThreadExecutor.h"
#include "Trace.h"

#include <QCoreApplication>
#include <QCursor>
#include <QFileInfo>
#include <QGuiApplication>
#include <QLoggingCategory>
#include <QScreen>
#include <QStandardPaths>

using namespace Qt::StringLiterals;

namespace tessly {

namespace {

Q_LOGGING_CATEGORY(log, "com.brackmoor.tessly.AppDelegate")

QString settingsPath()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
           u"/com.brackmoor.tessly.ini"_s;
}

PasteService::Hooks pasteHooks(DesktopPlatform& platform)
{
    return {
        .checkAutomaticPasteAccess = [&platform] { return platform.keys().isAllowed(); },
        .requestAutomaticPasteAccess = [&platform] { return platform.keys().requestAccess(); },
        .openSettingsURL =
            [&platform](const QUrl& url) { return platform.workspace().openURL(url); },
    };
}

} // namespace

AppDelegate::AppDelegate()
    : m_defaults(settingsPath())
    , m_settings(m_defaults)
{
    openHistory();
    m_platform = makeDesktopPlatform([] {
        qCCritical(log) << "The connection to the desktop was lost.";
        QCoreApplication::exit(EXIT_FAILURE);
    });
    m_pasteService = std::make_unique<PasteService>(
        m_platform->pasteboard(), m_platform->keys(), m_clock, pasteHooks(*m_platform));
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
        .clock = m_clock,
    });
    if (m_rescueFolder) {
        m_model->setBanner(AppModel::Banner{
            u"A damaged history database was preserved in ‘"_s +
                QFileInfo(*m_rescueFolder).fileName() +
                u"’. Tessly started with a fresh history."_s,
            AppModel::BannerKind::warning});
    }
}

AppDelegate::~AppDelegate() = default;

std::unique_ptr<ClipStore> AppDelegate::makeStore() const
{
    return std::make_unique<ClipStore>(
        AppPaths::databasePath(), [this] { return m_clock.now(); },
        std::make_unique<ThreadExecutor>("tessly-store"));
}

void AppDelegate::openHistory()
{
    AppPaths::prepareDirectories();
    try {
        m_store = makeStore();
    } catch (const ClipStoreError& error) {
        if (error.errorCase() != ClipStoreError::Case::corruptedDatabase) {
            throw;
        }
        m_rescueFolder = AppPaths::recoverDatabaseFiles(AppPaths::applicationSupportDirectory());
        AppPaths::prepareDirectories();
        m_store = makeStore();
    }
}

void AppDelegate::applicationDidFinishLaunching()
{
    m_panelModel = std::make_unique<PanelModel>(PanelModel::Dependencies{
        .model = *m_model,
        .pasteboard = m_platform->pasteboard(),
        .clock = m_clock,
    });
    m_quickPasteController = std::make_unique<QuickPastePanelController>(
        QuickPastePanelController::Dependencies{
            .model = *m_model,
            .workspace = m_platform->workspace(),
            .outsideClicks = m_platform->outsideClicks(),
        },
        [this] { return panelAnchor(); }, [this] { return makePanelView(); },
        qEnvironmentVariableIsSet("TESSLY_UI_TESTING")
            ? QuickPastePanelController::KeepsOpen::forUITesting
            : QuickPastePanelController::KeepsOpen::no);
    m_model->clipboardMonitor().start();
    trace("recording");
    m_model->reload(AppModel::Debounce::no);
    m_commands = std::make_unique<HistoryCommands>(HistoryCommands::Dependencies{
        .model = *m_model,
        .store = *m_store,
        .workspace = m_platform->workspace(),
        .abilities = abilities(),
    });
    m_bus = std::make_unique<BusService>(busActions(), *m_commands);
    m_bus->start();
}

void AppDelegate::applicationWillTerminate()
{
    m_bus.reset();
    m_model->clipboardMonitor().stop();
    m_quickPasteController->close();
}

std::unique_ptr<PanelView> AppDelegate::makePanelView()
{
    ViewFactory* const views = m_views.factory();
    return views != nullptr ? views->makePanel(*m_panelModel) : nullptr;
}

std::optional<QRect> AppDelegate::panelAnchor() const
{
    if (QGuiApplication::primaryScreen() == nullptr) {
        return std::nullopt;
    }
    return QRect(QCursor::pos(), QSize(1, 1));
}

HistoryCommands::Abilities AppDelegate::abilities()
{
    return {
        .capture =
            [this] { return m_platform->pasteboard().access() == PasteboardAccess::available; },
        .paste = [this] { return m_pasteService->checkAutomaticPasteAccess(); },
    };
}

BusActions AppDelegate::busActions()
{
    return {
        .show =
            [this] {
                trace("show-requested");
                m_quickPasteController->show();
            },
        .hide = [this] { m_quickPasteController->close(); },
        .toggle =
            [this] {
                if (m_quickPasteController->isShown()) {
                    m_quickPasteController->close();
                } else {
                    m_quickPasteController->show();
                }
            },
        .quit = [] { QCoreApplication::exit(); },
    };
}

} // namespace tessly
