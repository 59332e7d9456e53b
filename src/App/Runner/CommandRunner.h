#pragma once

#include "BusClient.h"
#include "ImportOutcome.h"
#include "Invocation.h"

#include <QByteArray>
#include <QString>

#include <functional>
#include <optional>
#include <unistd.h>

namespace tessly {

/// Carries commands out: by asking the running program, or, for what can be told without it, by
/// reading its files. Needs a QCoreApplication.
class CommandRunner
{
public:
    /// Where a command's words go. Standard output and error by default.
    struct Output
    {
        /// False if it could not be written.
        std::function<bool(const QByteArray&)> print;
        /// One line, without its end.
        std::function<void(const QString&)> complain;
        /// The width of the terminal, where printing goes to one.
        std::optional<int> columns;
        /// One line about a file's line, without its end.
        std::function<void(const QString&)> remark = {};
        /// A descriptor from which what is piped in is read.
        int input = STDIN_FILENO;
    };
    [[nodiscard]] static Output standardOutput();

    /// How many entries that are not pinned the settings let the history keep.
    using MaximumHistory = std::function<qint64()>;

    /// Reads the history in `dataFolder`, which also tells whether the program runs. Where it does
    /// not run, imports go there, too.
    CommandRunner(
        QString dataFolder, BusClient& client, Output output, MaximumHistory maximumHistory);

    /// Returns the exit status, with one line of complaint if it is not 0.
    [[nodiscard]] int run(const Invocation& invocation);

    /// What a second start does: opens the panel of the first, which may still be starting. No
    /// status if the first ended meanwhile, so that this one may be it.
    [[nodiscard]] std::optional<int> showRunningInstance();

private:
    /// Whether the program can be asked.
    enum class Reach { running, notRunning, unreachable };
    [[nodiscard]] Reach reach(std::chrono::milliseconds limit);

    [[nodiscard]] int list(const Invocation& invocation);
    [[nodiscard]] int status(const Invocation& invocation);
    [[nodiscard]] int act(const Invocation& invocation);
    [[nodiscard]] int exportHistory(const QByteArray& file);
    [[nodiscard]] std::optional<int>
    exportTo(const QString& name, const std::function<void(QByteArrayView)>& sink);
    [[nodiscard]] int importHistory(const Invocation& invocation);
    /// What is in a file: an export, or texts, each to a NUL.
    enum class Content { exported, texts };
    [[nodiscard]] int importFrom(int descriptor, const QString& name, Content content);
    /// The time of the newest of the texts, in seconds since 1970: before all that the history has.
    /// Throws ClipStoreError.
    [[nodiscard]] double timeOfTexts() const;
    /// Adds entries to the history. Where it cannot be had, or that fails, there is none, it was
    /// said why, and the exit status is in `status`.
    using Add = std::function<std::optional<ImportOutcome>(const QByteArray& lines)>;
    [[nodiscard]] Add makeAdd(int& status);
    /// `isTaken`: the program has started just now, and it has not been said.
    [[nodiscard]] Add makeAddHere(int& status, bool& isTaken);
    [[nodiscard]] std::optional<ImportOutcome> addByProgram(const QByteArray& lines, int& status);
    [[nodiscard]] int waitForEnd();
    [[nodiscard]] int print(const QByteArray& text);
    int complain(int status, const QString& line);
    /// `reason`: as of errno.
    int complainOfPrinting(int reason);
    int complainOfAnswer(const QDBusMessage& answer);
    int complainOfReach();

    QString m_dataFolder;
    QString m_databasePath;
    BusClient& m_client;
    Output m_output;
    MaximumHistory m_maximumHistory;
};

} // namespace tessly
