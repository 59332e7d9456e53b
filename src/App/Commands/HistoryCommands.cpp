#include "HistoryCommands.h"

#include <utility>

using namespace Qt::StringLiterals;

namespace tessly {

namespace {

ActionOutcome storeFailure(const std::exception& error)
{
    return {ActionOutcome::Case::storeFailed, QString::fromUtf8(error.what())};
}

ActionOutcome noSuchPosition(qint64 position)
{
    return {
        ActionOutcome::Case::noSuchPosition,
        u"There is no clipboard item at position %1."_s.arg(position)};
}

void tell(const ActionCompletion& completion, const ActionOutcome& outcome)
{
    if (completion) {
        completion(outcome);
    }
}

bool isTrue(const std::function<bool()>& ability)
{
    return ability && ability();
}

} // namespace

HistoryCommands::HistoryCommands(Dependencies dependencies, QObject* parent)
    : QObject(parent)
    , m_dependencies(std::move(dependencies))
{
}

HistoryCommands::~HistoryCommands() = default;

void HistoryCommands::pause()
{
    m_dependencies.model.setRecordingPaused(true);
}

void HistoryCommands::resume()
{
    m_dependencies.model.setRecordingPaused(false);
}

void HistoryCommands::paste(
    qint64 position, AppModel::PasteStyle style, const ActionCompletion& completion)
{
    // Its place in the order is that of the call, however long the history takes to answer.
    pasteEntry(this, position, style, m_dependencies.model.turn(), completion);
}

QCoro::Task<> HistoryCommands::pasteEntry(
    QPointer<HistoryCommands> self, qint64 position, AppModel::PasteStyle style,
    AppModel::Turn turn, ActionCompletion completion)
{
    // Before the history is asked, since another application may be in front by the time it has
    // answered. What is in front may have come there only just now.
    const auto inFront = co_await self->m_dependencies.workspace.inFrontDuring({});
    if (!self) {
        co_return;
    }
    // The panel tells of it as it does for the position's key, whose place a command may take.
    ActionCompletion notFound = [self, completion](const ActionOutcome& outcome) {
        self->m_dependencies.model.showBanner(
            outcome.message, outcome.resultCase == ActionOutcome::Case::noSuchPosition
                                 ? AppModel::BannerKind::warning
                                 : AppModel::BannerKind::error);
        tell(completion, outcome);
    };
    const auto kept = std::make_shared<AppModel::Turn>(std::move(turn));
    withClip(
        self, position,
        [self, style, target = inFront.back(), kept, completion](const Clip& clip) {
            self->m_dependencies.model.paste(clip, style, target, std::move(*kept), completion);
        },
        std::move(notFound));
}

void HistoryCommands::copy(
    qint64 position, AppModel::PasteStyle style, const ActionCompletion& completion)
{
    const auto turn = std::make_shared<AppModel::Turn>(m_dependencies.model.turn());
    withClip(
        this, position,
        [this, style, turn, completion](const Clip& clip) {
            m_dependencies.model.copy(clip, style, std::move(*turn), completion);
        },
        completion);
}

void HistoryCommands::setPinned(qint64 position, bool pinned, const ActionCompletion& completion)
{
    withClip(
        this, position,
        [this, pinned, completion](const Clip& clip) {
            m_dependencies.model.setPinned(clip, pinned, completion);
        },
        completion);
}

void HistoryCommands::deleteEntry(qint64 position, const ActionCompletion& completion)
{
    withClip(
        this, position,
        [this, completion](const Clip& clip) { m_dependencies.model.deleteClip(clip, completion); },
        completion);
}

void HistoryCommands::clear(bool includePinned, ActionCompletion completion)
{
    m_dependencies.model.clearHistory(includePinned, std::move(completion));
}

void HistoryCommands::importLines(
    std::function<QByteArrayView()> lines, std::function<void(const ImportOutcome&)> done,
    ActionCompletion failed)
{
    m_dependencies.model.importLines(std::move(lines), std::move(done), std::move(failed));
}

QCoro::Task<> HistoryCommands::withClip(
    QPointer<HistoryCommands> self, qint64 position, Act act, ActionCompletion completion)
{
    std::optional<Clip> clip;
    ActionOutcome outcome;
    try {
        // The first is what was copied last, if that was only just now.
        co_await self->m_dependencies.model.settle();
        if (!self) {
            co_return;
        }
        clip = co_await self->m_dependencies.store.clip(position);
        if (!clip) {
            outcome = noSuchPosition(position);
        }
    } catch (const std::exception& error) {
        outcome = storeFailure(error);
    }
    if (!self) {
        co_return;
    }
    if (clip) {
        act(*clip);
    } else {
        tell(completion, outcome);
    }
}

void HistoryCommands::list(
    const QString& query, std::optional<ClipKind> kind, qint64 limit,
    std::function<void(Entries)> answer, ActionCompletion failed)
{
    answerList(this, query, kind, limit, std::move(answer), std::move(failed));
}

QCoro::Task<> HistoryCommands::answerList(
    QPointer<HistoryCommands> self, QString query, std::optional<ClipKind> kind, qint64 limit,
    std::function<void(Entries)> answer, ActionCompletion failed)
{
    try {
        co_await self->m_dependencies.model.settle();
        if (!self) {
            co_return;
        }
        Entries found = co_await self->m_dependencies.store.summaries(query, kind, limit);
        if (self && answer) {
            answer(std::move(found));
        }
    } catch (const std::exception& error) {
        if (self) {
            tell(failed, storeFailure(error));
        }
    }
}

void HistoryCommands::status(
    std::function<void(const StatusReport&)> answer, ActionCompletion failed)
{
    answerStatus(this, std::move(answer), std::move(failed));
}

QCoro::Task<> HistoryCommands::answerStatus(
    QPointer<HistoryCommands> self, std::function<void(const StatusReport&)> answer,
    ActionCompletion failed)
{
    try {
        const ClipStore::Statistics statistics = co_await self->m_dependencies.store.statistics();
        if (!self || !answer) {
            co_return;
        }
        const Abilities& abilities = self->m_dependencies.abilities;
        answer({
            .isRunning = true,
            .isPaused = self->m_dependencies.model.clipboardMonitor().isPaused(),
            .items = statistics.totalItems,
            .pinned = statistics.pinnedItems,
            .bytes = statistics.databaseBytes,
            .session = sessionType(),
            .lastError = self->m_dependencies.model.lastError().value_or(QString()),
            .protocols = abilities.protocols ? abilities.protocols() : QStringList(),
            .capture = isTrue(abilities.capture),
            .paste = isTrue(abilities.paste),
            .hotKeys = isTrue(abilities.hotKeys),
            .tray = isTrue(abilities.tray),
        });
    } catch (const std::exception& error) {
        if (self) {
            tell(failed, storeFailure(error));
        }
    }
}

} // namespace tessly
