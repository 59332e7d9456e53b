#include "PasteService.h"

#include "Delay.h"
#include "PasteboardItems.h"

#include <QCoroFuture>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace tessly {

namespace {

constexpr Clock::Duration attemptInterval = 50ms;
// How long a window that came to the front gets until it takes keys.
constexpr Clock::Duration settlingTime = 60ms;

// How long a target gets to fetch what it was told to paste before something else is written, and
// how often to look.
constexpr Clock::Duration fetchTimeout = 300ms;
constexpr Clock::Duration fetchLook = 5ms;
// Who has fetched nothing more for this long has fetched all.
constexpr Clock::Duration fetchPause = 25ms;

using Result = PasteService::Result;

constexpr Result copiedOnly = {.resultCase = Result::Case::copiedOnly};

Result result(PostResult posting)
{
    switch (posting) {
    case PostResult::posted:
        return {.resultCase = Result::Case::pasted};
    case PostResult::targetNotInFront:
        return copiedOnly;
    case PostResult::contentReplaced:
        return {.resultCase = Result::Case::copiedOnly, .isReplaced = true};
    case PostResult::failed:
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
    return m_fetchTimeout && m_pasteboard.fetchCount() == m_fetchesBeforeKeys;
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
            co_return copiedOnly;
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
    if (target->isTerminated() || !target->isActive()) {
        co_return copiedOnly;
    }
    co_return co_await postCommandV(self, target, ticket);
}

QCoro::Task<PasteService::Result> PasteService::postCommandV(
    QPointer<PasteService> self, std::shared_ptr<RunningApplication> target, WriteTicket ticket)
{
    // Who fetches everything that is copied has done so by now, mostly: what comes from here on is
    // the target's request.
    const quint64 fetchesBefore = self->m_pasteboard.fetchCount();
    const PostResult posting = co_await self->m_keys.postPaste(target, ticket);
    if (self && posting == PostResult::posted) {
        self->m_fetchesBeforeKeys = fetchesBefore;
        self->m_fetchTimeout = self->m_clock.after(
            fetchTimeout, [service = self.data()] { service->m_fetchTimeout.reset(); });
    }
    co_return result(posting);
}

} // namespace tessly
