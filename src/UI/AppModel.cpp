#include "AppModel.h"

#include <QLoggingCategory>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace tessly {

namespace {

/// How long the user must pause in typing before a search starts.
constexpr Clock::Duration searchDebounce = 120ms;
constexpr Clock::Duration bannerDuration = 4s;
/// The start has other things to do than to wipe what the last run may have left.
constexpr Clock::Duration firstScrubDelay = 30s;
/// When a save that failed is tried again if nothing is copied before, and how many copies are held
/// for that.
constexpr Clock::Duration saveRetryDelay = 5s;
constexpr std::size_t unsavedAtMost = 3;
/// How long what is being read may hold up what the user asks for, and the end of the program.
constexpr Clock::Duration settleTimeout = 500ms;
constexpr Clock::Duration lastSettleTimeout = 1s;

/// How long after a wiping that failed it is tried again; after each further one twice as long.
constexpr Clock::Duration scrubRetryDelay = 1min;
constexpr Clock::Duration longestScrubRetryDelay = 1h;

Q_LOGGING_CATEGORY(lcAppModel, "com.brackmoor.tessly.AppModel")

} // namespace

AppModel::AppModel(Dependencies dependencies, QObject* parent)
    : QObject(parent)
    , m_dependencies(dependencies)
    , m_automaticPasteAccessGranted(dependencies.pasteService.checkAutomaticPasteAccess())
    , m_scrubRetryDelay(scrubRetryDelay)
{
}

AppModel::~AppModel()
{
    m_searchStop.request_stop();
}

ClipboardMonitor& AppModel::clipboardMonitor()
{
    if (!m_clipboardMonitor) {
        const QPointer<AppModel> self(this);
        m_clipboardMonitor = std::make_unique<ClipboardMonitor>(
            ClipboardMonitor::Dependencies{
                .pasteboard = m_dependencies.pasteboard,
                .settings = m_dependencies.settings,
                .imageConverter = m_dependencies.imageConverter,
                .workspace = m_dependencies.workspace,
                .clock = m_dependencies.clock},
            [self](
                const ClipPayload& payload, std::optional<QString> sourceAppName,
                std::optional<QString> sourceBundleID) {
                if (self) {
                    self->captured({payload, std::move(sourceAppName), std::move(sourceBundleID)});
                }
            },
            [self](ClipboardMonitor::AccessIssue issue) {
                if (self) {
                    self->reportAccessIssue(issue);
                }
            });
    }
    return *m_clipboardMonitor;
}

const Clip* AppModel::selectedClip() const
{
    if (!m_selectedID) {
        return m_clips.empty() ? nullptr : &m_clips.front();
    }
    const auto found = std::ranges::find(m_clips, *m_selectedID, &Clip::id);
    return found == m_clips.end() ? nullptr : &*found;
}

void AppModel::setQuery(const QString& query)
{
    if (std::exchange(m_query, query) != query) {
        userGoesOn();
        Q_EMIT queryChanged();
    }
}

void AppModel::setSelectedKind(std::optional<ClipKind> kind)
{
    if (std::exchange(m_selectedKind, kind) != kind) {
        userGoesOn();
        Q_EMIT selectedKindChanged();
    }
}

void AppModel::setSelectedID(std::optional<QUuid> id)
{
    if (std::exchange(m_selectedID, id) != id) {
        userGoesOn();
        Q_EMIT selectedIDChanged();
    }
}

void AppModel::setPanelPresented(bool presented)
{
    if (std::exchange(m_isPanelPresented, presented) == presented) {
        return;
    }
    userGoesOn();
    if (presented) {
        setSelectedID(m_clips.empty() ? std::nullopt : std::optional(m_clips.front().id));
        m_opening = Opening::settling;
        // Whoever opens the panel asks for the list next.
        m_isReloading = true;
    }
    Q_EMIT isPanelPresentedChanged();
    if (!presented) {
        return;
    }
    settleOpening(this, ++m_openings);
    if (std::exchange(m_isLastErrorUnseen, false) && m_lastError) {
        showBanner(*m_lastError, BannerKind::error);
    }
}

