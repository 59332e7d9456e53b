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

} // namespace

void AppModel::paste(const Clip& clip, PasteStyle style, std::shared_ptr<RunningApplication> target)
{
    PasteService& pasteService = m_dependencies.pasteService;
    // The one that was given may be a row of a list that changes when the panel closes.
    const Clip pasted = clip;
    if (target && !pasteService.checkAutomaticPasteAccess()) {
        const bool isGranted = pasteService.requestAutomaticPasteAccess();
        refreshAutomaticPasteAccess(false);
        if (!isGranted) {
            showBanner(u"Allow Tessly in Accessibility, then click again."_s, BannerKind::warning);
            return;
        }
    }
    if (closePanel) {
        closePanel();
    }
    if (!pasteService.write(pasted.payload, style == PasteStyle::plainTextOnly)) {
        showBanner(notRestoredMessage, BannerKind::error);
        return;
    }
    if (!target || target->isTerminated() || target->bundleIdentifier() == ownBundleIdentifier) {
        showBanner(copiedMessage, BannerKind::information);
        return;
    }
    if (!pasteService.checkAutomaticPasteAccess()) {
        showBanner(needsAccessMessage, BannerKind::warning);
        return;
    }
    target->activate();
    pasteService.pasteWhenTargetIsReady(
        target, pasteAttempts, [self = QPointer(this), pasted](PasteService::Result result) {
            if (self) {
                self->pasteEnded(pasted, result);
            }
        });
}

void AppModel::pasteEnded(const Clip& clip, PasteService::Result result)
{
    switch (result.resultCase) {
    case PasteService::Result::Case::copiedOnly:
        if (result.needsAutomaticPaste) {
            showBanner(needsAccessMessage, BannerKind::warning);
        } else {
            showBanner(copiedMessage, BannerKind::information);
        }
        break;
    case PasteService::Result::Case::pasted:
        recordUsage(clip);
        break;
    case PasteService::Result::Case::failed:
        showBanner(notRestoredMessage, BannerKind::error);
        break;
    }
}

void AppModel::pasteGlobalPosition(int position)
{
    if (!settings().directPasteShortcuts()) {
        return;
    }
    // Now, since another application may be in front by the time the history has answered.
    pastePosition(this, position, m_dependencies.workspace.frontmostApplication());
}

QCoro::Task<> AppModel::pastePosition(
    QPointer<AppModel> self, int position, std::shared_ptr<RunningApplication> target)
{
    try {
        const std::vector<Clip> clips = co_await self->m_dependencies.store.search(
            {}, std::nullopt, positionCount, self->m_clips);
        if (!self) {
            co_return;
        }
        if (position >= 1 && std::cmp_less_equal(position, clips.size())) {
            self->paste(
                clips[static_cast<std::size_t>(position - 1)], PasteStyle::original, target);
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
    const Clip* const clip = selectedClip();
    if (!clip ||
        !m_dependencies.pasteService.write(clip->payload, style == PasteStyle::plainTextOnly)) {
        return;
    }
    if (closePanel) {
        closePanel();
    }
    showBanner(copiedMessage, BannerKind::information);
}

/// Waits for a store operation and reloads, telling first of its success where there is something
/// to tell. Its error becomes the banner.
QCoro::Task<>
AppModel::finish(QPointer<AppModel> self, QCoro::Task<> operation, QString successMessage)
{
    try {
        co_await operation;
        if (!self) {
            co_return;
        }
        if (!successMessage.isEmpty()) {
            self->showBanner(successMessage, BannerKind::information);
        }
        self->reload(Debounce::no);
    } catch (const std::exception& error) {
        if (self) {
            self->showError(error);
        }
    }
}

void AppModel::togglePin(const Clip* clip)
{
    const Clip* const target = clip ? clip : selectedClip();
    if (target) {
        finish(this, m_dependencies.store.setPinned(!target->isPinned, target->id));
    }
}

void AppModel::deleteSelected()
{
    if (const Clip* const target = selectedClip()) {
        finish(this, m_dependencies.store.remove(target->id));
    }
}

void AppModel::clearHistory(bool includePinned)
{
    finish(this, m_dependencies.store.clear(includePinned), u"Clipboard history cleared."_s);
}

void AppModel::trimHistoryToCurrentLimit()
{
    finish(this, m_dependencies.store.trimHistory(settings().maxHistory()));
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
