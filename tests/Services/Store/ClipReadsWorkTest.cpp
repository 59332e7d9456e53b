#include "FaultVFS.h"
#include "HistoryFile.h"
#include "QtPrinting.h"
#include "SQLiteHook.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace tessly::test {

namespace {

constexpr qint64 panelRows = 50;

/// Counts what SQLite does for the history's connection.
class ClipReadsWork : public testing::Test
{
protected:
    ClipReadsWork()
        : m_hook([this](sqlite3* connection) { watch(connection); })
    {
    }

    struct Work
    {
        /// Instructions of SQLite's virtual machine.
        qint64 steps = 0;
        /// Pages that were fetched from the files, also past the page cache.
        qint64 pages = 0;
    };

    /// A history that is freshly opened, with nothing in its page cache.
    void reopen()
    {
        history.open();
        // Connections of the test's own looks come later and are not the one.
        m_isWatched = false;
    }

    Work workOf(const std::function<void()>& action)
    {
        sqlite3_db_release_memory(m_connection);
        m_steps = 0;
        const qint64 before = m_files.bytesRead();
        action();
        return {m_steps, (m_files.bytesRead() - before) / HistoryFile::pageSize};
    }

private:
    // Before what is opened through it.
    FaultVFS m_files;

protected:
    HistoryFile history;

private:
    void watch(sqlite3* connection)
    {
        if (!m_isWatched) {
            return;
        }
        m_connection = connection;
        sqlite3_trace_v2(
            connection, SQLITE_TRACE_PROFILE,
            [](unsigned, void* test, void* statement, void*) {
                static_cast<ClipReadsWork*>(test)->m_steps += sqlite3_stmt_status(
                    static_cast<sqlite3_stmt*>(statement), SQLITE_STMTSTATUS_VM_STEP, 1);
                return 0;
            },
            this);
    }

    bool m_isWatched = true;
    sqlite3* m_connection = nullptr;
    qint64 m_steps = 0;
    SQLiteHook m_hook;
};

} // namespace

TEST_F(ClipReadsWork, ofTheListAndOfAnIndexedSearchDoesNotGrowWithTheHistory)
{
    reopen();
    Work list;
    Work search;
    Work searchOfKind;
    int clips = 0;
    for (const int target : {300, 3000}) {
        for (; clips < target; ++clips) {
            const QByteArray word = clips % (target / 30) == 0 && clips < 300 ? "wanted" : "other";
            history.saveText(word + " text " + QByteArray::number(clips));
        }
        const Work before = list;
        const Work searchBefore = search;
        const Work kindBefore = searchOfKind;
        list = workOf(
            [&] { EXPECT_EQ(history.database().search({}, std::nullopt, panelRows).size(), 50U); });
        search = workOf([&] {
            EXPECT_EQ(history.database().search(u"wanted"_s, std::nullopt, panelRows).size(), 30U);
        });
        searchOfKind = workOf([&] {
            EXPECT_EQ(
                history.database().search(u"wanted"_s, ClipKind::text, panelRows).size(), 30U);
        });
        if (before.steps > 0) {
            EXPECT_LT(list.steps, before.steps * 11 / 10);
            EXPECT_LT(search.steps, searchBefore.steps * 11 / 10);
            EXPECT_LT(searchOfKind.steps, kindBefore.steps * 11 / 10);
            EXPECT_LT(search.pages, searchBefore.pages * 3);
        }
    }
}