/// What was copied just now is a row soon, and what nobody told of as well.
QCoro::Task<> AppModel::settleOpening(QPointer<AppModel> self, quint64 opening)
{
    if (self->m_clipboardMonitor) {
        co_await self->m_clipboardMonitor->settle(settleTimeout);
    }
    if (self && self->m_openings == opening && self->m_opening == Opening::settling) {
        self->m_opening = Opening::listing;
        self->finishOpening();
    }
}

/// What is saved is listed by the reload that follows.
void AppModel::finishOpening()
{
    if (m_opening == Opening::listing && m_savesUnderWay == 0 && !m_isReloading) {
        m_opening = Opening::done;
        callWhenListed();
    }
}

/// What the panel's opening, or a key that was pressed, still waits for is no longer wanted.
void AppModel::userGoesOn()
{
    m_opening = Opening::done;
    m_whenListed.clear();
}

void AppModel::setCurrentTargetApplication(std::shared_ptr<RunningApplication> application)
{
    if (m_currentTargetApplication != application) {
        m_currentTargetApplication = std::move(application);
        Q_EMIT currentTargetApplicationChanged();
    }
}

void AppModel::setBanner(std::optional<Banner> banner)
{
    m_bannerTimer.reset();
    m_isBannerTimed = false;
    m_banner = std::move(banner);
    Q_EMIT bannerChanged();
}

void AppModel::showBanner(const QString& message, BannerKind kind)
{
    setBanner(Banner{message, kind});
    m_isBannerTimed = true;
    startBannerTimer();
}

/// The banner's time is that in which it can be seen.
void AppModel::startBannerTimer()
{
    if (m_isBannerTimed && m_notices.empty()) {
        m_bannerTimer =
            m_dependencies.clock.after(bannerDuration, [this] { setBanner(std::nullopt); });
    }
}

void AppModel::showNotice(const QString& name, const Banner& banner)
{
    m_bannerTimer.reset();
    const auto found = std::ranges::find(m_notices, name, &Notice::name);
    if (found != m_notices.end()) {
        found->banner = banner;
    } else {
        m_notices.push_back({name, banner});
    }
    Q_EMIT bannerChanged();
}

void AppModel::dismissBanner()
{
    if (m_notices.empty()) {
        setBanner(std::nullopt);
        return;
    }
    const QString name = m_notices.front().name;
    m_notices.pop_front();
    startBannerTimer();
    Q_EMIT bannerChanged();
    Q_EMIT noticeDismissed(name);
}

void AppModel::showError(const std::exception& error)
{
    showBanner(QString::fromUtf8(error.what()), BannerKind::error);
}

void AppModel::captured(Capture capture)
{
    // The store takes them in this order.
    saveUnsaved();
    save(this, std::move(capture));
}

QCoro::Task<> AppModel::save(QPointer<AppModel> self, Capture capture)
{
    ClipStore& store = self->m_dependencies.store;
    const qint64 maximumHistory = self->settings().trimLimit();
    QString failure;
    bool isGivenUp = false;
    // Then it is listed while it waits, which may take long.
    const bool isListedAtOnce = store.isOpening();
    const int underWay = isListedAtOnce ? 0 : 1;
    self->m_savesUnderWay += underWay;
    auto saving =
        store.save(capture.payload, capture.sourceAppName, capture.sourceBundleID, maximumHistory);
    if (isListedAtOnce) {
        self->reload(Debounce::no);
    }
    try {
        co_await saving;
    } catch (const CopyGivenUp&) {
        isGivenUp = true;
    } catch (const std::exception& error) {
        failure = QString::fromUtf8(error.what());
    }
    if (!self) {
        co_return;
    }
    self->m_savesUnderWay -= underWay;
    if (isGivenUp) {
        // The store has said so.
        self->reload(Debounce::no);
        co_return;
    }
    if (!failure.isEmpty()) {
        self->saveFailed(std::move(capture), failure);
        self->finishOpening();
        co_return;
    }
    if (self->m_unsaved.empty()) {
        self->m_lastError.reset();
    }
    self->reload(Debounce::no);
    self->scheduleScrub(scrubDelay);
}

