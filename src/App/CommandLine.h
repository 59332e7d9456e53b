#pragma once

#include <QString>

#include <vector>

namespace tessly {

inline constexpr int exitFailed = 1;
inline constexpr int exitWrongUsage = 2;
inline constexpr int exitNotRunning = 3;

/// What the program was asked to do.
struct Command
{
    enum class Verb {
        start,
        /// Call `method` of the instance that runs.
        callRunningInstance,
        /// Print `text` and be done.
        print,
        /// Complain with `text`.
        wrongUsage,
    };
    Verb verb = Verb::start;
    QString method;
    QString text;

    bool operator==(const Command&) const = default;
};

/// `arguments` without the program's name. Pure.
[[nodiscard]] Command parseCommandLine(const std::vector<const char*>& arguments);

/// "1.2.3"
[[nodiscard]] QString programVersion();

/// Calls a method of the running instance that takes and returns nothing. Needs a QCoreApplication.
/// Returns the exit status, with one line on standard error if it is not 0.
[[nodiscard]] int callRunningInstance(const QString& method);

/// What a second start does: opens the panel of the first, which may still be starting.
[[nodiscard]] int showRunningInstance();

} // namespace tessly
