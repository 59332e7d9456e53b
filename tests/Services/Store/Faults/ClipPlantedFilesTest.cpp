#include "ClosedHistory.h"
#include "HistoryFile.h"
#include "PlantedFile.h"
#include "QtPrinting.h"

#include <QFileInfo>

#include <gtest/gtest.h>

#include <functional>
#include <tuple>

using namespace Qt::StringLiterals;

namespace tessly::test {

namespace {

/// The places of the history's files and what may be planted there.
class ClipPlantedFiles : public testing::TestWithParam<std::tuple<const char*, Planted>>
{
protected:
    void SetUp() override
    {
        if (!planted.isPlanted()) {
            GTEST_SKIP() << "only the superuser can give a file to another";
        }
    }

    void expectRefusal(const std::function<void()>& operation) const
    {
        try {
            operation();
            FAIL() << "it was opened";
        } catch (const ClipStoreError& error) {
            EXPECT_EQ(error.errorCase(), ClipStoreError::Case::openDatabase);
            EXPECT_EQ(
                error.description(),
                u"Could not open clipboard database: “%1” %2"_s.arg(place, planted.reason()));
        }
        planted.expectUntouched();
    }

    HistoryFile history;
    QString place = history.path() + QString::fromLatin1(std::get<0>(GetParam()));
    PlantedFile planted{std::get<1>(GetParam()), place, history.folder() + u"/victim"_s};
};

} // namespace

TEST_P(ClipPlantedFiles, areNotTakenForTheHistory)
{
    expectRefusal([this] { history.open(); });
    EXPECT_EQ(QFileInfo(history.path()).exists(), place == history.path() && planted.exists())
        << "and nothing is made";
}

TEST_P(ClipPlantedFiles, areNotReadAsAClosedHistory)
{
    expectRefusal([this] { (void)ClosedHistory::statistics(history.path()); });
    expectRefusal([this] { (void)ClosedHistory::summaries(history.path(), {}, {}, -1); });
}

INSTANTIATE_TEST_SUITE_P(
    Everywhere, ClipPlantedFiles,
    testing::Combine(
        testing::Values("", "-wal", "-shm", "-journal"), testing::ValuesIn(everyPlanted)));

TEST(ClipDatabaseOpening, followsALinkToTheFolder)
{
    HistoryFile history;
    history.open();
    history.saveText("kept elsewhere");
    history.close();
    const MemoryFolder folder;
    const QString link = folder.filePath(u"link"_s);
    ASSERT_TRUE(QFile::link(history.folder(), link));
    const QString path = link + u"/history.sqlite"_s;
    EXPECT_EQ(ClosedHistory::statistics(path).totalItems, 1);
    ClipDatabase database(path, [] { return 1; });
    EXPECT_EQ(database.search({}, std::nullopt, -1).size(), 1U);
    database.save(ClipPayload({.plainText = "more"}), {}, {}, 500);
    EXPECT_EQ(database.statistics().totalItems, 2);
}

} // namespace tessly::test
