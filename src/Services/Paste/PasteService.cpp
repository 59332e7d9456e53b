#include "PasteService.h"

#include "Delay.h"
#include "PasteboardItems.h"

#include <QCoroFuture>
#include <QLoggingCategory>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace tessly {

namespace {

constexpr Clock::Duration attemptInterval = 50ms;
// How long a window that came to the front gets until it takes keys.
constexpr Clock::Duration settlingTime = 60ms;

Q_LOGGING_CATEGORY(lcPasteService, "com.brackmoor.tessly.PasteService")

// How long a target gets to fetch what it was told to paste before something else is written, and
// how often to look.
constexpr Clock::Duration fetchTimeout = 300ms;
constexpr Clock::Duration fetchLook = 5ms;
// Who has fetched nothing more for this long has fetched all.
constexpr Clock::Duration fetchPause = 25ms;

using Result = PasteService::Result;

/// `reason` goes into the log.
Result copiedOnly(const char* reason)
{
    qCInfo(lcPasteService, "No paste keys were pressed: %s.", reason);
    return {.resultCase = Result::Case::copiedOnly};
}

Result result(PostResult posting)
{
    switch (posting) {
    case PostResult::posted:
        return {.resultCase = Result::Case::pasted};
    case PostResult::targetNotInFront:
        return copiedOnly("the application was not in front any more");
    case PostResult::contentReplaced: {
        Result replaced = copiedOnly("something else has been copied");
        replaced.isReplaced = true;
        return replaced;
    }
    case PostResult::failed:
        qCWarning(lcPasteService, "The paste keys could not be pressed.");
        return {.resultCase = Result::Case::failed};
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

QCoro::Task<PasteService::Turn> PasteService::turn()
{
    const auto mine = std::make_shared<QPromise<void>>();
    mine->start();
    m_turns.push_back(mine);
    if (m_turns.size() == 1) {
        mine->finish();
    }
    return takeTurn(this, mine->future());
}

QCoro::Task<PasteService::Turn>
PasteService::takeTurn(QPointer<PasteService> self, QFuture<void> mine)
{
    co_await mine;
    Turn turn(nullptr, [self](const void*) {
        if (self) {
            self->endTurn();
        }
    });
    while (self && self->isFetchAwaited()) {
        co_await delay(self->m_clock, fetchLook);
    }
    // Some fetch several flavours, one after the other.
    for (quint64 fetches = 0;
         self && self->m_fetchTimeout && fetches != self->m_pasteboard.fetchCount();) {
        fetches = self->m_pasteboard.fetchCount();
        co_await delay(self->m_clock, fetchPause);
    }
    co_return turn;
}

void PasteService::endTurn()
{
    m_turns.pop_front();
    if (!m_turns.empty()) {
        m_turns.front()->finish();
    }
}

bool PasteService::isFetchAwaited() const
{
    return m_fetchTimeout && m_pasteboard.fetchCount() == 0;
}

WriteTicket PasteService::write(const ClipPayload& payload, bool plainTextOnly)
{
    return m_pasteboard.write(plainTextOnly ? plainTextItems(payload) : pasteboardItems(payload));
}

QCoro::Task<bool> PasteService::holds(WriteTicket ticket)
{
    return m_pasteboard.holds(ticket);
}

QCoro::Task<PasteService::Result> PasteService::pasteWhenTargetIsReady(
    std::shared_ptr<RunningApplication> target, int attempts, WriteTicket ticket)
{
    return pasteWhenReady(this, std::move(target), attempts, ticket);
}

QCoro::Task<PasteService::Result> PasteService::pasteWhenReady(
    QPointer<PasteService> self, std::shared_ptr<RunningApplication> target, int attempts,
    WriteTicket ticket)
{
    for (; !target->isTerminated() && !target->isActive(); --attempts) {
        if (attempts < 1) {
            co_return copiedOnly("the application did not come to the front");
        }
        target->activate();
        co_await delay(self->m_clock, attemptInterval);
        if (!self) {
            co_return Result();
        }
    }
    if (!target->isTerminated()) {
        co_await delay(self->m_clock, settlingTime);
    }
    if (!self) {
        co_return Result();
    }
    if (target->isTerminated()) {
        co_return copiedOnly("the application has ended");
    }
    if (!target->isActive()) {
        co_return copiedOnly("the application did not stay in front");
    }
    co_return co_await postCommandV(self, target, ticket);
}

QCoro::Task<PasteService::Result> PasteService::postCommandV(
    QPointer<PasteService> self, std::shared_ptr<RunningApplication> target, WriteTicket ticket)
{
    const PostResult posting = co_await self->m_keys.postPaste(target, ticket);
    if (self && posting == PostResult::posted) {
        self->m_fetchTimeout = self->m_clock.after(
            fetchTimeout, [service = self.data()] { service->m_fetchTimeout.reset(); });
    }
    co_return result(posting);
}

} // namespace tessly
