#include "ClosedHistory.h"

#include "ClipDatabase.h"
#include "OrdinaryUser.h"

#include <gmock/gmock.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <filesystem>

using namespace Qt::StringLiterals;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace tessly::test {
namespace {

class ClosedHistoryTest : public testing::Test
{
protected:
    std::unique_ptr<ClipDatabase> open()
    {
        return std::make_unique<ClipDatabase>(m_path, [this] { return m_now++; });
    }
    static void fill(ClipDatabase& database)
    {
        for (const char* text : {"café au lait", "two", "one"}) {
            database.save(ClipPayload({.plainText = text}), u"Editor"_s, {}, 500);
        }
    }
    std::vector<QString> list(const QString& query = {}, std::optional<ClipKind> kind = {})
    {
        std::vector<QString> previews;
        for (const ClipSummary& summary : ClosedHistory::summaries(m_path, query, kind, -1)) {
            previews.push_back(summary.preview);
        }
        return previews;
    }
    [[nodiscard]] QByteArray bytes(const QString& companion = {}) const
    {
        QFile file(m_path + companion);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("absent");
    }

    [[nodiscard]] QStringList filesBeside() const
    {
        return QDir(m_folderPath).entryList(QDir::Files | QDir::Hidden, QDir::Name);
    }

    QTemporaryDir m_folder;
    // A name full of what stands for something else in a URI.
    QString m_folderPath = m_folder.filePath(u"a ?&#% folder"_s);
    QString m_path = m_folderPath + u"/history.sqlite"_s;
    double m_now = 1'700'000'000;
    bool m_hasFolder = QDir().mkdir(m_folderPath);
};

TEST_F(ClosedHistoryTest, IsEmptyWhereThereIsNone)
{
    EXPECT_THAT(list(), IsEmpty());
    EXPECT_EQ(ClosedHistory::statistics(m_path), ClipStore::Statistics{});
    EXPECT_THAT(filesBeside(), IsEmpty());
}

TEST_F(ClosedHistoryTest, IsEmptyWhereTheFileIsNew)
{
    QFile file(m_path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.close();
    EXPECT_THAT(list(), IsEmpty());
    EXPECT_EQ(ClosedHistory::statistics(m_path).totalItems, 0);
}

TEST_F(ClosedHistoryTest, IsReadWithoutATrace)
{
    fill(*open());
    const QByteArray before = bytes();
    ASSERT_THAT(filesBeside(), ElementsAre(u"history.sqlite"_s));
    EXPECT_THAT(list(), ElementsAre(u"one"_s, u"two"_s, u"café au lait"_s));
    EXPECT_THAT(list(u"CAFE lait"_s), ElementsAre(u"café au lait"_s)) << "by the index";
    EXPECT_THAT(list(u"wo"_s), ElementsAre(u"two"_s)) << "by the pattern";
    EXPECT_THAT(list({}, ClipKind::image), IsEmpty());
    const ClipStore::Statistics statistics = ClosedHistory::statistics(m_path);
    EXPECT_EQ(statistics.totalItems, 3);
    EXPECT_EQ(statistics.databaseBytes, before.size());
    EXPECT_EQ(bytes(), before);
    EXPECT_THAT(filesBeside(), ElementsAre(u"history.sqlite"_s));
}

TEST_F(ClosedHistoryTest, IsReadFromAFolderThatCannotBeWritten)
{
    const OrdinaryUser user(m_folder.path());
    m_folderPath = m_folder.filePath(u"ordinary"_s);
    m_path = m_folderPath + u"/history.sqlite"_s;
    ASSERT_TRUE(QDir().mkdir(m_folderPath));
    fill(*open());
    ASSERT_TRUE(QFile::setPermissions(m_path, QFile::ReadOwner));
    ASSERT_TRUE(QFile::setPermissions(m_folderPath, QFile::ReadOwner | QFile::ExeOwner));
    EXPECT_THAT(list(), SizeIs(3));
    EXPECT_EQ(ClosedHistory::statistics(m_path).totalItems, 3);
    ASSERT_TRUE(QFile::setPermissions(
        m_folderPath, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
}

TEST_F(ClosedHistoryTest, IncludesWhatACrashLeftInTheLog)
{
    // As they are at this moment, the files are what a process leaves that is killed.
    const auto database = open();
    fill(*database);
    const QString copy = m_folder.filePath(u"copy"_s);
    std::filesystem::copy(m_folderPath.toStdString(), copy.toStdString());
    QFile::remove(copy + u"/history.sqlite-shm"_s);
    m_path = copy + u"/history.sqlite"_s;
    const QByteArray before = bytes();
    const QByteArray log = bytes(u"-wal"_s);
    ASSERT_GT(log.size(), 0);
    EXPECT_THAT(list(), ElementsAre(u"one"_s, u"two"_s, u"café au lait"_s));
    EXPECT_EQ(bytes(), before);
    EXPECT_EQ(bytes(u"-wal"_s), log) << "it is the next start's to bring in";
    for (const QFileInfo& file : QDir(copy).entryInfoList(QDir::Files)) {
        EXPECT_EQ(
            file.permissions() & (QFile::ReadGroup | QFile::WriteGroup | QFile::ReadOther),
            QFile::Permissions())
            << file.fileName().toStdString();
    }
}

TEST_F(ClosedHistoryTest, IsReadBesideAProgramThatWrites)
{
    const auto database = open();
    fill(*database);
    EXPECT_THAT(list(), SizeIs(3));
    database->save(ClipPayload({.plainText = "four"}), {}, {}, 500);
    EXPECT_THAT(list(), ElementsAre(u"four"_s, u"one"_s, u"two"_s, u"café au lait"_s));
    database->clear(true);
    EXPECT_THAT(list(), IsEmpty());
}

TEST_F(ClosedHistoryTest, DamageIsSaid)
{
    fill(*open());
    QFile file(m_path);
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    ASSERT_TRUE(file.seek(4096));
    file.write(QByteArray(12288, '\xff'));
    file.close();
    try {
        (void)list();
        FAIL() << "read a damaged file";
    } catch (const ClipStoreError& error) {
        EXPECT_EQ(error.errorCase(), ClipStoreError::Case::corruptedDatabase) << error.what();
    }
    EXPECT_THROW((void)ClosedHistory::statistics(m_path), ClipStoreError);
}

TEST_F(ClosedHistoryTest, AnEntryWithoutAnIdentifierFailsTheList)
{
    fill(*open());
    {
        SQLiteConnection connection(m_path);
        connection.execute("UPDATE clips SET id = 'nobody' WHERE plain_text = 'two'");
    }
    try {
        (void)list();
        FAIL() << "listed it";
    } catch (const ClipStoreError& error) {
        EXPECT_EQ(
            error.description(),
            u"Could not decode clipboard data: A clipboard item had an invalid identifier."_s);
    }
}

void noDamage(qint64 position, const QString& reason)
{
    ADD_FAILURE() << position << ": " << reason.toStdString();
}

std::vector<std::string> textsOf(const QString& path)
{
    std::vector<std::string> texts;
    ClosedHistory::forEach(
        path,
        [&](const Clip& clip) {
            texts.push_back(clip.payload.held()->plainText().value_or(QByteArray()).toStdString());
        },
        noDamage);
    return texts;
}

TEST_F(ClosedHistoryTest, EveryEntryIsHandedOverWithItsContent)
{
    const auto database = open();
    fill(*database);
    database->setPinned(true, database->search(u"two"_s, {}, -1).front().id);
    EXPECT_THAT(textsOf(m_path), ElementsAre("two", "one", "café au lait"));
    EXPECT_EQ(database->scrub(), ClipStore::Upkeep::done) << "nothing is held open";
}

TEST_F(ClosedHistoryTest, HandingOverLeavesNoTrace)
{
    fill(*open());
    const QByteArray before = bytes();
    EXPECT_THAT(textsOf(m_path), SizeIs(3));
    EXPECT_EQ(bytes(), before);
    EXPECT_THAT(filesBeside(), ElementsAre(u"history.sqlite"_s));
}

TEST_F(ClosedHistoryTest, OfNoHistoryNothingIsHandedOver)
{
    EXPECT_THAT(textsOf(m_path), IsEmpty());
    EXPECT_THAT(filesBeside(), IsEmpty());
}

TEST_F(ClosedHistoryTest, AllThatDoesNotFitInMemoryAtOnceIsHandedOver)
{
    const auto database = open();
    std::vector<std::string> expected;
    for (int i = 0; i < 1200; ++i) {
        // Some of them larger than what is read at once.
        const QByteArray text =
            QByteArray::number(i) + QByteArray(i % 400 == 0 ? 5'000'000 : 0, 'x');
        database->save(ClipPayload({.plainText = text}), {}, {}, 10'000);
        expected.insert(expected.begin(), text.toStdString());
    }
    EXPECT_EQ(textsOf(m_path), expected);
}

TEST_F(ClosedHistoryTest, WhatIsDeletedOrCopiedMeanwhileIsNotHandedOver)
{
    const auto database = open();
    std::vector<Clip> saved;
    for (int i = 0; i < 4; ++i) {
        const QByteArray text = QByteArray::number(i) + QByteArray(5'000'000, 'x');
        saved.push_back(database->save(ClipPayload({.plainText = text}), {}, {}, 100));
    }
    std::vector<char> begins;
    ClosedHistory::forEach(
        m_path,
        [&](const Clip& clip) {
            begins.push_back(clip.payload.held()->plainText()->front());
            if (begins.size() == 1) {
                database->remove(saved[1].id);
                database->save(ClipPayload({.plainText = "copied meanwhile"}), {}, {}, 100);
            }
        },
        noDamage);
    EXPECT_THAT(begins, ElementsAre('3', '2', '0'));
}

TEST_F(ClosedHistoryTest, AHistoryThatGoesMeanwhileIsAnError)
{
    {
        const auto database = open();
        for (int i = 0; i < 2; ++i) {
            const QByteArray text = QByteArray::number(i) + QByteArray(5'000'000, 'x');
            database->save(ClipPayload({.plainText = text}), {}, {}, 100);
        }
    }
    EXPECT_THROW(
        ClosedHistory::forEach(
            m_path, [&](const Clip& /*clip*/) { QFile::remove(m_path); }, noDamage),
        ClipStoreError);
}

TEST_F(ClosedHistoryTest, AnEntryThatIsNotWhatWasStoredIsToldByItsPosition)
{
    fill(*open());
    const std::size_t all = textsOf(m_path).size();
    SQLiteConnection(m_path).execute(
        "UPDATE clips SET plain_text = 'another' WHERE plain_text = 'two';");
    std::size_t handedOver = 0;
    std::vector<std::pair<qint64, QString>> damaged;
    ClosedHistory::forEach(
        m_path, [&](const Clip& /*clip*/) { ++handedOver; },
        [&](qint64 position, const QString& reason) { damaged.emplace_back(position, reason); });
    EXPECT_EQ(handedOver, all - 1);
    EXPECT_THAT(
        damaged, ElementsAre(std::pair(qint64(2), u"A clipboard item is not what was stored."_s)));
}

} // namespace
} // namespace tessly::test
