#pragma once

#include "HistoryFile.h"

#include <QStringList>

namespace tessly::test {

// Histories for the tests of faults, and ways to look at them.

/// Begins a text of the histories below.
inline const QByteArray secretWord = "xsecretx";

/// Some texts, the one with the secret among them, and one that is pinned; closed.
void fillUsually(HistoryFile& history);
/// More clips than clearing deletes in one part; closed.
void fillWithMany(HistoryFile& history);
/// A fresh history beside a damaged one that was set aside, of which nothing was brought over;
/// closed.
void fillAndDamage(HistoryFile& history);

/// What a user sees of a history that is open, a line for each clip.
[[nodiscard]] QStringList look(HistoryFile& history);
/// Throws if there is none.
[[nodiscard]] QUuid idOf(HistoryFile& history, const QString& preview);
/// Whether any file of the history's folder, not of those below it, holds the secret.
[[nodiscard]] bool isSecretInFiles(const HistoryFile& history);
/// The database that was set aside and is not brought over yet; empty if there is none.
[[nodiscard]] QString unfinishedRescue(const HistoryFile& history);

} // namespace tessly::test
