#include "AppModel.h"

#include <utility>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace tessly {

namespace {

constexpr int pasteAttempts = 8;
/// How many entries have a direct-paste key.
constexpr qint64 positionCount = 10;

// Five seconds: enough to switch the permission on and come back.
constexpr Clock::Duration accessPollInterval = 500ms;
constexpr int accessPollChecks = 10;

const QString copiedMessage = u"Copied to the clipboard."_s;
const QString needsAccessMessage = u"Copied. Allow Automatic paste in Settings."_s;
const QString notRestoredMessage = u"Could not restore that clipboard item."_s;

// What the banners leave to the panel to show.
const ActionOutcome copiedOnly = {
    ActionOutcome::Case::copiedOnly,
    u"Copied to the clipboard, but not pasted: no other application was in front."_s};
const ActionOutcome copiedLate = {
    ActionOutcome::Case::copiedOnly,
    u"Copied to the clipboard, but not pasted: it took long to read, and another application is in "
    "front by now."_s};
const ActionOutcome copiedOver = {
    ActionOutcome::Case::copiedOnly, u"Not pasted: another program has copied something since."_s};
const ActionOutcome notCopied = {
    ActionOutcome::Case::notRestored,
    u"Not copied: another program has copied at the same time."_s};
const ActionOutcome accessRefused = {
    ActionOutcome::Case::needsAccess,
    u"Not pasted: Tessly is not allowed to press keys in other applications."_s};
const ActionOutcome copiedWithoutAccess = {
    ActionOutcome::Case::needsAccess,
    u"Copied to the clipboard, but not pasted: Tessly is not allowed to press keys in other "
    "applications."_s};
const ActionOutcome notRestored = {ActionOutcome::Case::notRestored, notRestoredMessage};
const ActionOutcome deletedMeanwhile = {
    ActionOutcome::Case::notRestored, u"That clipboard item is no longer in the history."_s};

/// Longer than any content takes that the disk has at hand; the user still waits for the paste.
constexpr Clock::Duration promptly = std::chrono::seconds(2);

void tell(const ActionCompletion& completion, const ActionOutcome& outcome)
{
    if (completion) {
        completion(outcome);
    }
}

} // namespace

void AppModel::paste(
    const Clip& clip, PasteStyle style, std::shared_ptr<RunningApplication> target,
    ActionCompletion completion)
{
    paste(clip, style, std::move(target), turn(), std::move(completion));
}

void AppModel::paste(
    const Clip& clip, PasteStyle style,
    // By value: the one that was given may be replaced when the panel closes.
    std::shared_ptr<RunningApplication> target, // NOLINT(performance-unnecessary-value-param)
    Turn turn, ActionCompletion completion)
{
    PasteService& pasteService = m_dependencies.pasteService;
    // Likewise: it may be a row of a list that changes then.
    const Clip pasted = clip; // NOLINT(performance-unnecessary-copy-initialization)
    if (target && !pasteService.checkAutomaticPasteAccess()) {
        const bool isGranted = pasteService.requestAutomaticPasteAccess();
        refreshAutomaticPasteAccess(false);
        if (!isGranted) {
            showBanner(u"Allow Tessly in Accessibility, then click again."_s, BannerKind::warning);
            tell(completion, accessRefused);
            return;
        }
    }
    if (closePanel) {
        closePanel();
    }
    pasteInTurn(this, pasted, style, std::move(target), std::move(turn), std::move(completion));
}

