#include "HistoryFile.h"

#include "SQLiteStatement.h"

#include <stdexcept>

using namespace Qt::StringLiterals;

namespace tessly::test {

HistoryFile::HistoryFile()
    : m_path(m_folder.filePath(u"history.sqlite"_s))
{
}

ClipDatabase& HistoryFile::open()
{
    close();
    m_database = std::make_unique<ClipDatabase>(m_path, [this] { return now++; });
    return *m_database;
}

void HistoryFile::close()
{
    m_database.reset();
}

Clip HistoryFile::saveText(const QByteArray& text, qint64 maximumHistory)
{
    return database().save(
        ClipPayload({.plainText = text}), std::nullopt, std::nullopt, maximumHistory);
}

QByteArrayList HistoryFile::ask(const QByteArray& sql) const
{
    const SQLiteConnection connection(m_path);
    SQLiteStatement statement(connection, sql);
    QByteArrayList rows;
    SQLiteStatement::Step step = SQLiteStatement::Step::row;
    while ((step = statement.step()) == SQLiteStatement::Step::row) {
        QByteArrayList columns;
        for (int column = 0; column < statement.columnCount(); ++column) {
            columns.append(statement.isNull(column) ? "NULL" : statement.bytes(column));
        }
        rows.append(columns.join('|'));
    }
    if (step == SQLiteStatement::Step::failed) {
        throw std::runtime_error(connection.errorMessage().toStdString());
    }
    return rows;
}

void HistoryFile::execute(const QByteArray& sql) const
{
    SQLiteConnection(m_path).execute(sql.constData());
}

QStringList HistoryFile::previews(const std::vector<Clip>& clips)
{
    QStringList previews;
    for (const Clip& clip : clips) {
        previews.append(clip.payload.previewLine());
    }
    return previews;
}

} // namespace tessly::test
