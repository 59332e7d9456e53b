#pragma once

#include "ClipDatabase.h"
#include "MemoryFolder.h"

#include <memory>

namespace tessly::test {

/// A history in a folder of its own, with a clock that the test moves, and a look into the file
/// from outside.
class HistoryFile
{
public:
    /// Of a history as it is made.
    static constexpr qsizetype pageSize = 2048;

    HistoryFile();

    [[nodiscard]] const QString& path() const { return m_path; }
    [[nodiscard]] QString folder() const { return m_folder.path(); }

    /// Opens the history, which closes what was open.
    ClipDatabase& open();
    void close();
    [[nodiscard]] ClipDatabase& database() { return *m_database; }

    /// What the database takes for the time; moves on by one second with every look.
    double now = 1'000'000;

    Clip saveText(const QByteArray& text, qint64 maximumHistory = 100'000);

    /// What a query answers, on a connection of its own: columns joined by "|", NULL as "NULL".
    [[nodiscard]] QByteArrayList ask(const QByteArray& sql) const;
    /// Runs statements on a connection of its own.
    void execute(const QByteArray& sql) const;

    /// Previews of clips, in their order.
    [[nodiscard]] static QStringList previews(const std::vector<Clip>& clips);

private:
    MemoryFolder m_folder;
    QString m_path;
    std::unique_ptr<ClipDatabase> m_database;
};

} // namespace tessly::test
