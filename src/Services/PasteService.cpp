#include "PasteService.h"

#include "PasteboardItems.h"

#include <utility>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace tessly {

namespace {

constexpr Clock::Duration attemptInterval = 50ms;
// How long a window that came to the front gets until it takes keys.
constexpr Clock::Duration settlingTime = 60ms;

constexpr PasteService::Result copiedOnly = {PasteService::Result::Case::copiedOnly, false};

PasteService::Result result(PostResult posting)
{
    switch (posting) {
    case PostResult::posted:
        return {PasteService::Result::Case::pasted, false};
    case PostResult::targetNotInFront:
        return copiedOnly;
    case PostResult::failed:
        return {PasteService::Result::Case::failed, false};
    }
    Q_UNREACHABLE();
}

} // namespace

const QUrl PasteService::automaticPasteSettingsURL(
    u"x-apple.systempreferences:com.apple.preference.security?Privacy_Accessibility"_s);

PasteService::PasteService(
    Pasteboard& pasteboard, KeyEventPoster& keys, Clock& clock, Hooks hooks, QObject* parent)
    : QObject(parent)
    , m_pasteboard(pasteboard)
    , m_keys(keys)
    , m_clock(clock)
    , m_hooks(std::move(hooks))
{
    if (!m_hooks.checkAutomaticPasteAccess) {
        m_hooks.checkAutomaticPasteAccess = [&keys] { return keys.isAllowed(); };
    }
    if (!m_hooks.requestAutomaticPasteAccess) {
        m_hooks.requestAutomaticPasteAccess = [&keys] { return keys.requestAccess(); };
    }
    if (!m_hooks.openSettingsURL) {
        m_hooks.openSettingsURL = [](const QUrl&) { return false; };
    }
}

PasteService::~PasteService() = default;

bool PasteService::checkAutomaticPasteAccess() const
{
    return m_hooks.checkAutomaticPasteAccess();
}

bool PasteService::requestAutomaticPasteAccess() const
{
    return m_hooks.requestAutomaticPasteAccess();
}

bool PasteService::openSettingsURL(const QUrl& url) const
{
    return m_hooks.openSettingsURL(url);
}

bool PasteService::write(const ClipPayload& payload, bool plainTextOnly)
{
    std::vector<PasteboardItem> items =
        plainTextOnly ? plainTextItems(payload) : pasteboardItems(payload);
    return !items.empty() && m_pasteboard.write(std::move(items));
}

// By value: a completion may end the wait that holds both.
// NOLINTBEGIN(performance-unnecessary-value-param)
void PasteService::pasteWhenTargetIsReady(
    std::shared_ptr<RunningApplication> target, int attemptsRemaining, Completion completion)
// NOLINTEND(performance-unnecessary-value-param)
{
    if (target->isTerminated()) {
        completion(copiedOnly);
        return;
    }
    if (target->isActive()) {
        after(settlingTime, [this, target, completion] {
            if (target->isTerminated() || !target->isActive()) {
                completion(copiedOnly);
                return;
            }
            postCommandV(this, target, completion);
        });
        return;
    }
    if (attemptsRemaining < 1) {
        completion(copiedOnly);
        return;
    }
    target->activate();
    after(attemptInterval, [this, target, attemptsRemaining, completion] {
        pasteWhenTargetIsReady(target, attemptsRemaining - 1, completion);
    });
}

void PasteService::after(Clock::Duration delay, std::function<void()> step)
{
    const quint64 id = m_nextWait++;
    m_waits.emplace(id, m_clock.after(delay, [this, id, step = std::move(step)] {
        // The step may end the service, and with it what is still waited for.
        const auto wait = m_waits.extract(id);
        step();
    }));
}

QCoro::Task<> PasteService::postCommandV(
    QPointer<PasteService> self, std::shared_ptr<RunningApplication> target, Completion completion)
{
    const PostResult posting = co_await self->m_keys.postPaste(target);
    if (self) {
        completion(result(posting));
    }
}

} // namespace tessly
