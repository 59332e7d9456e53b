#pragma once

#include "ClipKind.h"
#include "CommandTable.h"

#include <QByteArray>
#include <QString>

#include <optional>

namespace tessly {

/// In UTF-16 units. A search with more takes its time for nothing: every word is a condition.
constexpr qsizetype longestQuery = 10'000;

/// What the program was asked to do.
struct Invocation
{
    enum class Verb {
        start,
        /// Do `command`.
        command,
        /// Print `text` and be done.
        print,
        /// Complain with `text`, one line without its end.
        wrongUsage,
    };
    Verb verb = Verb::start;
    QString text = {};

    CommandID command = CommandID::show;
    /// Counted from 1.
    qint64 position = 0;
    /// As it was given, since names of files are bytes; "-" for standard input or output.
    QByteArray file = {};
    bool isJSON = false;
    bool isPlain = false;
    bool isEverything = false;
    /// What is imported is texts, each to a NUL.
    bool isNullSeparated = false;
    QString query = {};
    std::optional<ClipKind> kind = {};
    /// Negative: all.
    qint64 limit = -1;

    bool operator==(const Invocation&) const = default;
};

} // namespace tessly
