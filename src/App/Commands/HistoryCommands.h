#pragma once

#include "AppModel.h"
#include "StatusReport.h"

#include <QObject>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace tessly {

/// The commands that other programs give: the model's own operations, on entries named by their
/// position (counted from 1) in the whole history. Main thread only. Calls return at once; an empty
/// answer function is not called.
class HistoryCommands final : public QObject
{
    Q_OBJECT

public:
    /// Whether something works on this desktop, asked anew for each report. What is missing does
    /// not work.
    struct Abilities
    {
        std::function<bool()> capture = {};
        std::function<bool()> paste = {};
        std::function<bool()> hotKeys = {};
        std::function<bool()> tray = {};
        /// The names of what was found to work with.
        std::function<QStringList()> protocols = {};
    };

    /// All of it must outlive the commands.
    struct Dependencies
    {
        AppModel& model;
        ClipStore& store;
        Workspace& workspace;
        Abilities abilities = {};
    };

    explicit HistoryCommands(Dependencies dependencies, QObject* parent = nullptr);
    ~HistoryCommands() override;

    void pause();
    void resume();

    /// Into the application that is in front at the time of the call.
    void paste(qint64 position, AppModel::PasteStyle style, const ActionCompletion& completion);
    void copy(qint64 position, AppModel::PasteStyle style, const ActionCompletion& completion);
    void setPinned(qint64 position, bool pinned, const ActionCompletion& completion);
    void deleteEntry(qint64 position, const ActionCompletion& completion);
    void clear(bool includePinned, ActionCompletion completion);
    /// As ClipStore::importLines.
    void importLines(
        std::function<QByteArrayView()> lines, std::function<void(const ImportOutcome&)> done,
        ActionCompletion failed);

    using Entries = std::shared_ptr<const std::vector<ClipSummary>>;
    /// `limit` entries at the most; all of them if it is negative. What is told is never null.
    void list(
        const QString& query, std::optional<ClipKind> kind, qint64 limit,
        std::function<void(Entries)> answer, ActionCompletion failed);
    void status(std::function<void(const StatusReport&)> answer, ActionCompletion failed);

private:
    using Act = std::function<void(const Clip&)>;

    /// Does `act` with the clip at a position, or says why not.
    static QCoro::Task<> pasteEntry(
        QPointer<HistoryCommands> self, qint64 position, AppModel::PasteStyle style,
        AppModel::Turn turn, ActionCompletion completion);
    static QCoro::Task<>
    withClip(QPointer<HistoryCommands> self, qint64 position, Act act, ActionCompletion completion);
    static QCoro::Task<> answerList(
        QPointer<HistoryCommands> self, QString query, std::optional<ClipKind> kind, qint64 limit,
        std::function<void(Entries)> answer, ActionCompletion failed);
    static QCoro::Task<> answerStatus(
        QPointer<HistoryCommands> self, std::function<void(const StatusReport&)> answer,
        ActionCompletion failed);

    Dependencies m_dependencies;
};

} // namespace tessly
