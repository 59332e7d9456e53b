#pragma once

#include <QDir>
#include <QString>

namespace tessly::test {

/// Keeps small copies of all pictures in a folder, in place of those that are there. Throws
/// std::runtime_error.
void writeReferences(const QDir& pictures, const QString& references);

/// Whether every picture looks like its reference, and there are as many; tells on standard error
/// of each that does not. How glyphs are rendered makes no difference, a shape that is missing, has
/// moved or has another colour does.
[[nodiscard]] bool agreesWithReferences(const QDir& pictures, const QString& references);

} // namespace tessly::test
