// A history with a row that nobody of us wrote. Fields: the columns, in their order; of each the
// first byte is its type, as in "t" for a text, and a column without one is as usual.

#include "ClipDatabase.h"
#include "FuzzInput.h"
#include "MemoryFolder.h"
#include "SQLiteError.h"

#include <QFile>

#include <array>

using namespace Qt::StringLiterals;
using namespace tessly;
using namespace tessly::fuzz;

namespace {

struct Column
{
    const char* name;
    const char* usual;
};
constexpr std::array columns = {
    Column{"id", "'6F0C1E59-2B5B-4C43-9B0C-5C0B8F1E2D3A'"},
    Column{"created_at", "5"},
    Column{"last_used_at", "5"},
    Column{"kind", "'text'"},
    Column{"preview", "'strange'"},
    Column{"search_text", "'strange'"},
    Column{"plain_text", "'strange'"},
    Column{"rtf", "NULL"},
    Column{"html", "NULL"},
    Column{"image_png", "NULL"},
    Column{"file_urls", "'[]'"},
    Column{"source_app_name", "NULL"},
    Column{"source_bundle_id", "NULL"},
    Column{"content_hash", "'0'"},
    Column{"is_pinned", "0"},
    Column{"pin_order", "NULL"},
    Column{"copy_count", "1"},
};

QByteArray literal(const QByteArray& field, const char* usual)
{
    const QByteArray value = field.mid(1);
    switch (field.isEmpty() ? '\0' : field.front()) {
    case 'n':
        return "NULL";
    case 'i':
        return QByteArray::number(value.toLongLong());
    case 'r':
        return QByteArray::number(value.toDouble(), 'g', 17);
    case 't':
        return "CAST(x'" + value.toHex() + "' AS TEXT)";
    case 'b':
        return "x'" + value.toHex() + '\'';
    default:
        return usual;
    }
}

double now()
{
    static double time = 1'000'000;
    return time++;
}

QByteArray usualHistory(const QString& path)
{
    {
        ClipDatabase database(path, now);
        database.save(ClipPayload({.plainText = "usual"}), std::nullopt, std::nullopt, 100);
        database.scrub();
    }
    QFile file(path);
    require(file.open(QFile::ReadOnly), "a history can be read");
    return file.readAll();
}

/// Whatever is wrong with a row may be said; nothing else may be thrown.
template <typename Operation>
void attempt(Operation operation)
{
    try {
        operation();
    } catch (const ClipStoreError&) {
        return;
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const test::MemoryFolder folder;
    static const QString path = folder.filePath(u"history.sqlite"_s);
    static const QByteArray usual = usualHistory(path);
    {
        QFile file(path);
        require(file.open(QFile::WriteOnly) && file.write(usual) == usual.size(), "it is written");
    }
    FuzzInput input(data, size);
    QByteArrayList names;
    QByteArrayList values;
    for (const Column& column : columns) {
        names.append(column.name);
        values.append(literal(input.next(), column.usual));
    }
    try {
        const QByteArray insertion =
            "INSERT INTO clips (" + names.join(',') + ") VALUES (" + values.join(',') + ')';
        SQLiteConnection(path).execute(insertion.constData());
    } catch (const SQLiteError&) {
        // A value that no row can have.
        return 0;
    }

    ClipDatabase database(path, now);
    std::vector<ClipSummary> summaries;
    for (const char* const query : {"", "strange", "usual", "nothing like it"}) {
        attempt([&] { (void)database.search(QString::fromLatin1(query), std::nullopt, -1); });
        attempt(
            [&] { summaries = database.summaries(QString::fromLatin1(query), std::nullopt, -1); });
        for (const ClipSummary& summary : summaries) {
            attempt([&] { (void)database.payload(summary.id); });
        }
    }
    attempt([&] { (void)database.clip(1); });
    attempt([&] { (void)database.clip(2); });
    for (const ClipSummary& summary : summaries) {
        attempt([&] { database.setPinned(true, summary.id); });
        attempt([&] { database.markUsed(summary.id, true); });
    }
    // What is wrong with one entry keeps nobody from copying, nor from clearing it away.
    const Clip saved =
        database.save(ClipPayload({.plainText = "copied"}), std::nullopt, std::nullopt, 100);
    require(database.payload(saved.id).has_value(), "what is copied is there");
    (void)database.statistics();
    (void)database.scrub();
    database.clear(true);
    require(database.statistics().totalItems == 0, "a cleared history is empty");
    database.save(ClipPayload({.plainText = "copied"}), std::nullopt, std::nullopt, 100);
    require(
        database.search(u"copied"_s, std::nullopt, -1).size() == 1, "what is copied can be found");
    return 0;
}