/// To be called in turn. What the list does not hold is fetched only then, so that of many pastes
/// that wait the content of one is in memory.
QCoro::Task<AppModel::Written> AppModel::write(QPointer<AppModel> self, Clip clip, PasteStyle style)
{
    const auto isLate = std::make_shared<bool>(false);
    const auto limit = self->m_dependencies.clock.after(promptly, [isLate] { *isLate = true; });
    std::optional<ClipPayload> payload;
    ActionOutcome failure = deletedMeanwhile;
    if (const ClipPayload* const held = clip.payload.held()) {
        payload = *held;
    } else {
        try {
            payload = co_await self->m_dependencies.store.payload(clip.id);
        } catch (const std::exception& error) {
            failure = {ActionOutcome::Case::storeFailed, QString::fromUtf8(error.what())};
        }
        if (!self) {
            co_return {};
        }
    }
    if (!payload) {
        co_return {.ticket = {}, .failure = failure};
    }
    // Writing puts an end to what is on the clipboard now.
    co_await self->settle();
    if (!self) {
        co_return {};
    }
    const WriteTicket ticket =
        self->m_dependencies.pasteService.write(*payload, style == PasteStyle::plainTextOnly);
    co_return {.ticket = ticket, .failure = notRestored, .isLate = *isLate};
}

QCoro::Task<> AppModel::pasteInTurn(
    QPointer<AppModel> self, Clip clip, PasteStyle style,
    std::shared_ptr<RunningApplication> target, Turn turn, ActionCompletion completion)
{
    const PasteService::Turn held = co_await turn;
    if (!self) {
        co_return;
    }
    const auto [ticket, failure, isLate] = co_await write(self, clip, style);
    if (!self) {
        co_return;
    }
    PasteService& pasteService = self->m_dependencies.pasteService;
    if (!ticket) {
        self->showBanner(failure.message, BannerKind::error);
        tell(completion, failure);
        co_return;
    }
    if (!target || target->isTerminated() || target->bundleIdentifier() == ownBundleIdentifier) {
        self->showBanner(copiedMessage, BannerKind::information);
        co_await pasteService.holds(ticket);
        tell(completion, copiedOnly);
        co_return;
    }
    if (isLate && !target->isActive()) {
        // To call it to the front now would interrupt whatever the user does.
        self->showBanner(copiedMessage, BannerKind::information);
        co_await pasteService.holds(ticket);
        tell(completion, copiedLate);
        co_return;
    }
    if (!pasteService.checkAutomaticPasteAccess()) {
        self->showBanner(needsAccessMessage, BannerKind::warning);
        co_await pasteService.holds(ticket);
        tell(completion, copiedWithoutAccess);
        co_return;
    }
    target->activate();
    const PasteService::Result result =
        co_await pasteService.pasteWhenTargetIsReady(target, pasteAttempts, ticket);
    if (self) {
        self->pasteEnded(clip, result, completion);
    }
}

void AppModel::pasteEnded(
    const Clip& clip, PasteService::Result result, const ActionCompletion& completion)
{
    switch (result.resultCase) {
    case PasteService::Result::Case::copiedOnly:
        if (result.needsAutomaticPaste) {
            showBanner(needsAccessMessage, BannerKind::warning);
            tell(completion, copiedWithoutAccess);
        } else {
            showBanner(copiedMessage, BannerKind::information);
            tell(completion, result.isReplaced ? copiedOver : copiedOnly);
        }
        break;
    case PasteService::Result::Case::pasted:
        recordUsage(clip);
        tell(completion, {});
        break;
    case PasteService::Result::Case::failed:
        showBanner(notRestoredMessage, BannerKind::error);
        tell(completion, notRestored);
        break;
    }
}

void AppModel::pasteGlobalPosition(int position)
{
    if (!settings().directPasteShortcuts()) {
        return;
    }
    // Now, since another application may be in front by the time the history has answered.
    pastePosition(this, position, m_dependencies.workspace.frontmostApplication(), turn());
}

QCoro::Task<> AppModel::pastePosition(
    QPointer<AppModel> self, int position, std::shared_ptr<RunningApplication> target, Turn turn)
{
    try {
        // The first is what was copied last, if that was only just now.
        co_await self->settle();
        if (!self) {
            co_return;
        }
        const std::vector<Clip> clips = co_await self->m_dependencies.store.search(
            {}, std::nullopt, positionCount, self->m_clips);
        if (!self) {
            co_return;
        }
        if (position >= 1 && std::cmp_less_equal(position, clips.size())) {
            self->paste(
                clips[static_cast<std::size_t>(position - 1)], PasteStyle::original, target,
                std::move(turn), {});
        } else {
            self->showBanner(
                u"There is no clipboard item at position %1."_s.arg(position), BannerKind::warning);
        }
    } catch (const std::exception& error) {
        if (self) {
            self->showError(error);
        }
    }
}

