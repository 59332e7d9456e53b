#pragma once

#include "BusClient.h"
#include "Invocation.h"

#include <QByteArray>
#include <QString>

#include <functional>
#include <optional>

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
    };
    [[nodiscard]] static Output standardOutput();

    /// Reads the history in `dataFolder`, which also tells whether the program runs.
    CommandRunner(QString dataFolder, BusClient& client, Output output);

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
    [[nodiscard]] int waitForEnd();
    [[nodiscard]] int print(const QByteArray& text);
    int complain(int status, const QString& line);
    int complainOfAnswer(const QDBusMessage& answer);
    int complainOfReach();

    QString m_dataFolder;
    QString m_databasePath;
    BusClient& m_client;
    Output m_output;
};

} // namespace tessly