void AppModel::saveFailed(Capture capture, const QString& message)
{
    m_lastError = message;
    if (!std::exchange(capture.hasFailed, true)) {
        qCWarning(
            lcAppModel, "A copy could not be saved, and is tried again: %s",
            qUtf8Printable(message));
        showBanner(message, BannerKind::error);
        m_isLastErrorUnseen = !m_isPanelPresented;
    }
    m_unsaved.push_back(std::move(capture));
    if (m_unsaved.size() > unsavedAtMost) {
        m_unsaved.pop_front();
        qCWarning(lcAppModel, "A copy was not recorded: the history could not take it.");
    }
    m_saveRetry = m_dependencies.clock.after(saveRetryDelay, [this] { saveUnsaved(); });
}

void AppModel::saveUnsaved()
{
    m_saveRetry.reset();
    for (Capture& capture : std::exchange(m_unsaved, {})) {
        save(this, std::move(capture));
    }
}

QCoro::Task<> AppModel::settle()
{
    return clipboardMonitor().settle(settleTimeout);
}

QCoro::Task<> AppModel::settleForGood()
{
    const QPointer<AppModel> self(this);
    co_await clipboardMonitor().settle(lastSettleTimeout);
    if (!self) {
        co_return;
    }
    saveUnsaved();
    try {
        co_await m_dependencies.store.finish();
    } catch (const std::exception& error) {
        qCWarning(lcAppModel, "The history does not answer at the end: %s", error.what());
    }
    if (self && !m_unsaved.empty()) {
        qCWarning(
            lcAppModel, "%d copies were not recorded: %s", int(m_unsaved.size()),
            qUtf8Printable(m_lastError.value_or(QString())));
    }
}

void AppModel::saveWhatWasRead()
{
    // Hands on what has been read.
    clipboardMonitor().stop();
    saveUnsaved();
}

void AppModel::reportAccessIssue(ClipboardMonitor::AccessIssue issue)
{
    switch (issue) {
    case ClipboardMonitor::AccessIssue::askEveryTime:
        showBanner(
            u"Clipboard access is set to Ask. Choose Always Allow for continuous history."_s,
            BannerKind::warning);
        break;
    case ClipboardMonitor::AccessIssue::denied:
        showBanner(
            u"Clipboard access is denied. Enable it in Privacy & Security settings."_s,
            BannerKind::error);
        break;
    }
}

void AppModel::scheduleScrub(Clock::Duration delay)
{
    m_scrubTimer = m_dependencies.clock.after(delay, [this] {
        // A search of the user's would have to wait for it.
        if (m_isPanelPresented) {
            scheduleScrub(scrubDelay);
        } else {
            m_scrubTimer.reset();
            scrub(this);
        }
    });
}

/// Wipes what the history has dropped. The user did not ask for it now, and a later one makes up
/// for one that failed: the log hears of it, not the panel.
QCoro::Task<> AppModel::scrub(QPointer<AppModel> self)
{
    auto upkeep = ClipStore::Upkeep::hindered;
    try {
        upkeep = co_await self->m_dependencies.store.scrub();
    } catch (const std::exception& error) {
        qCWarning(lcAppModel, "Dropped clips are not wiped yet: %s", error.what());
    }
    if (!self) {
        co_return;
    }
    if (upkeep == ClipStore::Upkeep::done) {
        self->m_scrubRetryDelay = scrubRetryDelay;
    } else if (!self->m_scrubTimer) {
        self->scheduleScrub(self->m_scrubRetryDelay);
        self->m_scrubRetryDelay = std::min(self->m_scrubRetryDelay * 2, longestScrubRetryDelay);
    }
}

void AppModel::reload(Debounce debounce)
{
    if (!std::exchange(m_hasReloaded, true) && !m_scrubTimer) {
        scheduleScrub(firstScrubDelay);
    }
    m_searchDelay.reset();
    m_searchStop.request_stop();
    m_searchStop = std::stop_source();
    m_isReloading = true;
    if (debounce == Debounce::no) {
        fetch(this, m_query, m_selectedKind, m_searchStop.get_token());
        return;
    }
    m_searchDelay = m_dependencies.clock.after(
        searchDebounce,
        [this, query = m_query, kind = m_selectedKind, stop = m_searchStop.get_token()] {
            fetch(this, query, kind, stop);
            m_searchDelay.reset();
        });
}