void AppModel::copySelected(PasteStyle style)
{
    if (const Clip* const clip = selectedClip()) {
        copy(*clip, style);
    }
}

void AppModel::copy(const Clip& clip, PasteStyle style, const ActionCompletion& completion)
{
    copy(clip, style, turn(), completion);
}

void AppModel::copy(
    const Clip& clip, PasteStyle style, Turn turn, const ActionCompletion& completion)
{
    const auto done = [this, completion](const Written& written, bool isHeld) {
        if (!written.ticket) {
            // A clip that holds nothing of the kind just stays where it is.
            if (written.failure != notRestored) {
                showBanner(written.failure.message, BannerKind::error);
            }
            tell(completion, written.failure);
            return;
        }
        if (closePanel) {
            closePanel();
        }
        if (isHeld) {
            showBanner(copiedMessage, BannerKind::information);
        }
        tell(completion, isHeld ? ActionOutcome() : notCopied);
    };
    copyInTurn(this, clip, style, std::move(turn), done);
}

/// `done` is told, unless the model goes before, of the write and whether it is there to be read.
QCoro::Task<> AppModel::copyInTurn(
    QPointer<AppModel> self, Clip clip, PasteStyle style, Turn turn,
    std::function<void(const Written&, bool isHeld)> done)
{
    const PasteService::Turn held = co_await turn;
    if (!self) {
        co_return;
    }
    PasteService& pasteService = self->m_dependencies.pasteService;
    const Written written = co_await write(self, clip, style);
    const bool isHeld = written.ticket && co_await pasteService.holds(written.ticket);
    if (self && done) {
        done(written, isHeld);
    }
}

/// Waits for a store operation and reloads, telling first of its success where there is something
/// to tell. Its error becomes the banner.
QCoro::Task<> AppModel::finish(
    QPointer<AppModel> self, QCoro::Task<> operation, QString successMessage,
    ActionCompletion completion)
{
    ActionOutcome outcome;
    try {
        co_await operation;
    } catch (const std::exception& error) {
        outcome = {ActionOutcome::Case::storeFailed, QString::fromUtf8(error.what())};
    }
    if (!self) {
        co_return;
    }
    if (outcome.resultCase != ActionOutcome::Case::done) {
        self->showBanner(outcome.message, BannerKind::error);
    } else {
        if (!successMessage.isEmpty()) {
            self->showBanner(successMessage, BannerKind::information);
        }
        self->reload(Debounce::no);
    }
    tell(completion, outcome);
}

void AppModel::togglePin(const Clip* clip)
{
    const Clip* const target = clip ? clip : selectedClip();
    if (target) {
        setPinned(*target, !target->isPinned);
    }
}

void AppModel::setPinned(const Clip& clip, bool pinned, ActionCompletion completion)
{
    finish(this, m_dependencies.store.setPinned(pinned, clip.id), {}, std::move(completion));
}

void AppModel::deleteSelected()
{
    if (const Clip* const target = selectedClip()) {
        deleteClip(*target);
    }
}

void AppModel::deleteClip(const Clip& clip, ActionCompletion completion)
{
    finish(this, m_dependencies.store.remove(clip.id), {}, std::move(completion));
    // For what could not be wiped at once.
    scheduleScrub(scrubDelay);
}

void AppModel::clearHistory(bool includePinned, ActionCompletion completion)
{
    clearWhenSettled(this, includePinned, std::move(completion));
}

/// What has been copied by now is cleared, too, also if it is not in the history yet.
QCoro::Task<>
AppModel::clearWhenSettled(QPointer<AppModel> self, bool includePinned, ActionCompletion completion)
{
    co_await self->settle();
    if (!self) {
        co_return;
    }
    self->m_unsaved.clear();
    self->m_saveRetry.reset();
    self->scheduleScrub(scrubDelay);
    co_await finish(
        self, self->m_dependencies.store.clear(includePinned), u"Clipboard history cleared."_s,
        std::move(completion));
    if (self) {
        // Also where it failed: a part may be gone.
        self->reload(Debounce::no);
    }
}

