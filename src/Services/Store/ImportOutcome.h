#pragma once

#include <QString>

#include <vector>

namespace tessly {

/// What became of lines that were to be imported.
struct ImportOutcome
{
    struct Refusal
    {
        /// Which of the lines, counted from 0.
        qint64 line = 0;
        /// Why, without a word of its content.
        QString reason;

        bool operator==(const Refusal&) const = default;
    };

    /// Entries that are in the history now and were not before.
    qint64 added = 0;
    /// Entries of which the history had the content; they are as they were.
    qint64 present = 0;
    /// In the order of the lines.
    std::vector<Refusal> refused;

    bool operator==(const ImportOutcome&) const = default;
};

} // namespace tessly
