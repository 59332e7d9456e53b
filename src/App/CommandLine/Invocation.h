#pragma once

#include "ClipKind.h"
#include "CommandTable.h"

#include <QString>

#include <optional>

namespace tessly {

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
    bool isJSON = false;
    bool isPlain = false;
    bool isEverything = false;
    QString query = {};
    std::optional<ClipKind> kind = {};
    /// Negative: all.
    qint64 limit = -1;

    bool operator==(const Invocation&) const = default;
};

} // namespace tessly