void AppModel::importLines(
    std::function<QByteArrayView()> lines, std::function<void(const ImportOutcome&)> done,
    ActionCompletion failed)
{
    addLines(this, std::move(lines), std::move(done), std::move(failed));
}

QCoro::Task<> AppModel::addLines(
    QPointer<AppModel> self, std::function<QByteArrayView()> lines,
    std::function<void(const ImportOutcome&)> done, ActionCompletion failed)
{
    ImportOutcome added;
    ActionOutcome outcome;
    try {
        added = co_await self->m_dependencies.store.importLines(
            std::move(lines), self->settings().trimLimit());
    } catch (const std::exception& error) {
        outcome = {ActionOutcome::Case::storeFailed, QString::fromUtf8(error.what())};
    }
    if (!self) {
        co_return;
    }
    if (outcome.resultCase != ActionOutcome::Case::done) {
        self->showBanner(outcome.message, BannerKind::error);
        // What it has left in the files goes.
        self->scheduleScrub(scrubDelay);
        tell(failed, outcome);
        co_return;
    }
    self->reload(Debounce::no);
    if (done) {
        done(added);
    }
}

void AppModel::setRecordingPaused(bool paused)
{
    if (clipboardMonitor().isPaused() == paused) {
        return;
    }
    clipboardMonitor().togglePaused();
    if (paused) {
        showBanner(u"Clipboard recording paused."_s, BannerKind::warning);
    } else {
        showBanner(u"Clipboard recording resumed."_s, BannerKind::information);
    }
}

void AppModel::trimHistoryToCurrentLimit()
{
    finish(this, m_dependencies.store.trimHistory(settings().trimLimit()));
    scheduleScrub(scrubDelay);
}

void AppModel::recordUsage(const Clip& clip)
{
    finish(this, m_dependencies.store.markUsed(clip.id, settings().moveUsedItemsToTop()));
}

void AppModel::directPasteShortcutsDidChange()
{
    if (hotKeyConfigurationDidChange) {
        hotKeyConfigurationDidChange();
    }
    showBanner(
        settings().directPasteShortcuts() ? u"Direct-paste shortcuts enabled."_s
                                          : u"Direct-paste shortcuts released."_s,
        BannerKind::information);
}

void AppModel::openAutomaticPasteSettings()
{
    PasteService& pasteService = m_dependencies.pasteService;
    // The answer does not matter: asking is what makes the program known to the desktop.
    static_cast<void>(pasteService.requestAutomaticPasteAccess());
    if (pasteService.openSettingsURL(PasteService::automaticPasteSettingsURL)) {
        refreshAutomaticPasteAccess(true);
    } else {
        showBanner(u"Open Privacy & Security → Accessibility."_s, BannerKind::error);
    }
}

void AppModel::refreshAutomaticPasteAccess(bool retryIfNeeded)
{
    m_accessPoll.reset();
    setAutomaticPasteAccessGranted(m_dependencies.pasteService.checkAutomaticPasteAccess());
    if (retryIfNeeded && !m_automaticPasteAccessGranted) {
        pollAutomaticPasteAccess(accessPollChecks);
    }
}

void AppModel::pollAutomaticPasteAccess(int checksLeft)
{
    m_accessPoll = m_dependencies.clock.after(accessPollInterval, [this, checksLeft] {
        m_accessPoll.reset();
        setAutomaticPasteAccessGranted(m_dependencies.pasteService.checkAutomaticPasteAccess());
        if (!m_automaticPasteAccessGranted && checksLeft > 1) {
            pollAutomaticPasteAccess(checksLeft - 1);
        }
    });
}

void AppModel::setAutomaticPasteAccessGranted(bool granted)
{
    if (std::exchange(m_automaticPasteAccessGranted, granted) != granted) {
        Q_EMIT automaticPasteAccessGrantedChanged();
    }
}

} // namespace tessly