TEST_F(ClipReadsWork, ofAListOfPicturesLeavesThePicturesWhereTheyAre)
{
    reopen();
    constexpr int images = 100;
    constexpr qint64 pagesOfAnImage = 330;
    for (int i = 0; i < images; ++i) {
        const QByteArray image(pagesOfAnImage * HistoryFile::pageSize, static_cast<char>(i));
        const Clip clip =
            history.database().save(ClipPayload({.imagePNG = image}), u"App"_s, std::nullopt, 1000);
        if (i % 40 == 0) {
            history.database().setPinned(true, clip.id);
        }
    }
    const std::vector<Clip> held = history.database().search({}, std::nullopt, panelRows);
    for (const QString& query : {u""_s, u"photo"_s}) {
        for (const auto kind : {std::optional<ClipKind>(), std::optional(ClipKind::image)}) {
            const Work work = workOf(
                [&] { EXPECT_EQ(history.database().search(query, kind, panelRows, held), held); });
            // Of each clip that is shown the front, a page or two of the way to what stands behind
            // the picture, and that; of the others nothing.
            EXPECT_LT(work.pages, panelRows * 5) << query.toStdString();
        }
    }
    // As little of what the caller has never seen: its outline.
    const Work fresh =
        workOf([&] { EXPECT_EQ(history.database().search({}, std::nullopt, 10).size(), 10U); });
    EXPECT_LT(fresh.pages, 10 * 10);
    // A picture is read when it is asked for.
    const Work whole = workOf([&] {
        EXPECT_EQ(
            history.database().payload(held.front().id)->byteCount(),
            pagesOfAnImage * HistoryFile::pageSize);
    });
    EXPECT_GT(whole.pages, pagesOfAnImage);
    EXPECT_LT(whole.pages, pagesOfAnImage + 10);
}

TEST_F(ClipReadsWork, ofAPreviewIsThatOfWhatItShows)
{
    reopen();
    constexpr qint64 large = qint64(8) * 1024 * 1024;
    const auto idOf = [this](const ClipPayload& payload) {
        return history.database().save(payload, u"App"_s, std::nullopt, 1000).id;
    };
    const auto words = [](QByteArrayView word) {
        return word.toByteArray().repeated(large / word.size());
    };
    QByteArrayList urls;
    for (int i = 0; i < 100'000; ++i) {
        urls.append("file:///home/anna/some%20folder/some%20file/" + QByteArray::number(i));
    }
    const QUuid text = idOf(ClipPayload({.plainText = words("text ")}));
    const QUuid rich =
        idOf(ClipPayload({.plainText = words("rich "), .html = words("<b>rich</b>")}));
    const QUuid html = idOf(ClipPayload({.html = words("<p>html</p>")}));
    const QUuid rtf = idOf(ClipPayload({.rtf = words("rtf ")}));
    const QUuid files = idOf(ClipPayload({.fileURLs = urls}));
    const QUuid image = idOf(ClipPayload({.imagePNG = words("png")}));

    const auto pagesOf = [this](QUuid id) {
        const Work work = workOf([&] { EXPECT_TRUE(history.database().preview(id).has_value()); });
        return work.pages;
    };
    // The way to what stands behind other large contents leads over one page in some four hundred.
    constexpr qint64 way = 5 * large / HistoryFile::pageSize / 400;
    EXPECT_LT(pagesOf(text), ClipPreview::textAtMost / HistoryFile::pageSize + way);
    EXPECT_LT(pagesOf(rich), ClipPreview::textAtMost / HistoryFile::pageSize + way);
    EXPECT_LT(pagesOf(html), ClipPreview::htmlAtMost / HistoryFile::pageSize + way);
    EXPECT_LT(pagesOf(rtf), way);
    EXPECT_LT(pagesOf(files), ClipPreview::fileListAtMost / HistoryFile::pageSize + way);
    EXPECT_LT(pagesOf(image), large / HistoryFile::pageSize + way);
}

TEST_F(ClipReadsWork, ofAPatternThatFindsNothingLeavesThePicturesWhereTheyAre)
{
    reopen();
    for (int i = 0; i < 100; ++i) {
        history.database().save(
            ClipPayload({.imagePNG = QByteArray(1'000'000, static_cast<char>(i))}), u"App"_s,
            std::nullopt, 1000);
    }
    const Work work = workOf([&] {
        EXPECT_TRUE(history.database().search(u"absent"_s, std::nullopt, panelRows).empty());
    });
    EXPECT_LT(work.pages, 100 * 5);
}

} // namespace tessly::test
