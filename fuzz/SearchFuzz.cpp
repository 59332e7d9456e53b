// What a user types into the search field, on its way to SQLite. Fields: which kind, the query.

#include "ClipDatabase.h"
#include "ClipSearchQuery.h"
#include "FuzzInput.h"
#include "MemoryFolder.h"
#include "ReferenceReads.h"

#include <optional>

using namespace Qt::StringLiterals;
using namespace tessly;
using namespace tessly::fuzz;

namespace {

// What the search field takes.
constexpr qsizetype longestTyped = 1000;

class Histories
{
public:
    Histories()
    {
        const QByteArrayList texts = {
            "Don't stop the report",
            "50%_off \\ and \"quotes\"",
            "\xC3\x89t\xC3\xA9 fran\xC3\xA7"
            "ais na\xC3\xAFve \xC3\x9F",
            "\xE6\x97\xA5\xE6\x9C\xAC\xE8\xAA\x9E \xED\x95\x9C\xEA\xB5\xAD\xEC\x96\xB4",
            "foo.bar-x AND OR NOT NEAR(a b) * ^ {search_text}: c",
            "https://example.org/a?b=c#d",
            "line one\nline two\ttab",
            "\xF0\x9F\x91\xA9\xE2\x80\x8D\xF0\x9F\x91\xA7 1234 \xE2\x85\xA3 \xC2\xBD",
            QByteArray("with a \0 inside", 15),
            "?!",
        };
        for (const QByteArray& text : texts) {
            m_database.save(
                ClipPayload({.plainText = text}), u"Text Editor"_s, u"org.editor"_s, 1000);
        }
        m_database.save(
            ClipPayload({.fileURLs = {"file:///home/user/Report%202026.pdf"}}), std::nullopt,
            std::nullopt, 1000);
        m_database.save(
            ClipPayload({.imagePNG = "\x89PNG\r\n\x1a\n"}), std::nullopt, std::nullopt, 1000);
        m_database.save(
            ClipPayload({.plainText = "rich", .html = "<b>rich</b>"}), u"100% Browser"_s,
            std::nullopt, 1000);
        m_database.setPinned(true, m_database.search({}, std::nullopt, 1).front().id);
    }

    void check(const QString& query, std::optional<ClipKind> kind)
    {
        const std::vector<Clip> found = m_database.search(query, kind, 50);
        require(
            found == m_reference.search(query, kind, 50), "a search finds what plain SQL finds");
        require(
            m_database.summaries(query, kind, 50).size() == found.size(),
            "a list finds what a search finds");
        require(m_database.ftsAvailable(), "no query costs the index");
    }

private:
    test::MemoryFolder m_folder;
    QString m_path = m_folder.filePath(u"history.sqlite"_s);
    double m_now = 1'000'000;
    ClipDatabase m_database{m_path, [this] { return m_now++; }};
    test::ReferenceReads m_reference{m_path, true};
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static Histories histories;
    FuzzInput input(data, size);
    const std::size_t kind = input.nextByte() % (allClipKinds.size() + 1);
    const QString query = QString::fromUtf8(input.rest().join('\xff')).left(longestTyped);
    histories.check(
        query, kind < allClipKinds.size() ? std::optional(allClipKinds[kind]) : std::nullopt);
    return 0;
}
