// What the history costs: saves, and reads beside the same reads as plain SQL.

#include "ClipDatabase.h"
#include "ReferenceReads.h"
#include "SQLiteStatement.h"

#include <QCoreApplication>
#include <QRandomGenerator>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <fstream>
#include <memory>
#include <stdexcept>
#include <string>

using namespace Qt::StringLiterals;
using namespace tessly;

namespace {

constexpr qint64 keepAll = 1'000'000;
constexpr qint64 panelRows = 50;

enum class Content { texts, images };

/// A text as people copy them: some words of a vocabulary, a few hundred bytes.
QByteArray sampleText(int number, QRandomGenerator& random)
{
    QByteArray text = "common entry" + QByteArray::number(number);
    const int words = random.bounded(5, 60);
    for (int i = 0; i < words; ++i) {
        text += " word" + QByteArray::number(random.bounded(5000));
    }
    return text;
}

QByteArray noise(qsizetype size, QRandomGenerator& random)
{
    QByteArray bytes(size, Qt::Uninitialized);
    random.fillRange(reinterpret_cast<quint32*>(bytes.data()), size / 4);
    return bytes;
}

struct History
{
    History(Content content, int clips)
    {
        // Creates the tables.
        ClipDatabase(path, [] { return 0; });
        fill(content, clips);
        database = std::make_unique<ClipDatabase>(path, [this] { return now++; });
        database->scrub();
        reference = std::make_unique<test::ReferenceReads>(path, true);
    }

    /// As saves would, but in few transactions.
    void fill(Content content, int clips)
    {
        QRandomGenerator random(1);
        SQLiteConnection connection(path);
        SQLiteStatement insert(connection, R"sql(INSERT INTO clips (
            id, created_at, last_used_at, kind, preview, search_text, plain_text, image_png,
            file_urls, source_app_name, source_bundle_id, content_hash, is_pinned, pin_order
        ) VALUES (?1, ?2, ?2, ?3, ?4, ?5, ?6, ?7, '[]', 'Text Editor', 'org.editor', ?8, ?9,
            nullif(?9, 0) * ?2))sql");
        connection.execute("BEGIN");
        for (int i = 0; i < clips; ++i) {
            const ClipPayload payload = content == Content::images
                                            ? ClipPayload({.imagePNG = noise(5 << 20, random)})
                                            : ClipPayload({.plainText = sampleText(i, random)});
            insert.reset();
            const bool isInserted =
                insert.bindText(
                    1, QUuid::createUuid().toByteArray(QUuid::WithoutBraces).toUpper()) &&
                insert.bindDouble(2, now++) &&
                insert.bindText(3, rawValue(payload.kind()).toUtf8()) &&
                insert.bindText(4, payload.preview()) && insert.bindText(5, payload.searchText()) &&
                insert.bindText(6, payload.plainText()) && insert.bindData(7, payload.imagePNG()) &&
                insert.bindText(8, payload.contentHash()) && insert.bindInteger(9, i % 1000 == 0) &&
                insert.step() == SQLiteStatement::Step::done;
            if (!isInserted) {
                throw std::runtime_error("the history could not be filled");
            }
            if (i % 1000 == 0) {
                connection.execute("COMMIT; BEGIN");
            }
        }
        connection.execute("COMMIT");
    }

    QTemporaryDir folder{QDir::current().filePath(u"store-bench-XXXXXX"_s)};
    QString path = folder.filePath(u"history.sqlite"_s);
    double now = 1'000'000;
    std::unique_ptr<ClipDatabase> database;
    std::unique_ptr<test::ReferenceReads> reference;
};

/// Histories are costly to fill: each is kept until another is asked for.
History& history(Content content, int clips)
{
    static std::unique_ptr<History> kept;
    static std::pair<Content, int> keptAs;
    if (!kept || keptAs != std::pair(content, clips)) {
        kept.reset();
        kept = std::make_unique<History>(content, clips);
        keptAs = {content, clips};
    }
    return *kept;
}

struct Search
{
    QString query;
    std::optional<ClipKind> kind;
};

/// By the store, with what it answered before at hand as the panel has it.
void held(benchmark::State& state, Content content, const Search& search)
{
    History& h = history(content, static_cast<int>(state.range(0)));
    const std::vector<Clip> known = h.database->search(search.query, search.kind, panelRows);
    for (auto _ : state) {
        benchmark::DoNotOptimize(h.database->search(search.query, search.kind, panelRows, known));
    }
    state.counters["rows"] = static_cast<double>(known.size());
}

/// By the store, reading all contents.
void fresh(benchmark::State& state, Content content, const Search& search)
{
    History& h = history(content, static_cast<int>(state.range(0)));
    for (auto _ : state) {
        benchmark::DoNotOptimize(h.database->search(search.query, search.kind, panelRows));
    }
}

