#pragma once

#include "ImportOutcome.h"
#include "LineReader.h"

#include <QByteArray>
#include <QString>

#include <functional>
#include <optional>
#include <vector>

namespace tessly {

/// Reads a file that a history was exported to, or one of texts, and hands its entries on, some at
/// a time. Holds a few megabytes of it, or one line where that is longer.
class HistoryImport
{
public:
    /// Adds the entries of some lines to the history; none if that failed and was said.
    using Add = std::function<std::optional<ImportOutcome>(const QByteArray& lines)>;
    /// Says what is wrong with a line of the file, or, where it is 0, with the file.
    using Refuse = std::function<void(qint64 line, const QString& reason)>;

    struct Result
    {
        qint64 added = 0;
        qint64 present = 0;
        qint64 refused = 0;
        /// Whether all of the file was read. If not, it was said why.
        bool isComplete = false;
    };

    HistoryImport(LineReader& lines, Add add, Refuse refuse);

    /// Throws FileError if the file cannot be read; `result` tells what had been added by then.
    void run();
    /// As `run`, of a file of texts instead of entries: what the reader takes for its lines. The
    /// first is the newest, from then (in seconds since 1970), and each following one is older.
    /// Empty ones are passed over.
    void runOfTexts(double newest);
    [[nodiscard]] const Result& result() const { return m_result; }

private:
    enum class Step { goOn, stop };

    [[nodiscard]] Step take(qsizetype begin);
    void takeText(const QByteArray& text, double time);
    /// Adds what waits if that is enough for once. False if it failed.
    [[nodiscard]] bool addIfEnough();
    [[nodiscard]] Step refuseTooLong();
    /// The line that was read last; `step` is what follows.
    [[nodiscard]] Step refuseLast(const QString& reason, Step step);
    /// False if it failed.
    [[nodiscard]] bool addWaiting();
    void refuse(qint64 line, const QString& reason);

    LineReader& m_lines;
    Add m_add;
    Refuse m_refuse;
    Result m_result;
    // Read and not yet added, each with its end, and their numbers in the file.
    QByteArray m_waiting;
    std::vector<qint64> m_numbers;
    // Whether a first line has come whose last has not.
    bool m_isWithin = false;
    bool m_hasBegun = false;
};

} // namespace tessly