QCoro::Task<> AppModel::fetch(
    QPointer<AppModel> self, QString query, std::optional<ClipKind> kind, std::stop_token stop)
{
    try {
        std::vector<Clip> clips =
            co_await self->m_dependencies.store.search(query, kind, listLimit, self->m_clips, stop);
        if (!self || stop.stop_requested()) {
            co_return;
        }
        const ClipStore::Statistics statistics = co_await self->m_dependencies.store.statistics();
        // A newer reload wins, also when this one's search ends later.
        if (!self || stop.stop_requested()) {
            co_return;
        }
        self->m_listedQuery = query;
        self->m_listedKind = kind;
        self->m_isReloading = false;
        self->show(std::move(clips), statistics);
    } catch (const std::exception& error) {
        // What befalls a search that was overtaken is no news.
        if (self && !stop.stop_requested()) {
            self->m_isReloading = false;
            self->m_whenListed.clear();
            self->showError(error);
            self->finishOpening();
        }
    }
}

void AppModel::show(std::vector<Clip> clips, ClipStore::Statistics statistics)
{
    const bool clipsDiffer = m_clips != clips;
    if (clipsDiffer) {
        m_clips = std::move(clips);
    }
    const bool statisticsDiffer = std::exchange(m_statistics, statistics) != statistics;
    std::optional<QUuid> selectedID = m_selectedID;
    if (!selectedIndex() || m_opening != Opening::done) {
        selectedID = m_clips.empty() ? std::nullopt : std::optional(m_clips.front().id);
    }
    const bool selectionDiffers = std::exchange(m_selectedID, selectedID) != selectedID;
    // Told only now, so that whoever hears of one of them finds all of them as they are to be.
    if (clipsDiffer) {
        Q_EMIT clipsChanged();
    }
    if (statisticsDiffer) {
        Q_EMIT statisticsChanged();
    }
    if (selectionDiffers) {
        Q_EMIT selectedIDChanged();
    }
    Q_EMIT listed();
    finishOpening();
    callWhenListed();
}

bool AppModel::isListed() const
{
    return m_opening == Opening::done && m_listedQuery == m_query && m_listedKind == m_selectedKind;
}

void AppModel::whenListed(std::function<void()> callback)
{
    m_whenListed.push_back(std::move(callback));
    const bool hasFailed = !m_isReloading && m_opening == Opening::done && !isListed();
    // Else the user has stopped typing.
    if (hasFailed || m_searchDelay) {
        reload(Debounce::no);
    }
    callWhenListed();
}

void AppModel::callWhenListed()
{
    // What one of them leads to may make the others idle.
    while (isListed() && !m_whenListed.empty()) {
        const auto callback = std::move(m_whenListed.front());
        m_whenListed.pop_front();
        callback();
    }
}

std::optional<qsizetype> AppModel::selectedIndex() const
{
    const auto found =
        m_selectedID ? std::ranges::find(m_clips, *m_selectedID, &Clip::id) : m_clips.end();
    return found == m_clips.end() ? std::nullopt
                                  : std::optional<qsizetype>(found - m_clips.begin());
}

void AppModel::select(qsizetype index)
{
    const auto last = static_cast<qsizetype>(m_clips.size()) - 1;
    if (last >= 0) {
        setSelectedID(m_clips[static_cast<std::size_t>(std::clamp<qsizetype>(index, 0, last))].id);
    }
}

void AppModel::pastePosition(int position, std::shared_ptr<RunningApplication> target)
{
    if (settings().directPasteShortcuts()) {
        pastePosition(this, position, std::move(target), turn());
    }
}

void AppModel::selectNext()
{
    const std::optional<qsizetype> index = selectedIndex();
    select(index ? *index + 1 : 0);
}

void AppModel::selectPrevious()
{
    const std::optional<qsizetype> index = selectedIndex();
    select(index ? *index - 1 : 0);
}

} // namespace tessly