/// By one statement.
void plainSQL(benchmark::State& state, Content content, const Search& search)
{
    History& h = history(content, static_cast<int>(state.range(0)));
    for (auto _ : state) {
        benchmark::DoNotOptimize(h.reference->search(search.query, search.kind, panelRows));
    }
}

void saveText(benchmark::State& state)
{
    History& h = history(Content::texts, static_cast<int>(state.range(0)));
    QRandomGenerator random(2);
    int number = 10'000'000;
    for (auto _ : state) {
        state.PauseTiming();
        const ClipPayload payload({.plainText = sampleText(++number, random)});
        state.ResumeTiming();
        h.database->save(payload, u"Text Editor"_s, u"org.editor"_s, keepAll);
    }
}

/// What this process has given to write() so far, in bytes.
double written()
{
    std::ifstream io("/proc/self/io");
    std::string key;
    double value = 0;
    while (io >> key >> value) {
        if (key == "wchar:") {
            return value;
        }
    }
    throw std::runtime_error("no /proc/self/io");
}

/// Short copies into a history at its limit, each with a rest behind it. All that is put off is
/// done by the end.
void copyAtTheLimit(benchmark::State& state)
{
    const qint64 limit = state.range(0);
    History h(Content::texts, static_cast<int>(limit));
    QRandomGenerator random(5);
    int number = 30'000'000;
    const double before = written();
    for (auto _ : state) {
        const ClipPayload payload({.plainText = sampleText(++number, random)});
        h.database->save(payload, u"Text Editor"_s, u"org.editor"_s, limit);
        h.database->scrub();
    }
    h.database = std::make_unique<ClipDatabase>(h.path, [&h] { return h.now++; });
    h.database->scrub();
    state.counters["bytesPerCopy"] = (written() - before) / static_cast<double>(state.iterations());
}

void saveImage(benchmark::State& state)
{
    History h(Content::texts, 100);
    QRandomGenerator random(3);
    for (auto _ : state) {
        state.PauseTiming();
        const ClipPayload payload({.imagePNG = noise(25 << 20, random)});
        state.ResumeTiming();
        h.database->save(payload, u"Text Editor"_s, u"org.editor"_s, 10);
    }
}

void removeText(benchmark::State& state)
{
    History& h = history(Content::texts, static_cast<int>(state.range(0)));
    QRandomGenerator random(4);
    int number = 20'000'000;
    for (auto _ : state) {
        state.PauseTiming();
        const Clip clip = h.database->save(
            ClipPayload({.plainText = sampleText(++number, random)}), std::nullopt, std::nullopt,
            keepAll);
        state.ResumeTiming();
        h.database->remove(clip.id);
    }
}

void registerAll()
{
    const std::vector<std::pair<std::string, Search>> searches = {
        {"list", {}},
        {"kind", {{}, ClipKind::text}},
        {"rareKind", {{}, ClipKind::link}},
        {"word", {u"common"_s, std::nullopt}},
        {"wordAndKind", {u"common"_s, ClipKind::text}},
        {"fewMatches", {u"entry77"_s, std::nullopt}},
        {"nothing", {u"qqxyzq"_s, std::nullopt}},
    };
    const std::vector<std::pair<std::string, Search>> imageSearches = {
        {"list", {}},
        {"kind", {{}, ClipKind::image}},
        {"word", {u"photo"_s, std::nullopt}},
        {"wordAndKind", {u"photo"_s, ClipKind::image}},
        {"nothing", {u"qqxyzq"_s, std::nullopt}},
    };
    const auto add = [](const std::string& name, auto function, auto... arguments) {
        return benchmark::RegisterBenchmark(name.c_str(), function, arguments...)
            ->Unit(benchmark::kMillisecond);
    };
    for (const int clips : {1000, 10'000, 100'000}) {
        for (const auto& [name, search] : searches) {
            add("texts/" + name + "/store", held, Content::texts, search)->Arg(clips);
            if (clips == 10'000) {
                add("texts/" + name + "/storeFresh", fresh, Content::texts, search)->Arg(clips);
                add("texts/" + name + "/plainSQL", plainSQL, Content::texts, search)->Arg(clips);
            }
        }
        if (clips > 10'000) {
            continue;
        }
        add("texts/save", saveText)->Arg(clips)->Iterations(200);
        add("texts/copyAtTheLimit", copyAtTheLimit)->Arg(clips)->Iterations(2500);
        add("texts/remove", removeText)->Arg(clips)->Iterations(20);
    }
    for (const int clips : {200, 500}) {
        for (const auto& [name, search] : imageSearches) {
            add("images/" + name + "/store", held, Content::images, search)->Arg(clips);
            if (clips == 200) {
                add("images/" + name + "/storeFresh", fresh, Content::images, search)->Arg(clips);
                add("images/" + name + "/plainSQL", plainSQL, Content::images, search)
                    ->Arg(clips)
                    ->Iterations(2);
            }
        }
    }
    add("saveImageOf25MB", saveImage)->Iterations(20);
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    registerAll();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
