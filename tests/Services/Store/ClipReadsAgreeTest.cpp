#include "HistoryFile.h"
#include "QtPrinting.h"
#include "ReferenceReads.h"

#include <QRandomGenerator>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace tessly::test {

namespace {

/// A history that went through random saves, pins, uses and removals, with few different times, so
/// that many clips tie.
class RandomHistory
{
public:
    explicit RandomHistory(quint32 seed)
        : m_random(seed)
    {
        m_history.open();
        const int steps = m_random.bounded(5, 200);
        for (int i = 0; i < steps; ++i) {
            m_history.now = 1000 + m_random.bounded(8);
            step();
        }
        if (m_random.bounded(4) == 0) {
            m_history.execute("UPDATE clips SET pin_order = 1 WHERE is_pinned = 1");
        }
        if (m_random.bounded(4) == 0) {
            m_history.execute("UPDATE clips SET pin_order = NULL WHERE rowid % 3 = 0");
        }
        if (m_random.bounded(4) == 0) {
            m_history.execute("UPDATE clips SET is_pinned = 2 WHERE rowid % 7 = 0");
        }
        if (m_random.bounded(2) == 0) {
            // With statistics SQLite may choose other ways for the plain statements.
            m_history.execute("ANALYZE");
            m_history.open();
        }
    }

    ClipDatabase& database() { return m_history.database(); }
    const QString& path() const { return m_history.path(); }

    QString query()
    {
        static const QStringList queries = {
            u""_s,       u"  \n"_s, u"report"_s, u"rep"_s,   u"port"_s,      u"RÉSUMÉ"_s,
            u"resume"_s, u"a"_s,    u"x y"_s,    u"%"_s,     u"_"_s,         u"\\"_s,
            u"?!"_s,     u"\""_s,   u"image"_s,  u"photo"_s, u"clipboard"_s, u"editor"_s,
            u"ditor"_s,  u"tmp"_s,  u"a.txt"_s,  u"zzz"_s,   u"report a"_s,  u"item"_s,
        };
        return queries.at(m_random.bounded(static_cast<int>(queries.size())));
    }

    std::optional<ClipKind> kind()
    {
        const auto choice = static_cast<size_t>(m_random.bounded(10));
        return choice < allClipKinds.size() ? std::optional(allClipKinds.at(choice)) : std::nullopt;
    }

    qint64 limit()
    {
        static constexpr std::array<qint64, 9> limits = {0, 1, 2, 3, 10, 50, 1000, -1, -7};
        return limits.at(static_cast<size_t>(m_random.bounded(9)));
    }

    /// Some of the clips, as a caller may hold them from whatever it asked before.
    std::vector<Clip> held()
    {
        std::vector<Clip> clips;
        for (const Clip& clip : database().search({}, std::nullopt, -1)) {
            if (m_random.bounded(2) == 0) {
                clips.push_back(clip);
            }
        }
        return clips;
    }

private:
    ClipPayload payload()
    {
        static const QByteArrayList texts = {
            "report",    "The Report of May",
            "important", "r\xc3\xa9sum\xc3\xa9",
            "a b c",     "50%_off \\ now",
            "what?!",    "note:report",
            "see:a",     "x\ny",
            "  \n ",     "\"quoted\"",
        };
        const QByteArray text = texts.at(m_random.bounded(static_cast<int>(texts.size())));
        const QByteArray number = ' ' + QByteArray::number(m_random.bounded(60));
        switch (m_random.bounded(6)) {
        case 0:
            return ClipPayload({.imagePNG = "png" + number});
        case 1:
            return ClipPayload({.plainText = text, .imagePNG = QByteArray(9000, 'i') + number});
        case 2:
            return ClipPayload({.plainText = text + number, .rtf = "", .html = "<p>report"});
        case 3:
            return ClipPayload(
                {.fileURLs = {"file:///tmp/a.txt", "file:///x/y" + number.trimmed()}});
        case 4:
            return ClipPayload({.plainText = "see:report" + number.trimmed()});
        default:
            return ClipPayload({.plainText = text + number});
        }
    }

    void step()
    {
        static const std::array<std::optional<QString>, 3> apps = {
            std::nullopt, u"Text Editor"_s, u""_s};
        if (m_ids.empty() || m_random.bounded(10) < 6) {
            const auto app = apps.at(static_cast<size_t>(m_random.bounded(3)));
            m_ids.push_back(m_history.database().save(payload(), app, app, 1000).id);
            return;
        }
        const QUuid id =
            m_ids.at(static_cast<size_t>(m_random.bounded(static_cast<int>(m_ids.size()))));
        switch (m_random.bounded(8)) {
        case 0:
            database().remove(id);
            break;
        case 1:
            database().setPinned(false, id);
            break;
        case 2:
        case 3:
            database().setPinned(true, id);
            break;
        default:
            database().markUsed(id, true);
        }
    }

    QRandomGenerator m_random;
    HistoryFile m_history;
    std::vector<QUuid> m_ids;
};

} // namespace

TEST(ClipReads, agreeWithThePlainStatementsWhateverTheHistory)
{
    qsizetype rows = 0;
    for (quint32 seed = 1; seed <= 40; ++seed) {
        RandomHistory history(seed);
        const ReferenceReads reference(history.path(), history.database().ftsAvailable());
        for (int i = 0; i < 50; ++i) {
            const QString query = history.query();
            const auto kind = history.kind();
            const qint64 limit = history.limit();
            const std::vector<Clip> held = i % 2 == 0 ? history.held() : std::vector<Clip>();
            const std::vector<Clip> expected = reference.search(query, kind, limit);
            ASSERT_EQ(history.database().search(query, kind, limit, held), expected)
                << "seed " << seed << ", query \"" << query.toStdString() << "\", kind "
                << (kind ? rawValue(*kind).toStdString() : "any") << ", limit " << limit;
            rows += static_cast<qsizetype>(expected.size());
        }
    }
    EXPECT_GT(rows, 5000);
}

// Few matches far down are looked up, many are met on a walk through the latest clips; in between
// the walk is given up half-way.
TEST(ClipReads, agreeWhereverTheMatchesStand)
{
    HistoryFile history;
    history.open();
    for (int i = 0; i < 300; ++i) {
        const QByteArray word = i < 40 ? "old" : i < 150 ? "middle" : i % 3 == 0 ? "third" : "rest";
        const Clip clip = history.saveText(word + " text " + QByteArray::number(i));
        if (i % 37 == 0) {
            history.database().setPinned(true, clip.id);
        }
    }
    const ReferenceReads reference(history.path(), true);
    for (const QString& query : {u"old"_s, u"middle"_s, u"third"_s, u"rest"_s, u"text"_s, u"7"_s}) {
        for (const auto kind : {std::optional<ClipKind>(), std::optional(ClipKind::text)}) {
            for (const qint64 limit : {1, 2, 10, 39, 40, 41, 50, 150, 1000, -1}) {
                EXPECT_EQ(
                    history.database().search(query, kind, limit),
                    reference.search(query, kind, limit))
                    << query.toStdString() << ' ' << limit;
            }
        }
    }
}

} // namespace tessly::test
